#include "FaultInjection.h"
#include "HandleTable.h"
#include "PosixName.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

using namespace qvcore3;

namespace {

class SharedMemObject : public HandleObject {
public:
    SharedMemObject(int fd, size_t size) noexcept : HandleObject(Kind::SharedMem), m_fd(fd), m_size(size)
    {
        pthread_mutex_init(&m_lock, nullptr);
    }
    ~SharedMemObject() override
    {
        closeResources();
        pthread_mutex_destroy(&m_lock);
    }

    QVRESULT closeResources() noexcept override
    {
        QVRESULT result = QV_S_OK;
        if (m_address && munmap(m_address, m_size) != 0) {
            result = QVResultFromNative(errno);
        }
        m_address = nullptr;
        if (m_fd >= 0 && close(m_fd) != 0 && errno != EINTR && QV_SUCCEEDED(result)) {
            result = QVResultFromNative(errno);
        }
        m_fd = -1;
        return result;
    }

    int m_fd;
    const size_t m_size;
    pthread_mutex_t m_lock; // guards m_address
    void* m_address = nullptr;
};

constexpr uint32_t kMask = KindBit(Kind::SharedMem);

} // namespace

// The region is never shrunk: opening with a size larger than the region's
// grows it (new bytes are zero), a size of 0 takes the region as it is. A
// region this call created and could not size is removed again.
extern "C" QVRESULT QVSharedMemOpen(const char* name, uint32_t size, uint32_t flags, QVHANDLE* handle) noexcept
{
    if (!handle) {
        return QV_E_POINTER;
    }
    PosixName posixName;
    const QVRESULT nameResult = MakePosixName(name, &posixName);
    if (QV_FAILED(nameResult)) {
        return nameResult;
    }
    if ((flags & ~QV_SHAREDMEM_CREATE) != 0 || (size == 0 && (flags & QV_SHAREDMEM_CREATE) != 0)) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSharedMemOpen);
    bool created = false;
    int fd = -1;
    if (flags & QV_SHAREDMEM_CREATE) {
        fd = shm_open(posixName.text, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        created = fd >= 0;
    }
    if (fd < 0) {
        if ((flags & QV_SHAREDMEM_CREATE) && errno != EEXIST) {
            return QVResultFromNative(errno);
        }
        fd = shm_open(posixName.text, O_RDWR | O_CLOEXEC, 0);
        if (fd < 0) {
            return QVResultFromNative(errno);
        }
    }
    int error = 0;
    struct stat status;
    if (fstat(fd, &status) != 0) {
        error = errno;
    }
    size_t mapped = error == 0 ? static_cast<size_t>(status.st_size) : 0;
    if (error == 0 && size > mapped) {
        if (ftruncate(fd, static_cast<off_t>(size)) != 0) {
            error = errno;
        }
        mapped = size;
    }
    if (error == 0 && mapped == 0) {
        error = EINVAL; // nothing to map: an empty region opened with size 0
    }
    SharedMemObject* object = nullptr;
    if (error == 0) {
        object = new (std::nothrow) SharedMemObject(fd, mapped);
        if (!object) {
            error = ENOMEM;
        }
    }
    if (error != 0) {
        close(fd);
        if (created) {
            shm_unlink(posixName.text);
        }
        return QVResultFromNative(error);
    }
    const QVRESULT result = HandleInsert(object, handle);
    if (QV_FAILED(result) && created) {
        shm_unlink(posixName.text);
    }
    return result;
}

// Mapping twice gives the same address.
extern "C" QVRESULT QVSharedMemMap(QVHANDLE handle, void** address) noexcept
{
    if (!address) {
        return QV_E_POINTER;
    }
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSharedMemMap);
    SharedMemObject* object = ref.as<SharedMemObject>();
    pthread_mutex_lock(&object->m_lock);
    QVRESULT result = QV_S_OK;
    if (!object->m_address) {
        void* mapped = mmap(nullptr, object->m_size, PROT_READ | PROT_WRITE, MAP_SHARED, object->m_fd, 0);
        if (mapped == MAP_FAILED) {
            result = QVResultFromNative(errno);
        } else {
            object->m_address = mapped;
        }
    }
    if (QV_SUCCEEDED(result)) {
        *address = object->m_address;
    }
    pthread_mutex_unlock(&object->m_lock);
    return result;
}

// Unmapping what is not mapped is a call out of order.
extern "C" QVRESULT QVSharedMemUnmap(QVHANDLE handle) noexcept
{
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVSharedMemUnmap);
    SharedMemObject* object = ref.as<SharedMemObject>();
    pthread_mutex_lock(&object->m_lock);
    QVRESULT result = QV_E_ILLEGAL_METHOD_CALL;
    if (object->m_address) {
        result = munmap(object->m_address, object->m_size) == 0 ? QV_S_OK : QVResultFromNative(errno);
        object->m_address = nullptr;
    }
    pthread_mutex_unlock(&object->m_lock);
    return result;
}

extern "C" QVRESULT QVSharedMemGetSize(QVHANDLE handle, size_t* size) noexcept
{
    if (!size) {
        return QV_E_POINTER;
    }
    HandleRef ref(handle, kMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    *size = ref.as<SharedMemObject>()->m_size;
    return QV_S_OK;
}

// Unmaps as well when still mapped.
extern "C" QVRESULT QVSharedMemClose(QVHANDLE handle) noexcept
{
    const QVRESULT result = HandleClose(handle, kMask);
    if (QV_FAILED(result)) {
        return result;
    }
    const QVRESULT fault = FaultCheck(FaultOp::QVSharedMemClose);
    return fault != QV_S_OK ? fault : result;
}

extern "C" QVRESULT QVSharedMemUnlink(const char* name) noexcept
{
    PosixName posixName;
    const QVRESULT nameResult = MakePosixName(name, &posixName);
    if (QV_FAILED(nameResult)) {
        return nameResult;
    }
    QV_FAULT_POINT(QVSharedMemUnlink);
    return shm_unlink(posixName.text) == 0 ? QV_S_OK : QVResultFromNative(errno);
}
