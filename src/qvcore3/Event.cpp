#include "WaitableObject.h"

using namespace qvcore3;

namespace {

// Auto-reset: signals while nobody waits do not add up; the next wait takes
// the one pending signal.
class EventObject : public WaitableObject {
public:
    explicit EventObject(const char* name) noexcept : WaitableObject(Kind::Event, name) {}

    QVRESULT take(uint32_t milliseconds) noexcept
    {
        return wait(
            milliseconds, [this] { return m_signalled; }, [this] { m_signalled = false; });
    }

    bool m_signalled = false; // guarded by the object's lock
};

constexpr uint32_t kMask = KindBit(Kind::Event);

} // namespace

extern "C" QVRESULT QVEventCreate(const char* name, uint32_t flags, QVHANDLE* handle) noexcept
{
    return CreateSyncObject<EventObject>(FaultOp::QVEventCreate, name, flags, handle);
}

extern "C" QVRESULT QVEventWait(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVEventWait);
    return ref.as<EventObject>()->take(kWaitForever);
}

extern "C" QVRESULT QVEventTimedWait(QVHANDLE handle, uint32_t milliseconds) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVEventTimedWait);
    return ref.as<EventObject>()->take(milliseconds);
}

extern "C" QVRESULT QVEventSignal(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVEventSignal);
    EventObject* event = ref.as<EventObject>();
    event->update([event] { event->m_signalled = true; }, false);
    return QV_S_OK;
}

extern "C" QVRESULT QVEventDestroy(QVHANDLE handle) noexcept
{
    return DestroySyncObject(FaultOp::QVEventDestroy, handle, Kind::Event);
}
