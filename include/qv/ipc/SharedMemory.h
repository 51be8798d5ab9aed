#ifndef QV_IPC_SHAREDMEMORY_H
#define QV_IPC_SHAREDMEMORY_H

#include <qv/core/Object.h>

#include <cstddef>
#include <cstdint>

namespace qv {
namespace ipc {

// A named region of memory shared between processes, mapped read-write into
// this process for the life of this object. Names follow ipc::Semaphore's
// rules. New regions are zero-filled. The region lives in the system until
// unlink() removes the name.
class QV_EXPORT SharedMemory : public Object {
public:
    // Open an existing region only.
    static const unsigned OPEN = 0x0u;
    // Create the region when it does not exist yet.
    static const unsigned CREATE = 0x1u;

    // size: the bytes wanted; a smaller existing region is grown, a larger one
    // kept as it is; 0 opens an existing region at its size (not with
    // CREATE). ResultException with the platform's code: 0x80070002 when
    // the region does not exist and CREATE is not given, 0x80070057 for a
    // refused name, size or flag.
    SharedMemory(const char* name, uint32_t size, unsigned flags = CREATE);
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    // Unmaps and closes; throws ResultException when the platform fails.
    ~SharedMemory() noexcept(false) override;

    void* getAddress() const noexcept { return m_address; }
    // The bytes mapped: the region's size, at least the size asked for.
    size_t getSize() const noexcept { return m_size; }

    // Removes the name; ResultException 0x80070002 when there is none.
    static void unlink(const char* name);

private:
    int32_t m_handle;
    void* m_address = nullptr;
    size_t m_size = 0;
};

} // namespace ipc
} // namespace qv

#endif
