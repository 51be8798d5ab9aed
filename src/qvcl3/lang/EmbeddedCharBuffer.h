#ifndef QVCL3_LANG_EMBEDDEDCHARBUFFER_H
#define QVCL3_LANG_EMBEDDEDCHARBUFFER_H

#include <qv/core/Exception.h>
#include <qv/util/BasicBuffer.h>
#include <qvcore3/qvcore3.h>

#include "core/RecycledBlocks.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace qv {
namespace detail {

// A String's character buffer with its first storage in the same block as
// the object: creating a short String costs one allocation instead of two,
// which is most of the price of maps of Strings (a loaded INI file holds two
// per key). The buffer behaves as any RWCharBuffer: growth past the embedded
// room moves the units to a block of their own, and the whole block goes when
// the last reference does.
//
// Blocks for up to kMaxRecycled units are recycled across threads: a text is
// often made by one thread and dropped by another (a log entry's text, by a
// queue's worker), and through the general allocator the dropping thread
// would hand every block back to the making thread's arena under its lock.
class EmbeddedCharBuffer final : public util::RWCharBuffer {
public:
    // Texts up to this many units (NUL included) are embedded. Longer ones
    // gain little from it, and a shrink could not give their room back.
    static constexpr int32_t kMaxEmbedded = 256;
    static constexpr int32_t kMaxRecycled = 128;

    // A buffer with room for capacity units (rounded up to 16): embedded up
    // to kMaxEmbedded, a plain RWCharBuffer beyond. Null never: a failed
    // allocation throws OutOfMemoryException.
    static util::RWCharBuffer* create(int32_t capacity)
    {
        if (capacity <= 0 || capacity > kMaxEmbedded)
            return new util::RWCharBuffer(capacity);
        const int32_t units = adjustCapacity(capacity);
        // The block's size class goes in front of the object, where the
        // deleting destructor's operator delete can still read it.
        const size_t sizeClass = units <= kMaxRecycled ? static_cast<size_t>(units / kUnitStep) : 0;
        void* block =
            sizeClass != 0 ? recycledClasses()[sizeClass - 1].allocate() : PlatformMemory::allocate(blockSize(units));
        *static_cast<size_t*>(block) = sizeClass;
        return ::new (static_cast<unsigned char*>(block) + kHeader) EmbeddedCharBuffer(units);
    }

    EmbeddedCharBuffer(const EmbeddedCharBuffer&) = delete;
    EmbeddedCharBuffer& operator=(const EmbeddedCharBuffer&) = delete;

    // The deleting destructor (the last Release) frees the block create made.
    static void operator delete(void* object) noexcept
    {
        void* block = static_cast<unsigned char*>(object) - kHeader;
        const size_t sizeClass = *static_cast<const size_t*>(block);
        if (sizeClass != 0)
            recycledClasses()[sizeClass - 1].release(block);
        else
            PlatformMemory::release(block);
    }

private:
    explicit EmbeddedCharBuffer(int32_t units) noexcept
        : util::RWCharBuffer(EmbeddedStorage(), reinterpret_cast<char16_t*>(this + 1), units)
    {}

    // Capacities are multiples of this (adjustCapacity).
    static constexpr int32_t kUnitStep = 16;
    static constexpr size_t kHeader = alignof(std::max_align_t);
    static constexpr size_t blockSize(int32_t units)
    {
        return kHeader + sizeof(EmbeddedCharBuffer) + static_cast<size_t>(units) * sizeof(char16_t);
    }

    // The platform allocator, as the buffers have always used, failing as
    // OutOfMemoryException.
    struct PlatformMemory {
        static void* allocate(size_t size)
        {
            void* block = QVMemAlloc(size);
            if (!block)
                throw OutOfMemoryException();
            return block;
        }
        static void release(void* block) noexcept { QVMemFree(block); }
        [[noreturn]] static void failed() { throw OutOfMemoryException(); }
    };

    struct SizeClass {
        void* (*allocate)();
        void (*release)(void*) noexcept;
    };
    template <size_t... Steps>
    static const SizeClass* makeClasses(std::index_sequence<Steps...>)
    {
        static const SizeClass classes[] = {
            {&RecycledBlocks<blockSize((Steps + 1) * kUnitStep), PlatformMemory>::allocate,
             &RecycledBlocks<blockSize((Steps + 1) * kUnitStep), PlatformMemory>::release}...};
        return classes;
    }
    static const SizeClass* recycledClasses()
    {
        static const SizeClass* const classes =
            makeClasses(std::make_index_sequence<static_cast<size_t>(kMaxRecycled / kUnitStep)>());
        return classes;
    }
};

} // namespace detail
} // namespace qv

#endif
