#include "SyncCommon.h"

#include <atomic>

using namespace qvcore3;

namespace {

// glibc's default kind prefers readers, so a thread may take a read hold it
// already has without deadlocking behind a waiting writer.
//
// pthread_rwlock_unlock ends a hold of either kind, which is what both release
// operations need. The writer and the number of read holds are tracked beside
// the lock so that a release with no hold at all is refused (EPERM) instead of
// corrupting the lock.
class RWLockObject : public SyncObject {
public:
    explicit RWLockObject(const char* name) noexcept : SyncObject(Kind::RWLock, name) {}
    ~RWLockObject() override
    {
        if (m_initialised) {
            pthread_rwlock_destroy(&m_lock);
        }
    }

    QVRESULT init() noexcept
    {
        const int error = pthread_rwlock_init(&m_lock, nullptr);
        m_initialised = error == 0;
        return QVResultFromNative(error);
    }

    QVRESULT acquired(int error, bool write) noexcept
    {
        if (error == EBUSY) {
            return QV_E_BUSY;
        }
        if (error == 0) {
            if (write) {
                m_writer.store(pthread_self(), std::memory_order_relaxed);
            } else {
                m_readers.fetch_add(1, std::memory_order_relaxed);
            }
        }
        return QVResultFromNative(error);
    }

    QVRESULT unlock() noexcept
    {
        if (pthread_equal(m_writer.load(std::memory_order_relaxed), pthread_self())) {
            m_writer.store(pthread_t(), std::memory_order_relaxed);
            return QVResultFromNative(pthread_rwlock_unlock(&m_lock));
        }
        int32_t readers = m_readers.load(std::memory_order_relaxed);
        while (readers > 0) {
            if (m_readers.compare_exchange_weak(readers, readers - 1, std::memory_order_relaxed)) {
                return QVResultFromNative(pthread_rwlock_unlock(&m_lock));
            }
        }
        return QVResultFromNative(EPERM);
    }

    pthread_rwlock_t m_lock;
    std::atomic<pthread_t> m_writer{pthread_t()};
    std::atomic<int32_t> m_readers{0};
    bool m_initialised = false;
};

constexpr uint32_t kMask = KindBit(Kind::RWLock);

// Every lock call checks the handle, then gives an armed fault its chance,
// in that order, before it touches the lock.
template <typename Call>
QVRESULT OnLock(QVHANDLE handle, FaultOp op, Call call) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    const QVRESULT fault = FaultCheck(op);
    if (fault != QV_S_OK) {
        return fault;
    }
    return call(*ref.as<RWLockObject>());
}

} // namespace

extern "C" QVRESULT QVRWLockCreate(const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    return CreateSyncObject<RWLockObject>(FaultOp::QVRWLockCreate, name, flags, handle);
}

extern "C" QVRESULT QVRWLockAcquireRead(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockAcquireRead,
                  [](RWLockObject& lock) { return lock.acquired(pthread_rwlock_rdlock(&lock.m_lock), false); });
}

extern "C" QVRESULT QVRWLockTryAcquireRead(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockTryAcquireRead,
                  [](RWLockObject& lock) { return lock.acquired(pthread_rwlock_tryrdlock(&lock.m_lock), false); });
}

extern "C" QVRESULT QVRWLockReleaseRead(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockReleaseRead, [](RWLockObject& lock) { return lock.unlock(); });
}

extern "C" QVRESULT QVRWLockAcquireWrite(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockAcquireWrite,
                  [](RWLockObject& lock) { return lock.acquired(pthread_rwlock_wrlock(&lock.m_lock), true); });
}

extern "C" QVRESULT QVRWLockTryAcquireWrite(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockTryAcquireWrite,
                  [](RWLockObject& lock) { return lock.acquired(pthread_rwlock_trywrlock(&lock.m_lock), true); });
}

extern "C" QVRESULT QVRWLockReleaseWrite(QVHANDLE handle) noexcept
{
    return OnLock(handle, FaultOp::QVRWLockReleaseWrite, [](RWLockObject& lock) { return lock.unlock(); });
}

extern "C" QVRESULT QVRWLockDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVRWLockDestroy, handle, Kind::RWLock);
}
