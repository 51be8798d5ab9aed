#include "FaultInjection.h"

#include <cstdlib>
#include <new>

// A request for zero bytes still gets a distinct block, as callers test the
// pointer for success.

extern "C" void* QVMemAlloc(size_t size) noexcept
{
    if (qvcore3::AllocationFaultCheck()) {
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

extern "C" void* QVMemRealloc(void* block, size_t size) noexcept
{
    // An injected failure leaves the block as it was, like a real one.
    if (qvcore3::AllocationFaultCheck()) {
        return nullptr;
    }
    return std::realloc(block, size != 0 ? size : 1);
}

extern "C" void QVMemFree(void* block) noexcept
{
    std::free(block);
}

extern "C" QVNewHandler QVSetNewHandler(QVNewHandler handler) noexcept
{
    return std::set_new_handler(handler);
}
