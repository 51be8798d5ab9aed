#include <qv/ipc/Semaphore.h>
#include <qvcore3/qvcore3.h>

#include "exec/PlatformFailure.h"

#include <limits>

namespace qv {
namespace ipc {

using exec::throwIfFailed;

namespace {

QVHANDLE openSemaphore(const char* name, unsigned long initialCount)
{
    if (initialCount > std::numeric_limits<uint32_t>::max())
        throw ResultException(results::INVALIDARG);
    QVHANDLE handle = QV_INVALID_HANDLE;
    throwIfFailed(QVNamedSemOpen(name, static_cast<uint32_t>(initialCount), &handle));
    return handle;
}

} // namespace

Semaphore::Semaphore(const char* name, unsigned long initialCount) : m_handle(openSemaphore(name, initialCount)) {}

Semaphore::~Semaphore() noexcept(false)
{
    qvcom::throwIfFailed(QVNamedSemClose(m_handle));
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

void Semaphore::unlink(const char* name)
{
    throwIfFailed(QVNamedSemUnlink(name));
}

} // namespace ipc
} // namespace qv
