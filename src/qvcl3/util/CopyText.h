#ifndef QVCL3_UTIL_COPYTEXT_H
#define QVCL3_UTIL_COPYTEXT_H

#include <qv/core/Result.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <cstdint>

namespace qv {
namespace util {
namespace detail {

// Text handed out into a caller's buffer of size units: 0x80004009 and
// nothing copied when the text and its NUL do not fit; else the text,
// padded with NULs to the end of the buffer.
inline Result copyText(const String& text, char16_t* buffer, unsigned int size)
{
    if (!buffer)
        return results::POINTER;
    if (static_cast<uint64_t>(text.getLength()) + 1 > size)
        return results::BUFFER_TOO_SMALL;
    QVStrNCpyW(buffer, text.getData(), static_cast<int32_t>(size));
    return results::OK;
}

} // namespace detail
} // namespace util
} // namespace qv

#endif
