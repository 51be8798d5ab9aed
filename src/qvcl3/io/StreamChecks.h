#ifndef QVCL3_IO_STREAMCHECKS_H
#define QVCL3_IO_STREAMCHECKS_H

#include <cstdint>

namespace qv {
namespace io {
namespace detail {

// IoException "stream closed": every operation of a closed buffered stream,
// reader or writer.
[[noreturn]] void throwStreamClosed();
// The buffered reset without a usable mark: "mark invalid" after the mark
// was dropped (markPos -2), "stream not marked" otherwise.
[[noreturn]] void throwNoMark(int32_t markPos);
// IoException "mark/reset not supported".
[[noreturn]] void throwMarkNotSupported();
// ResultException(0x80070057) unless the condition holds.
void requireArgument(bool valid);

} // namespace detail
} // namespace io
} // namespace qv

#endif
