#include "FaultInjection.h"
#include "Utf.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

using namespace qvcore3;

namespace {

constexpr uint32_t kOpenFlags = QV_FILE_CHANNEL_READ | QV_FILE_CHANNEL_WRITE | QV_FILE_CHANNEL_CREATE |
                                QV_FILE_CHANNEL_TRUNCATE | QV_FILE_CHANNEL_EXCLUSIVE;

// A bad descriptor is the caller's bad argument, as a bad handle is.
QVRESULT ChannelError(int error) noexcept
{
    return error == EBADF ? QV_E_INVALIDARG : QVResultFromNative(error);
}

bool ValidRange(int64_t position, int64_t length) noexcept
{
    return position >= 0 && length >= 0 && length <= std::numeric_limits<int64_t>::max() - position;
}

} // namespace

extern "C" QVRESULT QVFileChannelOpen(const char16_t* path, uint32_t flags, int32_t* fd) noexcept
{
    if (!path || !fd) {
        return QV_E_POINTER;
    }
    *fd = -1;
    const bool reading = (flags & QV_FILE_CHANNEL_READ) != 0;
    const bool writing = (flags & QV_FILE_CHANNEL_WRITE) != 0;
    if (*path == 0 || (flags & ~kOpenFlags) != 0 || (!reading && !writing) ||
        ((flags & QV_FILE_CHANNEL_TRUNCATE) && !writing) ||
        ((flags & QV_FILE_CHANNEL_EXCLUSIVE) && !(flags & QV_FILE_CHANNEL_CREATE))) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileChannelOpen);
    Utf8String narrow;
    QVRESULT result = narrow.assign(path);
    if (QV_FAILED(result)) {
        return result;
    }
    int mode = reading && writing ? O_RDWR : writing ? O_WRONLY : O_RDONLY;
    if (flags & QV_FILE_CHANNEL_CREATE) {
        mode |= O_CREAT;
    }
    if (flags & QV_FILE_CHANNEL_TRUNCATE) {
        mode |= O_TRUNC;
    }
    if (flags & QV_FILE_CHANNEL_EXCLUSIVE) {
        mode |= O_EXCL;
    }
    for (;;) {
        const int opened = open(narrow.c_str(), mode | O_CLOEXEC, 0666);
        if (opened >= 0) {
            *fd = opened;
            return QV_S_OK;
        }
        if (errno != EINTR) {
            return QVResultFromNative(errno);
        }
    }
}

extern "C" QVRESULT QVFileReadAt(int32_t fd, void* data, uint32_t size, int64_t position, uint32_t* done) noexcept
{
    if (!done || (!data && size != 0)) {
        return QV_E_POINTER;
    }
    *done = 0;
    if (fd < 0 || position < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileReadAt);
    for (;;) {
        const ssize_t count = pread(fd, data, size, static_cast<off_t>(position));
        if (count >= 0) {
            *done = static_cast<uint32_t>(count);
            return QV_S_OK;
        }
        if (errno != EINTR) {
            return ChannelError(errno);
        }
    }
}

extern "C" QVRESULT QVFileWriteAt(int32_t fd, const void* data, uint32_t size, int64_t position,
                                  uint32_t* done) noexcept
{
    if (!done || (!data && size != 0)) {
        return QV_E_POINTER;
    }
    *done = 0;
    if (fd < 0 || !ValidRange(position, size)) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileWriteAt);
    const char* bytes = static_cast<const char*>(data);
    uint32_t written = 0;
    while (written < size) {
        const ssize_t count = pwrite(fd, bytes + written, size - written, static_cast<off_t>(position + written));
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            *done = written;
            return ChannelError(errno);
        }
        written += static_cast<uint32_t>(count);
    }
    *done = written;
    return QV_S_OK;
}

extern "C" QVRESULT QVFileGetSize(int32_t fd, int64_t* size) noexcept
{
    if (!size) {
        return QV_E_POINTER;
    }
    *size = 0;
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileGetSize);
    struct stat status;
    if (fstat(fd, &status) != 0) {
        return ChannelError(errno);
    }
    *size = static_cast<int64_t>(status.st_size);
    return QV_S_OK;
}

extern "C" QVRESULT QVFileSetSize(int32_t fd, int64_t size) noexcept
{
    if (fd < 0 || size < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileSetSize);
    while (ftruncate(fd, static_cast<off_t>(size)) != 0) {
        if (errno != EINTR) {
            return ChannelError(errno);
        }
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVFileSync(int32_t fd, int32_t metadata) noexcept
{
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileSync);
    while ((metadata ? fsync(fd) : fdatasync(fd)) != 0) {
        if (errno != EINTR) {
            return ChannelError(errno);
        }
    }
    return QV_S_OK;
}

namespace {

// Open-file-description locks: owned by the open file rather than the
// process, so they also exclude threads of one process that opened the file
// twice, and closing an unrelated descriptor of the file keeps them.
QVRESULT ChangeLock(int32_t fd, short type, int64_t position, int64_t length, bool wait) noexcept
{
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(position);
    range.l_len = static_cast<off_t>(length);
    range.l_pid = 0;
    for (;;) {
        if (fcntl(fd, wait ? F_OFD_SETLKW : F_OFD_SETLK, &range) == 0) {
            return QV_S_OK;
        }
        if (errno == EINTR) {
            continue;
        }
        if (!wait && (errno == EAGAIN || errno == EACCES)) {
            return QV_E_BUSY;
        }
        return ChannelError(errno);
    }
}

} // namespace

extern "C" QVRESULT QVFileLock(int32_t fd, int64_t position, int64_t length, uint32_t flags) noexcept
{
    if (fd < 0 || !ValidRange(position, length) || (flags & ~(QV_FILE_LOCK_SHARED | QV_FILE_LOCK_WAIT)) != 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileLock);
    return ChangeLock(fd, (flags & QV_FILE_LOCK_SHARED) ? F_RDLCK : F_WRLCK, position, length,
                      (flags & QV_FILE_LOCK_WAIT) != 0);
}

extern "C" QVRESULT QVFileUnlock(int32_t fd, int64_t position, int64_t length) noexcept
{
    if (fd < 0 || !ValidRange(position, length)) {
        return QV_E_INVALIDARG;
    }
    return ChangeLock(fd, F_UNLCK, position, length, false);
}
