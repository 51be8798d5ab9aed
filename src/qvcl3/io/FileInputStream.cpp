#include <qv/io/FileInputStream.h>

#include <qv/io/IoException.h>

#include "io/FileSupport.h"
#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

#include <limits>

namespace qv {
namespace io {

FileInputStream::FileInputStream(const String& name) : FileInputStream(util::FilePath(name)) {}

FileInputStream::FileInputStream(const util::FilePath& path) : m_name(path.getPath()), m_handle(-1), m_owns(true)
{
    const Result result = QVFileOpen(path.toNarrow().c_str(), QV_FILE_READ, &m_handle);
    if (failed(result))
        detail::throwFileError(u"cannot open file", m_name, result);
}

FileInputStream::FileInputStream(int32_t handle, bool owns)
    : m_name(detail::handleName(handle)), m_handle(handle), m_owns(owns)
{
    if (handle < 0)
        throw ResultException(results::INVALIDARG);
}

FileInputStream::~FileInputStream()
{
    if (m_handle >= 0 && m_owns)
        QVFileClose(m_handle);
}

int32_t FileInputStream::read(signed char* buffer, int32_t count)
{
    detail::ensureOpen(m_handle);
    if (!detail::wantsBytes(buffer, count))
        return 0;
    uint32_t done = 0;
    const Result result = QVFileRead(m_handle, buffer, static_cast<uint32_t>(count), &done);
    if (failed(result))
        detail::throwFileError(u"cannot read file", m_name, result);
    return done == 0 ? -1 : static_cast<int32_t>(done);
}

int FileInputStream::read()
{
    signed char byte;
    return read(&byte, 1) < 0 ? -1 : static_cast<unsigned char>(byte);
}

int32_t FileInputStream::skip(int32_t count)
{
    detail::ensureOpen(m_handle);
    if (count <= 0)
        return 0;
    STRUCT_QV_FILE_STATUS status;
    int64_t position = 0;
    if (failed(QVFileGetStatus(m_handle, &status)) || status.type != QV_FILE_TYPE_REGULAR ||
        failed(QVFileSeek(m_handle, 0, QV_SEEK_CURRENT, &position)))
        return InputStream::skip(count);
    const int64_t left = status.size > position ? status.size - position : 0;
    const int64_t n = count < left ? count : left;
    const Result result = QVFileSeek(m_handle, n, QV_SEEK_CURRENT, nullptr);
    if (failed(result))
        detail::throwFileError(u"cannot seek file", m_name, result);
    return static_cast<int32_t>(n);
}

int32_t FileInputStream::available()
{
    detail::ensureOpen(m_handle);
    int64_t count = 0;
    const Result result = QVFileAvailable(m_handle, &count);
    if (failed(result))
        detail::throwFileError(u"cannot get the status of file", m_name, result);
    return count > std::numeric_limits<int32_t>::max() ? std::numeric_limits<int32_t>::max()
                                                       : static_cast<int32_t>(count);
}

void FileInputStream::close()
{
    detail::closeHandle(m_handle, m_owns, m_name);
}

int64_t FileInputStream::getPosition()
{
    detail::ensureOpen(m_handle);
    int64_t position = 0;
    const Result result = QVFileSeek(m_handle, 0, QV_SEEK_CURRENT, &position);
    if (failed(result))
        detail::throwFileError(u"cannot seek file", m_name, result);
    return position;
}

int64_t FileInputStream::getSize()
{
    detail::ensureOpen(m_handle);
    STRUCT_QV_FILE_STATUS status;
    const Result result = QVFileGetStatus(m_handle, &status);
    if (failed(result))
        detail::throwFileError(u"cannot get the status of file", m_name, result);
    return status.size;
}

} // namespace io
} // namespace qv
