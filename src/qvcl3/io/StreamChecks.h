#ifndef QVCL3_IO_STREAMCHECKS_H
#define QVCL3_IO_STREAMCHECKS_H

#include <qv/core/Reference.h>

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

// Closes what a wrapper wraps: finish() first hands on what the wrapper
// holds, then the wrapped object is closed, also when finish() throws (that
// exception then passes on). target is null afterwards, which is how the
// wrappers know they are closed; a second call does nothing.
template <class T, class Finish>
void closeWrapped(Reference<T>& target, Finish&& finish)
{
    if (!target)
        return;
    Reference<T> held = target;
    try {
        finish();
    } catch (...) {
        target = nullptr;
        held->close();
        throw;
    }
    target = nullptr;
    held->close();
}

} // namespace detail
} // namespace io
} // namespace qv

#endif
