#include <qv/text/charset/CTBUTF32.h>
#include <qv/text/charset/CTBUTF32BE.h>
#include <qv/text/charset/CTBUTF32LE.h>

#include "ConverterSupport.h"

namespace qv::text::charset {

namespace {

inline void storeValue(uint32_t v, bool big, uint8_t* b)
{
    for (int i = 0; i < 4; ++i) {
        b[big ? 3 - i : i] = static_cast<uint8_t>(v >> (8 * i));
    }
}

} // namespace

CTBUTF32Base::CTBUTF32Base(bool bigEndian, bool byteOrderMark)
    : m_bigEndian(bigEndian), m_byteOrderMark(byteOrderMark), m_state{byteOrderMark, 0, 0, {}}
{
}

int32_t CTBUTF32Base::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
                              int32_t* outPos, int32_t outEnd)
{
    detail::checkConvertArguments(in, inPos, inEnd, outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    const bool big = m_bigEndian;
    State s = m_state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    op = detail::drainHeldBytes(s, out, op, outEnd);
    while (s.heldCount == 0 && ip < inEnd && op < outEnd) {
        if (!s.markPending && s.high == 0) {
            while (ip < inEnd && outEnd - op >= 4) {
                uint32_t v = in[ip];
                if (!detail::isSurrogate(v)) {
                    ++ip;
                } else if (detail::isHighSurrogate(v) && inEnd - ip >= 2 && detail::isLowSurrogate(in[ip + 1])) {
                    v = detail::combineSurrogates(v, in[ip + 1]);
                    ip += 2;
                } else {
                    break;
                }
                storeValue(v, big, out + op);
                op += 4;
            }
            if (ip >= inEnd || op >= outEnd) {
                break;
            }
        }

        // One unit with every check.
        uint32_t v = in[ip];
        if (s.high == 0 && detail::isHighSurrogate(v)) {
            s.high = static_cast<char16_t>(v);
            ++ip;
            continue;
        }
        if (s.high != 0) {
            if (!detail::isLowSurrogate(v)) {
                detail::throwLoneHighSurrogate();
            }
            v = detail::combineSurrogates(s.high, v);
            s.high = 0;
        } else if (detail::isLowSurrogate(v)) {
            detail::throwLoneLowSurrogate();
        }
        uint8_t bytes[8];
        int n = 0;
        if (s.markPending) {
            storeValue(0xFEFF, big, bytes);
            n = 4;
            s.markPending = false;
        }
        storeValue(v, big, bytes + n);
        n += 4;
        ++ip;
        op = detail::putBytes(bytes, n, s, out, op, outEnd);
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t CTBUTF32Base::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.heldCount == 0 && m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    *outPos = detail::drainHeldBytes(m_state, reinterpret_cast<uint8_t*>(outBytes), start, outEnd);
    return *outPos - start;
}

void CTBUTF32Base::reset()
{
    m_state = State{m_byteOrderMark, 0, 0, {}};
}

int CTBUTF32Base::getMaxBytesPerChar() const
{
    return 4;
}

int CTBUTF32Base::getMaxCharsPerByte() const
{
    return 1;
}

CTBUTF32LE::CTBUTF32LE() : CTBUTF32Base(false, false)
{
}

const char16_t* CTBUTF32LE::getEncodingName() const
{
    return u"UTF-32LE";
}

CTBUTF32BE::CTBUTF32BE() : CTBUTF32Base(true, false)
{
}

const char16_t* CTBUTF32BE::getEncodingName() const
{
    return u"UTF-32BE";
}

CTBUTF32::CTBUTF32() : CTBUTF32Base(true, true)
{
}

const char16_t* CTBUTF32::getEncodingName() const
{
    return u"UTF-32";
}

} // namespace qv::text::charset
