#include <qv/text/charset/CTBWideBase.h>

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

using detail::combineSurrogates;
using detail::isHighSurrogate;
using detail::isLowSurrogate;
using detail::isSurrogate;

template <int Width>
inline void storeWideUnit(uint32_t v, bool big, uint8_t* b)
{
    for (int i = 0; i < Width; ++i) {
        b[big ? Width - 1 - i : i] = static_cast<uint8_t>(v >> (8 * i));
    }
}

// Characters outside the surrogate range while both sides have room, sixteen
// bytes at a time where the processor allows.
inline void encodeUtf16Run(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd,
                           bool big)
{
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
        if (isSurrogate(u)) {
            break;
        }
        storeWideUnit<2>(u, big, out + op);
        op += 2;
        ++ip;
    }
}

// Characters and whole surrogate pairs while both sides have room.
inline void encodeUtf32Run(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd,
                           bool big)
{
    while (ip < inEnd && outEnd - op >= 4) {
        uint32_t v = in[ip];
        if (!isSurrogate(v)) {
            ++ip;
        } else if (isHighSurrogate(v) && inEnd - ip >= 2 && isLowSurrogate(in[ip + 1])) {
            v = combineSurrogates(v, in[ip + 1]);
            ip += 2;
        } else {
            break;
        }
        storeWideUnit<4>(v, big, out + op);
        op += 4;
    }
}

// One character with every check: the byte order mark if it is still due,
// a high surrogate waiting from the last call or a pair. False, with
// nothing consumed, when its bytes do not all fit. A high surrogate that
// ends the input waits in the state for its low half.
template <int Width, typename State>
bool encodeWideCharacter(detail::Conversion<State>& c, bool big, const char16_t* in, int32_t inEnd, uint8_t* out,
                         int32_t outEnd)
{
    uint32_t high = c.state.high;
    uint32_t v = in[c.ip];
    int32_t units = 1;
    if (high != 0) {
        if (!isLowSurrogate(v)) {
            detail::throwLoneHighSurrogate();
        }
    } else if (isHighSurrogate(v)) {
        if (c.ip + 1 == inEnd) {
            c.state.high = static_cast<char16_t>(v);
            ++c.ip;
            return true;
        }
        if (!isLowSurrogate(in[c.ip + 1])) {
            detail::throwLoneHighSurrogate();
        }
        high = v;
        v = in[c.ip + 1];
        units = 2;
    } else if (isLowSurrogate(v)) {
        detail::throwLoneLowSurrogate();
    }
    // Mark, then the unit or units: at most three UTF-16 units or two
    // UTF-32 values.
    uint8_t bytes[Width == 2 ? 6 : 8];
    int n = 0;
    if (c.state.markPending) {
        storeWideUnit<Width>(0xFEFF, big, bytes);
        n = Width;
    }
    if (high != 0) {
        if constexpr (Width == 2) {
            storeWideUnit<2>(high, big, bytes + n);
            n += 2;
        } else {
            v = combineSurrogates(high, v);
        }
    }
    storeWideUnit<Width>(v, big, bytes + n);
    n += Width;
    if (!detail::putWhole(bytes, n, out, c.op, outEnd)) {
        return false;
    }
    c.state.markPending = false;
    c.state.high = 0;
    c.ip += units;
    return true;
}

} // namespace

template <int Width>
CTBWideBase<Width>::CTBWideBase(bool bigEndian, bool byteOrderMark)
    : m_bigEndian(bigEndian), m_byteOrderMark(byteOrderMark), m_state{byteOrderMark, 0}
{}

template <int Width>
int32_t CTBWideBase<Width>::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
                                    int32_t* outPos, int32_t outEnd)
{
    static_assert(Width == 2 || Width == 4, "a unit is two or four bytes");
    const bool big = m_bigEndian;
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    return detail::runConversion(m_state, in, inPos, inEnd, outBytes, outPos, outEnd,
                                 [&](detail::Conversion<State>& c) {
                                     while (c.ip < inEnd && c.op < outEnd) {
                                         if (!c.state.markPending && c.state.high == 0) {
                                             if constexpr (Width == 2) {
                                                 encodeUtf16Run(in, c.ip, inEnd, out, c.op, outEnd, big);
                                             } else {
                                                 encodeUtf32Run(in, c.ip, inEnd, out, c.op, outEnd, big);
                                             }
                                             if (c.ip >= inEnd || c.op >= outEnd) {
                                                 break;
                                             }
                                         }
                                         if (!encodeWideCharacter<Width>(c, big, in, inEnd, out, outEnd)) {
                                             break;
                                         }
                                     }
                                 });
}

template <int Width>
int32_t CTBWideBase<Width>::flush(signed char* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    return 0;
}

template <int Width>
void CTBWideBase<Width>::reset()
{
    m_state = State{m_byteOrderMark, 0};
}

template <int Width>
int CTBWideBase<Width>::getMaxBytesPerChar()
{
    return Width;
}

template <int Width>
int CTBWideBase<Width>::getMaxCharsPerByte()
{
    return 1;
}

template class CTBWideBase<2>;
template class CTBWideBase<4>;

} // namespace qv::text::charset
