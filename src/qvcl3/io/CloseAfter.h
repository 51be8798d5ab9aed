#ifndef QVCL3_IO_CLOSEAFTER_H
#define QVCL3_IO_CLOSEAFTER_H

#include <exception>

namespace qv {
namespace io {
namespace detail {

// Runs `finish` (pass on what is held), then `close`, which runs even when
// `finish` fails so that no handle outlives the stream; the first failure is
// the one reported.
template <class Finish, class Close>
void finishThenClose(Finish&& finish, Close&& close)
{
    std::exception_ptr failure;
    try {
        finish();
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        close();
    } catch (...) {
        if (!failure)
            failure = std::current_exception();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace detail
} // namespace io
} // namespace qv

#endif
