#include "crypto/DigestEngines.h"

#include <cstring>

namespace qv {
namespace crypto {
namespace detail {

void secureWipe(void* memory, size_t size) noexcept
{
    // Called through a volatile pointer: the compiler cannot know which
    // function runs, so it cannot drop the call as a dead store.
    static void* (*const volatile setMemory)(void*, int, size_t) = std::memset;
    if (memory != nullptr && size > 0) {
        setMemory(memory, 0, size);
    }
}

} // namespace detail
} // namespace crypto
} // namespace qv
