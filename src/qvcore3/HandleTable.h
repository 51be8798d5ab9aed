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

#include <atomic>
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

namespace detail {

constexpr uint32_t kIndexBits = 20;
constexpr uint32_t kChunkBits = 10;
constexpr uint32_t kChunkSize = 1u << kChunkBits;
constexpr uint32_t kChunkCount = 1u << (kIndexBits - kChunkBits);
constexpr uint32_t kIndexMask = (1u << kIndexBits) - 1;
constexpr uint32_t kGenerationMask = 0x7FF;
constexpr uint32_t kNoSlot = 0xFFFFFFFFu;

// Word layout: refs 0..31, alive 32, kind 33..40, generation 41..51.
constexpr uint64_t kRefMask = 0xFFFFFFFFull;
constexpr uint64_t kAlive = 1ull << 32;
constexpr unsigned kKindShift = 33;
constexpr unsigned kGenerationShift = 41;

constexpr uint64_t MakeWord(uint32_t generation, Kind kind, bool alive) noexcept
{
    return (static_cast<uint64_t>(generation) << kGenerationShift) | (static_cast<uint64_t>(kind) << kKindShift) |
           (alive ? kAlive : 0);
}
constexpr uint32_t WordGeneration(uint64_t word) noexcept
{
    return static_cast<uint32_t>(word >> kGenerationShift) & kGenerationMask;
}
constexpr uint32_t WordKind(uint64_t word) noexcept
{
    return static_cast<uint32_t>(word >> kKindShift) & 0xFF;
}

struct Slot {
    std::atomic<uint64_t> word{MakeWord(1, Kind{}, false)};
    std::atomic<HandleObject*> object{nullptr};
    uint32_t nextFree = kNoSlot; // guarded by the free list's lock
};

// Constant-initialised and never destroyed: handles stay usable from other
// libraries' static destructors.
extern std::atomic<Slot*> g_chunks[kChunkCount];

inline Slot* SlotAt(uint32_t index) noexcept
{
    Slot* chunk = g_chunks[index >> kChunkBits].load(std::memory_order_acquire);
    return chunk ? &chunk[index & (kChunkSize - 1)] : nullptr;
}

// Deletes the object of a closed slot whose last reference is gone and puts
// the slot back on the free list; returns what the object's close reported.
QVRESULT Recycle(uint32_t index, Slot* slot) noexcept;

} // namespace detail

// A counted reference to the object behind a handle for the length of a call.
// Inline: every lock and unlock of a mutex resolves its handle, so the
// lookup and the release of the reference are kept free of calls, and only
// the rare recycling of a closed slot leaves the caller's code.
class HandleRef {
public:
    HandleRef(QVHANDLE handle, uint32_t kindMask) noexcept
    {
        using namespace detail;
        // Handles are positive; generation 0 is never issued.
        if (handle <= 0) {
            return;
        }
        const uint32_t value = static_cast<uint32_t>(handle);
        const uint32_t index = value & kIndexMask;
        const uint64_t expected = static_cast<uint64_t>((value >> kIndexBits) & kGenerationMask) << kGenerationShift;
        Slot* slot = SlotAt(index);
        if (!slot || expected == 0) {
            return;
        }
        constexpr uint64_t kGenerationBits = static_cast<uint64_t>(kGenerationMask) << kGenerationShift;
        uint64_t word = slot->word.load(std::memory_order_acquire);
        for (;;) {
            if ((word & (kGenerationBits | kAlive)) != (expected | kAlive) || !((1u << WordKind(word)) & kindMask)) {
                return;
            }
            if (slot->word.compare_exchange_weak(word, word + 1, std::memory_order_acquire,
                                                 std::memory_order_acquire)) {
                break;
            }
        }
        m_slot = slot;
        m_index = index;
        m_object = slot->object.load(std::memory_order_relaxed);
    }

    ~HandleRef()
    {
        if (!m_slot) {
            return;
        }
        const uint64_t previous = m_slot->word.fetch_sub(1, std::memory_order_acq_rel);
        if ((previous & (detail::kRefMask | detail::kAlive)) == 1) {
            detail::Recycle(m_index, m_slot);
        }
    }

    HandleRef(const HandleRef&) = delete;
    HandleRef& operator=(const HandleRef&) = delete;

    explicit operator bool() const noexcept { return m_object != nullptr; }
    template <typename T>
    T* as() const noexcept
    {
        return static_cast<T*>(m_object);
    }

private:
    detail::Slot* m_slot = nullptr;
    uint32_t m_index = 0;
    HandleObject* m_object = nullptr;
};

} // namespace qvcore3

#endif
