#ifndef QVCL3_TEXT_CHARSET_WIDEENCODER_H
#define QVCL3_TEXT_CHARSET_WIDEENCODER_H

// The UTF-16 and UTF-32 encoders differ only in the width of a unit and in
// their block loop, so both are this one template; not installed.

#include "ConverterSupport.h"
#include "Simd.h"

namespace qv {
namespace text {
namespace charset {
namespace detail {

template <int Width>
inline void storeWideUnit(uint32_t v, bool big, uint8_t* b)
{
    for (int i = 0; i < Width; ++i) {
        b[big ? Width - 1 - i : i] = static_cast<uint8_t>(v >> (8 * i));
    }
}

// Width is 2 (UTF-16) or 4 (UTF-32). State holds markPending, high,
// heldCount and held[7]. Works on a copy of the state so that a call that
// throws leaves the converter as it was.
template <int Width, typename State>
int32_t encodeWide(State& state, bool big, const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
                   int32_t* outPos, int32_t outEnd)
{
    static_assert(Width == 2 || Width == 4, "a unit is two or four bytes");
    checkConvertArguments(in, inPos, inEnd, outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    State s = state;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    op = drainHeld(s, out, op, outEnd);
    while (s.heldCount == 0 && ip < inEnd && op < outEnd) {
        if (!s.markPending && s.high == 0) {
            if constexpr (Width == 2) {
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
            } else {
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
            if (ip >= inEnd || op >= outEnd) {
                break;
            }
        }

        // One unit with every check.
        uint32_t v = in[ip];
        if (s.high == 0 && isHighSurrogate(v)) {
            s.high = static_cast<char16_t>(v);
            ++ip;
            continue;
        }
        const uint32_t high = s.high;
        if (high != 0) {
            if (!isLowSurrogate(v)) {
                throwLoneHighSurrogate();
            }
            s.high = 0;
        } else if (isLowSurrogate(v)) {
            throwLoneLowSurrogate();
        }
        // Mark, then the unit or units: at most three UTF-16 units or two
        // UTF-32 values, of which the held array keeps all but one byte.
        uint8_t bytes[Width == 2 ? 6 : 8];
        int n = 0;
        if (s.markPending) {
            storeWideUnit<Width>(0xFEFF, big, bytes);
            n = Width;
            s.markPending = false;
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
        ++ip;
        op = putHeld(bytes, n, s, out, op, outEnd);
    }

    state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

template <typename State>
int32_t flushWide(State& state, signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    checkFlushArguments(outBytes, outPos, outEnd);
    if (state.heldCount == 0 && state.high != 0) {
        throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    *outPos = drainHeld(state, reinterpret_cast<uint8_t*>(outBytes), start, outEnd);
    return *outPos - start;
}

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
