#include <qv/sync/Mutex.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

Mutex::Mutex(const char* name, unsigned flags) : m_handle(createHandle(QVMutexCreate, name, flags)) {}
Mutex::~Mutex() noexcept(false)
{
    throwIfFailed(QVMutexDestroy(m_handle));
}
void Mutex::wait()
{
    throwIfFailed(QVMutexAcquire(m_handle));
}
bool Mutex::tryWait()
{
    return QVMutexTryAcquire(m_handle) >= 0;
}
void Mutex::signal()
{
    throwIfFailed(QVMutexRelease(m_handle));
}

} // namespace sync
} // namespace qv
