#include "SyncCommon.h"

#include <atomic>

using namespace qvcore3;

namespace {

// The condition's own lock is error-checking rather than recursive: waiting
// with a lock taken twice would keep it held, and a second acquire by its
// owner or a release by another thread becomes an error code instead.
class ConditionObject : public SyncObject {
public:
    explicit ConditionObject(const char* name) noexcept : SyncObject(Kind::Condition, name) {}
    ~ConditionObject() override
    {
        if (m_conditionReady) {
            pthread_cond_destroy(&m_condition);
        }
        if (m_mutexReady) {
            pthread_mutex_destroy(&m_mutex);
        }
    }

    QVRESULT init() noexcept
    {
        pthread_mutexattr_t attributes;
        int error = pthread_mutexattr_init(&attributes);
        if (error == 0) {
            error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
            if (error == 0) {
                error = pthread_mutex_init(&m_mutex, &attributes);
            }
            pthread_mutexattr_destroy(&attributes);
        }
        m_mutexReady = error == 0;
        if (error == 0) {
            error = InitMonotonicCondition(&m_condition);
            m_conditionReady = error == 0;
        }
        return QVResultFromNative(error);
    }

    bool ownedByCaller() const noexcept
    {
        return pthread_equal(m_owner.load(std::memory_order_relaxed), pthread_self()) != 0;
    }

    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    // Holder of m_mutex, or a null id: a wait without the lock must be refused
    // before it reaches pthread_cond_wait, where it would be undefined.
    std::atomic<pthread_t> m_owner{pthread_t()};
    bool m_mutexReady = false;
    bool m_conditionReady = false;
};

constexpr uint32_t kMask = KindBit(Kind::Condition);

} // namespace

extern "C" QVRESULT QVConditionCreate(const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    return CreateSyncObject<ConditionObject>(FaultOp::QVConditionCreate, name, flags, handle);
}

extern "C" QVRESULT QVConditionAcquire(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionAcquire);
    ConditionObject* object = ref.as<ConditionObject>();
    const int error = pthread_mutex_lock(&object->m_mutex);
    if (error == 0) {
        object->m_owner.store(pthread_self(), std::memory_order_relaxed);
    }
    return QVResultFromNative(error);
}

extern "C" QVRESULT QVConditionRelease(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionRelease);
    ConditionObject* object = ref.as<ConditionObject>();
    if (!object->ownedByCaller()) {
        return QVResultFromNative(EPERM);
    }
    object->m_owner.store(pthread_t(), std::memory_order_relaxed);
    return QVResultFromNative(pthread_mutex_unlock(&object->m_mutex));
}

namespace {

// May return without a signal, as condition variables do; the caller rechecks
// its predicate.
QVRESULT Wait(ConditionObject* object, uint32_t milliseconds) noexcept
{
    if (!object->ownedByCaller()) {
        return QVResultFromNative(EPERM);
    }
    object->m_owner.store(pthread_t(), std::memory_order_relaxed);
    int error = 0;
    if (milliseconds == kWaitForever) {
        error = pthread_cond_wait(&object->m_condition, &object->m_mutex);
    } else {
        const timespec deadline = MonotonicDeadline(milliseconds);
        error = pthread_cond_timedwait(&object->m_condition, &object->m_mutex, &deadline);
    }
    object->m_owner.store(pthread_self(), std::memory_order_relaxed);
    return error == ETIMEDOUT ? QV_E_TIMEOUT : QVResultFromNative(error);
}

} // namespace

extern "C" QVRESULT QVConditionWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionWait);
    return Wait(ref.as<ConditionObject>(), kWaitForever);
}

extern "C" QVRESULT QVConditionTimedWait(QVHANDLE handle, uint32_t milliseconds) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionTimedWait);
    return Wait(ref.as<ConditionObject>(), milliseconds);
}

extern "C" QVRESULT QVConditionSignal(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionSignal);
    return QVResultFromNative(pthread_cond_signal(&ref.as<ConditionObject>()->m_condition));
}

extern "C" QVRESULT QVConditionBroadcast(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVConditionBroadcast);
    return QVResultFromNative(pthread_cond_broadcast(&ref.as<ConditionObject>()->m_condition));
}

extern "C" QVRESULT QVConditionDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVConditionDestroy, handle, Kind::Condition);
}
