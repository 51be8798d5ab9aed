#include <qv/io/StdioOutputStream.h>

#include <qv/io/IoException.h>

#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

namespace qv {
namespace io {

StdioOutputStream::StdioOutputStream(bool standardError) noexcept
    : m_stream(standardError ? QV_STD_ERROR : QV_STD_OUTPUT)
{}

StdioOutputStream::~StdioOutputStream() = default;

Reference<StdioOutputStream> StdioOutputStream::getStdOutputStream()
{
    return makeReference<StdioOutputStream>(false);
}

Reference<StdioOutputStream> StdioOutputStream::getStdErrorStream()
{
    return makeReference<StdioOutputStream>(true);
}

void StdioOutputStream::write(const signed char* buffer, int32_t count)
{
    if (!detail::hasBytes(buffer, count))
        return;
    if (failed(QVStdWrite(m_stream, buffer, static_cast<uint32_t>(count))))
        throw IoException(u"stream write error");
}

void StdioOutputStream::flush()
{
    if (failed(QVStdFlush(m_stream)))
        throw IoException(u"stream flush error");
}

} // namespace io
} // namespace qv
