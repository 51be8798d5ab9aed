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
// IoException "stream returned no data".
[[noreturn]] void throwNoData();
// ResultException(0x80070057) unless the condition holds.
void requireArgument(bool valid);

// Calls read() until it gives something (or -1). A source may answer 0 now
// and then; one that keeps answering 0 would make its reader spin forever,
// so after 64 empty answers in a row that is IoException
// "stream returned no data".
template <class Read>
int32_t readSomething(Read&& read)
{
    for (int empty = 0; empty < 64; ++empty) {
        int32_t n = read();
        if (n != 0)
            return n;
    }
    throwNoData();
}

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
