#include <qv/sync/Semaphore.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

Semaphore::Semaphore(unsigned long initialCount, const char* name, unsigned flags)
    : m_handle(createHandle(QVSemaphoreCreate, static_cast<uint32_t>(initialCount), name, flags))
{}
Semaphore::~Semaphore() noexcept(false)
{
    // A named semaphore's subclass has closed its own handle and left none.
    if (m_handle != QV_INVALID_HANDLE)
        throwIfFailed(QVSemaphoreDestroy(m_handle));
}
void Semaphore::wait()
{
    throwIfFailed(QVSemaphoreWait(m_handle));
}
bool Semaphore::tryWait()
{
    return QVSemaphoreTryWait(m_handle) >= 0;
}
void Semaphore::signal()
{
    throwIfFailed(QVSemaphorePost(m_handle));
}
int32_t Semaphore::getValue()
{
    int32_t value = 0;
    throwIfFailed(QVSemaphoreGetValue(m_handle, &value));
    return value;
}

} // namespace sync
} // namespace qv
