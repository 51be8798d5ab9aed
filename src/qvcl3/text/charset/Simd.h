#ifndef QVCL3_TEXT_CHARSET_SIMD_H
#define QVCL3_TEXT_CHARSET_SIMD_H

// The converters' block loops use SSE2, which every x86-64 processor has,
// and the little-endian byte order of x86-64 for multi-byte loads and
// stores. Elsewhere (or with QVCL3_CHARSET_NO_SIMD, to exercise the scalar
// code on x86-64) the scalar loops do all the work; the results are the
// same.

#include <cstdint>

#if defined(__SSE2__) && defined(__x86_64__) && !defined(QVCL3_CHARSET_NO_SIMD)
#define QVCL3_CHARSET_SSE2 1
#include <emmintrin.h>
#endif

namespace qv {
namespace text {
namespace charset {
namespace detail {

// Index of the lowest set bit of a non-zero mask.
inline int lowestBit(uint32_t mask)
{
    static const uint8_t position[32] = {0,  1,  28, 2,  29, 14, 24, 3, 30, 22, 20, 15, 25, 17, 4,  8,
                                         31, 27, 13, 23, 21, 19, 16, 7, 26, 12, 18, 6,  11, 5,  10, 9};
    return position[((mask & (0u - mask)) * 0x077CB531u) >> 27];
}

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
