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

// A 512-bit constant, kept in memory.
struct alignas(64) Vector {
    uint64_t quads[8];
};

constexpr Vector repeat64(uint64_t value)
{
    Vector v{};
    for (uint64_t& quad : v.quads) {
        quad = value;
    }
    return v;
}

constexpr Vector repeat32(uint32_t value)
{
    return repeat64(value | uint64_t{value} << 32);
}
constexpr Vector repeat16(uint16_t value)
{
    return repeat32(value | uint32_t{value} << 16);
}
constexpr Vector repeat8(uint8_t value)
{
    return repeat16(static_cast<uint16_t>(value | value << 8));
}

// The decoding loop's constants that are not tables, for the reason given
// at EncodeConstants below: seen as values, the compiler built each again
// inside the loop at every use (a move and a broadcast, or a move and a
// mask load), and loaded once before the loop they gave East Asian text
// 1.07x and text with emoji 1.16x.
struct DecodeConstants {
    Vector leadMin = repeat8(0xC0);
    Vector threeLeadMin = repeat8(0xE0);
    Vector fourLeadMin = repeat8(0xF0);
    // For the surrogates of four-byte sequences (longerUnits).
    Vector lowFourBits = repeat16(0x0F);
    Vector lowTag = repeat16(0xDC00);
    // (0xD800 - (0x10000 >> 10)): the high surrogate from the code point's
    // bits 10 up.
    Vector highBias = repeat16(0xD7C0);
    // The high byte of every 16-bit lane.
    uint64_t highBytes = 0xAAAAAAAAAAAAAAAAull;
};

constexpr DecodeConstants decodeConstants{};
const DecodeConstants* volatile g_decodeConstants = &decodeConstants;

// The vectors of DecodeConstants that longerUnits needs, loaded.
struct SurrogateVectors {
    __m512i lowFourBits;
    __m512i lowTag;
    __m512i highBias;
};

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
                           uint32_t highSurrogate, const SurrogateVectors& k)
{
    units = _mm512_or_si512(units, _mm512_maskz_slli_epi16(contTwice, p2, 12));
    if ((lowSurrogate | highSurrogate) == 0) {
        return units;
    }
    const __m512i low =
        _mm512_or_si512(k.lowTag, _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(p1, k.lowFourBits), 6), p0));
    units = _mm512_mask_mov_epi16(units, lowSurrogate, low);
    const __m512i high = _mm512_add_epi16(
        k.highBias,
        _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(p2, 8), _mm512_slli_epi16(p1, 2)), _mm512_srli_epi16(p0, 4)));
    return _mm512_mask_mov_epi16(units, highSurrogate, high);
}

// Byte indices for vpermb that put, in each 16-bit lane of one half block
// (32 bytes), the byte `back` places before that lane's own byte into the
// high half and, when `withOwn`, the lane's own byte into the low half. The
// first lanes of the lower half reach before the block; callers mask them.
struct LaneBytes {
    alignas(64) uint8_t index[64];
};

constexpr LaneBytes laneBytes(int half, int back, bool withOwn)
{
    LaneBytes table{};
    for (int j = 0; j < 32; ++j) {
        const int own = 32 * half + j;
        table.index[2 * j] = static_cast<uint8_t>(withOwn ? own : 0);
        table.index[2 * j + 1] = static_cast<uint8_t>((own - back) & 63);
    }
    return table;
}

// For vpermi2b over (value bits, value bits of the bytes that a continuation
// follows): lane j of one half gets its own byte low and, from the second
// table (indices from 64 up), the byte before it high. That byte is zero
// there unless the lane's byte continues its sequence, so no per-block mask
// is needed.
constexpr LaneBytes ownAndLeadIndex(int half)
{
    LaneBytes table{};
    for (int j = 0; j < 32; ++j) {
        const int own = 32 * half + j;
        table.index[2 * j] = static_cast<uint8_t>(own);
        table.index[2 * j + 1] = static_cast<uint8_t>(64 + ((own - 1) & 63));
    }
    return table;
}

constexpr LaneBytes pairIndex[2] = {ownAndLeadIndex(0), ownAndLeadIndex(1)};
constexpr LaneBytes thirdLastIndex[2] = {laneBytes(0, 2, false), laneBytes(1, 2, false)};

// Stores for outputs far larger than the caches: the kernel writes into a
// buffer in the first-level cache, copied out in whole lines with
// non-temporal stores, which skip reading every output line from memory
// before writing it. The kernels' stores are unaligned and overlap, so they
// cannot stream themselves; and a line is copied out only once a few
// kilobytes lie between it and the stores still being made, because read
// back at once, lines just written by overlapping stores stall the copy.
class StagedStores {
public:
    // Copied out this many bytes at a time.
    static constexpr int32_t stageBytes = 4096;
    // The stores reach this far beyond the staged output's end before
    // copyOutFull sees it (one block: 128 bytes of UTF-16 in decoding).
    static constexpr int32_t slackBytes = 128;

    // `buffer`: stageBytes + slackBytes, on a 64-byte boundary. A local of
    // the caller, not a member: the vector stores may alias anything in
    // memory, and with the buffer inside this object the positions went
    // through memory on every block.
    StagedStores(uint8_t* buffer, uint8_t* first)
        : m_buffer(buffer), m_line(first - (reinterpret_cast<uintptr_t>(first) & 63)), m_first(first)
    {}

    // The staging slot standing for destination byte `dest`: staging offset
    // i stands for m_line + i, so its lines are the destination's lines.
    uint8_t* at(uint8_t* dest) const { return m_buffer + (dest - m_line); }

    // Called after every block with the end of the output so far.
    void copyOutFull(const uint8_t* end)
    {
        if (end - m_line < stageBytes) {
            return;
        }
        int32_t i = 0;
        if (m_first != nullptr) {
            // The first line may begin before the output: keep those bytes.
            copyPart(0, m_first, m_line + 64);
            m_first = nullptr;
            i = 64;
        }
        for (; i < stageBytes; i += 64) {
            _mm512_stream_si512(reinterpret_cast<__m512i*>(m_line + i), _mm512_load_si512(m_buffer + i));
        }
        // What the last block wrote beyond the copied lines moves to the
        // front (stale bytes too: only [m_line, end) counts).
        for (i = 0; i < slackBytes; i += 64) {
            _mm512_store_si512(m_buffer + i, _mm512_load_si512(m_buffer + stageBytes + i));
        }
        m_line += stageBytes;
        m_streamed = true;
    }

    // Copies the rest, [m_line, end), with ordinary stores, and orders the
    // streamed lines before whatever the caller stores next.
    void finish(const uint8_t* end)
    {
        const uint8_t* from = m_first != nullptr ? m_first : m_line;
        for (int32_t i = 0; m_line + i < end; i += 64) {
            copyPart(i, from, end);
        }
        if (m_streamed) {
            _mm_sfence();
        }
    }

private:
    // Line i of the staging buffer to the destination, only its bytes in
    // [from, to): nothing before the output is touched, nor past its end.
    void copyPart(int32_t i, const uint8_t* from, const uint8_t* to)
    {
        const uint8_t* line = m_line + i;
        const int64_t lo = from > line ? from - line : 0;
        const int64_t hi = to - line < 64 ? to - line : 64;
        const __mmask64 keep =
            _bzhi_u64(~0ull, static_cast<unsigned>(hi)) & ~_bzhi_u64(~0ull, static_cast<unsigned>(lo));
        _mm512_mask_storeu_epi8(m_line + i, keep, _mm512_load_si512(m_buffer + i));
    }

    uint8_t* m_buffer;
    uint8_t* m_line;
    // The first output byte, until the line holding it has been copied out.
    const uint8_t* m_first;
    bool m_streamed = false;
};

// Calls with more input than this begin with their ASCII run streamed
// (StagedStores): beyond the caches that saves reading the output before
// writing it; within them the copy only costs.
constexpr int32_t asciiStreamedMinimum = 1024 * 1024;

// The leading run of all-ASCII blocks through StagedStores, each widened or
// narrowed as by the block loops below; stops at the first other block.
// Only the ASCII blocks: the other blocks, which have more work of their
// own for the copying to compete with, ran slower through the same staging
// (European encoding 0.96x, East Asian 0.63x-0.67x, 16 MiB).
void decodeAsciiStreamed(const uint8_t* in, int32_t& inPos, int32_t inEnd, char16_t* out, int32_t& outPos,
                         int32_t outEnd)
{
    int32_t ip = inPos;
    int32_t op = outPos;
    alignas(64) uint8_t stage[StagedStores::stageBytes + StagedStores::slackBytes];
    StagedStores stores(stage, reinterpret_cast<uint8_t*>(out + op));
    while (inEnd - ip >= 64 && outEnd - op >= 64) {
        const __m512i v = _mm512_loadu_si512(in + ip);
        if (_mm512_movepi8_mask(v) != 0) {
            break;
        }
        uint8_t* to = stores.at(reinterpret_cast<uint8_t*>(out + op));
        _mm512_storeu_si512(to, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(v)));
        _mm512_storeu_si512(to + 64, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(v, 1)));
        ip += 64;
        op += 64;
        stores.copyOutFull(reinterpret_cast<uint8_t*>(out + op));
    }
    stores.finish(reinterpret_cast<uint8_t*>(out + op));
    inPos = ip;
    outPos = op;
}

void encodeAsciiStreamed(const char16_t* in, int32_t& inPos, int32_t inEnd, uint8_t* out, int32_t& outPos,
                         int32_t outEnd)
{
    int32_t ip = inPos;
    int32_t op = outPos;
    alignas(64) uint8_t stage[StagedStores::stageBytes + StagedStores::slackBytes];
    StagedStores stores(stage, out + op);
    while (inEnd - ip >= 32 && outEnd - op >= 32) {
        const __m512i u = _mm512_loadu_si512(in + ip);
        if (_mm512_cmpge_epu16_mask(u, _mm512_set1_epi16(0x80)) != 0) {
            break;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(stores.at(out + op)), _mm512_cvtepi16_epi8(u));
        ip += 32;
        op += 32;
        stores.copyOutFull(out + op);
    }
    stores.finish(out + op);
    inPos = ip;
    outPos = op;
}

} // namespace

// Sixty-four bytes at a time, read in steps of 60. A block converts the
// characters that start in its first 60 bytes; they all end inside it, so
// every check needs nothing beyond it: each lead byte must be followed by
// exactly its continuation bytes (mask arithmetic on the whole block), the
// second byte after E0, ED, F0 and F4 must lie in its narrower range, and
// C0, C1 and F5-FF must not occur. The next block then begins with up to
// three continuation bytes that this one has checked and converted. The
// fixed step keeps the next load independent of this block's contents (a
// step to the last sequence boundary would make every load wait for the
// previous block's classification, or for a branch on it that East Asian
// text, two blocks in three ending inside a sequence, keeps mispredicting).
void decodeBlocksAvx512(const uint8_t* in, int32_t& inPos, int32_t inEnd, char16_t* out, int32_t& outPos,
                        int32_t outEnd)
{
    // Positions in locals: the vector stores may alias anything, and would
    // otherwise send both through memory on every block. 64 bits wide, so
    // that no address needs a sign extension first (1.01x-1.02x).
    int64_t ip = inPos;
    int64_t op = outPos;
    // Value bits by the top six bits of a byte: ASCII 7, continuation 6,
    // leads 5, 4 and 3 (F8-FF, only ever in a block's last byte, are never
    // converted).
    alignas(64) static const uint8_t payloadByTop6[64] = {
        0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F,
        0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F,
        0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F,
        0x1F, 0x1F, 0x1F, 0x1F, 0x1F, 0x1F, 0x1F, 0x1F, 0x0F, 0x0F, 0x0F, 0x0F, 0x07, 0x07, 0x07, 0x07};
    const __m512i payloadMask = _mm512_load_si512(payloadByTop6);
    // The byte after a lead (C0-FF), by the lead's low six bits: at least
    // low, at most low + span, wrapping (E0: A0-BF, ED: 80-9F, F0: 90-BF,
    // F4: 80-8F; C0, C1 and F5-FF: none of the continuation bytes, which are
    // all that the structure check lets follow a lead; every other lead any
    // continuation byte). One table lookup stands for the checks of bad
    // leads and of narrow second bytes: as compares and shifted masks they
    // sent every block's masks through general registers and back, and cost
    // East Asian text a third.
    alignas(64) static const uint8_t secondLowByLead[64] = {
        0xC0, 0xC0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0xA0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0x90, 0x80, 0x80, 0x80, 0x80, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0, 0xC0};
    alignas(64) static const uint8_t secondSpanByLead[64] = {
        0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F,
        0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F,
        0x1F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x1F, 0x3F, 0x3F,
        0x2F, 0x3F, 0x3F, 0x3F, 0x0F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F};
    const __m512i secondLow = _mm512_load_si512(secondLowByLead);
    const __m512i secondSpan = _mm512_load_si512(secondSpanByLead);
    const __m512i pairs[2] = {_mm512_load_si512(pairIndex[0].index), _mm512_load_si512(pairIndex[1].index)};
    const __m512i thirdLast[2] = {_mm512_load_si512(thirdLastIndex[0].index),
                                  _mm512_load_si512(thirdLastIndex[1].index)};
    // vpmaddubsw weights: the low byte counts once, the high byte 64 times.
    const __m512i lowPlusHighTimes64 = _mm512_set1_epi16(0x4001);
    // For the blocks with four-byte sequences: lane k of each half takes lane
    // k - 1 (k - 2) of the bytes widened together; for the upper half,
    // indices below 32 reach into the lower one.
    const __m512i lane = _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14, 13,
                                          12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const __m512i before1 = _mm512_sub_epi16(lane, _mm512_set1_epi16(1));
    const __m512i before2 = _mm512_sub_epi16(lane, _mm512_set1_epi16(2));
    const __m512i across1 = _mm512_add_epi16(lane, _mm512_set1_epi16(31));
    const __m512i across2 = _mm512_add_epi16(lane, _mm512_set1_epi16(30));
    const DecodeConstants& k = *g_decodeConstants;
    auto load = [](const Vector& v) { return _mm512_load_si512(v.quads); };
    const __m512i byteC0 = load(k.leadMin);
    const __m512i byteE0 = load(k.threeLeadMin);
    const __m512i byteF0 = load(k.fourLeadMin);
    const __mmask64 highBytes = k.highBytes;
    const SurrogateVectors surrogates{load(k.lowFourBits), load(k.lowTag), load(k.highBias)};
    // All ones while the continuation bytes at ip belong to characters the
    // block before converted: never on the first block, nor after an ASCII
    // one, where such bytes are strays for the checks to find.
    uint64_t carried = 0;
    auto finish = [&]() {
        while (carried != 0 && (in[ip] & 0xC0) == 0x80) {
            ++ip;
        }
        inPos = static_cast<int32_t>(ip);
        outPos = static_cast<int32_t>(op);
    };
    while (inEnd - ip >= 64 && outEnd - op >= 64) {
        const __m512i v = _mm512_loadu_si512(in + ip);
        const uint64_t nonAscii = _mm512_movepi8_mask(v);
        if (nonAscii == 0) {
            _mm512_storeu_si512(out + op, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(v)));
            _mm512_storeu_si512(out + op + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(v, 1)));
            ip += 64;
            op += 64;
            carried = 0;
            continue;
        }
        // Once C0, C1 and F5-FF are ruled out (below), every byte from C0
        // up is a lead and every other byte above 7F a continuation.
        const uint64_t leads = _mm512_cmpge_epu8_mask(v, byteC0);
        const uint64_t lead34 = _mm512_cmpge_epu8_mask(v, byteE0);
        const uint64_t lead4 = _mm512_cmpge_epu8_mask(v, byteF0);
        const uint64_t cont = nonAscii & ~leads;
        const uint64_t converted = cont & ~(cont + 1) & carried;
        // The byte after each lead must lie in the range the lead allows.
        // Byte 63's lies beyond the block and is not looked at: a character
        // starting there is the next block's, which checks it. One branch
        // for every check: each separate one cost East Asian text a tenth.
        const __m512i after = _mm512_maskz_loadu_epi8(~0ull >> 1, in + ip + 1);
        const __m512i secondMin = _mm512_permutexvar_epi8(v, secondLow);
        const __m512i span = _mm512_permutexvar_epi8(v, secondSpan);
        const uint64_t badSecond =
            _mm512_mask_cmpgt_epu8_mask(leads & (~0ull >> 1), _mm512_sub_epi8(after, secondMin), span);
        if (badSecond != 0 || ((leads << 1) | (lead34 << 2) | (lead4 << 3)) != (cont & ~converted)) {
            finish();
            return;
        }
        // The characters starting before byte 60: up to the first start at
        // 60 or later (there is one, or the checks above had failed), and
        // after the continuation bytes the block before converted.
        const uint64_t starts = ~cont;
        const unsigned next = 60 + static_cast<unsigned>(_tzcnt_u64(starts >> 60));
        const uint64_t keep = _bzhi_u64(~0ull, next) & ~converted;
        const uint64_t ends = (starts >> 1) & keep;
        const __m512i p = _mm512_and_si512(v, _mm512_permutexvar_epi8(_mm512_srli_epi16(v, 2), payloadMask));
        if (lead4 == 0) {
            // Each 16-bit lane gets its byte's value bits plus, when the byte
            // is a continuation, 64 times those of the byte before (and 4096
            // times those two before, when that is one too): the lanes that
            // end a sequence then hold its unit.
            // The leads' value bits, kept only where a continuation follows
            // (and, for the lead of three, where two do), so that the
            // gathers below need no mask of their own per block. The leads
            // of three are shifted into place once for both halves, and only
            // leads are kept for that: their value bits fit in four bits,
            // while a continuation byte that two more follow (the tail of a
            // four-byte sequence the block before converted) would carry
            // into the next byte.
            const __m512i leadBits = _mm512_maskz_mov_epi8(cont >> 1, p);
            const __m512i lead3Bits =
                _mm512_slli_epi16(_mm512_maskz_mov_epi8(((cont & (cont >> 1)) >> 1) & leads, leadBits), 4);
            for (int half = 0; half < 2; ++half) {
                const __m512i pair = _mm512_permutex2var_epi8(p, pairs[half], leadBits);
                __m512i units = _mm512_maddubs_epi16(pair, lowPlusHighTimes64);
                // Not skipped when the block has no lead of three: a branch
                // here cost East Asian text a tenth.
                const __m512i third = _mm512_maskz_permutexvar_epi8(highBytes, thirdLast[half], lead3Bits);
                units = _mm512_or_si512(units, third);
                const uint32_t emitted = static_cast<uint32_t>(ends >> (32 * half));
                _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi16(emitted, units));
                op += static_cast<int32_t>(_mm_popcnt_u32(emitted));
            }
            ip += 60;
            carried = ~0ull;
            continue;
        }
        const uint64_t highSurrogates = (lead4 << 2) & keep;
        const uint64_t emitted = ends | highSurrogates;
        const __m512i p0Low = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(p));
        const __m512i p0High = _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(p, 1));
        const __m512i p1Low = _mm512_maskz_permutexvar_epi16(~1u, before1, p0Low);
        const __m512i p1High = _mm512_permutex2var_epi16(p0Low, across1, p0High);
        const __m512i p2Low = _mm512_maskz_permutexvar_epi16(~3u, before2, p0Low);
        const __m512i p2High = _mm512_permutex2var_epi16(p0Low, across2, p0High);
        const uint64_t contTwice = cont & (cont << 1);
        const uint64_t lowSurrogates = lead4 << 3;
        const __m512i low = longerUnits(twoByteUnits(p0Low, p1Low, static_cast<uint32_t>(cont)), p0Low, p1Low, p2Low,
                                        static_cast<uint32_t>(contTwice), static_cast<uint32_t>(lowSurrogates),
                                        static_cast<uint32_t>(highSurrogates), surrogates);
        const __m512i high =
            longerUnits(twoByteUnits(p0High, p1High, static_cast<uint32_t>(cont >> 32)), p0High, p1High, p2High,
                        static_cast<uint32_t>(contTwice >> 32), static_cast<uint32_t>(lowSurrogates >> 32),
                        static_cast<uint32_t>(highSurrogates >> 32), surrogates);
        const uint32_t emittedLow = static_cast<uint32_t>(emitted);
        const uint32_t emittedHigh = static_cast<uint32_t>(emitted >> 32);
        _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi16(emittedLow, low));
        op += static_cast<int32_t>(_mm_popcnt_u32(emittedLow));
        _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi16(emittedHigh, high));
        op += static_cast<int32_t>(_mm_popcnt_u32(emittedHigh));
        ip += 60;
        carried = ~0ull;
    }
    finish();
}

namespace {

// 16-bit lane i holds the index of lane i + step (the edge lane repeated).
constexpr Vector laneShifted(int step)
{
    Vector v{};
    for (int lane = 0; lane < 32; ++lane) {
        const int from = lane + step < 0 ? 0 : lane + step > 31 ? 31 : lane + step;
        v.quads[lane / 4] |= uint64_t(from) << (16 * (lane % 4));
    }
    return v;
}

// The encoding loop's constant vectors. It keeps more of them than the
// compiler will hold in registers when it sees their values: it then builds
// each one again from an immediate inside the loop at every use (two
// instructions each), which cost text with emoji 40% and East Asian text a
// tenth. Reached through a volatile pointer, their values are unknown to the
// compiler, which then loads them once, before the loop.
struct EncodeConstants {
    Vector belowTwo = repeat16(0x80);
    Vector belowThree = repeat16(0x800);
    Vector surrogateTag = repeat16(0xFC00);
    Vector highTag = repeat16(0xD800);
    Vector lowTag = repeat16(0xDC00);
    Vector lowSixBits = repeat16(0x3F);
    Vector twoByteTags = repeat16(0x80C0);
    // vpermw indices of the next and the previous unit.
    Vector next = laneShifted(1);
    Vector previous = laneShifted(-1);
    // vpmultishiftqb bit offsets of the bytes of both 32-bit lanes of each
    // quadword: the value bits from 18, 12, 6 and 0 up for the four-byte
    // form, from 12, 6 and 0 up for the three-byte one; of the four 16-bit
    // lanes, from 6 and 0 up for the two-byte form (a low surrogate's lane
    // takes the same bits) and from 8 and 2 up for a high surrogate.
    Vector fourStarts = repeat64(0x20262C3200060C12);
    Vector threeStarts = repeat64(0x2020262C0000060C);
    Vector twoStarts = repeat64(0x3036202610160006);
    Vector highStarts = repeat64(0x3238222812180208);
    Vector sixBitsPerByte = repeat16(0x3F3F);
    Vector highTags = repeat16(0x80F0);
    Vector lowTags = repeat16(0x8080);
    Vector lowTenBits = repeat16(0x3FF);
    Vector highBias = repeat16(0xD7C0);
    // (0xD800 << 10) + 0xDC00 - 0x10000
    Vector pairBias = repeat32(0x35FDC00);
    Vector fourBits = repeat32(0x3F3F3F07);
    Vector fourTags = repeat32(0x808080F0);
    Vector threeBits = repeat32(0x003F3F0F);
    Vector threeTags = repeat32(0x008080E0);
    // Or-ed into a continuation-tagged byte (80 | x) that leads a shorter
    // character: x is below 20 there, so it becomes C0 | x; in the four-byte
    // form, with x below 10 in the second byte, E0 | x.
    Vector twoLeadInSecond = repeat32(0x4000);
    Vector twoLeadInThird = repeat32(0x400000);
    Vector threeLeadInSecond = repeat32(0x6000);
};

constexpr EncodeConstants encodeConstants{};
const EncodeConstants* volatile g_encodeConstants = &encodeConstants;

} // namespace

// Thirty-two units at a time. An all-ASCII block is narrowed, a block below
// 0x800 packs each unit's one- or two-byte form from its 16-bit lane, and so
// does a block of pairs among such characters (a pair's four bytes fill its
// two lanes). Otherwise every unit is widened to a 32-bit lane that holds its
// UTF-8 bytes: in a block without surrogates (East Asian text) the
// three-byte form, of which a two-byte character keeps the last two bytes
// and ASCII its own; in a block with pairs the four-byte form of every lane
// (a high surrogate that of the pair, the low surrogate none), of which the
// shorter characters keep the last three or two bytes. The bytes that count
// are packed together (vpcompressb). A block with a lone surrogate is left
// to the careful step; a pair cut by the end of the block is left to the
// next block. Which bytes each lane writes comes from the masks alone
// (pdep), so the stores of the next half and block need not wait for the
// forms.
void encodeBlocksAvx512(const char16_t* in, int32_t& inPos, int32_t inEnd, uint8_t* out, int32_t& outPos,
                        int32_t outEnd)
{
    // Positions in locals, as in decoding.
    int32_t ip = inPos;
    int32_t op = outPos;
    const EncodeConstants& k = *g_encodeConstants;
    auto load = [](const Vector& v) { return _mm512_load_si512(v.quads); };
    const __m512i belowTwo = load(k.belowTwo);
    const __m512i belowThree = load(k.belowThree);
    const __m512i surrogateTag = load(k.surrogateTag);
    const __m512i highTag = load(k.highTag);
    const __m512i lowTag = load(k.lowTag);
    const __m512i lowSixBits = load(k.lowSixBits);
    const __m512i twoByteTags = load(k.twoByteTags);
    const __m512i next = load(k.next);
    const __m512i previous = load(k.previous);
    const __m512i fourStarts = load(k.fourStarts);
    const __m512i threeStarts = load(k.threeStarts);
    const __m512i twoStarts = load(k.twoStarts);
    const __m512i highStarts = load(k.highStarts);
    const __m512i sixBitsPerByte = load(k.sixBitsPerByte);
    const __m512i highTags = load(k.highTags);
    const __m512i lowTags = load(k.lowTags);
    const __m512i lowTenBits = load(k.lowTenBits);
    const __m512i highBias = load(k.highBias);
    const __m512i pairBias = load(k.pairBias);
    const __m512i fourBits = load(k.fourBits);
    const __m512i fourTags = load(k.fourTags);
    const __m512i threeBits = load(k.threeBits);
    const __m512i threeTags = load(k.threeTags);
    const __m512i twoLeadInSecond = load(k.twoLeadInSecond);
    const __m512i twoLeadInThird = load(k.twoLeadInThird);
    const __m512i threeLeadInSecond = load(k.threeLeadInSecond);
    while (inEnd - ip >= 32 && outEnd - op >= 128) {
        const __m512i u = _mm512_loadu_si512(in + ip);
        const uint32_t ascii = _mm512_cmplt_epu16_mask(u, belowTwo);
        if (ascii == ~0u) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + op), _mm512_cvtepi16_epi8(u));
            ip += 32;
            op += 32;
            continue;
        }
        const uint32_t below800 = _mm512_cmplt_epu16_mask(u, belowThree);
        if (below800 == ~0u) {
            // ASCII and two-byte characters (European text): each unit's
            // two-byte form, or itself where it is ASCII, in its own 16-bit
            // lane, and only the first byte of the ASCII lanes kept.
            const __m512i two = _mm512_or_si512(_mm512_or_si512(twoByteTags, _mm512_srli_epi16(u, 6)),
                                                _mm512_slli_epi16(_mm512_and_si512(u, lowSixBits), 8));
            const __m512i forms = _mm512_mask_mov_epi16(two, ascii, u);
            const uint64_t usedBytes = _pdep_u64(~ascii, 0xAAAAAAAAAAAAAAAAull) | 0x5555555555555555ull;
            _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, forms));
            op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
            ip += 32;
            continue;
        }
        const __m512i tag = _mm512_and_si512(u, surrogateTag);
        uint32_t highs = _mm512_cmpeq_epi16_mask(tag, highTag);
        const uint32_t lows = _mm512_cmpeq_epi16_mask(tag, lowTag);
        const uint32_t twoByte = below800 & ~ascii;
        if ((highs | lows) == 0) {
            // Characters of up to three bytes. No branch on whether a half
            // is all three-byte characters (most halves of East Asian text,
            // which could then be stored in a fixed order): with some ASCII
            // in the text that branch is data no predictor learns, and once
            // the input streamed from memory each miss cost more than the
            // fixed order saved.
            for (int half = 0; half < 2; ++half) {
                const int shift = 16 * half;
                const __m512i c =
                    _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(u) : _mm512_extracti64x4_epi64(u, 1));
                const __mmask16 one = static_cast<__mmask16>(ascii >> shift);
                const __mmask16 two = static_cast<__mmask16>(twoByte >> shift);
                __m512i bytes =
                    _mm512_ternarylogic_epi32(_mm512_multishift_epi64_epi8(threeStarts, c), threeBits, threeTags, 0xEA);
                bytes = _mm512_mask_or_epi32(bytes, two, bytes, twoLeadInSecond);
                bytes = _mm512_mask_mov_epi32(bytes, one, c);
                // Byte 0: ASCII and the lead of three; bytes 1 and 2: all but ASCII.
                const uint64_t second = _pdep_u64(~one & 0xFFFFu, 0x2222222222222222ull);
                const uint64_t usedBytes = _pdep_u64(~two & 0xFFFFu, 0x1111111111111111ull) | second | (second << 1);
                _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, bytes));
                op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
            }
            ip += 32;
            continue;
        }
        if ((highs << 1) != lows) {
            break;
        }
        // A pair cut by the end of the block waits for the next one; its
        // high surrogate, like every low one, writes nothing here. A branch,
        // not arithmetic: predicted, it lets the next load start before this
        // block's classification is known.
        int length = 32;
        uint32_t silent = lows;
        if ((highs >> 31) != 0) {
            length = 31;
            highs &= 0x7FFFFFFFu;
            silent |= 0x80000000u;
        }
        const uint32_t threeByte = ~below800 & ~(highs | silent);
        if (threeByte == 0) {
            // Pairs among ASCII and two-byte characters (text with emoji):
            // every character's bytes fit the 16-bit lanes of its units, a
            // pair's four in its two, so the block is built where it lies.
            // A high surrogate's lane holds bits 18 and 12 up of the code
            // point, which are those of high - 0xD7C0 from 8 and 2 up; a low
            // surrogate's the two-byte form of its value bits below the two
            // lowest bits of the high surrogate.
            const __m512i before = _mm512_permutexvar_epi16(previous, u);
            const __m512i lowWithHigh = _mm512_ternarylogic_epi32(u, lowTenBits, _mm512_slli_epi16(before, 10), 0xEA);
            __m512i source = _mm512_mask_mov_epi16(u, lows, lowWithHigh);
            source = _mm512_mask_sub_epi16(source, highs, u, highBias);
            const __m512i starts = _mm512_mask_mov_epi16(twoStarts, highs, highStarts);
            __m512i tags = _mm512_mask_mov_epi16(twoByteTags, highs, highTags);
            tags = _mm512_mask_mov_epi16(tags, lows, lowTags);
            __m512i forms =
                _mm512_ternarylogic_epi32(_mm512_multishift_epi64_epi8(starts, source), sixBitsPerByte, tags, 0xEA);
            forms = _mm512_mask_mov_epi16(forms, ascii, u);
            const uint32_t spoken = ~(silent & ~lows);
            const uint64_t usedBytes =
                _pdep_u64(spoken, 0x5555555555555555ull) | _pdep_u64(spoken & ~ascii, 0xAAAAAAAAAAAAAAAAull);
            _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, forms));
            op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
            ip += length;
            continue;
        }
        const __m512i following = _mm512_permutexvar_epi16(next, u);
        for (int half = 0; half < 2; ++half) {
            const int shift = 16 * half;
            const __m512i c =
                _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(u) : _mm512_extracti64x4_epi64(u, 1));
            const __m512i d = _mm512_cvtepu16_epi32(half == 0 ? _mm512_castsi512_si256(following)
                                                              : _mm512_extracti64x4_epi64(following, 1));
            const __mmask16 h = static_cast<__mmask16>(highs >> shift);
            const __mmask16 one = static_cast<__mmask16>(ascii >> shift);
            const __mmask16 two = static_cast<__mmask16>(twoByte >> shift);
            const __mmask16 three = static_cast<__mmask16>(threeByte >> shift);
            // (high << 10) + low - (0xD800 << 10) - 0xDC00 + 0x10000
            const __m512i cp = _mm512_mask_add_epi32(c, h, _mm512_slli_epi32(c, 10), _mm512_sub_epi32(d, pairBias));
            __m512i bytes =
                _mm512_ternarylogic_epi32(_mm512_multishift_epi64_epi8(fourStarts, cp), fourBits, fourTags, 0xEA);
            bytes = _mm512_mask_or_epi32(bytes, three, bytes, threeLeadInSecond);
            bytes = _mm512_mask_or_epi32(bytes, two, bytes, twoLeadInThird);
            bytes = _mm512_mask_mov_epi32(bytes, one, c);
            // Byte 0: the pairs and ASCII; byte 1: the pairs and the leads of
            // three; bytes 2 and 3: every lane that writes, but ASCII.
            const uint32_t spoken = ~(silent >> shift) & 0xFFFFu;
            const uint64_t third = _pdep_u64(spoken & ~one, 0x4444444444444444ull);
            const uint64_t usedBytes = _pdep_u64(h | one, 0x1111111111111111ull) |
                                       _pdep_u64(h | three, 0x2222222222222222ull) | third | (third << 1);
            _mm512_storeu_si512(out + op, _mm512_maskz_compress_epi8(usedBytes, bytes));
            op += static_cast<int32_t>(_mm_popcnt_u64(usedBytes));
        }
        ip += length;
    }
    inPos = ip;
    outPos = op;
}

// The entry points. The block loops above have external linkage so that
// the compiler keeps them out of line: inlined after the call to the ASCII
// run, the encoding loop was laid out differently and lost 4% on East Asian
// text (and with the call in the drivers instead, the drivers' layout cost
// English encoding in the caches 6%).
void decodeUtf8Avx512(const uint8_t* in, int32_t& inPos, int32_t inEnd, char16_t* out, int32_t& outPos, int32_t outEnd)
{
    if (inEnd - inPos > asciiStreamedMinimum) {
        decodeAsciiStreamed(in, inPos, inEnd, out, outPos, outEnd);
    }
    decodeBlocksAvx512(in, inPos, inEnd, out, outPos, outEnd);
}

void encodeUtf8Avx512(const char16_t* in, int32_t& inPos, int32_t inEnd, uint8_t* out, int32_t& outPos, int32_t outEnd)
{
    if (inEnd - inPos > asciiStreamedMinimum) {
        encodeAsciiStreamed(in, inPos, inEnd, out, outPos, outEnd);
    }
    encodeBlocksAvx512(in, inPos, inEnd, out, outPos, outEnd);
}

} // namespace qv::text::charset::detail

#endif
