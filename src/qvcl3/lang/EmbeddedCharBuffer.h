#ifndef QVCL3_LANG_EMBEDDEDCHARBUFFER_H
#define QVCL3_LANG_EMBEDDEDCHARBUFFER_H

#include <qv/core/Exception.h>
#include <qv/util/BasicBuffer.h>
#include <qvcore3/qvcore3.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace qv {
namespace detail {

// A String's character buffer with its first storage in the same block as
// the object: creating a short String costs one allocation instead of two,
// which is most of the price of maps of Strings (a loaded INI file holds two
// per key). The buffer behaves as any RWCharBuffer: growth past the embedded
// room moves the units to a block of their own, and the whole block goes when
// the last reference does.
class EmbeddedCharBuffer final : public util::RWCharBuffer {
public:
    // Texts up to this many units (NUL included) are embedded. Longer ones
    // gain little from it, and a shrink could not give their room back.
    static constexpr int32_t kMaxEmbedded = 256;

    // A buffer with room for capacity units (rounded up to 16): embedded up
    // to kMaxEmbedded, a plain RWCharBuffer beyond. Null never: a failed
    // allocation throws OutOfMemoryException.
    static util::RWCharBuffer* create(int32_t capacity)
    {
        if (capacity <= 0 || capacity > kMaxEmbedded)
            return new util::RWCharBuffer(capacity);
        const int32_t units = adjustCapacity(capacity);
        void* block = QVMemAlloc(sizeof(EmbeddedCharBuffer) + static_cast<size_t>(units) * sizeof(char16_t));
        if (!block)
            throw OutOfMemoryException();
        return ::new (block) EmbeddedCharBuffer(units);
    }

    EmbeddedCharBuffer(const EmbeddedCharBuffer&) = delete;
    EmbeddedCharBuffer& operator=(const EmbeddedCharBuffer&) = delete;

    // The deleting destructor (the last Release) frees the block create made.
    static void operator delete(void* block) noexcept { QVMemFree(block); }

private:
    explicit EmbeddedCharBuffer(int32_t units) noexcept
        : util::RWCharBuffer(reinterpret_cast<char16_t*>(this + 1), units)
    {}
};

} // namespace detail
} // namespace qv

#endif
