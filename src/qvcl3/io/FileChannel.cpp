#include <qv/io/FileChannel.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

#include <limits>

#include "io/ByteBufferAccess.h"
#include "io/StreamChecks.h"

namespace qv {
namespace io {

namespace {

constexpr uint32_t kModes = FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE | FileChannel::TRUNCATE |
                            FileChannel::APPEND | FileChannel::EXCLUSIVE;

uint32_t platformFlags(uint32_t mode)
{
    uint32_t flags = 0;
    if (mode & FileChannel::READ)
        flags |= QV_FILE_CHANNEL_READ;
    if (mode & FileChannel::WRITE)
        flags |= QV_FILE_CHANNEL_WRITE;
    if (mode & FileChannel::CREATE)
        flags |= QV_FILE_CHANNEL_CREATE;
    if (mode & FileChannel::TRUNCATE)
        flags |= QV_FILE_CHANNEL_TRUNCATE;
    if (mode & FileChannel::EXCLUSIVE)
        flags |= QV_FILE_CHANNEL_EXCLUSIVE;
    return flags;
}

// "<what>: <path> (0x<code>)".
[[noreturn]] void throwFileFailure(const char16_t* what, const String& path, Result code)
{
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    char16_t hex[12] = {u' ', u'(', u'0', u'x'};
    for (int i = 0; i < 8; ++i)
        hex[4 + i] = kDigits[(static_cast<uint32_t>(code) >> (28 - 4 * i)) & 0xF];
    String message(what);
    message.append(u": ").append(path).append(hex, 12).append(u')');
    throw IoException(message);
}

} // namespace

QV_BEGIN_INTERFACE_MAP(FileChannel)
QV_INTERFACE_ENTRY(FileChannel, ReadableChannel)
QV_INTERFACE_ENTRY(FileChannel, WritableChannel)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Reference<FileChannel> FileChannel::open(const String& path, uint32_t mode)
{
    detail::requireArgument((mode & ~kModes) == 0 && (mode & (READ | WRITE)) != 0);
    int32_t fd = -1;
    Result code = QVFileChannelOpen(path.getData(), platformFlags(mode), &fd);
    if (code < 0) {
        if (code == results::OUTOFMEMORY)
            throw OutOfMemoryException();
        if (code == results::INVALIDARG)
            qvcom::throwIfFailed(code);
        throwFileFailure(u"cannot open file", path, code);
    }
    try {
        return Reference<FileChannel>(new FileChannel(path, fd, mode));
    } catch (...) {
        QVFileClose(fd);
        throw;
    }
}

FileChannel::FileChannel(const String& path, int32_t fd, uint32_t mode) : m_path(path), m_fd(fd), m_mode(mode) {}

FileChannel::~FileChannel()
{
    if (m_fd >= 0)
        QVFileClose(m_fd);
}

void FileChannel::ensureOpen() const
{
    if (m_fd < 0)
        throw ResultException(results::ILLEGAL_METHOD_CALL, QV_STR(u"channel not open"));
}

void FileChannel::ensureMode(uint32_t needed) const
{
    ensureOpen();
    if (!(m_mode & needed))
        throw ResultException(results::ILLEGAL_METHOD_CALL, needed == READ ? QV_STR(u"channel not open for reading")
                                                                           : QV_STR(u"channel not open for writing"));
}

void FileChannel::fail(const char16_t* operation, Result code) const
{
    throwFileFailure(operation, m_path, code);
}

int32_t FileChannel::readAt(util::IByteBuffer* buffer, int32_t max, int64_t position)
{
    ensureMode(READ);
    detail::requireArgument(position >= 0);
    return detail::appendToBuffer(buffer, max, [&](signed char* data, int32_t room) {
        uint32_t done = 0;
        Result code = QVFileReadAt(m_fd, data, static_cast<uint32_t>(room), position, &done);
        if (code < 0)
            fail(u"cannot read file", code);
        return done == 0 ? -1 : static_cast<int32_t>(done);
    });
}

int32_t FileChannel::writeAt(const util::IByteBuffer* buffer, int64_t position)
{
    detail::requireArgument(position >= 0);
    uint32_t done = 0;
    detail::readFromBuffer(buffer, [&](const signed char* data, int32_t length) {
        Result code = length > 0 ? QVFileWriteAt(m_fd, data, static_cast<uint32_t>(length), position, &done) : 0;
        if (code < 0)
            fail(u"cannot write file", code);
    });
    return static_cast<int32_t>(done);
}

int32_t FileChannel::read(util::IByteBuffer* buffer, int32_t max)
{
    int32_t n = readAt(buffer, max, m_position);
    if (n > 0)
        m_position += n;
    return n;
}

int32_t FileChannel::read(util::IByteBuffer* buffer, int32_t max, int64_t position)
{
    return readAt(buffer, max, position);
}

int32_t FileChannel::write(const util::IByteBuffer* buffer)
{
    ensureMode(WRITE);
    int64_t at = (m_mode & APPEND) ? size() : m_position;
    int32_t n = writeAt(buffer, at);
    m_position = at + n;
    return n;
}

int32_t FileChannel::write(const util::IByteBuffer* buffer, int64_t position)
{
    ensureMode(WRITE);
    return writeAt(buffer, position);
}

int64_t FileChannel::position() const
{
    ensureOpen();
    return m_position;
}

void FileChannel::position(int64_t newPosition)
{
    ensureOpen();
    detail::requireArgument(newPosition >= 0);
    m_position = newPosition;
}

int64_t FileChannel::size() const
{
    ensureOpen();
    int64_t bytes = 0;
    Result code = QVFileGetSize(m_fd, &bytes);
    if (code < 0)
        fail(u"cannot get file size", code);
    return bytes;
}

void FileChannel::truncate(int64_t newSize)
{
    ensureMode(WRITE);
    detail::requireArgument(newSize >= 0);
    if (newSize < size()) {
        Result code = QVFileSetSize(m_fd, newSize);
        if (code < 0)
            fail(u"cannot truncate file", code);
    }
    if (m_position > newSize)
        m_position = newSize;
}

void FileChannel::force(bool metadata)
{
    ensureOpen();
    Result code = QVFileSync(m_fd, metadata ? 1 : 0);
    if (code < 0)
        fail(u"cannot sync file", code);
}

Reference<FileLock> FileChannel::takeLock(int64_t position, int64_t size, bool shared, bool wait)
{
    ensureOpen();
    detail::requireArgument(position >= 0 && size >= 0 && size <= std::numeric_limits<int64_t>::max() - position);
    // The lock object exists before the range is locked, so that running
    // out of memory cannot leave a lock that nothing releases.
    Reference<FileLock> lock(new FileLock(this, position, size, shared));
    uint32_t flags = (shared ? QV_FILE_LOCK_SHARED : 0u) | (wait ? QV_FILE_LOCK_WAIT : 0u);
    Result code = QVFileLock(m_fd, position, size, flags);
    if (code == QV_E_BUSY && !wait) {
        lock->m_valid = false;
        return nullptr;
    }
    if (code < 0) {
        lock->m_valid = false;
        fail(u"cannot lock file", code);
    }
    return lock;
}

Reference<FileLock> FileChannel::lock(int64_t position, int64_t size, bool shared)
{
    return takeLock(position, size, shared, true);
}

Reference<FileLock> FileChannel::tryLock(int64_t position, int64_t size, bool shared)
{
    return takeLock(position, size, shared, false);
}

void FileChannel::unlock(int64_t position, int64_t size)
{
    if (m_fd < 0)
        return;
    Result code = QVFileUnlock(m_fd, position, size);
    if (code < 0)
        fail(u"cannot unlock file", code);
}

bool FileChannel::isOpen() const
{
    return m_fd >= 0;
}

// Closing the descriptor also gives up every lock taken through it.
void FileChannel::close()
{
    if (m_fd < 0)
        return;
    int32_t fd = m_fd;
    m_fd = -1;
    Result code = QVFileClose(fd);
    if (code < 0)
        fail(u"cannot close file", code);
}

String FileChannel::getPath() const
{
    return m_path;
}

FileLock::FileLock(FileChannel* channel, int64_t position, int64_t size, bool shared)
    : m_channel(channel), m_position(position), m_size(size), m_shared(shared)
{}

FileLock::~FileLock()
{
    if (m_valid && m_channel->isOpen())
        QVFileUnlock(m_channel->m_fd, m_position, m_size);
}

bool FileLock::isValid() const
{
    return m_valid && m_channel->isOpen();
}

void FileLock::release()
{
    if (!m_valid)
        return;
    m_valid = false;
    m_channel->unlock(m_position, m_size);
}

} // namespace io
} // namespace qv
