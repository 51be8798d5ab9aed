#include "FaultInjection.h"
#include "HandleTable.h"
#include "SyncCommon.h"
#include "Utf.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>

extern char** environ;

using namespace qvcore3;

namespace {

int32_t ExitCodeFromStatus(int status) noexcept
{
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        return 128 + WTERMSIG(status);
    }
    return 0;
}

// Reaps detached children that were still running, so they do not stay
// zombies. One thread polls them with waitpid(WNOHANG), backing off from 10 ms
// to 1 s, and ends when none is left; the library's ELF destructor stops it.
// A SIGCHLD handler would do it without polling but would take a process-wide
// setting away from the host program. The state is constant-initialised and
// never destroyed, so a process handle closed late still finds it.
struct ReapedChild {
    pid_t pid;
    ReapedChild* next;
};

struct Reaper {
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t wake = PTHREAD_COND_INITIALIZER;
    pthread_t thread{};
    ReapedChild* children = nullptr;
    uint32_t interval = 10;
    bool running = false;
    bool joinable = false;
    bool stopping = false;
};

Reaper g_reaper;

void ReapLoop() noexcept
{
    pthread_mutex_lock(&g_reaper.lock);
    while (!g_reaper.stopping && g_reaper.children) {
        for (ReapedChild** link = &g_reaper.children; *link;) {
            int status = 0;
            const pid_t reaped = waitpid((*link)->pid, &status, WNOHANG);
            if (reaped == 0 || (reaped < 0 && errno == EINTR)) {
                link = &(*link)->next;
            } else {
                ReapedChild* done = *link;
                *link = done->next;
                delete done;
            }
        }
        if (!g_reaper.children) {
            break;
        }
        const timespec deadline = MonotonicDeadline(g_reaper.interval);
        pthread_cond_clockwait(&g_reaper.wake, &g_reaper.lock, CLOCK_MONOTONIC, &deadline);
        g_reaper.interval = g_reaper.interval < 500 ? g_reaper.interval * 2 : 1000;
    }
    g_reaper.running = false;
    pthread_mutex_unlock(&g_reaper.lock);
}

void* ReapThread(void*)
{
    ReapLoop();
    return nullptr;
}

// When nothing can be recorded (no memory, no thread, shutting down), the
// child is left to become a zombie until this process ends: never worse.
void Reap(pid_t pid) noexcept
{
    ReapedChild* child = new (std::nothrow) ReapedChild{pid, nullptr};
    if (!child) {
        return;
    }
    pthread_mutex_lock(&g_reaper.lock);
    if (g_reaper.stopping) {
        pthread_mutex_unlock(&g_reaper.lock);
        delete child;
        return;
    }
    child->next = g_reaper.children;
    g_reaper.children = child;
    g_reaper.interval = 10;
    if (!g_reaper.running) {
        if (g_reaper.joinable) {
            pthread_join(g_reaper.thread, nullptr);
        }
        g_reaper.running = g_reaper.joinable = pthread_create(&g_reaper.thread, nullptr, ReapThread, nullptr) == 0;
    }
    pthread_cond_signal(&g_reaper.wake);
    pthread_mutex_unlock(&g_reaper.lock);
}

__attribute__((destructor)) void StopReaper()
{
    pthread_mutex_lock(&g_reaper.lock);
    g_reaper.stopping = true;
    pthread_cond_signal(&g_reaper.wake);
    const bool joinable = g_reaper.joinable;
    g_reaper.joinable = false;
    pthread_mutex_unlock(&g_reaper.lock);
    if (joinable) {
        pthread_join(g_reaper.thread, nullptr);
    }
    pthread_mutex_lock(&g_reaper.lock);
    while (g_reaper.children) {
        ReapedChild* next = g_reaper.children->next;
        delete g_reaper.children;
        g_reaper.children = next;
    }
    pthread_mutex_unlock(&g_reaper.lock);
}

class ProcessObject : public HandleObject {
public:
    explicit ProcessObject(pid_t pid) noexcept : HandleObject(Kind::Process), m_pid(pid)
    {
        pthread_mutex_init(&m_lock, nullptr);
    }
    ~ProcessObject() override
    {
        if (!m_ended) {
            Reap(m_pid);
        }
        pthread_mutex_destroy(&m_lock);
    }

    // Collects the status once and keeps it. Call with m_lock held.
    QVRESULT poll(bool block) noexcept
    {
        if (m_ended) {
            return QV_S_OK;
        }
        int status = 0;
        for (;;) {
            const pid_t reaped = waitpid(m_pid, &status, block ? 0 : WNOHANG);
            if (reaped == m_pid) {
                m_ended = true;
                m_exitCode = ExitCodeFromStatus(status);
                return QV_S_OK;
            }
            if (reaped == 0) {
                return QV_S_FALSE;
            }
            if (errno != EINTR) {
                return QVResultFromNative(errno);
            }
        }
    }

    bool claim() noexcept { return !m_claimed.exchange(true, std::memory_order_acq_rel); }
    void unclaim() noexcept { m_claimed.store(false, std::memory_order_release); }

    const pid_t m_pid;
    pthread_mutex_t m_lock;
    bool m_ended = false; // guarded by m_lock
    int32_t m_exitCode = 0;
    std::atomic<bool> m_claimed{false};
};

constexpr uint32_t kMask = KindBit(Kind::Process);
constexpr uint32_t kInheritFlags = QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR;

// Whether standard stream 0, 1 or 2 gets a pipe under these flags.
bool PipeWanted(uint32_t flags, int stream) noexcept
{
    if (stream == 2 && (flags & QV_PROCESS_MERGE_STDERR) != 0) {
        return false;
    }
    return (flags & (1u << stream)) == 0;
}

// Both ends of the child's pipes, closed unless handed over.
struct Pipes {
    int fds[3][2] = {{-1, -1}, {-1, -1}, {-1, -1}};
    ~Pipes()
    {
        for (auto& pair : fds) {
            for (int fd : pair) {
                if (fd >= 0) {
                    close(fd);
                }
            }
        }
    }
    // Moves both ends above the standard descriptors, so that no dup2 in the
    // child overwrites an end another dup2 still has to copy.
    int raise(int stream) noexcept
    {
        for (int& fd : fds[stream]) {
            if (fd < 3) {
                const int moved = fcntl(fd, F_DUPFD_CLOEXEC, 3);
                if (moved < 0) {
                    return errno;
                }
                close(fd);
                fd = moved;
            }
        }
        return 0;
    }
    // The end that stays with the parent: the write end for stdin.
    int& parentEnd(int stream) noexcept { return fds[stream][stream == 0 ? 1 : 0]; }
    int& childEnd(int stream) noexcept { return fds[stream][stream == 0 ? 0 : 1]; }
};

class SpawnSetup {
public:
    SpawnSetup() noexcept
    {
        m_actionsReady = posix_spawn_file_actions_init(&m_actions) == 0;
        m_attributesReady = posix_spawnattr_init(&m_attributes) == 0;
    }
    ~SpawnSetup()
    {
        if (m_actionsReady) {
            posix_spawn_file_actions_destroy(&m_actions);
        }
        if (m_attributesReady) {
            posix_spawnattr_destroy(&m_attributes);
        }
    }
    bool ready() const noexcept { return m_actionsReady && m_attributesReady; }

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;

private:
    bool m_actionsReady = false;
    bool m_attributesReady = false;
};

bool HasSlash(const char* text) noexcept
{
    for (; *text; ++text) {
        if (*text == '/') {
            return true;
        }
    }
    return false;
}

// Every entry must look like NAME=value with a non-empty name.
bool ValidEnvironment(const char16_t* const* environment, size_t* count) noexcept
{
    size_t n = 0;
    for (; environment[n]; ++n) {
        const char16_t* equals = QVStrChrW(environment[n], u'=');
        if (!equals || equals == environment[n]) {
            return false;
        }
    }
    *count = n;
    return true;
}

} // namespace

// The child gets its standard streams (piped or inherited) and nothing else
// of the parent's descriptors: every pipe end is made close-on-exec, and
// dup2 onto 0, 1 or 2 clears that flag only in the child. Its signal mask is
// emptied and every signal disposition reset to the default, so a parent that
// ignores SIGPIPE does not pass that on.
extern "C" QVRESULT QVProcessCreate(const char16_t* program, const char16_t* arguments, const char16_t* directory,
                                    const char16_t* const* environment, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes,
                                    QVHANDLE* handle) noexcept
{
    if (!program || !handle || (!pipes && (PipeWanted(flags, 0) || PipeWanted(flags, 1) || PipeWanted(flags, 2)))) {
        return QV_E_POINTER;
    }
    if (pipes) {
        pipes->stdinWrite = pipes->stdoutRead = pipes->stderrRead = -1;
    }
    size_t environmentCount = 0;
    const bool mergeError = (flags & QV_PROCESS_MERGE_STDERR) != 0;
    if ((flags & ~(kInheritFlags | QV_PROCESS_MERGE_STDERR)) != 0 ||
        (mergeError && (flags & QV_PROCESS_INHERIT_STDERR)) || *program == 0 ||
        (environment && !ValidEnvironment(environment, &environmentCount))) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVProcessCreate);

    Utf8String path;
    Utf8String workingDirectory;
    char16_t** split = nullptr;
    int32_t splitCount = 0;
    QVRESULT result = path.assign(program);
    if (QV_SUCCEEDED(result)) {
        result = workingDirectory.assign(directory);
    }
    if (QV_SUCCEEDED(result)) {
        result = QVCommandLineSplit(arguments, &split, &splitCount);
    }
    Utf8Array argv;
    Utf8Array envp;
    if (QV_SUCCEEDED(result)) {
        result = argv.assign(path.c_str(), split, static_cast<size_t>(splitCount));
        QVCommandLineFree(split);
    }
    if (QV_SUCCEEDED(result) && environment) {
        result = envp.assign(nullptr, environment, environmentCount);
    }
    if (QV_FAILED(result)) {
        return result;
    }

    SpawnSetup setup;
    if (!setup.ready()) {
        return QV_E_OUTOFMEMORY;
    }
    Pipes pipeFds;
    int error = 0;
    for (int stream = 0; stream < 3 && error == 0; ++stream) {
        if (!PipeWanted(flags, stream)) {
            continue;
        }
        if (pipe2(pipeFds.fds[stream], O_CLOEXEC) != 0) {
            error = errno;
        } else if ((error = pipeFds.raise(stream)) == 0) {
            error = posix_spawn_file_actions_adddup2(&setup.m_actions, pipeFds.childEnd(stream), stream);
        }
    }
    // After the dup2 of the output pipe, so that error follows output there.
    if (error == 0 && mergeError) {
        error = posix_spawn_file_actions_adddup2(&setup.m_actions, 1, 2);
    }
    if (error == 0 && workingDirectory.c_str()) {
        error = posix_spawn_file_actions_addchdir_np(&setup.m_actions, workingDirectory.c_str());
    }
    sigset_t signals;
    if (error == 0) {
        sigemptyset(&signals);
        error = posix_spawnattr_setsigmask(&setup.m_attributes, &signals);
    }
    if (error == 0) {
        sigfillset(&signals);
        sigdelset(&signals, SIGKILL);
        sigdelset(&signals, SIGSTOP);
        error = posix_spawnattr_setsigdefault(&setup.m_attributes, &signals);
    }
    if (error == 0) {
        error = posix_spawnattr_setflags(&setup.m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    if (error != 0) {
        return QVResultFromNative(error);
    }

    ProcessObject* object = nullptr;
    QVHANDLE reserved = QV_INVALID_HANDLE;
    result = HandleReserve(&reserved);
    if (QV_FAILED(result)) {
        return result;
    }
    pid_t pid = 0;
    char** childEnvironment = environment ? envp.data() : environ;
    if (HasSlash(path.c_str())) {
        error = posix_spawn(&pid, path.c_str(), &setup.m_actions, &setup.m_attributes, argv.data(), childEnvironment);
    } else {
        error = posix_spawnp(&pid, path.c_str(), &setup.m_actions, &setup.m_attributes, argv.data(), childEnvironment);
    }
    if (error == 0) {
        object = new (std::nothrow) ProcessObject(pid);
        if (!object) {
            // Too late to refuse the child: keep it from becoming a zombie.
            Reap(pid);
            error = ENOMEM;
        }
    }
    if (error != 0) {
        HandleUnreserve(reserved);
        return QVResultFromNative(error);
    }
    HandlePublish(reserved, object);
    *handle = reserved;
    if (pipes) {
        int32_t* parentEnds[3] = {&pipes->stdinWrite, &pipes->stdoutRead, &pipes->stderrRead};
        for (int stream = 0; stream < 3; ++stream) {
            *parentEnds[stream] = pipeFds.parentEnd(stream);
            pipeFds.parentEnd(stream) = -1;
        }
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVProcessJoin(QVHANDLE handle, int32_t* exitCode) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVProcessJoin);
    ProcessObject* object = ref.as<ProcessObject>();
    if (!object->claim()) {
        return QV_E_INVALIDARG;
    }
    pthread_mutex_lock(&object->m_lock);
    const QVRESULT result = object->poll(true);
    const int32_t code = object->m_exitCode;
    pthread_mutex_unlock(&object->m_lock);
    if (QV_FAILED(result)) {
        object->unclaim();
        return result;
    }
    HandleClose(handle, kMask);
    if (exitCode) {
        *exitCode = code;
    }
    return QV_S_OK;
}

// A join blocked in another thread holds the lock; the answer is then
// "still running", which it was a moment ago.
extern "C" QVRESULT QVProcessGetExitCode(QVHANDLE handle, int32_t* exitCode) noexcept
{
    if (!exitCode) {
        return QV_E_POINTER;
    }
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVProcessGetExitCode);
    ProcessObject* object = ref.as<ProcessObject>();
    if (pthread_mutex_trylock(&object->m_lock) != 0) {
        return QV_S_FALSE;
    }
    const QVRESULT result = object->poll(false);
    if (result == QV_S_OK) {
        *exitCode = object->m_exitCode;
    }
    pthread_mutex_unlock(&object->m_lock);
    return result;
}

// A child that has not ended yet is handed to the reaper thread.
extern "C" QVRESULT QVProcessDetach(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    ProcessObject* object = ref.as<ProcessObject>();
    if (!object->claim()) {
        return QV_E_INVALIDARG;
    }
    pthread_mutex_lock(&object->m_lock);
    object->poll(false);
    pthread_mutex_unlock(&object->m_lock);
    HandleClose(handle, kMask);
    return FaultCheck(FaultOp::QVProcessDetach);
}

extern "C" uint32_t QVProcessGetCurrentId(void) noexcept
{
    return static_cast<uint32_t>(getpid());
}
