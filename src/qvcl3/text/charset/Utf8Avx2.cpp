// Built with AVX2, BMI1/2, POPCNT and LZCNT enabled (see src/CMakeLists.txt).
// Nothing here may be an inline function shared with other files: the
// linker could keep this file's AVX2 copy for callers on any processor.
// Hence no library headers beyond the declarations.
//
// Both directions take ASCII and two-byte blocks only and hand the first
// block with anything longer to the SSE2 loops, whose special blocks for
// East Asian text and emoji beat a general AVX2 block: without a compress
// instruction the wanted elements are packed with byte shuffles from a
// table indexed by an eight-bit mask, eight at a time, and such a block
// (every unit widened to 32 bits for encoding, three-byte and four-byte
// units for decoding) measured slower than the SSE2 loops.

#include "Utf8Kernels.h"

// The condition of QVCL3_CHARSET_SSE2 (Simd.h, not included for the reason
// above).
#if defined(__SSE2__) && defined(__x86_64__) && !defined(QVCL3_CHARSET_NO_SIMD)

#include <immintrin.h>

namespace qv::text::charset::detail {

namespace {

// For each eight-bit mask, the shuffle that moves the elements whose bits
// are set to the front, in order, and zeroes the rest; elements of `size`
// bytes, eight to a shuffle.
template <int size>
struct PackTable {
    alignas(16) uint8_t shuffle[256][8 * size];
};

template <int size>
constexpr PackTable<size> makePackTable()
{
    PackTable<size> table{};
    for (int mask = 0; mask < 256; ++mask) {
        int k = 0;
        for (int j = 0; j < 8; ++j) {
            if (((mask >> j) & 1) != 0) {
                for (int b = 0; b < size; ++b) {
                    table.shuffle[mask][size * k + b] = static_cast<uint8_t>(size * j + b);
                }
                ++k;
            }
        }
        for (int b = size * k; b < 8 * size; ++b) {
            table.shuffle[mask][b] = 0x80;
        }
    }
    return table;
}

constexpr PackTable<2> unitPacking = makePackTable<2>();
constexpr PackTable<1> bytePacking = makePackTable<1>();

inline uint32_t inRange(__m256i v, int low, int count)
{
    const __m256i t = _mm256_sub_epi8(v, _mm256_set1_epi8(static_cast<char>(low)));
    return static_cast<uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_min_epu8(t, _mm256_set1_epi8(static_cast<char>(count - 1))), t)));
}

// All ones in the 16-bit lanes whose bit is set in mask.
inline __m256i lanesOf16(uint32_t mask)
{
    const __m256i bits = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384,
                                           static_cast<short>(0x8000));
    return _mm256_cmpeq_epi16(_mm256_and_si256(_mm256_set1_epi16(static_cast<short>(mask)), bits), bits);
}

// Stores the units of the lanes set in mask (sixteen lanes) one after the
// other; each store writes sixteen bytes.
inline void storePacked(__m256i units, uint32_t mask, char16_t* out, int32_t& op)
{
    const __m128i halves[2] = {_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1)};
    for (int i = 0; i < 2; ++i) {
        const uint32_t m = (mask >> (8 * i)) & 0xFF;
        const __m128i shuffle = _mm_load_si128(reinterpret_cast<const __m128i*>(unitPacking.shuffle[m]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_shuffle_epi8(halves[i], shuffle));
        op += static_cast<int32_t>(_mm_popcnt_u32(m));
    }
}

} // namespace

// Thirty-two bytes at a time, as the AVX-512 kernel does sixty-four
// (Utf8Avx512.cpp explains the checks), for blocks of ASCII and two-byte
// sequences.
void decodeUtf8Avx2(const uint8_t* in, int32_t& inPos, int32_t inEnd, char16_t* out, int32_t& outPos, int32_t outEnd)
{
    // Positions in locals: the vector stores may alias anything, and would
    // otherwise send both through memory on every block.
    int32_t ip = inPos;
    int32_t op = outPos;
    const __m256i payloadMask = _mm256_setr_epi8(0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x3F, 0x3F, 0x3F, 0x3F,
                                                 0x1F, 0x1F, 0x0F, 0x07, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F,
                                                 0x3F, 0x3F, 0x3F, 0x3F, 0x1F, 0x1F, 0x0F, 0x07);
    while (inEnd - ip >= 32 && outEnd - op >= 32) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + ip));
        const uint32_t nonAscii = static_cast<uint32_t>(_mm256_movemask_epi8(v));
        if (nonAscii == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + op), _mm256_cvtepu8_epi16(_mm256_castsi256_si128(v)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + op + 16),
                                _mm256_cvtepu8_epi16(_mm256_extracti128_si256(v, 1)));
            ip += 32;
            op += 32;
            continue;
        }
        const uint32_t cont = inRange(v, 0x80, 0x40);
        const uint32_t lead2 = inRange(v, 0xC2, 0x1E);
        if ((cont | lead2) != nonAscii || (lead2 << 1) != cont) {
            break;
        }
        // A sequence running past the block is left out, from its lead on.
        int length = 32;
        uint32_t ends = (~cont >> 1) | 0x80000000u;
        if ((lead2 >> 31) != 0) {
            length = 31;
            ends &= 0x7FFFFFFFu;
        }
        const __m256i p = _mm256_and_si256(
            v, _mm256_shuffle_epi8(payloadMask, _mm256_and_si256(_mm256_srli_epi16(v, 4), _mm256_set1_epi8(0x0F))));
        // The byte before each (zero before the block).
        const __m256i p1 = _mm256_alignr_epi8(p, _mm256_permute2x128_si256(p, p, 0x08), 15);
        for (int half = 0; half < 2; ++half) {
            const int shift = 16 * half;
            auto widen = [half](__m256i x) {
                return _mm256_cvtepu8_epi16(half == 0 ? _mm256_castsi256_si128(x) : _mm256_extracti128_si256(x, 1));
            };
            const __m256i units =
                _mm256_or_si256(widen(p), _mm256_and_si256(_mm256_slli_epi16(widen(p1), 6), lanesOf16(cont >> shift)));
            storePacked(units, (ends >> shift) & 0xFFFF, out, op);
        }
        ip += length;
    }
    inPos = ip;
    outPos = op;
}

void encodeUtf8Avx2(const char16_t* in, int32_t& inPos, int32_t inEnd, uint8_t* out, int32_t& outPos, int32_t outEnd)
{
    // Positions in locals, as in decoding.
    int32_t ip = inPos;
    int32_t op = outPos;
    auto maskOf = [](__m256i lanes) {
        return static_cast<uint32_t>(
            _mm_movemask_epi8(_mm_packs_epi16(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1))));
    };
    while (inEnd - ip >= 16 && outEnd - op >= 64) {
        const __m256i u = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + ip));
        if (_mm256_testz_si256(u, _mm256_set1_epi16(static_cast<short>(0xFF80))) != 0) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op),
                             _mm_packus_epi16(_mm256_castsi256_si128(u), _mm256_extracti128_si256(u, 1)));
            ip += 16;
            op += 16;
            continue;
        }
        const __m256i asciiLanes = _mm256_cmpeq_epi16(
            _mm256_and_si256(u, _mm256_set1_epi16(static_cast<short>(0xFF80))), _mm256_setzero_si256());
        if (_mm256_testz_si256(u, _mm256_set1_epi16(static_cast<short>(0xF800))) == 0) {
            // Three-byte characters and surrogates: the SSE2 loops' blocks
            // for East Asian text and emoji beat a general AVX2 block here.
            break;
        }
        // ASCII and two-byte characters: each unit's two-byte form, or itself
        // where it is ASCII, in its own 16-bit lane, and only the first byte
        // of the ASCII lanes kept.
        const __m256i two =
            _mm256_or_si256(_mm256_or_si256(_mm256_set1_epi16(static_cast<short>(0x80C0)), _mm256_srli_epi16(u, 6)),
                            _mm256_slli_epi16(_mm256_and_si256(u, _mm256_set1_epi16(0x3F)), 8));
        const __m256i forms = _mm256_blendv_epi8(two, u, asciiLanes);
        const uint32_t usedBytes = _pdep_u32(~maskOf(asciiLanes), 0xAAAAAAAAu) | 0x55555555u;
        const __m128i quads[2] = {_mm256_castsi256_si128(forms), _mm256_extracti128_si256(forms, 1)};
        for (int i = 0; i < 2; ++i) {
            const uint32_t m0 = (usedBytes >> (16 * i)) & 0xFF;
            const uint32_t m1 = (usedBytes >> (16 * i + 8)) & 0xFF;
            const __m128i shuffle = _mm_unpacklo_epi64(
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytePacking.shuffle[m0])),
                _mm_add_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytePacking.shuffle[m1])),
                             _mm_set1_epi8(8)));
            const __m128i packed = _mm_shuffle_epi8(quads[i], shuffle);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + op), packed);
            op += static_cast<int32_t>(_mm_popcnt_u32(m0));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + op), _mm_unpackhi_epi64(packed, packed));
            op += static_cast<int32_t>(_mm_popcnt_u32(m1));
        }
        ip += 16;
    }
    inPos = ip;
    outPos = op;
}

} // namespace qv::text::charset::detail

#endif
