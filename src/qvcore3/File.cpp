#include "FaultInjection.h"

#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

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

// Writes everything unless an error stops it; *done counts what got out.
extern "C" QVRESULT QVFileWrite(int32_t fd, const void* data, uint32_t size, uint32_t* done) noexcept
{
    if (!done || (!data && size != 0)) {
        return QV_E_POINTER;
    }
    *done = 0;
    if (fd < 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVFileWrite);
    // Only pipes and sockets raise SIGPIPE: a write to a file or a terminal
    // is spared the guard's three system calls for one status call.
    struct stat status;
    const bool mayRaise = fstat(fd, &status) != 0 || S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode);
    std::optional<SigpipeGuard> guard;
    if (mayRaise) {
        guard.emplace();
    }
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
