// SHA-1 and SHA-256 on the x86 SHA extensions. This file alone is compiled with the
// instruction sets it needs (src/CMakeLists.txt), so it includes only the
// intrinsics, the constants and declarations, and calls no inline function of
// a shared header: such a function, compiled here, could be picked by the
// linker for callers on processors without the extensions. Its own templates
// have internal linkage.

#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

#if defined(__SHA__) && defined(__SSE4_1__) && defined(__SSSE3__)

#include <immintrin.h>

namespace qv {
namespace crypto {
namespace detail {

namespace {

// Rounds 4g .. 4g+3 with the message words in m[g % 4]; as the rounds go,
// the schedule for the words 16 ahead is prepared in the other registers.
template <int g>
inline void sha256FourRounds(__m128i& abef, __m128i& cdgh, __m128i* m)
{
    __m128i words = _mm_add_epi32(m[g % 4], _mm_loadu_si128(reinterpret_cast<const __m128i*>(&kSha256Roots[4 * g])));
    cdgh = _mm_sha256rnds2_epu32(cdgh, abef, words);
    if constexpr (g >= 3 && g <= 14) {
        const __m128i shifted = _mm_alignr_epi8(m[g % 4], m[(g + 3) % 4], 4);
        m[(g + 1) % 4] = _mm_sha256msg2_epu32(_mm_add_epi32(m[(g + 1) % 4], shifted), m[g % 4]);
    }
    words = _mm_shuffle_epi32(words, 0x0E);
    abef = _mm_sha256rnds2_epu32(abef, cdgh, words);
    if constexpr (g >= 1 && g <= 12) {
        m[(g + 3) % 4] = _mm_sha256msg1_epu32(m[(g + 3) % 4], m[g % 4]);
    }
}

template <int g>
inline void sha256RoundsFrom(__m128i& abef, __m128i& cdgh, __m128i* m)
{
    sha256FourRounds<g>(abef, cdgh, m);
    if constexpr (g < 15) {
        sha256RoundsFrom<g + 1>(abef, cdgh, m);
    }
}

void sha256Compress(uint32_t* state, const uint8_t* blocks, size_t count) noexcept
{
    const __m128i byteSwap = _mm_set_epi64x(0x0C0D0E0F08090A0BLL, 0x0405060700010203LL);

    // The instructions keep the state as (a, b, e, f) and (c, d, g, h).
    __m128i dcba = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state));
    __m128i hgfe = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4));
    const __m128i cdab = _mm_shuffle_epi32(dcba, 0xB1);
    const __m128i efgh = _mm_shuffle_epi32(hgfe, 0x1B);
    __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
    __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xF0);

    for (; count > 0; --count, blocks += 64) {
        const __m128i abefBefore = abef;
        const __m128i cdghBefore = cdgh;
        __m128i m[4];
        for (int i = 0; i < 4; ++i) {
            m[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks + 16 * i)), byteSwap);
        }
        sha256RoundsFrom<0>(abef, cdgh, m);
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }

    const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
    const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
    dcba = _mm_blend_epi16(feba, dchg, 0xF0);
    hgfe = _mm_alignr_epi8(dchg, feba, 8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), dcba);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), hgfe);
}

// SHA-1 rounds 4g .. 4g+3 with the message words in m[g % 4]. The words of
// group G are built in the register of group G - 4: sha1msg1 with group
// G - 3, an exclusive or with group G - 2 and sha1msg2 with group G - 1, each
// as soon as that group's words are there. The fifth working variable
// alternates between e0 (even groups) and e1 (odd ones).
template <int g>
inline void sha1FourRounds(__m128i& abcd, __m128i& e0, __m128i& e1, __m128i* m)
{
    __m128i& e = g % 2 == 0 ? e0 : e1;
    __m128i& next = g % 2 == 0 ? e1 : e0;
    if constexpr (g == 0) {
        e = _mm_add_epi32(e, m[0]);
    } else {
        e = _mm_sha1nexte_epu32(e, m[g % 4]);
    }
    next = abcd;
    if constexpr (g >= 3 && g <= 18) {
        m[(g + 1) % 4] = _mm_sha1msg2_epu32(m[(g + 1) % 4], m[g % 4]);
    }
    abcd = _mm_sha1rnds4_epu32(abcd, e, g / 5);
    if constexpr (g >= 1 && g <= 16) {
        m[(g + 3) % 4] = _mm_sha1msg1_epu32(m[(g + 3) % 4], m[g % 4]);
    }
    if constexpr (g >= 2 && g <= 17) {
        m[(g + 2) % 4] = _mm_xor_si128(m[(g + 2) % 4], m[g % 4]);
    }
}

template <int g>
inline void sha1RoundsFrom(__m128i& abcd, __m128i& e0, __m128i& e1, __m128i* m)
{
    sha1FourRounds<g>(abcd, e0, e1, m);
    if constexpr (g < 19) {
        sha1RoundsFrom<g + 1>(abcd, e0, e1, m);
    }
}

void sha1Compress(uint32_t* state, const uint8_t* blocks, size_t count) noexcept
{
    // Reverses the 16 bytes: big-endian words, a in the top lane.
    const __m128i reverse = _mm_set_epi64x(0x0001020304050607LL, 0x08090A0B0C0D0E0FLL);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
    __m128i e0 = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    __m128i e1 = _mm_setzero_si128();
    for (; count > 0; --count, blocks += 64) {
        const __m128i abcdBefore = abcd;
        const __m128i eBefore = e0;
        __m128i m[4];
        for (int i = 0; i < 4; ++i) {
            m[i] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(blocks + 16 * i)), reverse);
        }
        sha1RoundsFrom<0>(abcd, e0, e1, m);
        e0 = _mm_sha1nexte_epu32(e0, eBefore);
        abcd = _mm_add_epi32(abcd, abcdBefore);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<uint32_t>(_mm_extract_epi32(e0, 3));
}

} // namespace

const CompressFunction sha256CompressExtensions = sha256Compress;
const CompressFunction sha1CompressExtensions = sha1Compress;

} // namespace detail
} // namespace crypto
} // namespace qv

#else

namespace qv {
namespace crypto {
namespace detail {

const CompressFunction sha256CompressExtensions = nullptr;
const CompressFunction sha1CompressExtensions = nullptr;

} // namespace detail
} // namespace crypto
} // namespace qv

#endif
