#include "FaultInjection.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

extern "C" QVRESULT QVPathGetStatus(const char* path, STRUCT_QV_PATH_STATUS* status) noexcept
{
    if (!path || !status) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVPathGetStatus);
    struct stat info;
    if (stat(path, &info) != 0) {
        return QVResultFromNative(errno);
    }
    status->size = static_cast<int64_t>(info.st_size);
    status->modifiedNanoseconds =
        static_cast<int64_t>(info.st_mtim.tv_sec) * 1000000000LL + static_cast<int64_t>(info.st_mtim.tv_nsec);
    status->mode = static_cast<uint32_t>(info.st_mode & 07777);
    status->isDirectory = S_ISDIR(info.st_mode) ? 1 : 0;
    return QV_S_OK;
}

extern "C" QVRESULT QVPathResolve(const char* path, char* resolved, uint32_t capacity) noexcept
{
    if (!path || !resolved) {
        return QV_E_POINTER;
    }
    char* real = realpath(path, nullptr);
    const char* answer = real ? real : path;
    const size_t length = strlen(answer);
    QVRESULT result = QV_S_OK;
    if (length + 1 > capacity) {
        result = QV_E_BUFFER_TOO_SMALL;
    } else {
        memcpy(resolved, answer, length + 1);
    }
    free(real);
    return result;
}

extern "C" QVRESULT QVPathRename(const char* from, const char* to) noexcept
{
    if (!from || !to) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVPathRename);
    return rename(from, to) == 0 ? QV_S_OK : QVResultFromNative(errno);
}

extern "C" QVRESULT QVPathRemove(const char* path) noexcept
{
    if (!path) {
        return QV_E_POINTER;
    }
    return unlink(path) == 0 ? QV_S_OK : QVResultFromNative(errno);
}

extern "C" QVRESULT QVPathCreateTemporary(const char* prefix, char* created, uint32_t capacity, int32_t* fd) noexcept
{
    if (!prefix || !created || !fd) {
        return QV_E_POINTER;
    }
    *fd = -1;
    const size_t length = strlen(prefix);
    if (length + 7 > capacity) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    QV_FAULT_POINT(QVPathCreateTemporary);
    memcpy(created, prefix, length);
    memcpy(created + length, "XXXXXX", 7);
    const int opened = mkostemp(created, O_CLOEXEC);
    if (opened < 0) {
        const int error = errno;
        created[0] = 0;
        return QVResultFromNative(error);
    }
    *fd = opened;
    return QV_S_OK;
}

extern "C" QVRESULT QVFileSetMode(int32_t fd, uint32_t mode) noexcept
{
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    return fchmod(fd, static_cast<mode_t>(mode & 07777)) == 0 ? QV_S_OK : QVResultFromNative(errno);
}
