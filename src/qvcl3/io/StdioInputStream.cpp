#include <qv/io/StdioInputStream.h>

#include <qv/io/IoException.h>

#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

namespace qv {
namespace io {

StdioInputStream::StdioInputStream() noexcept = default;

StdioInputStream::~StdioInputStream() = default;

int32_t StdioInputStream::read(signed char* buffer, int32_t count)
{
    if (!detail::wantsBytes(buffer, count))
        return 0;
    int32_t length = 0;
    const Result result = QVStdReadLine(reinterpret_cast<char*>(buffer), count, &length);
    if (failed(result))
        throw IoException(u"stream read error");
    return result == QV_S_FALSE ? -1 : length;
}

int32_t StdioInputStream::skip(int32_t count)
{
    if (count <= 0)
        return 0;
    if (failed(QVStdSeek(count)))
        throw IoException(u"stream seek error");
    return count;
}

} // namespace io
} // namespace qv
