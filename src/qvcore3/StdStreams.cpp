#include "FaultInjection.h"

#include <sys/types.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

FILE* OutputStreamOf(int32_t stream) noexcept
{
    return stream == QV_STD_OUTPUT ? stdout : stream == QV_STD_ERROR ? stderr : nullptr;
}

// The stream's error flag has no code of its own: errno says what went wrong
// when it is set, a general failure otherwise.
QVRESULT StreamError() noexcept
{
    return errno != 0 ? QVResultFromNative(errno) : QV_E_FAIL;
}

} // namespace

extern "C" QVRESULT QVStdReadLine(char* buffer, int32_t capacity, int32_t* length) noexcept
{
    if (!buffer || !length)
        return QV_E_POINTER;
    *length = 0;
    if (capacity < 1)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVStdReadLine);
    errno = 0;
    const char* line = fgets(buffer, capacity, stdin);
    if (line)
        *length = static_cast<int32_t>(std::strlen(buffer));
    if (ferror(stdin)) {
        const QVRESULT failure = StreamError();
        clearerr(stdin);
        return failure;
    }
    return line ? QV_S_OK : QV_S_FALSE;
}

extern "C" QVRESULT QVStdSeek(int64_t offset) noexcept
{
    QV_FAULT_POINT(QVStdSeek);
    errno = 0;
    if (fseeko(stdin, static_cast<off_t>(offset), SEEK_CUR) != 0)
        return StreamError();
    return QV_S_OK;
}

extern "C" QVRESULT QVStdWrite(int32_t stream, const void* data, uint32_t size) noexcept
{
    FILE* file = OutputStreamOf(stream);
    if (!file)
        return QV_E_INVALIDARG;
    if (!data && size != 0)
        return QV_E_POINTER;
    QV_FAULT_POINT(QVStdWrite);
    errno = 0;
    const size_t written = size == 0 ? 0 : fwrite(data, 1, size, file);
    if (written != size || ferror(file)) {
        const QVRESULT failure = StreamError();
        clearerr(file);
        return failure;
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVStdFlush(int32_t stream) noexcept
{
    FILE* file = OutputStreamOf(stream);
    if (!file)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVStdFlush);
    errno = 0;
    if (fflush(file) != 0 || ferror(file)) {
        const QVRESULT failure = StreamError();
        clearerr(file);
        return failure;
    }
    return QV_S_OK;
}
