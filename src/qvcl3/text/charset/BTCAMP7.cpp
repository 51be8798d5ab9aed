#include <qv/text/charset/BTCAMP7.h>

#include "Amp7Alphabet.h"
#include "ConverterSupport.h"

namespace qv::text::charset {

namespace {

using detail::digitValue;
using detail::isDirect;

// One byte of input, with every check. False, with nothing consumed, when
// the unit or pair it completes does not fit.
template <typename State>
bool decodeAmp7Byte(detail::Conversion<State>& c, uint32_t b, char16_t* out, int32_t outEnd)
{
    State& s = c.state;
    if (!s.inBase64) {
        if (b == '&') {
            s.inBase64 = true;
            s.justShifted = true;
        } else if (isDirect(b)) {
            out[c.op++] = static_cast<char16_t>(b);
        } else {
            detail::throwInvalidCharacter("Invalid AMP-7: byte outside printable US-ASCII");
        }
        return true;
    }
    if (b == '-') {
        if (s.justShifted) {
            out[c.op++] = u'&';
        } else if (s.high != 0) {
            detail::throwLoneHighSurrogate();
        } else if (s.bitCount >= 6 || s.bits != 0) {
            detail::throwInvalidCharacter("Invalid AMP-7: base64 run does not end on a code unit");
        }
        s.inBase64 = false;
        s.justShifted = false;
        s.bitCount = 0;
        s.bits = 0;
        return true;
    }
    const int value = digitValue(b);
    if (value < 0) {
        detail::throwInvalidCharacter("Invalid AMP-7: character outside the base64 alphabet in a base64 run");
    }
    State t = s;
    t.justShifted = false;
    t.bits = (t.bits << 6) | static_cast<uint32_t>(value);
    t.bitCount = static_cast<uint8_t>(t.bitCount + 6);
    if (t.bitCount >= 16) {
        t.bitCount = static_cast<uint8_t>(t.bitCount - 16);
        const uint32_t unit = t.bits >> t.bitCount;
        t.bits &= (1u << t.bitCount) - 1;
        if (t.high != 0) {
            if (!detail::isLowSurrogate(unit)) {
                detail::throwLoneHighSurrogate();
            }
            if (outEnd - c.op < 2) {
                return false;
            }
            out[c.op++] = t.high;
            out[c.op++] = static_cast<char16_t>(unit);
            t.high = 0;
        } else if (detail::isHighSurrogate(unit)) {
            t.high = static_cast<char16_t>(unit);
        } else if (detail::isLowSurrogate(unit)) {
            detail::throwLoneLowSurrogate();
        } else if (isDirect(unit)) {
            detail::throwInvalidCharacter("Invalid AMP-7: printable US-ASCII character encoded in base64");
        } else {
            out[c.op++] = static_cast<char16_t>(unit);
        }
    }
    s = t;
    return true;
}

} // namespace

BTCAMP7::BTCAMP7() : m_state{} {}

int32_t BTCAMP7::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                         int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    return detail::runConversion(m_state, inBytes, inPos, inEnd, out, outPos, outEnd,
                                 [&](detail::Conversion<State>& c) {
                                     while (c.ip < inEnd && c.op < outEnd && decodeAmp7Byte(c, in[c.ip], out, outEnd)) {
                                         ++c.ip;
                                     }
                                 });
}

int32_t BTCAMP7::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.inBase64) {
        detail::throwInvalidCharacter("Invalid AMP-7: base64 run not closed at end of input");
    }
    return 0;
}

void BTCAMP7::reset()
{
    m_state = State{};
}

const char16_t* BTCAMP7::getEncodingName()
{
    return u"AMP-7";
}

int BTCAMP7::getMaxBytesPerChar()
{
    return 5;
}

int BTCAMP7::getMaxCharsPerByte()
{
    return 1;
}

} // namespace qv::text::charset
