#ifndef QVCL3_CRYPTO_BLOWFISHROUNDS_H
#define QVCL3_CRYPTO_BLOWFISHROUNDS_H

// The sixteen Blowfish rounds on the two 32-bit halves of a block, inline so
// that the mode loops keep the halves in registers. The S-box indexes are
// bytes of the data: the lookups' timing depends on the data (documented
// in the class header).

#include <cstdint>

namespace qv {
namespace crypto {
namespace detail {

struct BlowfishSchedule {
    const uint32_t* p;
    const uint32_t (*s)[256];
};

inline uint32_t blowfishF(const uint32_t (*s)[256], uint32_t x) noexcept
{
    return ((s[0][x >> 24] + s[1][(x >> 16) & 0xFF]) ^ s[2][(x >> 8) & 0xFF]) + s[3][x & 0xFF];
}

// Written out (two rounds per pair of lines) with the swap folded into the naming; the halves come
// out exchanged, as the cipher's last step requires.
inline void blowfishEncrypt(const BlowfishSchedule& k, uint32_t& left, uint32_t& right) noexcept
{
    const uint32_t* p = k.p;
    uint32_t l = left ^ p[0];
    uint32_t r = right;
    r ^= blowfishF(k.s, l) ^ p[1];
    l ^= blowfishF(k.s, r) ^ p[2];
    r ^= blowfishF(k.s, l) ^ p[3];
    l ^= blowfishF(k.s, r) ^ p[4];
    r ^= blowfishF(k.s, l) ^ p[5];
    l ^= blowfishF(k.s, r) ^ p[6];
    r ^= blowfishF(k.s, l) ^ p[7];
    l ^= blowfishF(k.s, r) ^ p[8];
    r ^= blowfishF(k.s, l) ^ p[9];
    l ^= blowfishF(k.s, r) ^ p[10];
    r ^= blowfishF(k.s, l) ^ p[11];
    l ^= blowfishF(k.s, r) ^ p[12];
    r ^= blowfishF(k.s, l) ^ p[13];
    l ^= blowfishF(k.s, r) ^ p[14];
    r ^= blowfishF(k.s, l) ^ p[15];
    l ^= blowfishF(k.s, r) ^ p[16];
    left = r ^ p[17];
    right = l;
}

inline void blowfishDecrypt(const BlowfishSchedule& k, uint32_t& left, uint32_t& right) noexcept
{
    const uint32_t* p = k.p;
    uint32_t l = left ^ p[17];
    uint32_t r = right;
    r ^= blowfishF(k.s, l) ^ p[16];
    l ^= blowfishF(k.s, r) ^ p[15];
    r ^= blowfishF(k.s, l) ^ p[14];
    l ^= blowfishF(k.s, r) ^ p[13];
    r ^= blowfishF(k.s, l) ^ p[12];
    l ^= blowfishF(k.s, r) ^ p[11];
    r ^= blowfishF(k.s, l) ^ p[10];
    l ^= blowfishF(k.s, r) ^ p[9];
    r ^= blowfishF(k.s, l) ^ p[8];
    l ^= blowfishF(k.s, r) ^ p[7];
    r ^= blowfishF(k.s, l) ^ p[6];
    l ^= blowfishF(k.s, r) ^ p[5];
    r ^= blowfishF(k.s, l) ^ p[4];
    l ^= blowfishF(k.s, r) ^ p[3];
    r ^= blowfishF(k.s, l) ^ p[2];
    l ^= blowfishF(k.s, r) ^ p[1];
    left = r ^ p[0];
    right = l;
}

} // namespace detail
} // namespace crypto
} // namespace qv

#endif
