#ifndef QVCL3_IO_STREAMARGUMENTS_H
#define QVCL3_IO_STREAMARGUMENTS_H

#include <qv/core/Exception.h>

#include <cstdint>

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

} // namespace detail
} // namespace io
} // namespace qv

#endif
