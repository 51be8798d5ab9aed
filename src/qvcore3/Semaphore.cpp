#include "PosixName.h"
#include "SyncCommon.h"

#include <fcntl.h>
#include <semaphore.h>

#include <climits>

using namespace qvcore3;

namespace {

// Both kinds answer to the same wait/post calls through m_semaphore.
class SemaphoreBase : public SyncObject {
public:
    using SyncObject::SyncObject;
    sem_t* m_semaphore = nullptr;
};

class SemaphoreObject : public SemaphoreBase {
public:
    explicit SemaphoreObject(const char* name) noexcept : SemaphoreBase(Kind::Semaphore, name) {}
    ~SemaphoreObject() override
    {
        if (m_semaphore) {
            sem_destroy(m_semaphore);
        }
    }

    QVRESULT init(uint32_t initialCount) noexcept
    {
        if (sem_init(&m_storage, 0, initialCount) != 0) {
            return QVResultFromNative(errno);
        }
        m_semaphore = &m_storage;
        return QV_S_OK;
    }

private:
    sem_t m_storage;
};

class NamedSemObject : public SemaphoreBase {
public:
    NamedSemObject(const char* name, sem_t* semaphore) noexcept : SemaphoreBase(Kind::NamedSem, name)
    {
        m_semaphore = semaphore;
    }
    ~NamedSemObject() override { closeResources(); }

    QVRESULT closeResources() noexcept override
    {
        sem_t* semaphore = m_semaphore;
        m_semaphore = nullptr;
        return semaphore && sem_close(semaphore) != 0 ? QVResultFromNative(errno) : QV_S_OK;
    }
};

constexpr uint32_t kAnyMask = KindBit(Kind::Semaphore) | KindBit(Kind::NamedSem);

} // namespace

extern "C" QVRESULT QVSemaphoreCreate(uint32_t initialCount, const char* name, uint32_t flags,
                                      QVHANDLE* handle) noexcept
{
    if (!handle) {
        return QV_E_POINTER;
    }
    if (flags != 0 || initialCount > static_cast<uint32_t>(SEM_VALUE_MAX)) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSemaphoreCreate);
    SemaphoreObject* object = new (std::nothrow) SemaphoreObject(name);
    if (!object) {
        return QV_E_OUTOFMEMORY;
    }
    const QVRESULT result = object->init(initialCount);
    if (QV_FAILED(result)) {
        delete object;
        return result;
    }
    return HandleInsert(object, handle);
}

extern "C" QVRESULT QVSemaphoreWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kAnyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSemaphoreWait);
    sem_t* semaphore = ref.as<SemaphoreBase>()->m_semaphore;
    while (sem_wait(semaphore) != 0) {
        if (errno != EINTR) {
            return QVResultFromNative(errno);
        }
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVSemaphoreTryWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kAnyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSemaphoreTryWait);
    sem_t* semaphore = ref.as<SemaphoreBase>()->m_semaphore;
    while (sem_trywait(semaphore) != 0) {
        if (errno == EAGAIN) {
            return QV_E_BUSY;
        }
        if (errno != EINTR) {
            return QVResultFromNative(errno);
        }
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVSemaphorePost(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kAnyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSemaphorePost);
    return sem_post(ref.as<SemaphoreBase>()->m_semaphore) == 0 ? QV_S_OK : QVResultFromNative(errno);
}

extern "C" QVRESULT QVSemaphoreGetValue(QVHANDLE handle, int32_t* value) noexcept
{
    if (!value) {
        return QV_E_POINTER;
    }
    HandleRef ref(handle, kAnyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSemaphoreGetValue);
    int current = 0;
    if (sem_getvalue(ref.as<SemaphoreBase>()->m_semaphore, &current) != 0) {
        return QVResultFromNative(errno);
    }
    *value = current;
    return QV_S_OK;
}

extern "C" QVRESULT QVSemaphoreDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVSemaphoreDestroy, handle, Kind::Semaphore);
}

// Created with owner-only permissions: the processes sharing a name are
// expected to run as one user.
extern "C" QVRESULT QVNamedSemOpen(const char* name, uint32_t initialCount, QVHANDLE* handle) noexcept
{
    if (!handle) {
        return QV_E_POINTER;
    }
    PosixName posixName;
    const QVRESULT nameResult = MakePosixName(name, &posixName);
    if (QV_FAILED(nameResult)) {
        return nameResult;
    }
    if (initialCount > static_cast<uint32_t>(SEM_VALUE_MAX)) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVNamedSemOpen);
    sem_t* semaphore = sem_open(posixName.text, O_CREAT, 0600, initialCount);
    if (semaphore == SEM_FAILED) {
        return QVResultFromNative(errno);
    }
    NamedSemObject* object = new (std::nothrow) NamedSemObject(name, semaphore);
    if (!object) {
        sem_close(semaphore);
        return QV_E_OUTOFMEMORY;
    }
    return HandleInsert(object, handle);
}

extern "C" QVRESULT QVNamedSemClose(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVNamedSemClose, handle, Kind::NamedSem);
}

extern "C" QVRESULT QVNamedSemUnlink(const char* name) noexcept
{
    PosixName posixName;
    const QVRESULT nameResult = MakePosixName(name, &posixName);
    if (QV_FAILED(nameResult)) {
        return nameResult;
    }
    QV_FAULT_POINT(QVNamedSemUnlink);
    return sem_unlink(posixName.text) == 0 ? QV_S_OK : QVResultFromNative(errno);
}
