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

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
