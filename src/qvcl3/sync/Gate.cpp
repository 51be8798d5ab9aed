#include <qv/sync/Gate.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

Gate::Gate(const char* name, unsigned flags) : m_handle(createHandle(QVGateCreate, name, flags)) {}
Gate::~Gate() noexcept(false)
{
    throwIfFailed(QVGateDestroy(m_handle));
}
void Gate::wait()
{
    throwIfFailed(QVGateWait(m_handle));
}
bool Gate::tryWait()
{
    return QVGateTryWait(m_handle) >= 0;
}
bool Gate::wait(unsigned long ms)
{
    return timedWaitResult(QVGateTimedWait(m_handle, static_cast<uint32_t>(ms)));
}
void Gate::open()
{
    throwIfFailed(QVGateOpen(m_handle));
}
void Gate::close()
{
    throwIfFailed(QVGateClose(m_handle));
}

} // namespace sync
} // namespace qv
