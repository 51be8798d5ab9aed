#ifndef QVCORE3_SRC_HANDLETABLE_H
#define QVCORE3_SRC_HANDLETABLE_H

// Process-wide table behind every QVHANDLE.
//
// A handle is (generation << 20) | index: 2^20 slots, allocated in chunks of
// 1024 on demand and never moved, and an 11-bit generation (1..2047) that
// changes each time a slot is reused, so stale handles miss. Handles are
// always positive and never QV_INVALID_HANDLE.
//
// Each slot keeps one atomic word: reference count (low 32 bits), alive bit,
// kind and generation. A lookup is a compare-and-swap on that word; no lock is
// taken. Closing clears the alive bit; whoever drops the last reference of a
// closed slot deletes the object, so an object is never freed while another
// thread is inside a call on it.

#include <qvcore3/qvcore3.h>

#include <cstdint>

namespace qvcore3 {

enum class Kind : uint8_t {
    Mutex = 1,
    Condition,
    RWLock,
    Gate,
    Event,
    Semaphore,
    NamedSem,
    Thread,
    Process,
    Module,
    Library,
    SharedMem,
    RegistryKey,
};

constexpr uint32_t KindBit(Kind kind) noexcept
{
    return 1u << static_cast<unsigned>(kind);
}

class HandleObject {
public:
    explicit HandleObject(Kind kind) noexcept : m_kind(kind) {}
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    virtual ~HandleObject() = default;

    // Runs just before deletion; its result is what a close reports when the
    // object goes at once (no other thread inside a call on it).
    virtual QVRESULT closeResources() noexcept { return QV_S_OK; }

    Kind kind() const noexcept { return m_kind; }

private:
    Kind m_kind;
};

// Takes a slot without making it findable: lets a creator start a thread or a
// process only once a handle for it is certain. Then Publish or Unreserve.
QVRESULT HandleReserve(QVHANDLE* handle) noexcept;
// Makes a reserved slot findable; the table owns object from now on.
void HandlePublish(QVHANDLE handle, HandleObject* object) noexcept;
void HandleUnreserve(QVHANDLE handle) noexcept;

// Reserve and publish in one step. On failure object is deleted.
QVRESULT HandleInsert(HandleObject* object, QVHANDLE* handle) noexcept;

// Makes the handle invalid. The object goes now, or when the last call still
// using it returns. QV_E_INVALIDARG for a handle that is not open or not of
// one of the kinds in kindMask.
QVRESULT HandleClose(QVHANDLE handle, uint32_t kindMask) noexcept;

// Number of open handles, for tests that look for leaks.
uint32_t HandleCountOpen() noexcept;

// A counted reference to the object behind a handle for the length of a call.
class HandleRef {
public:
    HandleRef(QVHANDLE handle, uint32_t kindMask) noexcept;
    ~HandleRef();
    HandleRef(const HandleRef&) = delete;
    HandleRef& operator=(const HandleRef&) = delete;

    explicit operator bool() const noexcept { return m_object != nullptr; }
    template <typename T>
    T* as() const noexcept
    {
        return static_cast<T*>(m_object);
    }

private:
    uint32_t m_index = 0;
    HandleObject* m_object = nullptr;
};

} // namespace qvcore3

#endif
