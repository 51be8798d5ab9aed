#include <qv/text/charset/CTBUTF16.h>
#include <qv/text/charset/CTBUTF16BE.h>
#include <qv/text/charset/CTBUTF16LE.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

inline void storeUnit(uint32_t u, bool big, uint8_t* bytes)
{
    bytes[big ? 0 : 1] = static_cast<uint8_t>(u >> 8);
    bytes[big ? 1 : 0] = static_cast<uint8_t>(u);
}

} // namespace

CTBUTF16Base::CTBUTF16Base(bool bigEndian, bool byteOrderMark)
    : m_bigEndian(bigEndian), m_byteOrderMark(byteOrderMark), m_state{byteOrderMark, 0, 0, {}}
{
}

int32_t CTBUTF16Base::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
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
#if QVCL3_CHARSET_SSE2
            const __m128i surrogateBits = _mm_set1_epi16(static_cast<short>(0xF800));
            const __m128i surrogate = _mm_set1_epi16(static_cast<short>(0xD800));
            while (inEnd - ip >= 8 && outEnd - op >= 16) {
                __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
                if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(v, surrogateBits), surrogate)) != 0) {
                    break;
                }
                if (big) {
                    v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
                }
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), v);
                ip += 8;
                op += 16;
            }
#endif
            while (ip < inEnd && outEnd - op >= 2) {
                const uint32_t u = in[ip];
                if (detail::isSurrogate(u)) {
                    break;
                }
                storeUnit(u, big, out + op);
                op += 2;
                ++ip;
            }
            if (ip >= inEnd || op >= outEnd) {
                break;
            }
        }

        // One unit with every check.
        const uint32_t u = in[ip];
        uint8_t bytes[6];
        int n = 0;
        if (s.high == 0 && detail::isHighSurrogate(u)) {
            s.high = static_cast<char16_t>(u);
            ++ip;
            continue;
        }
        if (s.high != 0 && !detail::isLowSurrogate(u)) {
            detail::throwLoneHighSurrogate();
        }
        if (s.high == 0 && detail::isLowSurrogate(u)) {
            detail::throwLoneLowSurrogate();
        }
        if (s.markPending) {
            storeUnit(0xFEFF, big, bytes);
            n = 2;
            s.markPending = false;
        }
        if (s.high != 0) {
            storeUnit(s.high, big, bytes + n);
            n += 2;
            s.high = 0;
        }
        storeUnit(u, big, bytes + n);
        n += 2;
        ++ip;
        op = detail::putBytes(bytes, n, s, out, op, outEnd);
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t CTBUTF16Base::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.heldCount == 0 && m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    *outPos = detail::drainHeldBytes(m_state, reinterpret_cast<uint8_t*>(outBytes), start, outEnd);
    return *outPos - start;
}

void CTBUTF16Base::reset()
{
    m_state = State{m_byteOrderMark, 0, 0, {}};
}

int CTBUTF16Base::getMaxBytesPerChar() const
{
    return 2;
}

int CTBUTF16Base::getMaxCharsPerByte() const
{
    return 1;
}

CTBUTF16LE::CTBUTF16LE() : CTBUTF16Base(false, false)
{
}

const char16_t* CTBUTF16LE::getEncodingName() const
{
    return u"UTF-16LE";
}

CTBUTF16BE::CTBUTF16BE() : CTBUTF16Base(true, false)
{
}

const char16_t* CTBUTF16BE::getEncodingName() const
{
    return u"UTF-16BE";
}

CTBUTF16::CTBUTF16() : CTBUTF16Base(true, true)
{
}

const char16_t* CTBUTF16::getEncodingName() const
{
    return u"UTF-16";
}

} // namespace qv::text::charset
