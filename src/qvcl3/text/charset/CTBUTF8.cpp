#include <qv/text/charset/CTBUTF8.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

// Room for one byte is guaranteed; the rest of the character waits.
template <typename State>
int32_t putCodePoint(uint32_t cp, State& s, uint8_t* out, int32_t op, int32_t outEnd)
{
    uint8_t bytes[4];
    int n;
    if (cp < 0x80) {
        bytes[0] = static_cast<uint8_t>(cp);
        n = 1;
    } else if (cp < 0x800) {
        bytes[0] = static_cast<uint8_t>(0xC0 | (cp >> 6));
        bytes[1] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
        n = 2;
    } else if (cp < 0x10000) {
        bytes[0] = static_cast<uint8_t>(0xE0 | (cp >> 12));
        bytes[1] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
        bytes[2] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
        n = 3;
    } else {
        bytes[0] = static_cast<uint8_t>(0xF0 | (cp >> 18));
        bytes[1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
        bytes[2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
        bytes[3] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
        n = 4;
    }
    return detail::putBytes(bytes, n, s, out, op, outEnd);
}

} // namespace

CTBUTF8::CTBUTF8() : m_state{0, 0, {0, 0, 0}}
{
}

int32_t CTBUTF8::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes, int32_t* outPos,
                         int32_t outEnd)
{
    detail::checkConvertArguments(in, inPos, inEnd, outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    State s = m_state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    op = detail::drainHeldBytes(s, out, op, outEnd);
    if (s.heldCount == 0 && s.high != 0 && ip < inEnd && op < outEnd) {
        const uint32_t c = in[ip];
        if (!detail::isLowSurrogate(c)) {
            detail::throwLoneHighSurrogate();
        }
        ++ip;
        op = putCodePoint(detail::combineSurrogates(s.high, c), s, out, op, outEnd);
        s.high = 0;
    }

    while (s.heldCount == 0 && s.high == 0 && ip < inEnd && op < outEnd) {
#if QVCL3_CHARSET_SSE2
        const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
        const __m128i zero = _mm_setzero_si128();
        while (inEnd - ip >= 16 && outEnd - op >= 16) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + 8));
            const __m128i asciiA = _mm_cmpeq_epi16(_mm_and_si128(a, nonAscii), zero);
            const __m128i asciiB = _mm_cmpeq_epi16(_mm_and_si128(b, nonAscii), zero);
            const uint32_t mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(asciiA, asciiB)));
            if (mask == 0xFFFF) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_packus_epi16(a, b));
                ip += 16;
                op += 16;
                continue;
            }
            int ascii = detail::lowestBit(~mask);
            if (ascii >= 8) {
                _mm_storel_epi64(reinterpret_cast<__m128i*>(out + op), _mm_packus_epi16(a, a));
                ip += 8;
                op += 8;
                ascii -= 8;
            }
            for (; ascii > 0; --ascii) {
                out[op++] = static_cast<uint8_t>(in[ip++]);
            }
            break;
        }
#endif
        // Runs of non-ASCII characters with room for the longest one.
        while (ip < inEnd && outEnd - op >= 4) {
            const uint32_t c = in[ip];
            if (c < 0x80) {
                out[op++] = static_cast<uint8_t>(c);
                ++ip;
#if QVCL3_CHARSET_SSE2
                if (ip < inEnd && in[ip] < 0x80) {
                    break;
                }
#endif
                continue;
            }
            if (c < 0x800) {
                out[op] = static_cast<uint8_t>(0xC0 | (c >> 6));
                out[op + 1] = static_cast<uint8_t>(0x80 | (c & 0x3F));
                op += 2;
                ++ip;
                continue;
            }
            if (!detail::isSurrogate(c)) {
                out[op] = static_cast<uint8_t>(0xE0 | (c >> 12));
                out[op + 1] = static_cast<uint8_t>(0x80 | ((c >> 6) & 0x3F));
                out[op + 2] = static_cast<uint8_t>(0x80 | (c & 0x3F));
                op += 3;
                ++ip;
                continue;
            }
            if (!detail::isHighSurrogate(c) || inEnd - ip < 2 || !detail::isLowSurrogate(in[ip + 1])) {
                break;
            }
            const uint32_t cp = detail::combineSurrogates(c, in[ip + 1]);
            out[op] = static_cast<uint8_t>(0xF0 | (cp >> 18));
            out[op + 1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
            out[op + 2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
            out[op + 3] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
            op += 4;
            ip += 2;
        }
        if (ip >= inEnd || op >= outEnd) {
            break;
        }

        // One character with every check.
        uint32_t cp = in[ip];
        if (detail::isSurrogate(cp)) {
            if (detail::isLowSurrogate(cp)) {
                detail::throwLoneLowSurrogate();
            }
            if (ip + 1 == inEnd) {
                s.high = static_cast<char16_t>(cp);
                ++ip;
                break;
            }
            if (!detail::isLowSurrogate(in[ip + 1])) {
                detail::throwLoneHighSurrogate();
            }
            cp = detail::combineSurrogates(cp, in[ip + 1]);
            ip += 2;
        } else {
            ++ip;
        }
        op = putCodePoint(cp, s, out, op, outEnd);
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t CTBUTF8::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.heldCount == 0 && m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    *outPos = detail::drainHeldBytes(m_state, reinterpret_cast<uint8_t*>(outBytes), start, outEnd);
    return *outPos - start;
}

void CTBUTF8::reset()
{
    m_state = State{0, 0, {0, 0, 0}};
}

const char16_t* CTBUTF8::getEncodingName() const
{
    return u"UTF-8";
}

int CTBUTF8::getMaxBytesPerChar() const
{
    return 3;
}

int CTBUTF8::getMaxCharsPerByte() const
{
    return 1;
}

} // namespace qv::text::charset
