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

Semaphore::Semaphore(const char* name, unsigned long initialCount)
    : sync::Semaphore(AdoptHandle(), openSemaphore(name, initialCount))
{}

Semaphore::~Semaphore() noexcept(false)
{
    throwIfFailed(QVNamedSemClose(releaseHandle()));
}

void Semaphore::unlink(const char* name)
{
    throwIfFailed(QVNamedSemUnlink(name));
}

} // namespace ipc
} // namespace qv
