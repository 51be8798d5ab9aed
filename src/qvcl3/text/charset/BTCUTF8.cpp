#include <qv/text/charset/BTCUTF8.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

// 0 for bytes that cannot begin a sequence.
inline int sequenceLength(uint32_t b0)
{
    if (b0 < 0x80) {
        return 1;
    }
    if (b0 < 0xC2) {
        return 0;
    }
    if (b0 < 0xE0) {
        return 2;
    }
    if (b0 < 0xF0) {
        return 3;
    }
    return b0 < 0xF5 ? 4 : 0;
}

// The second byte's range is what rules out overlong forms, surrogates and
// values above U+10FFFF; every later continuation byte is 80..BF.
inline void secondByteRange(uint32_t b0, uint8_t& low, uint8_t& high)
{
    low = 0x80;
    high = 0xBF;
    if (b0 == 0xE0) {
        low = 0xA0;
    } else if (b0 == 0xED) {
        high = 0x9F;
    } else if (b0 == 0xF0) {
        low = 0x90;
    } else if (b0 == 0xF4) {
        high = 0x8F;
    }
}

[[noreturn]] void throwBadLead(uint32_t b0)
{
    if (b0 < 0xC0) {
        detail::throwInvalidCharacter("Invalid UTF-8: continuation byte without a lead byte");
    }
    if (b0 < 0xC2) {
        detail::throwInvalidCharacter("Invalid UTF-8: overlong encoding");
    }
    detail::throwInvalidCharacter("Invalid UTF-8: lead byte F5-FF, value above U+10FFFF");
}

[[noreturn]] void throwBadContinuation(uint32_t b, uint8_t low, uint8_t high)
{
    if ((b & 0xC0) != 0x80) {
        detail::throwInvalidCharacter("Invalid UTF-8: truncated sequence");
    }
    if (low == 0xA0 || low == 0x90) {
        detail::throwInvalidCharacter("Invalid UTF-8: overlong encoding");
    }
    if (high == 0x9F) {
        detail::throwInvalidCharacter("Invalid UTF-8: encoded surrogate");
    }
    detail::throwInvalidCharacter("Invalid UTF-8: value above U+10FFFF");
}

// Room for one unit is guaranteed; the low half of a pair that does not fit
// is held for the next call.
inline int32_t emit(uint32_t cp, char16_t* out, int32_t op, int32_t outEnd, char16_t& held)
{
    if (cp < 0x10000) {
        out[op++] = static_cast<char16_t>(cp);
        return op;
    }
    out[op++] = detail::highSurrogateOf(cp);
    if (op < outEnd) {
        out[op++] = detail::lowSurrogateOf(cp);
    } else {
        held = detail::lowSurrogateOf(cp);
    }
    return op;
}

} // namespace

BTCUTF8::BTCUTF8() : m_state{0, 0, 0x80, 0xBF, 0}
{
}

int32_t BTCUTF8::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                         int32_t outEnd)
{
    detail::checkConvertArguments(inBytes, inPos, inEnd, out, outPos, outEnd);
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    State s = m_state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    if (s.held != 0) {
        if (op == outEnd) {
            return 0;
        }
        out[op++] = s.held;
        s.held = 0;
    }

    // A sequence begun by an earlier call.
    while (s.need != 0 && ip < inEnd) {
        if (s.need == 1 && op == outEnd) {
            break;
        }
        const uint32_t b = in[ip];
        if (b < s.low || b > s.high) {
            throwBadContinuation(b, s.low, s.high);
        }
        ++ip;
        s.bits = (s.bits << 6) | (b & 0x3Fu);
        s.low = 0x80;
        s.high = 0xBF;
        if (--s.need == 0) {
            op = emit(s.bits, out, op, outEnd, s.held);
        }
    }

    while (s.need == 0 && ip < inEnd && op < outEnd) {
#if QVCL3_CHARSET_SSE2
        const __m128i zero = _mm_setzero_si128();
        while (inEnd - ip >= 16 && outEnd - op >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
            const int mask = _mm_movemask_epi8(v);
            if (mask == 0) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op + 8), _mm_unpackhi_epi8(v, zero));
                ip += 16;
                op += 16;
                continue;
            }
            int ascii = detail::lowestBit(static_cast<uint32_t>(mask));
            if (ascii >= 8) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
                ip += 8;
                op += 8;
                ascii -= 8;
            }
            for (; ascii > 0; --ascii) {
                out[op++] = in[ip++];
            }
            break;
        }
#endif
        // Runs of multi-byte sequences, with room for the longest one on
        // both sides. Anything unusual leaves to the careful step below,
        // which also produces the error message.
        while (inEnd - ip >= 4 && outEnd - op >= 2) {
            const uint32_t b0 = in[ip];
            if (b0 < 0x80) {
                out[op++] = static_cast<char16_t>(b0);
                ++ip;
#if QVCL3_CHARSET_SSE2
                if (in[ip] < 0x80) {
                    break;
                }
#endif
                continue;
            }
            const uint32_t b1 = in[ip + 1];
            if (b0 < 0xE0) {
                if (b0 < 0xC2 || (b1 & 0xC0) != 0x80) {
                    break;
                }
                out[op++] = static_cast<char16_t>(((b0 & 0x1F) << 6) | (b1 & 0x3F));
                ip += 2;
                continue;
            }
            const uint32_t b2 = in[ip + 2];
            if (b0 < 0xF0) {
                if ((((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80)) != 0) {
                    break;
                }
                const uint32_t cp = ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
                if (cp < 0x800 || detail::isSurrogate(cp)) {
                    break;
                }
                out[op++] = static_cast<char16_t>(cp);
                ip += 3;
                continue;
            }
            const uint32_t b3 = in[ip + 3];
            if (b0 > 0xF4 || (((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80) | ((b3 & 0xC0) ^ 0x80)) != 0) {
                break;
            }
            const uint32_t cp = ((b0 & 0x07) << 18) | ((b1 & 0x3F) << 12) | ((b2 & 0x3F) << 6) | (b3 & 0x3F);
            if (cp < 0x10000 || cp > 0x10FFFF) {
                break;
            }
            out[op] = detail::highSurrogateOf(cp);
            out[op + 1] = detail::lowSurrogateOf(cp);
            op += 2;
            ip += 4;
        }
        if (ip >= inEnd || op >= outEnd) {
            break;
        }

        // One element, with every check: the ends of the buffers and errors.
        const uint32_t b0 = in[ip];
        if (b0 < 0x80) {
            out[op++] = static_cast<char16_t>(b0);
            ++ip;
            continue;
        }
        const int length = sequenceLength(b0);
        if (length == 0) {
            throwBadLead(b0);
        }
        uint8_t low;
        uint8_t high;
        secondByteRange(b0, low, high);
        uint32_t bits = b0 & (0x7Fu >> length);
        const int available = inEnd - ip < length ? inEnd - ip : length;
        for (int i = 1; i < available; ++i) {
            const uint32_t b = in[ip + i];
            if (b < low || b > high) {
                throwBadContinuation(b, low, high);
            }
            bits = (bits << 6) | (b & 0x3F);
            low = 0x80;
            high = 0xBF;
        }
        if (available < length) {
            s.bits = bits;
            s.need = static_cast<uint8_t>(length - available);
            s.low = low;
            s.high = high;
            ip = inEnd;
            break;
        }
        ip += length;
        op = emit(bits, out, op, outEnd, s.held);
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t BTCUTF8::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.need != 0) {
        detail::throwInvalidCharacter("Invalid UTF-8: truncated sequence at end of input");
    }
    if (m_state.held != 0 && *outPos < outEnd) {
        out[(*outPos)++] = m_state.held;
        m_state.held = 0;
        return 1;
    }
    return 0;
}

void BTCUTF8::reset()
{
    m_state = State{0, 0, 0x80, 0xBF, 0};
}

const char16_t* BTCUTF8::getEncodingName() const
{
    return u"UTF-8";
}

int BTCUTF8::getMaxBytesPerChar() const
{
    return 3;
}

int BTCUTF8::getMaxCharsPerByte() const
{
    return 1;
}

} // namespace qv::text::charset
