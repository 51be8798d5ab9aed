#include <qv/text/charset/CTBUTF8.h>
#include <qv/text/charset/SimdLevel.h>

#include <cstring>

#include "ConverterSupport.h"
#include "Simd.h"
#include "Utf8Kernels.h"

namespace qv::text::charset {

namespace {

#if QVCL3_CHARSET_SSE2
// One character of a non-ASCII run with little-endian multi-byte stores
// (x86 only), given two units of input and four bytes of output; false for
// anything else.
inline bool encodeCharacter(const char16_t* in, int32_t& ip, uint8_t* out, int32_t& op)
{
    const uint32_t c = in[ip];
    if (c < 0x800) {
        const uint16_t bytes = static_cast<uint16_t>((0xC0 | (c >> 6)) | ((0x80 | (c & 0x3F)) << 8));
        std::memcpy(out + op, &bytes, 2);
        op += 2;
        ++ip;
        return true;
    }
    if (!detail::isSurrogate(c)) {
        const uint32_t bytes = (0xE0 | (c >> 12)) | ((0x80 | ((c >> 6) & 0x3F)) << 8) | ((0x80 | (c & 0x3F)) << 16);
        std::memcpy(out + op, &bytes, 4);
        op += 3;
        ++ip;
        return true;
    }
    if (!detail::isHighSurrogate(c) || !detail::isLowSurrogate(in[ip + 1])) {
        return false;
    }
    const uint32_t cp = detail::combineSurrogates(c, in[ip + 1]);
    const uint32_t bytes = (0xF0 | (cp >> 18)) | ((0x80 | ((cp >> 12) & 0x3F)) << 8) |
                           ((0x80 | ((cp >> 6) & 0x3F)) << 16) | ((0x80 | (cp & 0x3F)) << 24);
    std::memcpy(out + op, &bytes, 4);
    op += 4;
    ip += 2;
    return true;
}

// Four units below 0800, one or two bytes each, written without branching
// on which; returns how many took two bytes, or -1 (nothing written) when a
// unit is 0800 or above. Needs eight bytes of room.
inline int encodeTwoByteQuad(const char16_t* in, uint8_t* out, int32_t& op)
{
    uint64_t units;
    std::memcpy(&units, in, sizeof units);
    if ((units & 0xF800F800F800F800ull) != 0) {
        return -1;
    }
    int twoByte = 0;
    for (int k = 0; k < 4; ++k) {
        const uint32_t c = static_cast<uint32_t>(units >> (16 * k)) & 0xFFFF;
        const uint32_t wide = c >= 0x80 ? 1 : 0;
        const uint16_t bytes = static_cast<uint16_t>(wide != 0 ? (0xC0 | (c >> 6)) | ((0x80 | (c & 0x3F)) << 8) : c);
        std::memcpy(out + op, &bytes, 2);
        op += 1 + static_cast<int32_t>(wide);
        twoByte += static_cast<int>(wide);
    }
    return twoByte;
}

constexpr int crowded = -2;

// Sixteen units below 0800 of which at most four are above 007F (European
// text): the ASCII is packed around the two-byte characters without
// branching on where they are. Reads 33 units and writes up to 37 bytes.
// Returns the number of two-byte characters, or without consuming anything
// -1 for a unit of 0800 or above and `crowded` for more than four two-byte
// characters.
inline int encodeLatinBlock(const char16_t* in, uint8_t* out, int32_t& op)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 8));
    const __m128i high = _mm_set1_epi16(static_cast<short>(0xF800));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(a, b), high), zero)) != 0xFFFF) {
        return -1;
    }
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i asciiA = _mm_cmpeq_epi16(_mm_and_si128(a, nonAscii), zero);
    const __m128i asciiB = _mm_cmpeq_epi16(_mm_and_si128(b, nonAscii), zero);
    const uint32_t wide = ~static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(asciiA, asciiB))) & 0xFFFF;
    const uint32_t w1 = wide & (wide - 1);
    const uint32_t w2 = w1 & (w1 - 1);
    const uint32_t w3 = w2 & (w2 - 1);
    if ((w3 & (w3 - 1)) != 0) {
        return crowded;
    }
    // Every unit's two-byte form, worked out together; a missing character
    // counts as sitting at 16, and what is written for it lies past the end
    // of the block's output, to be overwritten later.
    uint16_t two[24];
    const __m128i lead = _mm_set1_epi16(static_cast<short>(0x80C0));
    const __m128i low6 = _mm_set1_epi16(0x3F);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(two),
                     _mm_or_si128(lead, _mm_or_si128(_mm_srli_epi16(a, 6), _mm_slli_epi16(_mm_and_si128(a, low6), 8))));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(two + 8),
                     _mm_or_si128(lead, _mm_or_si128(_mm_srli_epi16(b, 6), _mm_slli_epi16(_mm_and_si128(b, low6), 8))));
    two[16] = 0;
    const int j[4] = {detail::lowestBit(wide | 0x10000u), detail::lowestBit(w1 | 0x10000u),
                      detail::lowestBit(w2 | 0x10000u), detail::lowestBit(w3 | 0x10000u)};
    uint8_t* o = out + op;
    auto ascii = [](const char16_t* from, uint8_t* to) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(x, y));
    };
    ascii(in, o);
    for (int k = 0; k < 4; ++k) {
        std::memcpy(o + j[k] + k, &two[j[k]], 2);
        ascii(in + j[k] + 1, o + j[k] + k + 2);
    }
    const int count = (j[0] < 16 ? 1 : 0) + (j[1] < 16 ? 1 : 0) + (j[2] < 16 ? 1 : 0) + (j[3] < 16 ? 1 : 0);
    op += 16 + count;
    return count;
}

// Sixteen units of ASCII and at most two surrogate pairs lying wholly
// inside them (text with emoji), written without branching on where the
// pairs are. Reads 34 units and writes up to 40 bytes. Returns the number
// of pairs, or -1 (nothing consumed) when the block does not qualify.
inline int encodePairBlock(const char16_t* in, uint8_t* out, int32_t& op)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 8));
    auto lanes = [](__m128i x, __m128i y) { return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(x, y))); };
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i tenBits = _mm_set1_epi16(static_cast<short>(0xFC00));
    const __m128i highTag = _mm_set1_epi16(static_cast<short>(0xD800));
    const __m128i lowTag = _mm_set1_epi16(static_cast<short>(0xDC00));
    const uint32_t ascii =
        lanes(_mm_cmpeq_epi16(_mm_and_si128(a, nonAscii), zero), _mm_cmpeq_epi16(_mm_and_si128(b, nonAscii), zero));
    const uint32_t highs =
        lanes(_mm_cmpeq_epi16(_mm_and_si128(a, tenBits), highTag), _mm_cmpeq_epi16(_mm_and_si128(b, tenBits), highTag));
    const uint32_t lows =
        lanes(_mm_cmpeq_epi16(_mm_and_si128(a, tenBits), lowTag), _mm_cmpeq_epi16(_mm_and_si128(b, tenBits), lowTag));
    const uint32_t second = highs & (highs - 1);
    if ((ascii | highs | lows) != 0xFFFF || lows != highs << 1 || (second & (second - 1)) != 0) {
        return -1;
    }
    // A missing pair counts as sitting at 16; what is written for it lies
    // past the end of the block's output, to be overwritten later.
    const int j[2] = {detail::lowestBit(highs | 0x10000u), detail::lowestBit(second | 0x10000u)};
    uint8_t* o = out + op;
    auto asciiRun = [](const char16_t* from, uint8_t* to) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(x, y));
    };
    asciiRun(in, o);
    for (int k = 0; k < 2; ++k) {
        const uint32_t plane = (in[j[k]] & 0x3FFu) + 0x40;
        const uint32_t low = in[j[k] + 1];
        const uint32_t bytes = (0xF0 | (plane >> 8)) | ((0x80 | ((plane >> 2) & 0x3F)) << 8) |
                               ((0x80 | ((plane & 3) << 4) | ((low >> 6) & 0x0F)) << 16) |
                               ((0x80 | (low & 0x3F)) << 24);
        std::memcpy(o + j[k] + 2 * k, &bytes, 4);
        asciiRun(in + j[k] + 2, o + j[k] + 2 * k + 4);
    }
    const int count = (j[0] < 16 ? 1 : 0) + (j[1] < 16 ? 1 : 0);
    op += 16 + 2 * count;
    return count;
}

// Sixteen units of mostly ASCII with two-byte characters or surrogate pairs
// among them (the bit of each non-ASCII unit set in nonAscii): the ASCII runs
// are packed sixteen at a time, every other character is encoded on its own.
// Reads up to 32 units and writes up to 64 bytes; false, with the positions
// where they were, for something the careful step must see.
inline bool encodeMixedBlock(const char16_t* in, int32_t& ip, uint8_t* out, int32_t& op, uint32_t nonAscii)
{
    int32_t i = 0;
    int32_t o = op;
    while (nonAscii != 0) {
        const int32_t j = detail::lowestBit(nonAscii);
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + i + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_packus_epi16(a, b));
        o += j - i;
        int32_t k = ip + j;
        if (!encodeCharacter(in, k, out, o)) {
            return false;
        }
        i = k - ip;
        nonAscii &= ~((1u << i) - 1);
    }
    if (i < 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + i + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_packus_epi16(a, b));
        o += 16 - i;
        i = 16;
    }
    ip += i;
    op = o;
    return true;
}

// Up to eight units of 0800-FFFF without surrogates, the bulk of East
// Asian text, to three bytes each; returns how many were encoded (at least
// one: the caller checks the first). Writes up to 26 bytes.
inline int encodeThreeByteRun(const char16_t* in, uint8_t* out)
{
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i top = _mm_srli_epi16(units, 11);
    const __m128i other =
        _mm_or_si128(_mm_cmpeq_epi16(top, _mm_setzero_si128()), _mm_cmpeq_epi16(top, _mm_set1_epi16(0x1B)));
    const uint32_t mask = static_cast<uint32_t>(_mm_movemask_epi8(other));
    // Two units per quadword, turned into their six bytes by shifts and masks.
    const __m128i zero = _mm_setzero_si128();
    const __m128i lead = _mm_set1_epi64x(0x00008080E08080E0ll);
    const __m128i pairs[2] = {_mm_unpacklo_epi32(units, zero), _mm_unpackhi_epi32(units, zero)};
    for (int i = 0; i < 2; ++i) {
        const __m128i x = pairs[i];
        __m128i bytes = _mm_or_si128(lead, _mm_and_si128(_mm_srli_epi64(x, 12), _mm_set1_epi64x(0x0F)));
        bytes = _mm_or_si128(bytes, _mm_and_si128(_mm_slli_epi64(x, 2), _mm_set1_epi64x(0x3F00)));
        bytes = _mm_or_si128(bytes, _mm_and_si128(_mm_slli_epi64(x, 16), _mm_set1_epi64x(0x3F0000)));
        bytes = _mm_or_si128(bytes, _mm_and_si128(_mm_srli_epi64(x, 4), _mm_set1_epi64x(0x0F000000)));
        bytes = _mm_or_si128(bytes, _mm_and_si128(_mm_slli_epi64(x, 10), _mm_set1_epi64x(0x3F00000000ll)));
        bytes = _mm_or_si128(bytes, _mm_and_si128(_mm_slli_epi64(x, 24), _mm_set1_epi64x(0x3F0000000000ll)));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 12 * i), bytes);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 12 * i + 6), _mm_unpackhi_epi64(bytes, bytes));
    }
    return mask == 0 ? 8 : detail::lowestBit(mask) / 2;
}

// Sixteen units at a time, packed and stored before looking at them: the
// bytes past the ASCII prefix are rewritten by what follows. European text,
// text with emoji and East Asian text stay in blocks of their own. False
// when a character needs the careful step.
inline bool encodeVectorBlocks(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op,
                               int32_t outEnd)
{
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    while (inEnd - ip >= 16 && outEnd - op >= 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_packus_epi16(a, b));
        const __m128i asciiA = _mm_cmpeq_epi16(_mm_and_si128(a, nonAscii), zero);
        const __m128i asciiB = _mm_cmpeq_epi16(_mm_and_si128(b, nonAscii), zero);
        const uint32_t mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(asciiA, asciiB)));
        if (mask == 0xFFFF) {
            ip += 16;
            op += 16;
            continue;
        }
        const int ascii = detail::lowestBit(~mask);
        const uint32_t first = in[ip + ascii];
        if (first < 0x800 && inEnd - ip >= 48 && outEnd - op >= 48) {
            // European text: stay with blocks of sixteen units while
            // they hold few enough two-byte characters and some at all.
            const int32_t start = ip;
            int plainBlocks = 0;
            while (inEnd - ip >= 48 && outEnd - op >= 48 && plainBlocks < 2) {
                int twoByte = encodeLatinBlock(in + ip, out, op);
                if (twoByte == crowded) {
                    twoByte = 0;
                    for (int k = 0; k < 16; k += 4) {
                        twoByte += encodeTwoByteQuad(in + ip + k, out, op);
                    }
                }
                if (twoByte < 0) {
                    break;
                }
                ip += 16;
                plainBlocks = twoByte == 0 ? plainBlocks + 1 : 0;
            }
            if (ip != start) {
                continue;
            }
        }
        if (detail::isHighSurrogate(first) && inEnd - ip >= 48 && outEnd - op >= 48) {
            // Text with emoji: blocks of sixteen units with up to two
            // surrogate pairs among ASCII.
            const int32_t start = ip;
            int plainBlocks = 0;
            while (inEnd - ip >= 48 && outEnd - op >= 48 && plainBlocks < 2) {
                const int pairs = encodePairBlock(in + ip, out, op);
                if (pairs < 0) {
                    break;
                }
                ip += 16;
                plainBlocks = pairs == 0 ? plainBlocks + 1 : 0;
            }
            if (ip != start) {
                continue;
            }
        }
        if (inEnd - ip >= 32 && outEnd - op >= 64 && (first < 0x800 || detail::isSurrogate(first))) {
            if (encodeMixedBlock(in, ip, out, op, ~mask & 0xFFFF)) {
                continue;
            }
            break;
        }
        ip += ascii;
        op += ascii;
        bool stuck = false;
        while (inEnd - ip >= 2 && outEnd - op >= 4) {
            const uint32_t c = in[ip];
            if (c >= 0x800 && !detail::isSurrogate(c) && inEnd - ip >= 8 && outEnd - op >= 32) {
                const int n = encodeThreeByteRun(in + ip, out + op);
                ip += n;
                op += 3 * n;
                continue;
            }
            if (c < 0x800 && inEnd - ip >= 4 && outEnd - op >= 8) {
                // Latin text: a quad of ASCII and two-byte characters; a
                // quad of ASCII alone goes back to the blocks.
                const int twoByte = encodeTwoByteQuad(in + ip, out, op);
                if (twoByte >= 0) {
                    ip += 4;
                    if (twoByte == 0) {
                        break;
                    }
                    continue;
                }
            }
            if (c < 0x80) {
                out[op++] = static_cast<uint8_t>(c);
                ++ip;
                continue;
            }
            if (!encodeCharacter(in, ip, out, op)) {
                stuck = true;
                break;
            }
        }
        if (stuck) {
            break;
        }
    }
    return true;
}
#endif

// Runs of non-ASCII characters with room for the longest one; with vector
// blocks, a return to ASCII goes back to them.
inline void encodeScalarRun(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd,
                            bool vectorBlocks)
{
    while (ip < inEnd && outEnd - op >= 4) {
        uint32_t c = in[ip];
        if (c < 0x80) {
            out[op++] = static_cast<uint8_t>(c);
            ++ip;
            // Back to the blocks only when a whole one is left: a short
            // tail costs less here than a round through every block kind.
            if (vectorBlocks && inEnd - ip >= 16 && in[ip] < 0x80) {
                break;
            }
            continue;
        }
        int32_t units = 1;
        if (detail::isSurrogate(c)) {
            if (!detail::isHighSurrogate(c) || inEnd - ip < 2 || !detail::isLowSurrogate(in[ip + 1])) {
                break;
            }
            c = detail::combineSurrogates(c, in[ip + 1]);
            units = 2;
        }
        op += detail::encodeUtf8(c, out + op);
        ip += units;
    }
}

// The low half of a pair whose high half ended the last call's input.
// False when the character does not fit.
template <typename State>
bool finishPair(detail::Conversion<State>& c, const char16_t* in, uint8_t* out, int32_t outEnd)
{
    const uint32_t low = in[c.ip];
    if (!detail::isLowSurrogate(low)) {
        detail::throwLoneHighSurrogate();
    }
    uint8_t bytes[4];
    if (!detail::putWhole(bytes, detail::encodeUtf8(detail::combineSurrogates(c.state.high, low), bytes), out, c.op,
                          outEnd)) {
        return false;
    }
    c.state.high = 0;
    ++c.ip;
    return true;
}

// One character with every check. A high surrogate that ends the input
// waits in the state for its low half. False when the call has to stop:
// that happened, or the character does not fit (nothing is consumed).
template <typename State>
bool encodeCheckedCharacter(detail::Conversion<State>& c, const char16_t* in, int32_t inEnd, uint8_t* out,
                            int32_t outEnd)
{
    uint32_t cp = in[c.ip];
    int32_t units = 1;
    if (detail::isSurrogate(cp)) {
        if (detail::isLowSurrogate(cp)) {
            detail::throwLoneLowSurrogate();
        }
        if (c.ip + 1 == inEnd) {
            c.state.high = static_cast<char16_t>(cp);
            ++c.ip;
            return false;
        }
        if (!detail::isLowSurrogate(in[c.ip + 1])) {
            detail::throwLoneHighSurrogate();
        }
        cp = detail::combineSurrogates(cp, in[c.ip + 1]);
        units = 2;
    }
    uint8_t bytes[4];
    if (!detail::putWhole(bytes, detail::encodeUtf8(cp, bytes), out, c.op, outEnd)) {
        return false;
    }
    c.ip += units;
    return true;
}

} // namespace

CTBUTF8::CTBUTF8() : m_state{0} {}

int32_t CTBUTF8::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes, int32_t* outPos,
                         int32_t outEnd)
{
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
#if QVCL3_CHARSET_SSE2
    const SimdLevel level = getUtf8SimdLevel();
    const bool vectorBlocks = level != SimdLevel::Scalar;
#else
    const bool vectorBlocks = false;
#endif
    return detail::runConversion(
        m_state, in, inPos, inEnd, outBytes, outPos, outEnd, [&](detail::Conversion<State>& c) {
            if (c.state.high != 0 && (c.ip == inEnd || c.op == outEnd || !finishPair(c, in, out, outEnd))) {
                return;
            }
            while (c.ip < inEnd && c.op < outEnd) {
#if QVCL3_CHARSET_SSE2
                if (level == SimdLevel::Avx512) {
                    detail::encodeUtf8Avx512(in, c.ip, inEnd, out, c.op, outEnd);
                } else if (level == SimdLevel::Avx2) {
                    detail::encodeUtf8Avx2(in, c.ip, inEnd, out, c.op, outEnd);
                }
                if (!vectorBlocks || encodeVectorBlocks(in, c.ip, inEnd, out, c.op, outEnd))
#endif
                {
                    encodeScalarRun(in, c.ip, inEnd, out, c.op, outEnd, vectorBlocks);
                }
                if (c.ip >= inEnd || c.op >= outEnd || !encodeCheckedCharacter(c, in, inEnd, out, outEnd)) {
                    break;
                }
            }
        });
}

int32_t CTBUTF8::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    return 0;
}

void CTBUTF8::reset()
{
    m_state = State{0};
}

const char16_t* CTBUTF8::getEncodingName()
{
    return u"UTF-8";
}

int CTBUTF8::getMaxBytesPerChar()
{
    return 3;
}

int CTBUTF8::getMaxCharsPerByte()
{
    return 1;
}

} // namespace qv::text::charset
