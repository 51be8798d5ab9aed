#include "WaitableObject.h"

#include <cstdint>

using namespace qvcore3;

namespace {

// Every open counts a generation: a waiter that was already waiting when the
// gate opened goes through even if the gate is closed again before it wakes.
class GateObject : public WaitableObject {
public:
    explicit GateObject(const char* name) noexcept : WaitableObject(Kind::Gate, name) {}

    QVRESULT pass(uint32_t milliseconds) noexcept
    {
        uint64_t seen = 0;
        bool first = true;
        return wait(
            milliseconds,
            [&] {
                if (first) {
                    seen = m_openings;
                    first = false;
                }
                return m_open || m_openings != seen;
            },
            [] {});
    }

    bool m_open = false;
    uint64_t m_openings = 0; // guarded by the object's lock
};

constexpr uint32_t kMask = KindBit(Kind::Gate);

} // namespace

extern "C" QVRESULT QVGateCreate(const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    return CreateSyncObject<GateObject>(FaultOp::QVGateCreate, name, flags, handle);
}

extern "C" QVRESULT QVGateWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVGateWait);
    return ref.as<GateObject>()->pass(kWaitForever);
}

extern "C" QVRESULT QVGateTryWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVGateTryWait);
    return ref.as<GateObject>()->pass(0) == QV_S_OK ? QV_S_OK : QV_E_BUSY;
}

extern "C" QVRESULT QVGateTimedWait(QVHANDLE handle, uint32_t milliseconds) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVGateTimedWait);
    return ref.as<GateObject>()->pass(milliseconds);
}

extern "C" QVRESULT QVGateOpen(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVGateOpen);
    GateObject* gate = ref.as<GateObject>();
    gate->update(
        [gate] {
            if (!gate->m_open) {
                gate->m_open = true;
                ++gate->m_openings;
            }
        },
        true);
    return QV_S_OK;
}

extern "C" QVRESULT QVGateClose(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVGateClose);
    GateObject* gate = ref.as<GateObject>();
    gate->update([gate] { gate->m_open = false; }, false);
    return QV_S_OK;
}

extern "C" QVRESULT QVGateDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVGateDestroy, handle, Kind::Gate);
}
