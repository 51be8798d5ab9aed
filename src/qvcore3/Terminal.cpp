#include "FaultInjection.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <mutex>

namespace {

// The modes saved by QVTerminalEchoOff, readable from a signal handler: a
// slot is published by setting its descriptor last and retired by clearing
// it first.
struct SavedMode {
    std::atomic<int> fd{-1};
    termios mode;
};
constexpr int kSlots = 8;
SavedMode g_saved[kSlots];

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int kSignalCount = sizeof kSignals / sizeof kSignals[0];
struct sigaction g_previous[kSignalCount];
std::mutex g_lock;
int g_active = 0;

void RestoreAll() noexcept
{
    for (SavedMode& slot : g_saved) {
        const int fd = slot.fd.load(std::memory_order_acquire);
        if (fd >= 0)
            tcsetattr(fd, TCSANOW, &slot.mode);
    }
}

// Puts the terminals back, then lets the signal take the course it had
// before: the former action is reinstalled and the signal raised again
// (it is delivered once this handler returns).
void OnSignal(int signal) noexcept
{
    const int saved = errno;
    RestoreAll();
    for (int i = 0; i < kSignalCount; ++i) {
        if (kSignals[i] == signal) {
            sigaction(signal, &g_previous[i], nullptr);
            break;
        }
    }
    raise(signal);
    errno = saved;
}

void InstallHandlers() noexcept
{
    struct sigaction action;
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    for (int i = 0; i < kSignalCount; ++i)
        sigaction(kSignals[i], &action, &g_previous[i]);
}

// Only handlers that are still ours are replaced: a program that installed
// its own meanwhile keeps it.
void RemoveHandlers() noexcept
{
    for (int i = 0; i < kSignalCount; ++i) {
        struct sigaction current;
        if (sigaction(kSignals[i], nullptr, &current) == 0 && current.sa_handler == OnSignal)
            sigaction(kSignals[i], &g_previous[i], nullptr);
    }
}

} // namespace

extern "C" QVRESULT QVTerminalEchoOff(int32_t fd, int32_t* token) noexcept
{
    if (!token)
        return QV_E_POINTER;
    *token = -1;
    if (fd < 0)
        return QV_E_INVALIDARG;
    QV_FAULT_POINT(QVTerminalEchoOff);
    termios mode;
    if (tcgetattr(fd, &mode) != 0)
        return errno == ENOTTY || errno == EINVAL ? QV_S_FALSE : QVResultFromNative(errno);
    std::lock_guard<std::mutex> guard(g_lock);
    int slot = 0;
    while (slot < kSlots && g_saved[slot].fd.load(std::memory_order_relaxed) >= 0)
        ++slot;
    if (slot == kSlots)
        return QV_E_ILLEGAL_METHOD_CALL;
    g_saved[slot].mode = mode;
    g_saved[slot].fd.store(fd, std::memory_order_release);
    if (g_active++ == 0)
        InstallHandlers();
    termios silent = mode;
    silent.c_lflag &= static_cast<tcflag_t>(~(ECHO | ECHOE | ECHOK | ECHONL));
    // TCSANOW, not TCSAFLUSH: what the user typed ahead is kept.
    if (tcsetattr(fd, TCSANOW, &silent) != 0) {
        const int error = errno;
        g_saved[slot].fd.store(-1, std::memory_order_release);
        if (--g_active == 0)
            RemoveHandlers();
        return QVResultFromNative(error);
    }
    *token = slot;
    return QV_S_OK;
}

extern "C" QVRESULT QVTerminalRestore(int32_t token) noexcept
{
    if (token == -1)
        return QV_S_OK;
    if (token < 0 || token >= kSlots)
        return QV_E_INVALIDARG;
    std::lock_guard<std::mutex> guard(g_lock);
    SavedMode& slot = g_saved[token];
    const int fd = slot.fd.load(std::memory_order_relaxed);
    if (fd < 0)
        return QV_E_INVALIDARG;
    QVRESULT result = QV_S_OK;
    if (tcsetattr(fd, TCSANOW, &slot.mode) != 0)
        result = QVResultFromNative(errno);
    slot.fd.store(-1, std::memory_order_release);
    if (--g_active == 0)
        RemoveHandlers();
    if (result == QV_S_OK)
        result = qvcore3::FaultCheck(qvcore3::FaultOp::QVTerminalRestore);
    return result;
}
