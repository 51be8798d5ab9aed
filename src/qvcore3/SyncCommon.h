#ifndef QVCORE3_SRC_SYNCCOMMON_H
#define QVCORE3_SRC_SYNCCOMMON_H

#include "FaultInjection.h"
#include "HandleTable.h"

#include <pthread.h>
#include <time.h>

#include <cerrno>
#include <cstdint>
#include <new>

namespace qvcore3 {

// A time-out of 0xFFFFFFFF milliseconds waits without limit, as callers
// written for the original platform pass that for "infinite".
constexpr uint32_t kWaitForever = 0xFFFFFFFFu;

// Now plus milliseconds on CLOCK_MONOTONIC, for pthread_cond_timedwait on a
// condition made by InitMonotonicCondition.
timespec MonotonicDeadline(uint32_t milliseconds) noexcept;
int InitMonotonicCondition(pthread_cond_t* condition) noexcept;

// Base of the synchronisation objects: keeps the optional label for a
// debugger's eyes (truncated; never needed for behaviour).
class SyncObject : public HandleObject {
public:
    SyncObject(Kind kind, const char* name) noexcept;

private:
    char m_name[40];
};

// Creation boilerplate: checks the output pointer and the reserved flags,
// runs the fault point, then inserts object (deleted on every failure).
template <typename T>
QVRESULT CreateSyncObject(FaultOp op, const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    if (!handle) {
        return QV_E_POINTER;
    }
    if (flags != 0) {
        return QV_E_INVALIDARG;
    }
    const QVRESULT fault = FaultCheck(op);
    if (fault != QV_S_OK) {
        return fault;
    }
    T* object = new (std::nothrow) T(name);
    if (!object) {
        return QV_E_OUTOFMEMORY;
    }
    const QVRESULT result = object->init();
    if (QV_FAILED(result)) {
        delete object;
        return result;
    }
    return HandleInsert(object, handle);
}

// Destroy boilerplate. An injected failure is reported after the object is
// gone, so a caller's failure path can be tested without leaking it.
QVRESULT DestroySyncObject(FaultOp op, QVHANDLE handle, Kind kind) noexcept;

} // namespace qvcore3

#endif
