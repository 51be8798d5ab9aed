#ifndef QVCL3_IO_ALPHANUMALPHABET_H
#define QVCL3_IO_ALPHANUMALPHABET_H

#include <cstdint>

namespace qv {
namespace io {
namespace detail {

// Checks an alphabet of the alphanumeric streams (null: the default one)
// and gives its 32 characters as the bytes they are written as. Anything
// but 32 distinct characters from U+0001 to U+00FF throws
// ResultException(0x80070057): a duplicate would make decoding ambiguous,
// and a wider character would lose its high bits on the way out.
void loadAlphabet(const char16_t* alphabet, signed char (&characters)[32]);

} // namespace detail
} // namespace io
} // namespace qv

#endif
