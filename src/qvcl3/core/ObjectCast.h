#ifndef QVCL3_CORE_OBJECTCAST_H
#define QVCL3_CORE_OBJECTCAST_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <typeinfo>

namespace qv {
namespace qvcom {

// One class seen through one of its faces, for objectOf. A slot is filled
// once and never changes afterwards, so readers need no lock: the release
// store of READY publishes the fields written before it.
struct CastSlot {
    enum State { EMPTY = 0, FILLING = 1, READY = 2 };
    std::atomic<int> state{EMPTY};
    const std::type_info* type = nullptr;
    ptrdiff_t faceOffset = 0;
    bool isObject = false;
    ptrdiff_t toObject = 0;
};

// Enough for the classes a program keeps in its collections; when the
// probed slots are all taken by other classes the cast is simply made.
constexpr size_t CAST_SLOT_COUNT = 256;
constexpr size_t CAST_SLOT_PROBES = 8;
extern CastSlot g_castSlots[CAST_SLOT_COUNT];

// objectOf past its first slot: the other probes, filling a slot for a
// class not seen yet, or the cast itself.
const Object* objectOfSlowly(const IQVUnknown* element, const std::type_info* type, ptrdiff_t faceOffset,
                             size_t start) noexcept;

// dynamic_cast<const Object*>(element), with the answer remembered per
// class and interface face: a cross-cast walks the class hierarchy and costs
// some thirty nanoseconds, while the class of an object and the face the
// pointer is (both read from its virtual table) are enough to find its
// Object base again. Null for null and for objects that are not qv::Object.
// Thread-safe; never allocates.
inline const Object* objectOf(const IQVUnknown* element) noexcept
{
    if (!element)
        return nullptr;
    const std::type_info* type = &typeid(*element);
    const ptrdiff_t faceOffset =
        reinterpret_cast<const char*>(element) - static_cast<const char*>(dynamic_cast<const void*>(element));
    const size_t start = (reinterpret_cast<uintptr_t>(type) >> 4) ^ static_cast<size_t>(faceOffset);
    const CastSlot& slot = g_castSlots[start % CAST_SLOT_COUNT];
    if (slot.state.load(std::memory_order_acquire) == CastSlot::READY && slot.type == type &&
        slot.faceOffset == faceOffset) {
        return slot.isObject ? reinterpret_cast<const Object*>(reinterpret_cast<const char*>(element) + slot.toObject)
                             : nullptr;
    }
    return objectOfSlowly(element, type, faceOffset, start);
}

// The IQVComparable face of an element, for the length of one call made
// while the caller holds the element. A qv::Object's face is its
// IQVComparable base, which is what Object's interface map answers, so it is
// borrowed without the query and the reference the query would hand out;
// any other object is asked with QueryInterface and the answer held here.
// False when the element is null or has no IQVComparable.
class ComparableFace {
public:
    explicit ComparableFace(const IQVUnknown* element) noexcept
    {
        if (const Object* object = objectOf(element)) {
            m_face = object;
        } else if (element) {
            if (const_cast<IQVUnknown*>(element)->QueryInterface(IQVComparable::iid, m_held.putVoid()) < 0)
                m_held = nullptr;
            m_face = m_held.get();
        }
    }
    ComparableFace(const ComparableFace&) = delete;
    ComparableFace& operator=(const ComparableFace&) = delete;

    explicit operator bool() const noexcept { return m_face != nullptr; }
    const IQVComparable* operator->() const noexcept { return m_face; }

private:
    const IQVComparable* m_face = nullptr;
    Reference<IQVComparable> m_held;
};

} // namespace qvcom
} // namespace qv

#endif
