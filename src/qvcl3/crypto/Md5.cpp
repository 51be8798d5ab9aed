#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

namespace qv {
namespace crypto {
namespace detail {

namespace {

// G is written as two additions of disjoint bit sets, (x & z) and (y & ~z),
// which shortens the dependency chain compared with an or of the two.
#define QV_MD5_F(a, b, c, d, k, s, i)                                                                                  \
    a += (d ^ (b & (c ^ d))) + x[k] + kMd5Sines[i];                                                                    \
    a = b + rotateLeft(a, s)
#define QV_MD5_G(a, b, c, d, k, s, i)                                                                                  \
    a += (c & ~d) + x[k] + kMd5Sines[i];                                                                               \
    a += b & d;                                                                                                        \
    a = b + rotateLeft(a, s)
#define QV_MD5_H(a, b, c, d, k, s, i)                                                                                  \
    a += (b ^ c ^ d) + x[k] + kMd5Sines[i];                                                                            \
    a = b + rotateLeft(a, s)
#define QV_MD5_I(a, b, c, d, k, s, i)                                                                                  \
    a += (c ^ (b | ~d)) + x[k] + kMd5Sines[i];                                                                         \
    a = b + rotateLeft(a, s)

} // namespace

void md5Compress(uint32_t* state, const uint8_t* blocks, size_t count) noexcept
{
    uint32_t a0 = state[0], b0 = state[1], c0 = state[2], d0 = state[3];
    for (; count > 0; --count, blocks += 64) {
        uint32_t x[16];
        for (int i = 0; i < 16; ++i) {
            x[i] = loadLittleEndian(blocks + 4 * i);
        }
        uint32_t a = a0, b = b0, c = c0, d = d0;

        QV_MD5_F(a, b, c, d, 0, 7, 0);
        QV_MD5_F(d, a, b, c, 1, 12, 1);
        QV_MD5_F(c, d, a, b, 2, 17, 2);
        QV_MD5_F(b, c, d, a, 3, 22, 3);
        QV_MD5_F(a, b, c, d, 4, 7, 4);
        QV_MD5_F(d, a, b, c, 5, 12, 5);
        QV_MD5_F(c, d, a, b, 6, 17, 6);
        QV_MD5_F(b, c, d, a, 7, 22, 7);
        QV_MD5_F(a, b, c, d, 8, 7, 8);
        QV_MD5_F(d, a, b, c, 9, 12, 9);
        QV_MD5_F(c, d, a, b, 10, 17, 10);
        QV_MD5_F(b, c, d, a, 11, 22, 11);
        QV_MD5_F(a, b, c, d, 12, 7, 12);
        QV_MD5_F(d, a, b, c, 13, 12, 13);
        QV_MD5_F(c, d, a, b, 14, 17, 14);
        QV_MD5_F(b, c, d, a, 15, 22, 15);

        QV_MD5_G(a, b, c, d, 1, 5, 16);
        QV_MD5_G(d, a, b, c, 6, 9, 17);
        QV_MD5_G(c, d, a, b, 11, 14, 18);
        QV_MD5_G(b, c, d, a, 0, 20, 19);
        QV_MD5_G(a, b, c, d, 5, 5, 20);
        QV_MD5_G(d, a, b, c, 10, 9, 21);
        QV_MD5_G(c, d, a, b, 15, 14, 22);
        QV_MD5_G(b, c, d, a, 4, 20, 23);
        QV_MD5_G(a, b, c, d, 9, 5, 24);
        QV_MD5_G(d, a, b, c, 14, 9, 25);
        QV_MD5_G(c, d, a, b, 3, 14, 26);
        QV_MD5_G(b, c, d, a, 8, 20, 27);
        QV_MD5_G(a, b, c, d, 13, 5, 28);
        QV_MD5_G(d, a, b, c, 2, 9, 29);
        QV_MD5_G(c, d, a, b, 7, 14, 30);
        QV_MD5_G(b, c, d, a, 12, 20, 31);

        QV_MD5_H(a, b, c, d, 5, 4, 32);
        QV_MD5_H(d, a, b, c, 8, 11, 33);
        QV_MD5_H(c, d, a, b, 11, 16, 34);
        QV_MD5_H(b, c, d, a, 14, 23, 35);
        QV_MD5_H(a, b, c, d, 1, 4, 36);
        QV_MD5_H(d, a, b, c, 4, 11, 37);
        QV_MD5_H(c, d, a, b, 7, 16, 38);
        QV_MD5_H(b, c, d, a, 10, 23, 39);
        QV_MD5_H(a, b, c, d, 13, 4, 40);
        QV_MD5_H(d, a, b, c, 0, 11, 41);
        QV_MD5_H(c, d, a, b, 3, 16, 42);
        QV_MD5_H(b, c, d, a, 6, 23, 43);
        QV_MD5_H(a, b, c, d, 9, 4, 44);
        QV_MD5_H(d, a, b, c, 12, 11, 45);
        QV_MD5_H(c, d, a, b, 15, 16, 46);
        QV_MD5_H(b, c, d, a, 2, 23, 47);

        QV_MD5_I(a, b, c, d, 0, 6, 48);
        QV_MD5_I(d, a, b, c, 7, 10, 49);
        QV_MD5_I(c, d, a, b, 14, 15, 50);
        QV_MD5_I(b, c, d, a, 5, 21, 51);
        QV_MD5_I(a, b, c, d, 12, 6, 52);
        QV_MD5_I(d, a, b, c, 3, 10, 53);
        QV_MD5_I(c, d, a, b, 10, 15, 54);
        QV_MD5_I(b, c, d, a, 1, 21, 55);
        QV_MD5_I(a, b, c, d, 8, 6, 56);
        QV_MD5_I(d, a, b, c, 15, 10, 57);
        QV_MD5_I(c, d, a, b, 6, 15, 58);
        QV_MD5_I(b, c, d, a, 13, 21, 59);
        QV_MD5_I(a, b, c, d, 4, 6, 60);
        QV_MD5_I(d, a, b, c, 11, 10, 61);
        QV_MD5_I(c, d, a, b, 2, 15, 62);
        QV_MD5_I(b, c, d, a, 9, 21, 63);

        a0 += a;
        b0 += b;
        c0 += c;
        d0 += d;
    }
    state[0] = a0;
    state[1] = b0;
    state[2] = c0;
    state[3] = d0;
}

#undef QV_MD5_F
#undef QV_MD5_G
#undef QV_MD5_H
#undef QV_MD5_I

} // namespace detail
} // namespace crypto
} // namespace qv
