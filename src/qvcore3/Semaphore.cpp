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

// Both kinds of semaphore check the handle, then give an armed fault its
// chance, in that order, before they touch the semaphore.
template <typename Call>
QVRESULT OnSemaphore(QVHANDLE handle, FaultOp op, Call call) noexcept
{
    HandleRef ref(handle, kAnyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    const QVRESULT fault = FaultCheck(op);
    if (fault != QV_S_OK) {
        return fault;
    }
    return call(ref.as<SemaphoreBase>()->m_semaphore);
}

// A wait that a signal interrupts starts again; a try that finds the count
// at zero is busy rather than failed.
template <typename Wait>
QVRESULT RetryWait(Wait wait, sem_t* semaphore, bool isTry) noexcept
{
    while (wait(semaphore) != 0) {
        if (isTry && errno == EAGAIN) {
            return QV_E_BUSY;
        }
        if (errno != EINTR) {
            return QVResultFromNative(errno);
        }
    }
    return QV_S_OK;
}

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
    return OnSemaphore(handle, FaultOp::QVSemaphoreWait,
                       [](sem_t* semaphore) { return RetryWait(sem_wait, semaphore, false); });
}

extern "C" QVRESULT QVSemaphoreTryWait(QVHANDLE handle) noexcept
{
    return OnSemaphore(handle, FaultOp::QVSemaphoreTryWait,
                       [](sem_t* semaphore) { return RetryWait(sem_trywait, semaphore, true); });
}

extern "C" QVRESULT QVSemaphorePost(QVHANDLE handle) noexcept
{
    return OnSemaphore(handle, FaultOp::QVSemaphorePost,
                       [](sem_t* semaphore) { return sem_post(semaphore) == 0 ? QV_S_OK : QVResultFromNative(errno); });
}

extern "C" QVRESULT QVSemaphoreGetValue(QVHANDLE handle, int32_t* value) noexcept
{
    if (!value) {
        return QV_E_POINTER;
    }
    return OnSemaphore(handle, FaultOp::QVSemaphoreGetValue, [value](sem_t* semaphore) -> QVRESULT {
        int current = 0;
        if (sem_getvalue(semaphore, &current) != 0) {
            return QVResultFromNative(errno);
        }
        *value = current;
        return QV_S_OK;
    });
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
