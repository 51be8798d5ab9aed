#include "FaultInjection.h"

#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace {

// A bad descriptor is the caller's bad argument, as a bad handle is.
QVRESULT FileError(int error) noexcept
{
    return error == EBADF ? QV_E_INVALIDARG : QVResultFromNative(error);
}

// Writing to a pipe whose reader has gone raises SIGPIPE, which would end the
// process. The signal is blocked in this thread for the write and, if the
// write produced it, taken back, so the caller gets EPIPE as a code.
class SigpipeGuard {
public:
    SigpipeGuard() noexcept
    {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_previous);
    }
    ~SigpipeGuard()
    {
        if (m_raised && !m_wasPending) {
            const timespec now{0, 0};
            while (sigtimedwait(&m_pipe, nullptr, &now) == -1 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
    }
    void raised() noexcept { m_raised = true; }

private:
    sigset_t m_pipe;
    sigset_t m_previous;
    bool m_wasPending = false;
    bool m_raised = false;
};

} // namespace

extern "C" QVRESULT QVFileRead(int32_t fd, void* data, uint32_t size, uint32_t* done) noexcept
{
    if (!done || (!data && size != 0)) {
        return QV_E_POINTER;
    }
    *done = 0;
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileRead);
    for (;;) {
        const ssize_t count = read(fd, data, size);
        if (count >= 0) {
            *done = static_cast<uint32_t>(count);
            return QV_S_OK;
        }
        if (errno != EINTR) {
            return FileError(errno);
        }
    }
}

namespace {

// Only pipes and sockets raise SIGPIPE.
bool IsPipeOrSocket(const struct stat& status) noexcept
{
    return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
}

// A descriptor whose kind cannot be read is taken for one, so that it is
// guarded.
bool MayRaiseSigpipe(int32_t fd) noexcept
{
    struct stat status;
    return fstat(fd, &status) != 0 || IsPipeOrSocket(status);
}

QVRESULT WriteAll(int32_t fd, const void* data, uint32_t size, uint32_t* done, SigpipeGuard* guard) noexcept
{
    const char* bytes = static_cast<const char*>(data);
    uint32_t written = 0;
    while (written < size) {
        const ssize_t count = write(fd, bytes + written, size - written);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            const int error = errno;
            if (error == EPIPE && guard) {
                guard->raised();
            }
            *done = written;
            return FileError(error);
        }
        written += static_cast<uint32_t>(count);
    }
    *done = written;
    return QV_S_OK;
}

QVRESULT CheckWrite(int32_t fd, const void* data, uint32_t size, uint32_t* done) noexcept
{
    if (!done || (!data && size != 0)) {
        return QV_E_POINTER;
    }
    *done = 0;
    return fd < 0 ? QV_E_INVALIDARG : QV_S_OK;
}

} // namespace

// Writes everything unless an error stops it; *done counts what got out.
extern "C" QVRESULT QVFileWrite(int32_t fd, const void* data, uint32_t size, uint32_t* done) noexcept
{
    const QVRESULT checked = CheckWrite(fd, data, size, done);
    if (checked != QV_S_OK) {
        return checked;
    }
    QV_FAULT_POINT(QVFileWrite);
    // A write to a file or a terminal is spared the guard's three system
    // calls for one status call.
    if (MayRaiseSigpipe(fd)) {
        SigpipeGuard guard;
        return WriteAll(fd, data, size, done, &guard);
    }
    return WriteAll(fd, data, size, done, nullptr);
}

extern "C" QVRESULT QVFileIsPipeOrSocket(int32_t fd, int32_t* result) noexcept
{
    if (!result) {
        return QV_E_POINTER;
    }
    *result = 0;
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    struct stat status;
    if (fstat(fd, &status) != 0) {
        return FileError(errno);
    }
    *result = IsPipeOrSocket(status) ? 1 : 0;
    return QV_S_OK;
}

// Counted as QVFileWrite by fault injection: to its callers it is the same
// write, and tests that make file writes fail need not know which one runs.
extern "C" QVRESULT QVFileWriteUnguarded(int32_t fd, const void* data, uint32_t size, uint32_t* done) noexcept
{
    const QVRESULT checked = CheckWrite(fd, data, size, done);
    if (checked != QV_S_OK) {
        return checked;
    }
    QV_FAULT_POINT(QVFileWrite);
    return WriteAll(fd, data, size, done, nullptr);
}

// Linux frees the descriptor even when close reports EINTR, so that is not
// retried (a retry could close a descriptor another thread just got).
extern "C" QVRESULT QVFileClose(int32_t fd) noexcept
{
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    if (close(fd) != 0 && errno != EINTR) {
        return FileError(errno);
    }
    return qvcore3::FaultCheck(qvcore3::FaultOp::QVFileClose);
}
