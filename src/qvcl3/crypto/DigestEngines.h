#ifndef QVCL3_CRYPTO_DIGESTENGINES_H
#define QVCL3_CRYPTO_DIGESTENGINES_H

// The compression functions behind MessageDigest: each takes the chaining
// state and a run of whole 64-byte blocks. No branch or table index depends
// on the data.

#include <cstddef>
#include <cstdint>

namespace qv {
namespace crypto {
namespace detail {

using CompressFunction = void (*)(uint32_t* state, const uint8_t* blocks, size_t count) noexcept;

void md5Compress(uint32_t* state, const uint8_t* blocks, size_t count) noexcept;
void sha1CompressPortable(uint32_t* state, const uint8_t* blocks, size_t count) noexcept;
void sha256CompressPortable(uint32_t* state, const uint8_t* blocks, size_t count) noexcept;
// Only to be called when QVCpuFeatures() reports QV_CPU_SHA; null where the
// build has no such code (other processors).
extern const CompressFunction sha1CompressExtensions;
extern const CompressFunction sha256CompressExtensions;

inline uint32_t rotateLeft(uint32_t x, int n) noexcept
{
    return (x << n) | (x >> (32 - n));
}

inline uint32_t rotateRight(uint32_t x, int n) noexcept
{
    return (x >> n) | (x << (32 - n));
}

inline uint32_t loadLittleEndian(const uint8_t* p) noexcept
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

inline uint32_t loadBigEndian(const uint8_t* p) noexcept
{
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | uint32_t(p[3]);
}

inline void storeLittleEndian(uint8_t* p, uint32_t v) noexcept
{
    p[0] = uint8_t(v);
    p[1] = uint8_t(v >> 8);
    p[2] = uint8_t(v >> 16);
    p[3] = uint8_t(v >> 24);
}

inline void storeBigEndian(uint8_t* p, uint32_t v) noexcept
{
    p[0] = uint8_t(v >> 24);
    p[1] = uint8_t(v >> 16);
    p[2] = uint8_t(v >> 8);
    p[3] = uint8_t(v);
}

// Zeroes size bytes through a call the compiler cannot prove dead, so it is
// kept even on memory that is about to be freed.
void secureWipe(void* memory, size_t size) noexcept;

} // namespace detail
} // namespace crypto
} // namespace qv

#endif
