#include <qv/io/FileOutputStream.h>

#include <qv/io/IoException.h>

#include "io/FileSupport.h"
#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

namespace qv {
namespace io {

FileOutputStream::FileOutputStream(const String& name, bool append)
    : FileOutputStream(util::FilePath(name), append ? APPEND : 0u)
{}

FileOutputStream::FileOutputStream(const String& name, uint32_t flags) : FileOutputStream(util::FilePath(name), flags)
{}

FileOutputStream::FileOutputStream(const String& name, int flags)
    : FileOutputStream(util::FilePath(name), static_cast<uint32_t>(flags))
{}

FileOutputStream::FileOutputStream(const util::FilePath& path, bool append)
    : FileOutputStream(path, append ? APPEND : 0u)
{}

FileOutputStream::FileOutputStream(const util::FilePath& path, uint32_t flags)
{
    open(path, flags);
}

FileOutputStream::FileOutputStream(const util::FilePath& path, int flags)
{
    open(path, static_cast<uint32_t>(flags));
}

FileOutputStream::FileOutputStream(int32_t handle, bool owns)
    : m_name(detail::handleName(handle)), m_handle(handle), m_owns(owns)
{
    if (handle < 0)
        throw ResultException(results::INVALIDARG);
}

FileOutputStream::~FileOutputStream()
{
    if (m_handle >= 0 && m_owns)
        QVFileClose(m_handle);
}

void FileOutputStream::open(const util::FilePath& path, uint32_t flags)
{
    m_name = path.getPath();
    m_flags = flags;
    m_owns = true;
    uint32_t mode = QV_FILE_WRITE | QV_FILE_CREATE;
    if (flags & APPEND)
        mode |= QV_FILE_APPEND;
    else if (!(flags & ATEND))
        mode |= QV_FILE_TRUNCATE;
    int32_t handle = -1;
    Result result = QVFileOpen(path.toNarrow().c_str(), mode, &handle);
    if (failed(result))
        detail::throwFileError(u"cannot open file", m_name, result);
    if ((flags & ATEND) && !(flags & APPEND)) {
        result = QVFileSeek(handle, 0, QV_SEEK_END, nullptr);
        if (failed(result)) {
            QVFileClose(handle);
            detail::throwFileError(u"cannot seek file", m_name, result);
        }
    }
    m_handle = handle;
    int32_t pipeOrSocket = 1;
    m_cannotRaiseSigpipe = QVFileIsPipeOrSocket(handle, &pipeOrSocket) == QV_S_OK && pipeOrSocket == 0;
}

void FileOutputStream::write(const signed char* buffer, int32_t count)
{
    detail::ensureOpen(m_handle);
    if (!detail::hasBytes(buffer, count))
        return;
    uint32_t done = 0;
    const Result result = m_cannotRaiseSigpipe
                              ? QVFileWriteUnguarded(m_handle, buffer, static_cast<uint32_t>(count), &done)
                              : QVFileWrite(m_handle, buffer, static_cast<uint32_t>(count), &done);
    if (failed(result))
        detail::throwFileError(u"cannot write file", m_name, result);
}

void FileOutputStream::flush()
{
    detail::ensureOpen(m_handle);
}

void FileOutputStream::close()
{
    detail::closeHandle(m_handle, m_owns, m_name);
}

} // namespace io
} // namespace qv
