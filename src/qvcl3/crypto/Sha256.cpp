#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

namespace qv {
namespace crypto {
namespace detail {

namespace {

#define QV_SHA256_SIGMA0(x) (rotateRight(x, 2) ^ rotateRight(x, 13) ^ rotateRight(x, 22))
#define QV_SHA256_SIGMA1(x) (rotateRight(x, 6) ^ rotateRight(x, 11) ^ rotateRight(x, 25))
#define QV_SHA256_GAMMA0(x) (rotateRight(x, 7) ^ rotateRight(x, 18) ^ ((x) >> 3))
#define QV_SHA256_GAMMA1(x) (rotateRight(x, 17) ^ rotateRight(x, 19) ^ ((x) >> 10))

// The schedule is a ring of 16 words; t runs 16..63.
#define QV_SHA256_SCHEDULE(t)                                                                                          \
    (w[(t)&15] += QV_SHA256_GAMMA1(w[((t) + 14) & 15]) + w[((t) + 9) & 15] + QV_SHA256_GAMMA0(w[((t) + 1) & 15]))

// One round with the roles of the eight working variables passed in, so
// that eight calls bring them back to their places without moving values.
#define QV_SHA256_ROUND(a, b, c, d, e, f, g, h, t, word)                                                               \
    {                                                                                                                  \
        const uint32_t t1 = h + QV_SHA256_SIGMA1(e) + (g ^ (e & (f ^ g))) + kSha256Roots[t] + (word);                  \
        d += t1;                                                                                                       \
        h = t1 + QV_SHA256_SIGMA0(a) + ((a & b) | (c & (a | b)));                                                      \
    }

#define QV_SHA256_EIGHT(t, W)                                                                                          \
    QV_SHA256_ROUND(a, b, c, d, e, f, g, h, t, W(t));                                                                  \
    QV_SHA256_ROUND(h, a, b, c, d, e, f, g, t + 1, W(t + 1));                                                          \
    QV_SHA256_ROUND(g, h, a, b, c, d, e, f, t + 2, W(t + 2));                                                          \
    QV_SHA256_ROUND(f, g, h, a, b, c, d, e, t + 3, W(t + 3));                                                          \
    QV_SHA256_ROUND(e, f, g, h, a, b, c, d, t + 4, W(t + 4));                                                          \
    QV_SHA256_ROUND(d, e, f, g, h, a, b, c, t + 5, W(t + 5));                                                          \
    QV_SHA256_ROUND(c, d, e, f, g, h, a, b, t + 6, W(t + 6));                                                          \
    QV_SHA256_ROUND(b, c, d, e, f, g, h, a, t + 7, W(t + 7))

#define QV_SHA256_LOADED(t) w[(t)]

} // namespace

void sha256CompressPortable(uint32_t* state, const uint8_t* blocks, size_t count) noexcept
{
    for (; count > 0; --count, blocks += 64) {
        uint32_t w[16];
        for (int i = 0; i < 16; ++i) {
            w[i] = loadBigEndian(blocks + 4 * i);
        }
        uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
        uint32_t e = state[4], f = state[5], g = state[6], h = state[7];

        QV_SHA256_EIGHT(0, QV_SHA256_LOADED);
        QV_SHA256_EIGHT(8, QV_SHA256_LOADED);
        QV_SHA256_EIGHT(16, QV_SHA256_SCHEDULE);
        QV_SHA256_EIGHT(24, QV_SHA256_SCHEDULE);
        QV_SHA256_EIGHT(32, QV_SHA256_SCHEDULE);
        QV_SHA256_EIGHT(40, QV_SHA256_SCHEDULE);
        QV_SHA256_EIGHT(48, QV_SHA256_SCHEDULE);
        QV_SHA256_EIGHT(56, QV_SHA256_SCHEDULE);

        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
        state[4] += e;
        state[5] += f;
        state[6] += g;
        state[7] += h;
    }
}

#undef QV_SHA256_SIGMA0
#undef QV_SHA256_SIGMA1
#undef QV_SHA256_GAMMA0
#undef QV_SHA256_GAMMA1
#undef QV_SHA256_SCHEDULE
#undef QV_SHA256_ROUND
#undef QV_SHA256_EIGHT
#undef QV_SHA256_LOADED

} // namespace detail
} // namespace crypto
} // namespace qv
