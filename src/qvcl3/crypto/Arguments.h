#ifndef QVCL3_CRYPTO_ARGUMENTS_H
#define QVCL3_CRYPTO_ARGUMENTS_H

// The argument checks shared by the digests, the cipher and the streams: a
// caller's mistake is ResultException(0x80070057), never a wild read.

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace crypto {
namespace detail {

template <class T>
T* requireObject(T* object)
{
    if (object == nullptr) {
        throw ResultException(results::INVALIDARG);
    }
    return object;
}

// count bytes at bytes: no negative count, no null pointer with a positive one.
inline void requireBytes(const void* bytes, int64_t count, const char16_t* message)
{
    if (count < 0 || (count > 0 && bytes == nullptr)) {
        throw ResultException(results::INVALIDARG, String(message));
    }
}

} // namespace detail
} // namespace crypto
} // namespace qv

#endif
