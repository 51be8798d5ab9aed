#include <qv/sync/Condition.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

Condition::Condition(const char* name, unsigned flags) : m_handle(createHandle(QVConditionCreate, name, flags)) {}
Condition::~Condition()
{
    QVConditionDestroy(m_handle);
}
void Condition::acquire()
{
    throwIfFailed(QVConditionAcquire(m_handle));
}
void Condition::release()
{
    throwIfFailed(QVConditionRelease(m_handle));
}
void Condition::wait()
{
    throwIfFailed(QVConditionWait(m_handle));
}
void Condition::wait(unsigned long ms)
{
    throwIfFailed(QVConditionTimedWait(m_handle, static_cast<uint32_t>(ms)));
}
void Condition::signal()
{
    throwIfFailed(QVConditionSignal(m_handle));
}
void Condition::broadcast()
{
    throwIfFailed(QVConditionBroadcast(m_handle));
}

Condition::Holder::Holder(Condition& condition) : m_condition(&condition)
{
    throwIfFailed(QVConditionAcquire(m_condition->m_handle));
}
Condition::Holder::~Holder() noexcept(false)
{
    throwIfFailed(QVConditionRelease(m_condition->m_handle));
}

} // namespace sync
} // namespace qv
