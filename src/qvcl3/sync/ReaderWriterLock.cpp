#include <qv/sync/ReaderWriterLock.h>

#include "sync/PlatformHandle.h"

namespace qv {
namespace sync {

using qvcom::throwIfFailed;

ReaderWriterLock::ReaderWriterLock(const char* name, unsigned flags)
    : m_handle(createHandle(QVRWLockCreate, name, flags))
{}
ReaderWriterLock::~ReaderWriterLock() noexcept(false)
{
    throwIfFailed(QVRWLockDestroy(m_handle));
}
void ReaderWriterLock::wait()
{
    throwIfFailed(QVRWLockAcquireWrite(m_handle));
}
bool ReaderWriterLock::tryWait()
{
    return QVRWLockTryAcquireWrite(m_handle) >= 0;
}
void ReaderWriterLock::signal()
{
    throwIfFailed(QVRWLockReleaseWrite(m_handle));
}
void ReaderWriterLock::waitShared()
{
    throwIfFailed(QVRWLockAcquireRead(m_handle));
}
bool ReaderWriterLock::tryWaitShared()
{
    return QVRWLockTryAcquireRead(m_handle) >= 0;
}
void ReaderWriterLock::signalShared()
{
    throwIfFailed(QVRWLockReleaseRead(m_handle));
}

} // namespace sync
} // namespace qv
