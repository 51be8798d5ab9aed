#include <qv/text/charset/BTCAMP7.h>
#include <qv/text/charset/CTBAMP7.h>

#include "ConverterSupport.h"

namespace qv::text::charset {

namespace {

const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";

inline int digitValue(uint32_t b)
{
    if (b >= 'A' && b <= 'Z') {
        return static_cast<int>(b - 'A');
    }
    if (b >= 'a' && b <= 'z') {
        return static_cast<int>(b - 'a' + 26);
    }
    if (b >= '0' && b <= '9') {
        return static_cast<int>(b - '0' + 52);
    }
    if (b == '+') {
        return 62;
    }
    return b == ',' ? 63 : -1;
}

inline bool isDirect(uint32_t c)
{
    return c >= 0x20 && c <= 0x7E;
}

} // namespace

BTCAMP7::BTCAMP7() : m_state{}
{
}

int32_t BTCAMP7::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                         int32_t outEnd)
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
        const uint32_t b = in[ip];
        if (!s.inBase64) {
            if (b == '&') {
                s.inBase64 = true;
                s.justShifted = true;
            } else if (isDirect(b)) {
                out[op++] = static_cast<char16_t>(b);
            } else {
                detail::throwInvalidCharacter("Invalid AMP-7: byte outside printable US-ASCII");
            }
            ++ip;
            continue;
        }
        if (b == '-') {
            if (s.justShifted) {
                out[op++] = u'&';
            } else if (s.high != 0) {
                detail::throwLoneHighSurrogate();
            } else if (s.bitCount >= 6 || s.bits != 0) {
                detail::throwInvalidCharacter("Invalid AMP-7: base64 run does not end on a code unit");
            }
            s.inBase64 = false;
            s.justShifted = false;
            s.bitCount = 0;
            s.bits = 0;
            ++ip;
            continue;
        }
        const int value = digitValue(b);
        if (value < 0) {
            detail::throwInvalidCharacter("Invalid AMP-7: character outside the base64 alphabet in a base64 run");
        }
        ++ip;
        s.justShifted = false;
        s.bits = (s.bits << 6) | static_cast<uint32_t>(value);
        s.bitCount = static_cast<uint8_t>(s.bitCount + 6);
        if (s.bitCount < 16) {
            continue;
        }
        s.bitCount = static_cast<uint8_t>(s.bitCount - 16);
        const uint32_t unit = s.bits >> s.bitCount;
        s.bits &= (1u << s.bitCount) - 1;
        if (s.high != 0) {
            if (!detail::isLowSurrogate(unit)) {
                detail::throwLoneHighSurrogate();
            }
            out[op++] = s.high;
            s.high = 0;
            if (op < outEnd) {
                out[op++] = static_cast<char16_t>(unit);
            } else {
                s.held = static_cast<char16_t>(unit);
            }
        } else if (detail::isHighSurrogate(unit)) {
            s.high = static_cast<char16_t>(unit);
        } else if (detail::isLowSurrogate(unit)) {
            detail::throwLoneLowSurrogate();
        } else if (isDirect(unit)) {
            detail::throwInvalidCharacter("Invalid AMP-7: printable US-ASCII character encoded in base64");
        } else {
            out[op++] = static_cast<char16_t>(unit);
        }
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t BTCAMP7::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.inBase64) {
        detail::throwInvalidCharacter("Invalid AMP-7: base64 run not closed at end of input");
    }
    return detail::flushHeldChar(m_state, out, outPos, outEnd);
}

void BTCAMP7::reset()
{
    m_state = State{};
}

const char16_t* BTCAMP7::getEncodingName() const
{
    return u"AMP-7";
}

int BTCAMP7::getMaxBytesPerChar() const
{
    return 5;
}

int BTCAMP7::getMaxCharsPerByte() const
{
    return 1;
}

CTBAMP7::CTBAMP7() : m_state{}
{
}

namespace {

// Appends the base64 digit of the leftover bits and the closing "-".
template <typename State>
int closeRun(State& s, uint8_t* bytes, int n)
{
    if (s.bitCount > 0) {
        bytes[n++] = static_cast<uint8_t>(digits[(s.bits << (6 - s.bitCount)) & 0x3F]);
    }
    bytes[n++] = '-';
    s.inBase64 = false;
    s.bitCount = 0;
    s.bits = 0;
    return n;
}

template <typename State>
int appendUnit(State& s, uint32_t unit, uint8_t* bytes, int n)
{
    s.bits = (s.bits << 16) | unit;
    s.bitCount = static_cast<uint8_t>(s.bitCount + 16);
    while (s.bitCount >= 6) {
        s.bitCount = static_cast<uint8_t>(s.bitCount - 6);
        bytes[n++] = static_cast<uint8_t>(digits[(s.bits >> s.bitCount) & 0x3F]);
    }
    s.bits &= (1u << s.bitCount) - 1;
    return n;
}

} // namespace

int32_t CTBAMP7::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes, int32_t* outPos,
                         int32_t outEnd)
{
    detail::checkConvertArguments(in, inPos, inEnd, outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    State s = m_state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    op = detail::drainHeld(s, out, op, outEnd);
    while (s.heldCount == 0 && ip < inEnd && op < outEnd) {
        const uint32_t c = in[ip];
        uint8_t bytes[8];
        int n = 0;
        if (s.high != 0) {
            if (!detail::isLowSurrogate(c)) {
                detail::throwLoneHighSurrogate();
            }
            if (!s.inBase64) {
                bytes[n++] = '&';
                s.inBase64 = true;
            }
            n = appendUnit(s, s.high, bytes, n);
            n = appendUnit(s, c, bytes, n);
            s.high = 0;
        } else if (detail::isHighSurrogate(c)) {
            s.high = static_cast<char16_t>(c);
        } else if (detail::isLowSurrogate(c)) {
            detail::throwLoneLowSurrogate();
        } else if (isDirect(c)) {
            if (s.inBase64) {
                n = closeRun(s, bytes, n);
            }
            bytes[n++] = static_cast<uint8_t>(c);
            if (c == '&') {
                bytes[n++] = '-';
            }
        } else {
            if (!s.inBase64) {
                bytes[n++] = '&';
                s.inBase64 = true;
            }
            n = appendUnit(s, c, bytes, n);
        }
        ++ip;
        op = detail::putHeld(bytes, n, s, out, op, outEnd);
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t CTBAMP7::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    if (m_state.heldCount == 0 && m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    int32_t op = detail::drainHeld(m_state, out, start, outEnd);
    if (m_state.heldCount == 0 && m_state.inBase64) {
        uint8_t bytes[2];
        const int n = closeRun(m_state, bytes, 0);
        op = detail::putHeld(bytes, n, m_state, out, op, outEnd);
    }
    *outPos = op;
    return op - start;
}

void CTBAMP7::reset()
{
    m_state = State{};
}

const char16_t* CTBAMP7::getEncodingName() const
{
    return u"AMP-7";
}

int CTBAMP7::getMaxBytesPerChar() const
{
    return 5;
}

int CTBAMP7::getMaxCharsPerByte() const
{
    return 1;
}

} // namespace qv::text::charset
