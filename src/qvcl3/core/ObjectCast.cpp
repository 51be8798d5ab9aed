#include "core/ObjectCast.h"

namespace qv {
namespace qvcom {

CastSlot g_castSlots[CAST_SLOT_COUNT];

const Object* objectOfSlowly(const IQVUnknown* element, const std::type_info* type, ptrdiff_t faceOffset,
                             size_t start) noexcept
{
    for (size_t probe = 0; probe < CAST_SLOT_PROBES; ++probe) {
        CastSlot& slot = g_castSlots[(start + probe) % CAST_SLOT_COUNT];
        int state = slot.state.load(std::memory_order_acquire);
        if (state == CastSlot::READY) {
            if (slot.type == type && slot.faceOffset == faceOffset) {
                return slot.isObject
                           ? reinterpret_cast<const Object*>(reinterpret_cast<const char*>(element) + slot.toObject)
                           : nullptr;
            }
            continue;
        }
        // A slot another thread is filling may be for this very class;
        // the cast below answers meanwhile.
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
