#include "SyncCommon.h"

#include <cstring>

namespace qvcore3 {

timespec MonotonicDeadline(uint32_t milliseconds) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    now.tv_sec += static_cast<time_t>(milliseconds / 1000);
    now.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
    if (now.tv_nsec >= 1000000000L) {
        now.tv_nsec -= 1000000000L;
        ++now.tv_sec;
    }
    return now;
}

int InitMonotonicCondition(pthread_cond_t* condition) noexcept
{
    pthread_condattr_t attributes;
    int error = pthread_condattr_init(&attributes);
    if (error != 0) {
        return error;
    }
    error = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    if (error == 0) {
        error = pthread_cond_init(condition, &attributes);
    }
    pthread_condattr_destroy(&attributes);
    return error;
}

SyncObject::SyncObject(Kind kind, const char* name) noexcept : HandleObject(kind), m_name()
{
    if (name) {
        std::strncpy(m_name, name, sizeof m_name - 1);
    }
}

QVRESULT DestroySyncObject(FaultOp op, QVHANDLE handle, Kind kind) noexcept
{
    const QVRESULT result = HandleClose(handle, KindBit(kind));
    if (QV_FAILED(result)) {
        return result;
    }
    const QVRESULT fault = FaultCheck(op);
    return fault != QV_S_OK ? fault : result;
}

} // namespace qvcore3
