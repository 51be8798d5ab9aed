#include "FaultInjection.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

QVRESULT FileError(int error) noexcept
{
    return error == EBADF ? QV_E_INVALIDARG : QVResultFromNative(error);
}

uint32_t TypeOf(mode_t mode) noexcept
{
    if (S_ISREG(mode))
        return QV_FILE_TYPE_REGULAR;
    if (S_ISDIR(mode))
        return QV_FILE_TYPE_DIRECTORY;
    if (S_ISCHR(mode))
        return QV_FILE_TYPE_CHARACTER;
    if (S_ISFIFO(mode))
        return QV_FILE_TYPE_PIPE;
    if (S_ISSOCK(mode))
        return QV_FILE_TYPE_SOCKET;
    return QV_FILE_TYPE_OTHER;
}

} // namespace

extern "C" QVRESULT QVFileOpen(const char* path, uint32_t flags, int32_t* fd) noexcept
{
    if (!fd || !path)
        return QV_E_POINTER;
    *fd = -1;
    if (path[0] == '\0' || (flags & ~0x3Fu) != 0)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVFileOpen);
    int mode = O_CLOEXEC;
    if (flags & QV_FILE_WRITE)
        mode |= (flags & QV_FILE_READ) ? O_RDWR : O_WRONLY;
    else
        mode |= O_RDONLY;
    if (flags & QV_FILE_CREATE)
        mode |= O_CREAT;
    if (flags & QV_FILE_TRUNCATE)
        mode |= O_TRUNC;
    if (flags & QV_FILE_APPEND)
        mode |= O_APPEND;
    if (flags & QV_FILE_EXCLUSIVE)
        mode |= O_EXCL;
    int opened;
    do {
        opened = open(path, mode, 0666);
    } while (opened < 0 && errno == EINTR);
    if (opened < 0)
        return QVResultFromNative(errno);
    // Reading a directory fails only at the first read; say so at once.
    struct stat info;
    if (fstat(opened, &info) == 0 && S_ISDIR(info.st_mode)) {
        close(opened);
        errno = EISDIR;
        return QVResultFromNative(EISDIR);
    }
    *fd = opened;
    return QV_S_OK;
}

extern "C" QVRESULT QVFileSeek(int32_t fd, int64_t offset, int32_t origin, int64_t* position) noexcept
{
    if (position)
        *position = -1;
    if (fd < 0 || origin < QV_SEEK_SET || origin > QV_SEEK_END)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVFileSeek);
    static const int whence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const off_t result = lseek(fd, static_cast<off_t>(offset), whence[origin]);
    if (result < 0)
        return FileError(errno);
    if (position)
        *position = static_cast<int64_t>(result);
    return QV_S_OK;
}

extern "C" QVRESULT QVFileGetStatus(int32_t fd, STRUCT_QV_FILE_STATUS* status) noexcept
{
    if (!status)
        return QV_E_POINTER;
    std::memset(status, 0, sizeof *status);
    if (fd < 0)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVFileGetStatus);
    struct stat info;
    if (fstat(fd, &info) != 0)
        return FileError(errno);
    status->size = static_cast<int64_t>(info.st_size);
    status->modified = static_cast<int64_t>(info.st_mtime);
    status->type = TypeOf(info.st_mode);
    status->permissions = static_cast<uint32_t>(info.st_mode & 0777);
    return QV_S_OK;
}

extern "C" QVRESULT QVFileAvailable(int32_t fd, int64_t* count) noexcept
{
    if (!count)
        return QV_E_POINTER;
    *count = 0;
    if (fd < 0)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVFileAvailable);
    struct stat info;
    if (fstat(fd, &info) != 0)
        return FileError(errno);
    if (S_ISREG(info.st_mode)) {
        const off_t position = lseek(fd, 0, SEEK_CUR);
        if (position >= 0 && position < info.st_size)
            *count = static_cast<int64_t>(info.st_size - position);
        return QV_S_OK;
    }
    int pending = 0;
    if ((S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode) || S_ISCHR(info.st_mode)) &&
        ioctl(fd, FIONREAD, &pending) == 0 && pending > 0)
        *count = pending;
    return QV_S_OK;
}

extern "C" QVRESULT QVResultGetText(QVRESULT code, char* buffer, int32_t capacity) noexcept
{
    if (!buffer)
        return QV_E_POINTER;
    if (capacity < 1)
        return QV_E_INVALIDARG;
    const int saved = errno;
    int native = 0;
    if (saved != 0 && QVResultFromNative(saved) == code) {
        native = saved;
    } else {
        switch (static_cast<uint32_t>(code)) {
        case 0x80070002u: native = ENOENT; break;
        case 0x8007000Eu: native = ENOMEM; break;
        case 0x80070057u: native = EINVAL; break;
        case 0x80070005u: native = EACCES; break;
        case 0x800700B7u: native = EEXIST; break;
        case 0x800705B4u: native = ETIMEDOUT; break;
        default:
            if ((static_cast<uint32_t>(code) & 0xFFFF0000u) == 0x80070000u)
                native = static_cast<int>(static_cast<uint32_t>(code) & 0xFFFFu);
            break;
        }
    }
    if (native != 0) {
        char text[256];
        // The GNU form returns the text, which may or may not be in `text`.
        const char* message = strerror_r(native, text, sizeof text);
        std::snprintf(buffer, static_cast<size_t>(capacity), "%s", message);
    } else {
        std::snprintf(buffer, static_cast<size_t>(capacity), "error 0x%08X", static_cast<unsigned>(code));
    }
    errno = saved;
    return QV_S_OK;
}
