#include "FaultInjection.h"
#include "HandleTable.h"

#include <pthread.h>
#include <semaphore.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>

using namespace qvcore3;

namespace {

class ThreadObject : public HandleObject {
public:
    ThreadObject() noexcept : HandleObject(Kind::Thread) {}
    ~ThreadObject() override
    {
        if (m_started && !m_claimed.load(std::memory_order_relaxed)) {
            pthread_detach(m_thread);
        }
    }

    // Joining and detaching each take the thread once; a second attempt, also
    // from another thread at the same moment, is refused.
    bool claim() noexcept { return !m_claimed.exchange(true, std::memory_order_acq_rel); }
    void unclaim() noexcept { m_claimed.store(false, std::memory_order_release); }

    pthread_t m_thread{};
    bool m_started = false;
    std::atomic<bool> m_claimed{false};
};

// Lives on the creator's stack until the new thread has posted ready; the new
// thread copies what it needs before that.
struct StartBlock {
    QVThreadEntry entry;
    void* argument;
    pid_t threadId;
    sem_t ready;
};

void* Trampoline(void* data)
{
    StartBlock* block = static_cast<StartBlock*>(data);
    const QVThreadEntry entry = block->entry;
    void* const argument = block->argument;
    block->threadId = gettid();
    sem_post(&block->ready);
    return entry(argument);
}

constexpr uint32_t kMask = KindBit(Kind::Thread);

// The requested size raised to the system minimum and to whole pages.
size_t StackSize(uint32_t requested) noexcept
{
    size_t size = requested;
    const long minimum = sysconf(_SC_THREAD_STACK_MIN);
    if (minimum > 0 && size < static_cast<size_t>(minimum)) {
        size = static_cast<size_t>(minimum);
    }
    const long page = sysconf(_SC_PAGESIZE);
    if (page > 0) {
        size = (size + static_cast<size_t>(page) - 1) / static_cast<size_t>(page) * static_cast<size_t>(page);
    }
    return size;
}

} // namespace

// The handle slot is reserved before the thread starts: once the entry runs,
// creation can no longer fail.
extern "C" QVRESULT QVThreadCreate(QVThreadEntry entry, void* argument, uint32_t flags, uint32_t stackSize,
                                   QVHANDLE* handle, uint32_t* threadId) noexcept
{
    if (!entry || !handle) {
        return QV_E_POINTER;
    }
    if (flags != 0) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVThreadCreate);
    ThreadObject* object = new (std::nothrow) ThreadObject();
    if (!object) {
        return QV_E_OUTOFMEMORY;
    }
    QVHANDLE reserved = QV_INVALID_HANDLE;
    QVRESULT result = HandleReserve(&reserved);
    if (QV_FAILED(result)) {
        delete object;
        return result;
    }
    pthread_attr_t attributes;
    int error = pthread_attr_init(&attributes);
    if (error == 0) {
        if (stackSize != 0) {
            error = pthread_attr_setstacksize(&attributes, StackSize(stackSize));
        }
        if (error == 0) {
            StartBlock block{entry, argument, 0, {}};
            sem_init(&block.ready, 0, 0);
            error = pthread_create(&object->m_thread, &attributes, Trampoline, &block);
            if (error == 0) {
                while (sem_wait(&block.ready) != 0 && errno == EINTR) {
                }
                object->m_started = true;
                if (threadId) {
                    *threadId = static_cast<uint32_t>(block.threadId);
                }
            }
            sem_destroy(&block.ready);
        }
        pthread_attr_destroy(&attributes);
    }
    if (error != 0) {
        HandleUnreserve(reserved);
        delete object;
        // EAGAIN here means the system ran out of threads or memory for one.
        return error == EAGAIN ? QV_E_OUTOFMEMORY : QVResultFromNative(error);
    }
    HandlePublish(reserved, object);
    *handle = reserved;
    return QV_S_OK;
}

extern "C" QVRESULT QVThreadJoin(QVHANDLE handle, void** result) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    ThreadObject* object = ref.as<ThreadObject>();
    if (pthread_equal(object->m_thread, pthread_self())) {
        return QVResultFromNative(EDEADLK);
    }
    QV_FAULT_POINT(QVThreadJoin);
    if (!object->claim()) {
        return QV_E_INVALIDARG;
    }
    void* value = nullptr;
    const int error = pthread_join(object->m_thread, &value);
    if (error != 0) {
        object->unclaim();
        return QVResultFromNative(error);
    }
    HandleClose(handle, kMask);
    if (result) {
        *result = value;
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVThreadDetach(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    ThreadObject* object = ref.as<ThreadObject>();
    if (!object->claim()) {
        return QV_E_INVALIDARG;
    }
    pthread_detach(object->m_thread);
    HandleClose(handle, kMask);
    // As with the destroy operations, an injected failure comes after the work.
    return FaultCheck(FaultOp::QVThreadDetach);
}

namespace {

// gettid is a system call, and loggers ask for the id on every entry. A
// thread's id never changes, except in the child of a fork, where the thread
// that forked has a new one: the child forgets the cached id.
thread_local uint32_t t_currentId = 0;

void ForgetCurrentId() noexcept
{
    t_currentId = 0;
}

} // namespace

extern "C" uint32_t QVThreadGetCurrentId(void) noexcept
{
    uint32_t id = t_currentId;
    if (id != 0) {
        return id;
    }
    static const bool forgetInChild = pthread_atfork(nullptr, nullptr, ForgetCurrentId) == 0;
    id = static_cast<uint32_t>(gettid());
    if (forgetInChild) {
        t_currentId = id;
    }
    return id;
}

extern "C" void QVThreadSleep(uint32_t milliseconds) noexcept
{
    timespec remaining{static_cast<time_t>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000000L};
    while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
    }
}
