#include <qv/text/charset/BTCUTF16.h>
#include <qv/text/charset/BTCUTF16BE.h>
#include <qv/text/charset/BTCUTF16LE.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

BTCUTF16Base::BTCUTF16Base(ByteOrder order) : m_initialOrder(order), m_state{order, false, 0, 0, 0}
{
}

int32_t BTCUTF16Base::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out,
                              int32_t* outPos, int32_t outEnd)
{
    detail::checkConvertArguments(inBytes, inPos, inEnd, out, outPos, outEnd);
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    State s = m_state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    if (!detail::drainHeldChar(s, out, op, outEnd)) {
        return 0;
    }

    while (ip < inEnd && op < outEnd) {
        if (!s.hasByte && s.high == 0 && s.order != ByteOrder::Detect) {
            const bool big = s.order == ByteOrder::Big;
#if QVCL3_CHARSET_SSE2
            const __m128i surrogateBits = _mm_set1_epi16(static_cast<short>(0xF800));
            const __m128i surrogate = _mm_set1_epi16(static_cast<short>(0xD800));
            while (inEnd - ip >= 16 && outEnd - op >= 8) {
                __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
                if (big) {
                    v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
                }
                if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(v, surrogateBits), surrogate)) != 0) {
                    break;
                }
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), v);
                ip += 16;
                op += 8;
            }
#endif
            while (inEnd - ip >= 2 && op < outEnd) {
                const uint32_t u = big ? (uint32_t(in[ip]) << 8) | in[ip + 1] : (uint32_t(in[ip + 1]) << 8) | in[ip];
                if (detail::isSurrogate(u)) {
                    break;
                }
                out[op++] = static_cast<char16_t>(u);
                ip += 2;
            }
            if (ip >= inEnd || op >= outEnd) {
                break;
            }
        }

        // One unit with every check.
        uint32_t b0;
        uint32_t b1;
        if (s.hasByte) {
            b0 = s.byte;
            b1 = in[ip++];
            s.hasByte = false;
        } else if (inEnd - ip >= 2) {
            b0 = in[ip];
            b1 = in[ip + 1];
            ip += 2;
        } else {
            s.byte = in[ip++];
            s.hasByte = true;
            break;
        }
        if (s.order == ByteOrder::Detect) {
            if (b0 == 0xFE && b1 == 0xFF) {
                s.order = ByteOrder::Big;
                continue;
            }
            if (b0 == 0xFF && b1 == 0xFE) {
                s.order = ByteOrder::Little;
                continue;
            }
            s.order = ByteOrder::Big;
        }
        const uint32_t u = s.order == ByteOrder::Big ? (b0 << 8) | b1 : (b1 << 8) | b0;
        if (s.high != 0) {
            if (!detail::isLowSurrogate(u)) {
                detail::throwLoneHighSurrogate();
            }
            out[op++] = s.high;
            s.high = 0;
            if (op < outEnd) {
                out[op++] = static_cast<char16_t>(u);
            } else {
                s.held = static_cast<char16_t>(u);
            }
        } else if (detail::isHighSurrogate(u)) {
            s.high = static_cast<char16_t>(u);
        } else if (detail::isLowSurrogate(u)) {
            detail::throwLoneLowSurrogate();
        } else {
            out[op++] = static_cast<char16_t>(u);
        }
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t BTCUTF16Base::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.hasByte) {
        detail::throwInvalidCharacter("Invalid UTF-16: odd byte at end of input");
    }
    if (m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    return detail::flushHeldChar(m_state, out, outPos, outEnd);
}

void BTCUTF16Base::reset()
{
    m_state = State{m_initialOrder, false, 0, 0, 0};
}

int BTCUTF16Base::getMaxBytesPerChar() const
{
    return 2;
}

int BTCUTF16Base::getMaxCharsPerByte() const
{
    return 1;
}

BTCUTF16LE::BTCUTF16LE() : BTCUTF16Base(ByteOrder::Little)
{
}

const char16_t* BTCUTF16LE::getEncodingName() const
{
    return u"UTF-16LE";
}

BTCUTF16BE::BTCUTF16BE() : BTCUTF16Base(ByteOrder::Big)
{
}

const char16_t* BTCUTF16BE::getEncodingName() const
{
    return u"UTF-16BE";
}

BTCUTF16::BTCUTF16() : BTCUTF16Base(ByteOrder::Detect)
{
}

const char16_t* BTCUTF16::getEncodingName() const
{
    return u"UTF-16";
}

} // namespace qv::text::charset
