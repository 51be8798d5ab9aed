#include <qv/sync/Event.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

Event::Event(const char* name, unsigned flags) : m_handle(createHandle(QVEventCreate, name, flags)) {}
Event::~Event() noexcept(false)
{
    throwIfFailed(QVEventDestroy(m_handle));
}
void Event::wait()
{
    throwIfFailed(QVEventWait(m_handle));
}
bool Event::tryWait()
{
    return false;
}
bool Event::wait(unsigned long ms)
{
    return timedWaitResult(QVEventTimedWait(m_handle, static_cast<uint32_t>(ms)));
}
void Event::signal()
{
    throwIfFailed(QVEventSignal(m_handle));
}

} // namespace sync
} // namespace qv
