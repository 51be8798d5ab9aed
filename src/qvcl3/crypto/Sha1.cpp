#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

namespace qv {
namespace crypto {
namespace detail {

namespace {

// The message schedule is kept as a ring of 16 words, extended in place.
#define QV_SHA1_SCHEDULE(t)                                                                                            \
    (w[(t)&15] = rotateLeft(w[((t) + 13) & 15] ^ w[((t) + 8) & 15] ^ w[((t) + 2) & 15] ^ w[(t)&15], 1))
#define QV_SHA1_STEP(a, b, c, d, e, f, k, word)                                                                        \
    e += rotateLeft(a, 5) + (f) + (k) + (word);                                                                        \
    b = rotateLeft(b, 30)
#define QV_SHA1_CH(b, c, d) (d ^ (b & (c ^ d)))
#define QV_SHA1_PARITY(b, c, d) (b ^ c ^ d)
#define QV_SHA1_MAJ(b, c, d) ((b & c) | (d & (b | c)))

#define QV_SHA1_FIRST(a, b, c, d, e, t) QV_SHA1_STEP(a, b, c, d, e, QV_SHA1_CH(b, c, d), kSha1Roots[0], w[t])
#define QV_SHA1_ROUND(a, b, c, d, e, t, f, k) QV_SHA1_STEP(a, b, c, d, e, f(b, c, d), k, QV_SHA1_SCHEDULE(t))

// Five steps rotate the roles of a..e back to where they started.
#define QV_SHA1_FIVE(t, f, k)                                                                                          \
    QV_SHA1_ROUND(a, b, c, d, e, t, f, k);                                                                             \
    QV_SHA1_ROUND(e, a, b, c, d, t + 1, f, k);                                                                         \
    QV_SHA1_ROUND(d, e, a, b, c, t + 2, f, k);                                                                         \
    QV_SHA1_ROUND(c, d, e, a, b, t + 3, f, k);                                                                         \
    QV_SHA1_ROUND(b, c, d, e, a, t + 4, f, k)

} // namespace

void sha1CompressPortable(uint32_t* state, const uint8_t* blocks, size_t count) noexcept
{
    for (; count > 0; --count, blocks += 64) {
        uint32_t w[16];
        for (int i = 0; i < 16; ++i) {
            w[i] = loadBigEndian(blocks + 4 * i);
        }
        uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];

        QV_SHA1_FIRST(a, b, c, d, e, 0);
        QV_SHA1_FIRST(e, a, b, c, d, 1);
        QV_SHA1_FIRST(d, e, a, b, c, 2);
        QV_SHA1_FIRST(c, d, e, a, b, 3);
        QV_SHA1_FIRST(b, c, d, e, a, 4);
        QV_SHA1_FIRST(a, b, c, d, e, 5);
        QV_SHA1_FIRST(e, a, b, c, d, 6);
        QV_SHA1_FIRST(d, e, a, b, c, 7);
        QV_SHA1_FIRST(c, d, e, a, b, 8);
        QV_SHA1_FIRST(b, c, d, e, a, 9);
        QV_SHA1_FIRST(a, b, c, d, e, 10);
        QV_SHA1_FIRST(e, a, b, c, d, 11);
        QV_SHA1_FIRST(d, e, a, b, c, 12);
        QV_SHA1_FIRST(c, d, e, a, b, 13);
        QV_SHA1_FIRST(b, c, d, e, a, 14);
        QV_SHA1_FIRST(a, b, c, d, e, 15);
        QV_SHA1_ROUND(e, a, b, c, d, 16, QV_SHA1_CH, kSha1Roots[0]);
        QV_SHA1_ROUND(d, e, a, b, c, 17, QV_SHA1_CH, kSha1Roots[0]);
        QV_SHA1_ROUND(c, d, e, a, b, 18, QV_SHA1_CH, kSha1Roots[0]);
        QV_SHA1_ROUND(b, c, d, e, a, 19, QV_SHA1_CH, kSha1Roots[0]);

        QV_SHA1_FIVE(20, QV_SHA1_PARITY, kSha1Roots[1]);
        QV_SHA1_FIVE(25, QV_SHA1_PARITY, kSha1Roots[1]);
        QV_SHA1_FIVE(30, QV_SHA1_PARITY, kSha1Roots[1]);
        QV_SHA1_FIVE(35, QV_SHA1_PARITY, kSha1Roots[1]);
        QV_SHA1_FIVE(40, QV_SHA1_MAJ, kSha1Roots[2]);
        QV_SHA1_FIVE(45, QV_SHA1_MAJ, kSha1Roots[2]);
        QV_SHA1_FIVE(50, QV_SHA1_MAJ, kSha1Roots[2]);
        QV_SHA1_FIVE(55, QV_SHA1_MAJ, kSha1Roots[2]);
        QV_SHA1_FIVE(60, QV_SHA1_PARITY, kSha1Roots[3]);
        QV_SHA1_FIVE(65, QV_SHA1_PARITY, kSha1Roots[3]);
        QV_SHA1_FIVE(70, QV_SHA1_PARITY, kSha1Roots[3]);
        QV_SHA1_FIVE(75, QV_SHA1_PARITY, kSha1Roots[3]);

        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
        state[4] += e;
    }
}

#undef QV_SHA1_SCHEDULE
#undef QV_SHA1_STEP
#undef QV_SHA1_CH
#undef QV_SHA1_PARITY
#undef QV_SHA1_MAJ
#undef QV_SHA1_FIRST
#undef QV_SHA1_ROUND
#undef QV_SHA1_FIVE

} // namespace detail
} // namespace crypto
} // namespace qv
