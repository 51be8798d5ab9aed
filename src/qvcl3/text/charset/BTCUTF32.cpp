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

} // namespace

BTCUTF32Base::BTCUTF32Base(ByteOrder order) : m_initialOrder(order), m_state{order, 0, {0, 0, 0, 0}, 0}
{
}

int32_t BTCUTF32Base::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out,
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
        if (s.byteCount == 0 && s.order != ByteOrder::Detect) {
            const bool big = s.order == ByteOrder::Big;
            while (inEnd - ip >= 4 && outEnd - op >= 2) {
                const uint32_t v = valueOf(in + ip, big);
                if (v < 0x10000) {
                    if (detail::isSurrogate(v)) {
                        break;
                    }
                    out[op++] = static_cast<char16_t>(v);
                } else {
                    if (v > 0x10FFFF) {
                        break;
                    }
                    out[op] = detail::highSurrogateOf(v);
                    out[op + 1] = detail::lowSurrogateOf(v);
                    op += 2;
                }
                ip += 4;
            }
            if (ip >= inEnd || op >= outEnd) {
                break;
            }
        }

        // One unit with every check.
        while (s.byteCount < 4 && ip < inEnd) {
            s.bytes[s.byteCount++] = in[ip++];
        }
        if (s.byteCount < 4) {
            break;
        }
        s.byteCount = 0;
        const uint8_t* b = s.bytes;
        if (s.order == ByteOrder::Detect) {
            if (b[0] == 0 && b[1] == 0 && b[2] == 0xFE && b[3] == 0xFF) {
                s.order = ByteOrder::Big;
                continue;
            }
            if (b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0) {
                s.order = ByteOrder::Little;
                continue;
            }
            s.order = ByteOrder::Big;
        }
        const uint32_t v = valueOf(b, s.order == ByteOrder::Big);
        if (v > 0x10FFFF || detail::isSurrogate(v)) {
            throwBadValue(v);
        }
        if (v < 0x10000) {
            out[op++] = static_cast<char16_t>(v);
        } else {
            out[op++] = detail::highSurrogateOf(v);
            if (op < outEnd) {
                out[op++] = detail::lowSurrogateOf(v);
            } else {
                s.held = detail::lowSurrogateOf(v);
            }
        }
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t BTCUTF32Base::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.byteCount != 0) {
        detail::throwInvalidCharacter("Invalid UTF-32: partial unit at end of input");
    }
    return detail::flushHeldChar(m_state, out, outPos, outEnd);
}

void BTCUTF32Base::reset()
{
    m_state = State{m_initialOrder, 0, {0, 0, 0, 0}, 0};
}

int BTCUTF32Base::getMaxBytesPerChar() const
{
    return 4;
}

int BTCUTF32Base::getMaxCharsPerByte() const
{
    return 1;
}

BTCUTF32LE::BTCUTF32LE() : BTCUTF32Base(ByteOrder::Little)
{
}

const char16_t* BTCUTF32LE::getEncodingName() const
{
    return u"UTF-32LE";
}

BTCUTF32BE::BTCUTF32BE() : BTCUTF32Base(ByteOrder::Big)
{
}

const char16_t* BTCUTF32BE::getEncodingName() const
{
    return u"UTF-32BE";
}

BTCUTF32::BTCUTF32() : BTCUTF32Base(ByteOrder::Detect)
{
}

const char16_t* BTCUTF32::getEncodingName() const
{
    return u"UTF-32";
}

} // namespace qv::text::charset
