#include <qv/text/charset/CTBAMP7.h>

#include "Amp7Alphabet.h"
#include "ConverterSupport.h"

namespace qv::text::charset {

using detail::digits;
using detail::isDirect;

CTBAMP7::CTBAMP7() : m_state{} {}

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

// One character: a unit, or a whole surrogate pair; a high surrogate that
// ends the input waits in the state. False, with nothing consumed, when its
// bytes do not all fit.
template <typename State>
bool encodeAmp7Character(detail::Conversion<State>& c, const char16_t* in, int32_t inEnd, uint8_t* out, int32_t outEnd)
{
    State t = c.state;
    uint32_t unit = in[c.ip];
    int32_t units = 1;
    uint8_t bytes[12];
    int n = 0;
    if (t.high == 0 && detail::isHighSurrogate(unit)) {
        if (c.ip + 1 == inEnd) {
            c.state.high = static_cast<char16_t>(unit);
            ++c.ip;
            return true;
        }
        t.high = static_cast<char16_t>(unit);
        unit = in[c.ip + 1];
        units = 2;
    }
    if (t.high != 0) {
        if (!detail::isLowSurrogate(unit)) {
            detail::throwLoneHighSurrogate();
        }
        if (!t.inBase64) {
            bytes[n++] = '&';
            t.inBase64 = true;
        }
        n = appendUnit(t, t.high, bytes, n);
        n = appendUnit(t, unit, bytes, n);
        t.high = 0;
    } else if (detail::isLowSurrogate(unit)) {
        detail::throwLoneLowSurrogate();
    } else if (isDirect(unit)) {
        if (t.inBase64) {
            n = closeRun(t, bytes, n);
        }
        bytes[n++] = static_cast<uint8_t>(unit);
        if (unit == '&') {
            bytes[n++] = '-';
        }
    } else {
        if (!t.inBase64) {
            bytes[n++] = '&';
            t.inBase64 = true;
        }
        n = appendUnit(t, unit, bytes, n);
    }
    if (!detail::putWhole(bytes, n, out, c.op, outEnd)) {
        return false;
    }
    c.state = t;
    c.ip += units;
    return true;
}

} // namespace

int32_t CTBAMP7::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes, int32_t* outPos,
                         int32_t outEnd)
{
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    return detail::runConversion(
        m_state, in, inPos, inEnd, outBytes, outPos, outEnd, [&](detail::Conversion<State>& c) {
            while (c.ip < inEnd && c.op < outEnd && encodeAmp7Character(c, in, inEnd, out, outEnd)) {
            }
        });
}

// The run is closed in two steps of one byte each (its last digit, then
// "-"), so that a flush given one byte at a time still finishes it.
int32_t CTBAMP7::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    int32_t op = start;
    if (m_state.inBase64 && m_state.bitCount > 0 && op < outEnd) {
        outBytes[op++] = static_cast<signed char>(digits[(m_state.bits << (6 - m_state.bitCount)) & 0x3F]);
        m_state.bitCount = 0;
        m_state.bits = 0;
    }
    if (m_state.inBase64 && m_state.bitCount == 0 && op < outEnd) {
        outBytes[op++] = '-';
        m_state.inBase64 = false;
    }
    *outPos = op;
    return op - start;
}

void CTBAMP7::reset()
{
    m_state = State{};
}

const char16_t* CTBAMP7::getEncodingName()
{
    return u"AMP-7";
}

int CTBAMP7::getMaxBytesPerChar()
{
    return 5;
}

int CTBAMP7::getMaxCharsPerByte()
{
    return 1;
}

} // namespace qv::text::charset
