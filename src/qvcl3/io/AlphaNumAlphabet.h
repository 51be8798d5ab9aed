#ifndef QVCL3_IO_ALPHANUMALPHABET_H
#define QVCL3_IO_ALPHANUMALPHABET_H

#include <cstdint>

namespace qv {
namespace io {
namespace detail {

// Checks an alphabet of the alphanumeric streams (null: the default one)
// and copies its 32 characters. Any other length throws
// ResultException(0x80070057). Repeats and characters above U+00FF are
// accepted as callers may hand them in: the encoder writes a character's low
// eight bits, and the decoder gives a byte the first index holding it.
void loadAlphabet(const char16_t* alphabet, char16_t (&characters)[32]);

} // namespace detail
} // namespace io
} // namespace qv

#endif
