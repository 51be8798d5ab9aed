#ifndef QV_CORE_RECYCLEDALLOCATION_H
#define QV_CORE_RECYCLEDALLOCATION_H

#include <cstddef>
#include <new>

// The class-level allocation functions of a class whose objects are recycled
// across threads (defined in its source through detail::allocateRecycled and
// detail::releaseRecycled). A class-level operator new hides every global
// form, so the placement and nothrow forms are declared again here: code that
// writes `new (where) T(...)` or `new (std::nothrow) T(...)` keeps compiling.
// A nothrow object takes the general allocator; the sized delete accepts it,
// since recycled blocks come from that allocator too.
#define QV_RECYCLED_ALLOCATION                                                                                         \
    static void* operator new(std::size_t size);                                                                       \
    static void operator delete(void* block, std::size_t size) noexcept;                                               \
    static void* operator new(std::size_t, void* where) noexcept                                                       \
    {                                                                                                                  \
        return where;                                                                                                  \
    }                                                                                                                  \
    static void operator delete(void*, void*) noexcept {}                                                              \
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept                                        \
    {                                                                                                                  \
        return ::operator new(size, std::nothrow);                                                                     \
    }                                                                                                                  \
    static void operator delete(void* block, const std::nothrow_t&) noexcept                                           \
    {                                                                                                                  \
        ::operator delete(block);                                                                                      \
    }

#endif
