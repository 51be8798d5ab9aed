// Built with AVX-512 F/BW/VL/VBMI/VBMI2 enabled (see src/CMakeLists.txt).
// Nothing here may be an inline function shared with other files: the
// linker could keep this file's AVX-512 copy for callers on any processor.
// Hence no library headers beyond the declarations.

#include "Utf8Kernels.h"

// The condition of QVCL3_CHARSET_SSE2 (Simd.h, not included for the reason
// above).
#if defined(__SSE2__) && defined(__x86_64__) && !defined(QVCL3_CHARSET_NO_SIMD)

#include <immintrin.h>

namespace qv::text::charset::detail {

namespace {

// Bytes in [low, low + count).
inline uint64_t inRange(__m512i v, int low, int count)
{
    return _mm512_cmplt_epu8_mask(_mm512_sub_epi8(v, _mm512_set1_epi8(static_cast<char>(low))),
                                  _mm512_set1_epi8(static_cast<char>(count)));
}

// The UTF-16 units of the sequences of one half block (32 bytes, widened to
// 16 bits: p0 the value bits of each byte, p1 those of the byte before).
// Each lane ends up holding the unit it stands for when it is the last byte
// of a sequence of one or two bytes; longerUnits adds the longer ones.
inline __m512i twoByteUnits(__m512i p0, __m512i p1, uint32_t cont)
{
    return _mm512_or_si512(p0, _mm512_maskz_slli_epi16(cont, p1, 6));
}

// Three- and four-byte sequences (p2: the value bits two bytes before). The
// third byte of a four-byte sequence gets the high surrogate, the fourth the
// low one.
inline __m512i longerUnits(__m512i units, __m512i p0, __m512i p1, __m512i p2, uint32_t contTwice, uint32_t lowSurrogate,
                           uint32_t highSurrogate)
{
    units = _mm512_or_si512(units, _mm512_maskz_slli_epi16(contTwice, p2, 12));
    if ((lowSurrogate | highSurrogate) == 0) {
        return units;
    }
    const __m512i low =
        _mm512_or_si512(_mm512_set1_epi16(static_cast<short>(0xDC00)),
                        _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(p1, _mm512_set1_epi16(0x0F)), 6), p0));
    units = _mm512_mask_mov_epi16(units, lowSurrogate, low);
    const __m512i high = _mm512_add_epi16(
        _mm512_set1_epi16(static_cast<short>(0xD7C0)),
        _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(p2, 8), _mm512_slli_epi16(p1, 2)), _mm512_srli_epi16(p0, 4)));
    return _mm512_mask_mov_epi16(units, highSurrogate, high);
}

} // namespace

// Sixty-four bytes at a time. A block starts on a sequence boundary, so the
// checks need nothing from before it: every lead byte must be followed by
// exactly its continuation bytes (mask arithmetic on the whole block), the
// second byte after E0, ED, F0 and F4 must lie in its narrower range, and
// C0, C1 and F5-FF must not occur. A sequence cut by the end of the block
// is left to the next block.
void decodeUtf8Avx512(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd)
{
    // Value bits by high nibble: ASCII 7, continuation 6, leads 5, 4 and 3.
    const __m512i payloadMask = _mm512_broadcast_i32x4(
        _mm_setr_epi8(0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x3F, 0x3F, 0x3F, 0x3F, 0x1F, 0x1F, 0x0F, 0x07));
    const __m512i lowNibble = _mm512_set1_epi8(0x0F);
    // Lane k of each half takes lane k - 1 (k - 2) of the bytes widened
    // together; for the upper half, indices below 32 reach into the lower one.
    const __m512i lane = _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14, 13,
                                          12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const __m512i before1 = _mm512_sub_epi16(lane, _mm512_set1_epi16(1));
    const __m512i before2 = _mm512_sub_epi16(lane, _mm512_set1_epi16(2));
    const __m512i across1 = _mm512_add_epi16(lane, _mm512_set1_epi16(31));
    const __m512i across2 = _mm512_add_epi16(lane, _mm512_set1_epi16(30));
    while (inEnd - ip >= 64 && outEnd - op >= 64) {
        const __m512i v = _mm512_loadu_si512(in + ip);
        const uint64_t nonAscii = _mm512_movepi8_mask(v);
        if (nonAscii == 0) {
            _mm512_storeu_si512(out + op, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(v)));
            _mm512_storeu_si512(out + op + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(v, 1)));
            ip += 64;
            op += 64;
            continue;
        }
        const uint64_t cont = inRange(v, 0x80, 0x40);
        const uint64_t lead2 = inRange(v, 0xC2, 0x1E);
        const uint64_t lead3 = inRange(v, 0xE0, 0x10);
        const uint64_t lead4 = inRange(v, 0xF0, 0x05);
        const uint64_t lead34 = lead3 | lead4;
        const uint64_t leads = lead2 | lead34;
        if ((cont | leads) != nonAscii || ((leads << 1) | (lead34 << 2) | (lead4 << 3)) != cont) {
            return;
        }
        const uint64_t belowA0 = _mm512_cmplt_epu8_mask(v, _mm512_set1_epi8(static_cast<char>(0xA0)));
        const uint64_t below90 = _mm512_cmplt_epu8_mask(v, _mm512_set1_epi8(static_cast<char>(0x90)));
        auto is = [&v](int b) { return _mm512_cmpeq_epi8_mask(v, _mm512_set1_epi8(static_cast<char>(b))); };
        const uint64_t bad = ((is(0xE0) << 1) & belowA0) | ((is(0xED) << 1) & ~belowA0) | ((is(0xF0) << 1) & below90) |
                             ((is(0xF4) << 1) & ~below90);
        if (bad != 0) {
            return;
        }
        // A sequence running past the block is left out, from its lead on.
        int length = 64;
        uint64_t keep = ~0ull;
        if (((leads >> 63) | (lead34 >> 62) | (lead4 >> 61)) != 0) {
            length = 63 - static_cast<int>(_lzcnt_u64(leads));
            keep = (1ull << length) - 1;
        }
        const uint64_t ends = ((~cont >> 1) | (1ull << (length - 1))) & keep;
        const uint64_t highSurrogates = (lead4 << 2) & keep;
        const uint64_t emitted = ends | highSurrogates;

        const __m512i p =
            _mm512_and_si512(v, _mm512_shuffle_epi8(payloadMask, _mm512_and_si512(_mm512_srli_epi16(v, 4), lowNibble)));
        const __m512i p0Low = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(p));
        const __m512i p0High = _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(p, 1));
        const __m512i p1Low = _mm512_maskz_permutexvar_epi16(~1u, before1, p0Low);
        const __m512i p1High = _mm512_permutex2var_epi16(p0Low, across1, p0High);
        __m512i low = twoByteUnits(p0Low, p1Low, static_cast<uint32_t>(cont));
        __m512i high = twoByteUnits(p0High, p1High, static_cast<uint32_t>(cont >> 32));
        if (lead34 != 0) {
            const __m512i p2Low = _mm512_maskz_permutexvar_epi16(~3u, before2, p0Low);
            const __m512i p2High = _mm512_permutex2var_epi16(p0Low, across2, p0High);
            const uint64_t contTwice = cont & (cont << 1);
            const uint64_t lowSurrogates = lead4 << 3;
            low = longerUnits(low, p0Low, p1Low, p2Low, static_cast<uint32_t>(contTwice),
                              static_cast<uint32_t>(lowSurrogates), static_cast<uint32_t>(highSurrogates));
            high = longerUnits(high, p0High, p1High, p2High, static_cast<uint32_t>(contTwice >> 32),
                               static_cast<uint32_t>(lowSurrogates >> 32), static_cast<uint32_t>(highSurrogates >> 32));
        }
        const uint32_t emittedLow = static_cast<uint32_t>(emitted);
        const uint32_t emittedHigh = static_cast<uint32_t>(emitted >> 32);
        _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi16(emittedLow, low));
        op += static_cast<int32_t>(_mm_popcnt_u32(emittedLow));
        _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi16(emittedHigh, high));
        op += static_cast<int32_t>(_mm_popcnt_u32(emittedHigh));
        ip += length;
    }
}

// Thirty-two units at a time. Every unit becomes the UTF-8 bytes of its
// character in a 32-bit lane (a high surrogate those of the pair, the low
// surrogate none), and the bytes that count are packed together. A block
// with a lone surrogate is left to the careful step; a pair cut by the end
// of the block is left to the next block.
void encodeUtf8Avx512(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd)
{
    const __m512i next = _mm512_set_epi16(31, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14,
                                          13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1);
    while (inEnd - ip >= 32 && outEnd - op >= 128) {
        const __m512i u = _mm512_loadu_si512(in + ip);
        const uint32_t ascii = _mm512_cmplt_epu16_mask(u, _mm512_set1_epi16(0x80));
        if (ascii == ~0u) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + op), _mm512_cvtepi16_epi8(u));
            ip += 32;
            op += 32;
            continue;
        }
        const uint32_t below800 = _mm512_cmplt_epu16_mask(u, _mm512_set1_epi16(0x800));
        if (below800 == ~0u) {
            // ASCII and two-byte characters (European text): each unit's
            // two-byte form, or itself where it is ASCII, in its own 16-bit
            // lane, and only the first byte of the ASCII lanes kept.
            const __m512i two =
                _mm512_or_si512(_mm512_or_si512(_mm512_set1_epi16(static_cast<short>(0x80C0)), _mm512_srli_epi16(u, 6)),
                                _mm512_slli_epi16(_mm512_and_si512(u, _mm512_set1_epi16(0x3F)), 8));
            const __m512i forms = _mm512_mask_mov_epi16(two, ascii, u);
            const uint64_t usedBytes = _pdep_u64(~ascii, 0xAAAAAAAAAAAAAAAAull) | 0x5555555555555555ull;
            _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, forms));
            op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
            ip += 32;
            continue;
        }
        const __m512i tag = _mm512_and_si512(u, _mm512_set1_epi16(static_cast<short>(0xFC00)));
        uint32_t highs = _mm512_cmpeq_epi16_mask(tag, _mm512_set1_epi16(static_cast<short>(0xD800)));
        const uint32_t lows = _mm512_cmpeq_epi16_mask(tag, _mm512_set1_epi16(static_cast<short>(0xDC00)));
        if ((highs << 1) != lows) {
            return;
        }
        int length = 32;
        if ((highs >> 31) != 0) {
            length = 31;
            highs &= 0x7FFFFFFFu;
        }
        const uint32_t keep = length == 32 ? ~0u : 0x7FFFFFFFu;
        const uint32_t twoByte = below800 & ~ascii & keep;
        const uint32_t threeByte = ~below800 & ~(highs | lows) & keep;
        const uint32_t oneByte = ascii & keep;
        const __m512i following = _mm512_permutexvar_epi16(next, u);
        for (int half = 0; half < 2; ++half) {
            const int shift = 16 * half;
            const __m512i c =
                _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(u) : _mm512_extracti64x4_epi64(u, 1));
            const __m512i d = _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(following)
                                                              : _mm512_extracti64x4_epi64(following, 1));
            const __mmask16 h = static_cast<__mmask16>(highs >> shift);
            const __mmask16 one = static_cast<__mmask16>(oneByte >> shift);
            const __mmask16 two = static_cast<__mmask16>(twoByte >> shift);
            const __mmask16 three = static_cast<__mmask16>(threeByte >> shift);
            // (high << 10) + low - (0xD800 << 10) - 0xDC00 + 0x10000
            const __m512i cp = _mm512_mask_mov_epi32(
                c, h, _mm512_add_epi32(_mm512_slli_epi32(c, 10), _mm512_sub_epi32(d, _mm512_set1_epi32(0x35FDC00))));
            // The six-bit groups in reverse order, last group in the low byte's
            // place of a four-byte form; shorter forms shift it down.
            const __m512i groups = _mm512_or_si512(
                _mm512_or_si512(_mm512_and_si512(_mm512_slli_epi32(cp, 24), _mm512_set1_epi32(0x3F000000)),
                                _mm512_and_si512(_mm512_slli_epi32(cp, 10), _mm512_set1_epi32(0x3F0000))),
                _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi32(cp, 4), _mm512_set1_epi32(0x3F00)),
                                _mm512_srli_epi32(cp, 18)));
            __m512i bytes = cp;
            bytes = _mm512_mask_mov_epi32(bytes, two,
                                          _mm512_or_si512(_mm512_srli_epi32(groups, 16), _mm512_set1_epi32(0x80C0)));
            bytes = _mm512_mask_mov_epi32(bytes, three,
                                          _mm512_or_si512(_mm512_srli_epi32(groups, 8), _mm512_set1_epi32(0x8080E0)));
            bytes = _mm512_mask_mov_epi32(bytes, h, _mm512_or_si512(groups, _mm512_set1_epi32(0x808080F0)));
            __m512i used = _mm512_maskz_mov_epi32(one, _mm512_set1_epi32(0xFF));
            used = _mm512_mask_mov_epi32(used, two, _mm512_set1_epi32(0xFFFF));
            used = _mm512_mask_mov_epi32(used, three, _mm512_set1_epi32(0xFFFFFF));
            used = _mm512_mask_mov_epi32(used, h, _mm512_set1_epi32(-1));
            const uint64_t usedBytes = _mm512_test_epi8_mask(used, used);
            _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, bytes));
            op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
        }
        ip += length;
    }
}

} // namespace qv::text::charset::detail

#endif
