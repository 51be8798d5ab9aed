#include "exec/PipeStreams.h"

#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

#include "io/StreamSupport.h"

namespace qv {
namespace exec {

namespace {

// Gives the descriptor back; true when the platform agreed.
bool closeDescriptor(int32_t& fd) noexcept
{
    if (fd < 0)
        return true;
    const int32_t closing = fd;
    fd = -1; // gone even when close reports a failure
    return QVFileClose(closing) >= 0;
}

} // namespace

PipeInputStream::~PipeInputStream()
{
    closeDescriptor(m_fd);
}

void PipeInputStream::checkOpen() const
{
    if (m_closed)
        throw io::IoException(u"stream closed");
}

int32_t PipeInputStream::read(signed char* buffer, int32_t count)
{
    checkOpen();
    if (!io::detail::wantsBytes(buffer, count))
        return 0;
    if (m_fd < 0)
        return -1;
    uint32_t done = 0;
    if (QVFileRead(m_fd, buffer, static_cast<uint32_t>(count), &done) < 0)
        throw io::IoException(u"stream read error");
    return done == 0 ? -1 : static_cast<int32_t>(done);
}

int32_t PipeInputStream::available()
{
    checkOpen();
    int64_t count = 0;
    if (m_fd < 0 || QVFileAvailable(m_fd, &count) < 0)
        return 0;
    return count > INT32_MAX ? INT32_MAX : static_cast<int32_t>(count);
}

void PipeInputStream::close()
{
    m_closed = true;
    if (!closeDescriptor(m_fd))
        throw io::IoException(u"stream close error");
}

PipeOutputStream::~PipeOutputStream()
{
    closeDescriptor(m_fd);
}

void PipeOutputStream::write(const signed char* buffer, int32_t count)
{
    if (!io::detail::hasBytes(buffer, count))
        return;
    if (m_fd < 0)
        throw io::IoException(u"stream closed");
    uint32_t done = 0;
    if (QVFileWrite(m_fd, buffer, static_cast<uint32_t>(count), &done) < 0)
        throw io::IoException(u"stream write error");
}

void PipeOutputStream::close()
{
    if (!closeDescriptor(m_fd))
        throw io::IoException(u"stream close error");
}

} // namespace exec
} // namespace qv
