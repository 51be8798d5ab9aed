#include "FaultInjection.h"

#include <cstring>

using namespace qvcore3;

#ifdef QVCORE3_FAULT_INJECTION

namespace qvcore3 {

std::atomic<int32_t> g_faultsArmed{0};
std::atomic<int32_t> g_allocationArmed{0};

namespace {

struct Armed {
    std::atomic<int32_t> remaining{0};
    std::atomic<QVRESULT> code{QV_S_OK};
};

Armed g_armed[static_cast<size_t>(FaultOp::Count)];

const char* const kNames[] = {
#define QVCORE3_FAULT_NAME(name) #name,
    QVCORE3_FAULT_OPERATIONS(QVCORE3_FAULT_NAME)
#undef QVCORE3_FAULT_NAME
};

// Counts one call; true on exactly the call that brings remaining to zero.
bool CountDown(std::atomic<int32_t>& remaining) noexcept
{
    int32_t value = remaining.load(std::memory_order_relaxed);
    while (value > 0) {
        if (remaining.compare_exchange_weak(value, value - 1, std::memory_order_acq_rel)) {
            return value == 1;
        }
    }
    return false;
}

} // namespace

QVRESULT FaultFire(FaultOp op) noexcept
{
    Armed& armed = g_armed[static_cast<size_t>(op)];
    if (!CountDown(armed.remaining)) {
        return QV_S_OK;
    }
    g_faultsArmed.fetch_sub(1, std::memory_order_relaxed);
    return armed.code.load(std::memory_order_relaxed);
}

bool AllocationFaultFire() noexcept
{
    return CountDown(g_allocationArmed);
}

} // namespace qvcore3

extern "C" int32_t QVFaultInjectionAvailable(void) noexcept
{
    return 1;
}

extern "C" QVRESULT QVFaultArm(const char* operation, int32_t nth, QVRESULT code) noexcept
{
    if (!operation) {
        return QV_E_POINTER;
    }
    if (nth <= 0 || code == QV_S_OK) {
        return QV_E_INVALIDARG;
    }
    for (size_t i = 0; i < static_cast<size_t>(FaultOp::Count); ++i) {
        if (std::strcmp(kNames[i], operation) == 0) {
            g_armed[i].code.store(code, std::memory_order_relaxed);
            if (g_armed[i].remaining.exchange(nth, std::memory_order_acq_rel) == 0) {
                g_faultsArmed.fetch_add(1, std::memory_order_relaxed);
            }
            return QV_S_OK;
        }
    }
    return QV_E_INVALIDARG;
}

extern "C" QVRESULT QVFaultArmAllocation(int32_t nth) noexcept
{
    if (nth <= 0) {
        return QV_E_INVALIDARG;
    }
    g_allocationArmed.store(nth, std::memory_order_release);
    return QV_S_OK;
}

extern "C" void QVFaultDisarmAll(void) noexcept
{
    for (Armed& armed : g_armed) {
        if (armed.remaining.exchange(0, std::memory_order_acq_rel) != 0) {
            g_faultsArmed.fetch_sub(1, std::memory_order_relaxed);
        }
    }
    g_allocationArmed.store(0, std::memory_order_release);
}

extern "C" int32_t QVFaultAllocationFires(void) noexcept
{
    return AllocationFaultCheck() ? 1 : 0;
}

#else

extern "C" int32_t QVFaultInjectionAvailable(void) noexcept
{
    return 0;
}

extern "C" QVRESULT QVFaultArm(const char*, int32_t, QVRESULT) noexcept
{
    return QV_E_NOTIMPL;
}

extern "C" QVRESULT QVFaultArmAllocation(int32_t) noexcept
{
    return QV_E_NOTIMPL;
}

extern "C" void QVFaultDisarmAll(void) noexcept {}

extern "C" int32_t QVFaultAllocationFires(void) noexcept
{
    return 0;
}

#endif
