#ifndef QVCL3_IO_BYTEBUFFERACCESS_H
#define QVCL3_IO_BYTEBUFFERACCESS_H

#include <qv/core/Boundary.h>
#include <qv/util/IByteBuffer.h>

#include <cstdint>
#include <limits>

#include "io/StreamChecks.h"

namespace qv {
namespace io {
namespace detail {

// Appends at most max bytes after the buffer's length, under its write lock:
// fill(destination, max) returns the bytes it stored, or -1 at the end. The
// length grows by what was stored; a throwing fill leaves it as it was.
template <class Fill>
int32_t appendToBuffer(util::IByteBuffer* buffer, int32_t max, Fill&& fill)
{
    requireArgument(buffer != nullptr);
    if (max < 1)
        return 0;
    int32_t length = buffer->GetLength();
    if (max > std::numeric_limits<int32_t>::max() - length)
        max = std::numeric_limits<int32_t>::max() - length;
    signed char* data = nullptr;
    qvcom::throwIfFailed(buffer->GetWriteLock(length + max, &data));
    int32_t stored;
    try {
        stored = fill(data + length, max);
    } catch (...) {
        buffer->ReleaseWriteLock(-1);
        throw;
    }
    buffer->ReleaseWriteLock(stored > 0 ? length + stored : -1);
    return stored;
}

// use(bytes, length) over the buffer's bytes, under its read lock.
template <class Use>
void readFromBuffer(const util::IByteBuffer* buffer, Use&& use)
{
    requireArgument(buffer != nullptr);
    const signed char* data = nullptr;
    qvcom::throwIfFailed(buffer->GetReadLock(&data));
    try {
        use(data, buffer->GetLength());
    } catch (...) {
        buffer->ReleaseReadLock();
        throw;
    }
    buffer->ReleaseReadLock();
}

} // namespace detail
} // namespace io
} // namespace qv

#endif
