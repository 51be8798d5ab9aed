#include "core/ObjectCast.h"

#include <atomic>
#include <cstddef>
#include <typeinfo>

namespace qv {
namespace qvcom {

namespace {

// One class seen through one of its faces. A slot is filled once and never
// changes afterwards, so readers need no lock: the release store of READY
// publishes the fields written before it.
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
constexpr size_t SLOT_COUNT = 256;
constexpr size_t PROBES = 8;
CastSlot g_slots[SLOT_COUNT];

const Object* castAt(const IQVUnknown* element, ptrdiff_t toObject) noexcept
{
    return reinterpret_cast<const Object*>(reinterpret_cast<const char*>(element) + toObject);
}

} // namespace

const Object* objectOf(const IQVUnknown* element) noexcept
{
    if (!element)
        return nullptr;
    // Both come from the virtual table of the face: the most derived class,
    // and where this face lies inside the object.
    const std::type_info* type = &typeid(*element);
    const ptrdiff_t faceOffset =
        reinterpret_cast<const char*>(element) - static_cast<const char*>(dynamic_cast<const void*>(element));
    const size_t start = (reinterpret_cast<uintptr_t>(type) >> 4) ^ static_cast<size_t>(faceOffset);
    for (size_t probe = 0; probe < PROBES; ++probe) {
        CastSlot& slot = g_slots[(start + probe) % SLOT_COUNT];
        int state = slot.state.load(std::memory_order_acquire);
        if (state == CastSlot::READY) {
            if (slot.type == type && slot.faceOffset == faceOffset)
                return slot.isObject ? castAt(element, slot.toObject) : nullptr;
            continue;
        }
        if (state == CastSlot::FILLING ||
            !slot.state.compare_exchange_strong(state, CastSlot::FILLING, std::memory_order_acquire))
            break;
        const Object* object = dynamic_cast<const Object*>(element);
        slot.type = type;
        slot.faceOffset = faceOffset;
        slot.isObject = object != nullptr;
        slot.toObject = object ? reinterpret_cast<const char*>(object) - reinterpret_cast<const char*>(element) : 0;
        slot.state.store(CastSlot::READY, std::memory_order_release);
        return object;
    }
    return dynamic_cast<const Object*>(element);
}

} // namespace qvcom
} // namespace qv
