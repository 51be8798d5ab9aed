#include "SyncCommon.h"

using namespace qvcore3;

namespace {

// Recursive, so a thread may take the lock it holds; glibc checks the owner on
// release, so a release by another thread is refused with EPERM.
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
        pthread_mutexattr_t attributes;
        int error = pthread_mutexattr_init(&attributes);
        if (error == 0) {
            error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
            if (error == 0) {
                error = pthread_mutex_init(&m_mutex, &attributes);
            }
            pthread_mutexattr_destroy(&attributes);
        }
        m_initialised = error == 0;
        return QVResultFromNative(error);
    }

    pthread_mutex_t m_mutex;
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
    return QVResultFromNative(pthread_mutex_lock(&ref.as<MutexObject>()->m_mutex));
}

extern "C" QVRESULT QVMutexTryAcquire(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVMutexTryAcquire);
    const int error = pthread_mutex_trylock(&ref.as<MutexObject>()->m_mutex);
    return error == EBUSY ? QV_E_BUSY : QVResultFromNative(error);
}

extern "C" QVRESULT QVMutexRelease(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVMutexRelease);
    return QVResultFromNative(pthread_mutex_unlock(&ref.as<MutexObject>()->m_mutex));
}

extern "C" QVRESULT QVMutexDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVMutexDestroy, handle, Kind::Mutex);
}
