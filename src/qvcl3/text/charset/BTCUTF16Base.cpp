#include <qv/text/charset/BTCUTF16.h>
#include <qv/text/charset/BTCUTF16BE.h>
#include <qv/text/charset/BTCUTF16LE.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

// Units outside the surrogate range while both sides have room, eight at a
// time where the processor allows.
inline void decodeUtf16Run(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd,
                           bool big)
{
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
}

// One unit with every check: a byte left by the last call, the byte order
// mark, surrogates. False when the call stops here: the input ends inside
// the unit (its byte is kept), or the pair it belongs to does not fit (it is
// not consumed).
template <typename State, typename ByteOrder>
bool decodeUtf16Unit(detail::Conversion<State>& c, const uint8_t* in, int32_t inEnd, char16_t* out, int32_t outEnd)
{
    State& s = c.state;
    int32_t ip = c.ip;
    uint32_t b0;
    uint32_t b1;
    if (s.hasByte) {
        b0 = s.byte;
        b1 = in[ip++];
    } else if (inEnd - ip >= 2) {
        b0 = in[ip];
        b1 = in[ip + 1];
        ip += 2;
    } else {
        s.byte = in[ip];
        s.hasByte = true;
        c.ip = ip + 1;
        return false;
    }
    if (s.order == ByteOrder::Detect) {
        if ((b0 == 0xFE && b1 == 0xFF) || (b0 == 0xFF && b1 == 0xFE)) {
            s.order = b0 == 0xFE ? ByteOrder::Big : ByteOrder::Little;
            s.hasByte = false;
            c.ip = ip;
            return true;
        }
        s.order = ByteOrder::Big;
    }
    const uint32_t u = s.order == ByteOrder::Big ? (b0 << 8) | b1 : (b1 << 8) | b0;
    if (s.high != 0) {
        if (!detail::isLowSurrogate(u)) {
            detail::throwLoneHighSurrogate();
        }
        if (outEnd - c.op < 2) {
            return false;
        }
        out[c.op++] = s.high;
        out[c.op++] = static_cast<char16_t>(u);
        s.high = 0;
    } else if (detail::isHighSurrogate(u)) {
        // Written with its low half, so there must be room for both.
        if (outEnd - c.op < 2) {
            return false;
        }
        s.high = static_cast<char16_t>(u);
    } else if (detail::isLowSurrogate(u)) {
        detail::throwLoneLowSurrogate();
    } else {
        out[c.op++] = static_cast<char16_t>(u);
    }
    s.hasByte = false;
    c.ip = ip;
    return true;
}

} // namespace

BTCUTF16Base::BTCUTF16Base(ByteOrder order) : m_initialOrder(order), m_state{order, false, 0, 0} {}

int32_t BTCUTF16Base::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                              int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    return detail::runConversion(
        m_state, inBytes, inPos, inEnd, out, outPos, outEnd, [&](detail::Conversion<State>& c) {
            while (c.ip < inEnd && c.op < outEnd) {
                if (!c.state.hasByte && c.state.high == 0 && c.state.order != ByteOrder::Detect) {
                    decodeUtf16Run(in, c.ip, inEnd, out, c.op, outEnd, c.state.order == ByteOrder::Big);
                    if (c.ip >= inEnd || c.op >= outEnd) {
                        break;
                    }
                }
                if (!decodeUtf16Unit<State, ByteOrder>(c, in, inEnd, out, outEnd)) {
                    break;
                }
            }
        });
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
    return 0;
}

void BTCUTF16Base::reset()
{
    m_state = State{m_initialOrder, false, 0, 0};
}

int BTCUTF16Base::getMaxBytesPerChar()
{
    return 2;
}

int BTCUTF16Base::getMaxCharsPerByte()
{
    return 1;
}

BTCUTF16LE::BTCUTF16LE() : BTCUTF16Base(ByteOrder::Little) {}

const char16_t* BTCUTF16LE::getEncodingName()
{
    return u"UTF-16LE";
}

BTCUTF16BE::BTCUTF16BE() : BTCUTF16Base(ByteOrder::Big) {}

const char16_t* BTCUTF16BE::getEncodingName()
{
    return u"UTF-16BE";
}

BTCUTF16::BTCUTF16() : BTCUTF16Base(ByteOrder::Detect) {}

const char16_t* BTCUTF16::getEncodingName()
{
    return u"UTF-16";
}

} // namespace qv::text::charset
