// The counting operator new shared by every test program: it fails where the
// platform's armed allocation fault says so (QVFaultArmAllocation), as a real
// shortage would (through the installed new-handler, which throws
// OutOfMemoryException). Every form is replaced, so that allocation and
// release always pair up (the sanitizers check that they do).
#include <qvcore3/qvcore3.h>

#include <cstdlib>
#include <new>

namespace {

void* allocate(std::size_t size)
{
    if (size == 0)
        size = 1;
    for (;;) {
        if (!QVFaultAllocationFires()) {
            if (void* block = std::malloc(size))
                return block;
        }
        std::new_handler handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
}

void* allocateOrNull(std::size_t size) noexcept
{
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocateOrNull(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return allocateOrNull(size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    std::free(block);
}
