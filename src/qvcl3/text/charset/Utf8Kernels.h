#ifndef QVCL3_TEXT_CHARSET_UTF8KERNELS_H
#define QVCL3_TEXT_CHARSET_UTF8KERNELS_H

// The UTF-8 block loops for AVX2 and AVX-512, each in a source file built
// for its instruction set; call them only at that level (getUtf8SimdLevel).
//
// Each converts the longest run of whole blocks that it can vouch for and
// stops, positions on the first element not converted, before a block that
// holds anything invalid (or too close to either end of the buffers): the
// SSE2 and scalar steps then take over and find, report or finish exactly as
// they would have alone. So the kernels never decide an error, and every
// level throws the same exception at the same element.
//
// Like the SSE2 loops they write whole vectors, so slots between the
// returned output position and outEnd may have been written to.

#include <cstdint>

namespace qv {
namespace text {
namespace charset {
namespace detail {

void decodeUtf8Avx2(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd);
void encodeUtf8Avx2(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd);
void decodeUtf8Avx512(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd);
void encodeUtf8Avx512(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op, int32_t outEnd);

// Calls with more input than this go through the AVX-512 ASCII run below
// before the kernel. Its output, far larger than the caches, is staged in
// the first-level cache and streamed out in whole lines with non-temporal
// stores, which skip reading every output line from memory before writing
// it; for smaller outputs the copy only costs. Called from the drivers, not
// from the kernels: a call inside the encoding kernel cost the compiler's
// layout of its loop 4% on East Asian text.
constexpr int32_t asciiStreamedMinimum = 1024 * 1024;

// The leading run of whole all-ASCII blocks, converted as the kernels would,
// with streamed stores; stops at the first block holding anything else.
void decodeAsciiStreamedAvx512(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op,
                               int32_t outEnd);
void encodeAsciiStreamedAvx512(const char16_t* in, int32_t& ip, int32_t inEnd, uint8_t* out, int32_t& op,
                               int32_t outEnd);

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
