#ifndef QVCL3_MATH_WIDEMATH_H
#define QVCL3_MATH_WIDEMATH_H

// Double-width limb arithmetic. The only place that may use a 128-bit
// compiler type; everything else goes through these functions. The portable
// versions are always compiled so that the tests can hold them against the
// native ones.

#include <cstdint>

namespace qv {
namespace math {
namespace detail {

typedef uint64_t Limb;

inline int leadingZeros(Limb x) noexcept
{
    if (x == 0)
        return 64;
    int n = 0;
    if (!(x >> 32)) {
        n += 32;
        x <<= 32;
    }
    if (!(x >> 48)) {
        n += 16;
        x <<= 16;
    }
    if (!(x >> 56)) {
        n += 8;
        x <<= 8;
    }
    if (!(x >> 60)) {
        n += 4;
        x <<= 4;
    }
    if (!(x >> 62)) {
        n += 2;
        x <<= 2;
    }
    if (!(x >> 63)) {
        n += 1;
    }
    return n;
}

inline int trailingZeros(Limb x) noexcept
{
    if (x == 0)
        return 64;
    int n = 0;
    if (!(x & 0xFFFFFFFFu)) {
        n += 32;
        x >>= 32;
    }
    if (!(x & 0xFFFFu)) {
        n += 16;
        x >>= 16;
    }
    if (!(x & 0xFFu)) {
        n += 8;
        x >>= 8;
    }
    if (!(x & 0xFu)) {
        n += 4;
        x >>= 4;
    }
    if (!(x & 0x3u)) {
        n += 2;
        x >>= 2;
    }
    if (!(x & 0x1u)) {
        n += 1;
    }
    return n;
}

inline int popCount(Limb x) noexcept
{
    x = x - ((x >> 1) & 0x5555555555555555ULL);
    x = (x & 0x3333333333333333ULL) + ((x >> 2) & 0x3333333333333333ULL);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0FULL;
    return static_cast<int>((x * 0x0101010101010101ULL) >> 56);
}

inline Limb portableMulWide(Limb a, Limb b, Limb& hi) noexcept
{
    const Limb mask = 0xFFFFFFFFu;
    Limb a0 = a & mask, a1 = a >> 32, b0 = b & mask, b1 = b >> 32;
    Limb p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    Limb mid = (p00 >> 32) + (p01 & mask) + (p10 & mask);
    hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
    return (mid << 32) | (p00 & mask);
}

inline Limb portableAddCarry(Limb a, Limb b, Limb& carry) noexcept
{
    const Limb s = a + b;
    const Limb t = s + carry;
    carry = (s < a) | (t < s);
    return t;
}

inline Limb portableSubBorrow(Limb a, Limb b, Limb& borrow) noexcept
{
    const Limb d = a - b;
    const Limb t = d - borrow;
    borrow = (a < b) | (d < borrow);
    return t;
}

// (hi:lo) / d for hi < d, in 32-bit digits (two steps of schoolbook division).
inline Limb portableDivWide(Limb hi, Limb lo, Limb d, Limb& rem) noexcept
{
    const Limb base = Limb(1) << 32;
    int s = leadingZeros(d);
    d <<= s;
    Limb un32 = s ? (hi << s) | (lo >> (64 - s)) : hi;
    Limb un10 = lo << s;
    Limb d1 = d >> 32, d0 = d & 0xFFFFFFFFu;
    Limb un1 = un10 >> 32, un0 = un10 & 0xFFFFFFFFu;

    Limb q1 = un32 / d1, rhat = un32 - q1 * d1;
    while (q1 >= base || q1 * d0 > ((rhat << 32) | un1)) {
        --q1;
        rhat += d1;
        if (rhat >= base)
            break;
    }
    Limb un21 = (un32 << 32) + un1 - q1 * d;
    Limb q0 = un21 / d1;
    rhat = un21 - q0 * d1;
    while (q0 >= base || q0 * d0 > ((rhat << 32) | un0)) {
        --q0;
        rhat += d1;
        if (rhat >= base)
            break;
    }
    rem = ((un21 << 32) + un0 - q0 * d) >> s;
    return (q1 << 32) | q0;
}

#if defined(__SIZEOF_INT128__) && !defined(QVCL3_MATH_PORTABLE_WIDE)

__extension__ typedef unsigned __int128 WideLimb;

inline Limb mulWide(Limb a, Limb b, Limb& hi) noexcept
{
    WideLimb t = static_cast<WideLimb>(a) * b;
    hi = static_cast<Limb>(t >> 64);
    return static_cast<Limb>(t);
}

// a * b + c + d, which always fits in two limbs. The additions are spelled
// out in single limbs: compilers turn that into add-with-carry chains, where
// a 128-bit sum tends to go through memory.
inline Limb mulAdd2(Limb a, Limb b, Limb c, Limb d, Limb& hi) noexcept
{
    WideLimb p = static_cast<WideLimb>(a) * b;
    Limb lo = static_cast<Limb>(p);
    Limb h = static_cast<Limb>(p >> 64);
    lo += c;
    h += lo < c;
    lo += d;
    h += lo < d;
    hi = h;
    return lo;
}

// a * b + c (it fits two limbs) as one 128-bit sum: with a single addend
// compilers keep this in registers, where the spelled-out carries of
// mulAdd2 end up spilled in a loop that also subtracts.
inline Limb mulAdd1(Limb a, Limb b, Limb c, Limb& hi) noexcept
{
    WideLimb p = static_cast<WideLimb>(a) * b + c;
    hi = static_cast<Limb>(p >> 64);
    return static_cast<Limb>(p);
}

// a + b + carry (carry 0 or 1); the carry out goes to carry. A 128-bit sum
// becomes an add-with-carry chain in a loop, which the spelled-out
// comparisons do not.
inline Limb addCarry(Limb a, Limb b, Limb& carry) noexcept
{
    const WideLimb s = static_cast<WideLimb>(a) + b + carry;
    carry = static_cast<Limb>(s >> 64);
    return static_cast<Limb>(s);
}

// a - b - borrow (borrow 0 or 1); the borrow out goes to borrow.
inline Limb subBorrow(Limb a, Limb b, Limb& borrow) noexcept
{
    const WideLimb d = static_cast<WideLimb>(a) - b - borrow;
    borrow = static_cast<Limb>(d >> 64) & 1;
    return static_cast<Limb>(d);
}

inline Limb divWide(Limb hi, Limb lo, Limb d, Limb& rem) noexcept
{
    WideLimb n = (static_cast<WideLimb>(hi) << 64) | lo;
    Limb q = static_cast<Limb>(n / d);
    rem = lo - q * d;
    return q;
}

#else

inline Limb mulWide(Limb a, Limb b, Limb& hi) noexcept
{
    return portableMulWide(a, b, hi);
}

inline Limb mulAdd2(Limb a, Limb b, Limb c, Limb d, Limb& hi) noexcept
{
    Limb lo = portableMulWide(a, b, hi);
    lo += c;
    hi += lo < c;
    lo += d;
    hi += lo < d;
    return lo;
}

inline Limb mulAdd1(Limb a, Limb b, Limb c, Limb& hi) noexcept
{
    return mulAdd2(a, b, c, 0, hi);
}

inline Limb addCarry(Limb a, Limb b, Limb& carry) noexcept
{
    return portableAddCarry(a, b, carry);
}

inline Limb subBorrow(Limb a, Limb b, Limb& borrow) noexcept
{
    return portableSubBorrow(a, b, borrow);
}

inline Limb divWide(Limb hi, Limb lo, Limb d, Limb& rem) noexcept
{
    return portableDivWide(hi, lo, d, rem);
}

#endif

// Division of a two-limb number by a normalised limb through a precomputed
// reciprocal, which is much cheaper than a hardware division.
struct Reciprocal {
    Limb d;   // normalised divisor, top bit set
    Limb inv; // floor((B^2 - 1) / d) - B

    explicit Reciprocal(Limb normalised) noexcept : d(normalised)
    {
        Limb r;
        inv = divWide(~normalised, ~Limb(0), normalised, r);
    }

    // (hi:lo) / d for hi < d.
    Limb divide(Limb hi, Limb lo, Limb& rem) const noexcept
    {
        Limb qh;
        Limb ql = mulWide(inv, hi, qh);
        ql += lo;
        qh += hi + 1 + (ql < lo);
        Limb r = lo - qh * d;
        if (r > ql) {
            --qh;
            r += d;
        }
        if (r >= d) {
            ++qh;
            r -= d;
        }
        rem = r;
        return qh;
    }
};

} // namespace detail
} // namespace math
} // namespace qv

#endif
