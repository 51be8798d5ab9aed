#include "SyncCommon.h"

#include <atomic>

using namespace qvcore3;

namespace {

// Recursive for its owner: the owner and depth are kept beside a plain pthread
// mutex, so a nested acquire only counts and a release by a thread that does
// not hold the mutex is refused (EPERM) before it reaches pthread.
class MutexObject : public SyncObject {
public:
    explicit MutexObject(const char* name) noexcept : SyncObject(Kind::Mutex, name) {}
    ~MutexObject() override
    {
        if (m_initialised) {
            pthread_mutex_destroy(&m_mutex);
        }
    }

    QVRESULT init() noexcept
    {
        const int error = pthread_mutex_init(&m_mutex, nullptr);
        m_initialised = error == 0;
        return QVResultFromNative(error);
    }

    bool ownedBy(pthread_t thread) const noexcept
    {
        return pthread_equal(m_owner.load(std::memory_order_relaxed), thread) != 0;
    }

    QVRESULT acquire(bool wait) noexcept
    {
        const pthread_t self = pthread_self();
        if (ownedBy(self)) {
            if (m_depth == 0x7FFFFFFF) {
                return QVResultFromNative(EAGAIN);
            }
            ++m_depth;
            return QV_S_OK;
        }
        const int error = wait ? pthread_mutex_lock(&m_mutex) : pthread_mutex_trylock(&m_mutex);
        if (error != 0) {
            return error == EBUSY ? QV_E_BUSY : QVResultFromNative(error);
        }
        m_owner.store(self, std::memory_order_relaxed);
        m_depth = 1;
        return QV_S_OK;
    }

    QVRESULT unlock() noexcept
    {
        if (!ownedBy(pthread_self())) {
            return QVResultFromNative(EPERM);
        }
        if (--m_depth == 0) {
            m_owner.store(pthread_t(), std::memory_order_relaxed);
            const int error = pthread_mutex_unlock(&m_mutex);
            return error == 0 ? QV_S_OK : QVResultFromNative(error);
        }
        return QV_S_OK;
    }

private:
    pthread_mutex_t m_mutex;
    std::atomic<pthread_t> m_owner{pthread_t()};
    uint32_t m_depth = 0; // touched by the owner only
    bool m_initialised = false;
};

constexpr uint32_t kMask = KindBit(Kind::Mutex);

} // namespace

extern "C" QVRESULT QVMutexCreate(const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    return CreateSyncObject<MutexObject>(FaultOp::QVMutexCreate, name, flags, handle);
}

extern "C" QVRESULT QVMutexAcquire(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVMutexAcquire);
    return ref.as<MutexObject>()->acquire(true);
}

extern "C" QVRESULT QVMutexTryAcquire(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVMutexTryAcquire);
    return ref.as<MutexObject>()->acquire(false);
}

extern "C" QVRESULT QVMutexRelease(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVMutexRelease);
    return ref.as<MutexObject>()->unlock();
}

extern "C" QVRESULT QVMutexDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVMutexDestroy, handle, Kind::Mutex);
}
