#include <qv/text/charset/BTCUTF32.h>
#include <qv/text/charset/BTCUTF32BE.h>
#include <qv/text/charset/BTCUTF32LE.h>

#include "ConverterSupport.h"

namespace qv::text::charset {

namespace {

inline uint32_t valueOf(const uint8_t* b, bool big)
{
    return big ? (uint32_t(b[0]) << 24) | (uint32_t(b[1]) << 16) | (uint32_t(b[2]) << 8) | b[3]
               : (uint32_t(b[3]) << 24) | (uint32_t(b[2]) << 16) | (uint32_t(b[1]) << 8) | b[0];
}

[[noreturn]] void throwBadValue(uint32_t v)
{
    if (v > 0x10FFFF) {
        detail::throwInvalidCharacter("Invalid UTF-32: value above U+10FFFF");
    }
    detail::throwInvalidCharacter("Invalid UTF-32: surrogate code point");
}

// Values while both sides have room for them.
inline void decodeUtf32Run(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd,
                           bool big)
{
    while (inEnd - ip >= 4 && outEnd - op >= 2) {
        const uint32_t v = valueOf(in + ip, big);
        if (v > 0x10FFFF || detail::isSurrogate(v)) {
            break;
        }
        detail::putCodePoint(v, out, op, outEnd);
        ip += 4;
    }
}

// One value with every check: bytes left by the last call, the byte order
// mark, the range. False when the call stops here: the input ends inside
// the value (its bytes are kept), or its units do not fit (nothing is
// consumed).
template <typename State, typename ByteOrder>
bool decodeUtf32Unit(detail::Conversion<State>& c, const uint8_t* in, int32_t inEnd, char16_t* out, int32_t outEnd)
{
    State s = c.state;
    int32_t ip = c.ip;
    while (s.byteCount < 4 && ip < inEnd) {
        s.bytes[s.byteCount++] = in[ip++];
    }
    if (s.byteCount < 4) {
        c.state = s;
        c.ip = ip;
        return false;
    }
    s.byteCount = 0;
    const uint8_t* b = s.bytes;
    if (s.order == ByteOrder::Detect) {
        const bool bigMark = b[0] == 0 && b[1] == 0 && b[2] == 0xFE && b[3] == 0xFF;
        const bool littleMark = b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0;
        s.order = littleMark ? ByteOrder::Little : ByteOrder::Big;
        if (bigMark || littleMark) {
            c.state = s;
            c.ip = ip;
            return true;
        }
    }
    const uint32_t v = valueOf(b, s.order == ByteOrder::Big);
    if (v > 0x10FFFF || detail::isSurrogate(v)) {
        throwBadValue(v);
    }
    if (!detail::putCodePoint(v, out, c.op, outEnd)) {
        return false;
    }
    c.state = s;
    c.ip = ip;
    return true;
}

} // namespace

BTCUTF32Base::BTCUTF32Base(ByteOrder order) : m_initialOrder(order), m_state{order, 0, {0, 0, 0, 0}} {}

int32_t BTCUTF32Base::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                              int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    return detail::runConversion(
        m_state, inBytes, inPos, inEnd, out, outPos, outEnd, [&](detail::Conversion<State>& c) {
            while (c.ip < inEnd && c.op < outEnd) {
                if (c.state.byteCount == 0 && c.state.order != ByteOrder::Detect) {
                    decodeUtf32Run(in, c.ip, inEnd, out, c.op, outEnd, c.state.order == ByteOrder::Big);
                    if (c.ip >= inEnd || c.op >= outEnd) {
                        break;
                    }
                }
                if (!decodeUtf32Unit<State, ByteOrder>(c, in, inEnd, out, outEnd)) {
                    break;
                }
            }
        });
}

int32_t BTCUTF32Base::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.byteCount != 0) {
        detail::throwInvalidCharacter("Invalid UTF-32: partial unit at end of input");
    }
    return 0;
}

void BTCUTF32Base::reset()
{
    m_state = State{m_initialOrder, 0, {0, 0, 0, 0}};
}

int BTCUTF32Base::getMaxBytesPerChar()
{
    return 4;
}

int BTCUTF32Base::getMaxCharsPerByte()
{
    return 1;
}

BTCUTF32LE::BTCUTF32LE() : BTCUTF32Base(ByteOrder::Little) {}

const char16_t* BTCUTF32LE::getEncodingName()
{
    return u"UTF-32LE";
}

BTCUTF32BE::BTCUTF32BE() : BTCUTF32Base(ByteOrder::Big) {}

const char16_t* BTCUTF32BE::getEncodingName()
{
    return u"UTF-32BE";
}

BTCUTF32::BTCUTF32() : BTCUTF32Base(ByteOrder::Detect) {}

const char16_t* BTCUTF32::getEncodingName()
{
    return u"UTF-32";
}

} // namespace qv::text::charset
