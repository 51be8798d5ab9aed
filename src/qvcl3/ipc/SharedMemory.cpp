#include <qv/ipc/SharedMemory.h>
#include <qvcore3/qvcore3.h>

#include "exec/PlatformFailure.h"

static_assert(qv::ipc::SharedMemory::CREATE == QV_SHAREDMEM_CREATE, "the flags reach the platform unchanged");

namespace qv {
namespace ipc {

using exec::throwIfFailed;

SharedMemory::SharedMemory(const char* name, uint32_t size, unsigned flags)
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    throwIfFailed(QVSharedMemOpen(name, size, flags, &handle));
    Result result = QVSharedMemMap(handle, &m_address);
    if (result >= 0)
        result = QVSharedMemGetSize(handle, &m_size);
    if (result < 0) {
        // The region stays in the system: another process may be using it.
        QVSharedMemClose(handle);
        throwIfFailed(result);
    }
    m_handle = handle;
}

SharedMemory::~SharedMemory() noexcept(false)
{
    qvcom::throwIfFailed(QVSharedMemClose(m_handle));
}

void SharedMemory::unlink(const char* name)
{
    throwIfFailed(QVSharedMemUnlink(name));
}

} // namespace ipc
} // namespace qv
