#ifndef QVCL3_IO_STREAMSUPPORT_H
#define QVCL3_IO_STREAMSUPPORT_H

#include <qv/core/Exception.h>

#include <qvcore3/qvcore3.h>

#include <cstdint>
#include <exception>

namespace qv {
namespace io {
namespace detail {

// A read of count < 1 returns 0 without looking at the buffer; a positive
// count needs a buffer. True when there is something to read.
inline bool wantsBytes(const void* buffer, int32_t count)
{
    if (count < 1)
        return false;
    if (!buffer)
        throw ResultException(results::INVALIDARG);
    return true;
}

// A write of a negative count, or of a positive count from no buffer, is the
// caller's mistake; a write of 0 bytes does nothing. True when there is
// something to write.
inline bool hasBytes(const void* buffer, int32_t count)
{
    if (count < 0 || (count > 0 && !buffer))
        throw ResultException(results::INVALIDARG);
    return count > 0;
}

// A block from the platform allocator; OutOfMemoryException when there is
// none. Callers allocate before they change anything, so a failure leaves
// the stream as it was.
inline signed char* allocateBlock(int64_t size)
{
    void* block = size > 0 ? QVMemAlloc(static_cast<size_t>(size)) : nullptr;
    if (!block)
        throw OutOfMemoryException();
    return static_cast<signed char*>(block);
}

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
