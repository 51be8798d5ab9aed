#include "Natural.h"

#include "MathError.h"
#include "NewtonDivider.h"

#include <algorithm>
#include <utility>

namespace qv {
namespace math {
namespace detail {

Mag allocMag(size_t n)
{
    if (n > MAX_LIMBS)
        raise(MathError::ValueTooLarge);
    return Mag(n);
}

void trim(Mag& m) noexcept
{
    m.resize(normalisedLength(m.data(), m.size()));
}

Mag magFromU64(uint64_t v)
{
    Mag m;
    if (v)
        m.push_back(v);
    return m;
}

int magCompare(const Mag& a, const Mag& b) noexcept
{
    return compare(a.data(), a.size(), b.data(), b.size());
}

uint64_t magBitLength(const Mag& a) noexcept
{
    if (a.empty())
        return 0;
    return uint64_t(a.size()) * 64 - static_cast<uint64_t>(leadingZeros(a.back()));
}

uint64_t magLowestSetBit(const Mag& a) noexcept
{
    size_t i = 0;
    while (a[i] == 0)
        ++i;
    return uint64_t(i) * 64 + static_cast<uint64_t>(trailingZeros(a[i]));
}

uint64_t magPopCount(const Mag& a) noexcept
{
    uint64_t n = 0;
    for (Limb x : a)
        n += static_cast<uint64_t>(popCount(x));
    return n;
}

bool magTestBit(const Mag& a, uint64_t bit) noexcept
{
    uint64_t limb = bit / 64;
    if (limb >= a.size())
        return false;
    return (a[limb] >> (bit % 64)) & 1;
}

bool magIsPowerOfTwo(const Mag& a) noexcept
{
    return !a.empty() && magLowestSetBit(a) + 1 == magBitLength(a);
}

Mag magAdd(const Mag& a, const Mag& b)
{
    const Mag& x = a.size() >= b.size() ? a : b;
    const Mag& y = a.size() >= b.size() ? b : a;
    Mag r = allocMag(x.size() + 1);
    r[x.size()] = add(r.data(), x.data(), x.size(), y.data(), y.size());
    trim(r);
    return r;
}

Mag magSub(const Mag& a, const Mag& b)
{
    Mag r(a.size());
    sub(r.data(), a.data(), a.size(), b.data(), b.size());
    trim(r);
    return r;
}

Mag magAddSmall(const Mag& a, Limb b)
{
    Mag r = allocMag(a.size() + 1);
    r[a.size()] = add1(r.data(), a.data(), a.size(), b);
    trim(r);
    return r;
}

Mag magSubSmall(const Mag& a, Limb b)
{
    Mag r(a.size());
    sub1(r.data(), a.data(), a.size(), b);
    trim(r);
    return r;
}

Mag magMul(const Mag& a, const Mag& b)
{
    if (a.empty() || b.empty())
        return Mag();
    Mag r = allocMag(a.size() + b.size());
    multiply(r.data(), a.data(), a.size(), b.data(), b.size());
    trim(r);
    return r;
}

Mag magMulSmall(const Mag& a, Limb b)
{
    if (a.empty() || b == 0)
        return Mag();
    Mag r = allocMag(a.size() + 1);
    r[a.size()] = mul1(r.data(), a.data(), a.size(), b);
    trim(r);
    return r;
}

Mag magSqr(const Mag& a)
{
    return magMul(a, a);
}

Mag magShiftLeft(const Mag& a, uint64_t bits)
{
    if (a.empty())
        return Mag();
    if (bits / 64 >= MAX_LIMBS)
        raise(MathError::ValueTooLarge);
    size_t limbs = static_cast<size_t>(bits / 64);
    unsigned s = static_cast<unsigned>(bits % 64);
    Mag r = allocMag(a.size() + limbs + 1);
    if (s)
        r[a.size() + limbs] = shiftLeft(r.data() + limbs, a.data(), a.size(), s);
    else
        std::copy(a.begin(), a.end(), r.begin() + static_cast<ptrdiff_t>(limbs));
    trim(r);
    return r;
}

Mag magShiftRight(const Mag& a, uint64_t bits)
{
    if (bits / 64 >= a.size())
        return Mag();
    size_t limbs = static_cast<size_t>(bits / 64);
    unsigned s = static_cast<unsigned>(bits % 64);
    Mag r(a.size() - limbs);
    if (s)
        shiftRight(r.data(), a.data() + limbs, r.size(), s);
    else
        std::copy(a.begin() + static_cast<ptrdiff_t>(limbs), a.end(), r.begin());
    trim(r);
    return r;
}

Mag magConcat(const Mag& a, const Mag& b, size_t limbs)
{
    if (a.empty())
        return b;
    Mag r = allocMag(limbs + a.size());
    std::copy(b.begin(), b.end(), r.begin());
    std::copy(a.begin(), a.end(), r.begin() + static_cast<ptrdiff_t>(limbs));
    return r;
}

Mag magLowLimbs(const Mag& a, size_t limbs)
{
    Mag r(a.begin(), a.begin() + static_cast<ptrdiff_t>(std::min(limbs, a.size())));
    trim(r);
    return r;
}

Mag magHighLimbs(const Mag& a, size_t fromLimb)
{
    if (fromLimb >= a.size())
        return Mag();
    return Mag(a.begin() + static_cast<ptrdiff_t>(fromLimb), a.end());
}

Limb magDivModSmall(const Mag& a, Limb b, Mag* q)
{
    if (b == 0)
        raise(MathError::DivisionByZero);
    if (!q)
        return divRem1(nullptr, a.data(), a.size(), b);
    Mag quotient(a.size());
    Limb r = divRem1(quotient.data(), a.data(), a.size(), b);
    trim(quotient);
    *q = std::move(quotient);
    return r;
}

namespace {

// Schoolbook division by a divisor whose top bit is set.
void divNormalised(const Mag& a, const Mag& b, Mag& q, Mag& r)
{
    if (magCompare(a, b) < 0) {
        q.clear();
        r = a;
        return;
    }
    if (b.size() == 1) {
        Limb rem = magDivModSmall(a, b[0], &q);
        r = magFromU64(rem);
        return;
    }
    Mag u(a.size() + 1);
    std::copy(a.begin(), a.end(), u.begin());
    Mag quotient(a.size() + 1 - b.size());
    divBasecase(quotient.data(), u.data(), u.size(), b.data(), b.size());
    u.resize(b.size());
    trim(u);
    trim(quotient);
    q = std::move(quotient);
    r = std::move(u);
}

Mag allOnes(size_t limbs)
{
    return Mag(limbs, ~Limb(0));
}

void div2n1n(const Mag& a, const Mag& b, size_t n, Mag& q, Mag& r);

// a < b * B^n with b of 2n limbs, normalised; a has up to 3n limbs.
void div3n2n(const Mag& a, const Mag& b, size_t n, Mag& q, Mag& r)
{
    Mag a12 = magHighLimbs(a, n);
    Mag a1 = magHighLimbs(a, 2 * n);
    Mag a3 = magLowLimbs(a, n);
    Mag b1 = magHighLimbs(b, n);
    Mag b2 = magLowLimbs(b, n);
    Mag r1;
    if (magCompare(a1, b1) < 0) {
        div2n1n(a12, b1, n, q, r1);
    } else {
        // a1 == b1: the quotient digit saturates at B^n - 1.
        q = allOnes(n);
        r1 = magSub(magAdd(a12, b1), magConcat(b1, Mag(), n));
    }
    Mag d = magMul(q, b2);
    Mag rhat = magConcat(r1, a3, n);
    while (magCompare(rhat, d) < 0) {
        rhat = magAdd(rhat, b);
        q = magSubSmall(q, 1);
    }
    r = magSub(rhat, d);
}

// a < b * B^n with b of n limbs, normalised.
void div2n1n(const Mag& a, const Mag& b, size_t n, Mag& q, Mag& r)
{
    if (n % 2 != 0 || n < thresholds().recursiveDivision) {
        divNormalised(a, b, q, r);
        return;
    }
    const size_t half = n / 2;
    Mag q1, r1;
    div3n2n(magHighLimbs(a, half), b, half, q1, r1);
    Mag q2;
    div3n2n(magConcat(r1, magLowLimbs(a, half), half), b, half, q2, r);
    q = magConcat(q1, q2, half);
}

// Burnikel and Ziegler's recursive division: a is cut into blocks of n limbs
// (n = j * 2^k with j below the threshold, so that the halving recursion
// ends in schoolbook divisions) and divided block by block.
void divRecursive(const Mag& a, const Mag& b, Mag& q, Mag& r)
{
    const size_t s = b.size();
    const size_t ratio = s / thresholds().recursiveDivision;
    size_t m = 1;
    while (m <= ratio)
        m <<= 1;
    const size_t j = (s + m - 1) / m;
    const size_t n = j * m;
    const uint64_t blockBits = uint64_t(n) * 64;
    const uint64_t sigma = blockBits - magBitLength(b);
    Mag bs = magShiftLeft(b, sigma);
    Mag as = magShiftLeft(a, sigma);
    size_t t = static_cast<size_t>((magBitLength(as) + blockBits) / blockBits);
    if (t < 2)
        t = 2;

    auto block = [&](size_t i) { return magLowLimbs(magHighLimbs(as, i * n), n); };
    Mag quotient(t * n);
    Mag z = magConcat(block(t - 1), block(t - 2), n);
    for (size_t i = t - 1; i-- > 0;) {
        Mag qi, ri;
        div2n1n(z, bs, n, qi, ri);
        std::copy(qi.begin(), qi.end(), quotient.begin() + static_cast<ptrdiff_t>(i * n));
        if (i > 0)
            z = magConcat(ri, block(i - 1), n);
        else
            r = magShiftRight(ri, sigma);
    }
    trim(quotient);
    q = std::move(quotient);
}

} // namespace

void magDivMod(const Mag& a, const Mag& b, Mag* q, Mag* r)
{
    if (b.empty())
        raise(MathError::DivisionByZero);
    const size_t threshold = thresholds().newtonDivision;
    if (b.size() >= threshold && a.size() >= b.size() + threshold) {
        // The quotient in two blocks: a reciprocal of half the quotient's
        // length costs less than half of a full one, and each block's
        // products have half the length (a sixth less in all than one
        // block, measured from 4,000 to 52,000 limbs). Both blocks multiply
        // by the same reciprocal and the same divisor, so their transforms
        // are computed once for the two.
        const size_t quotient = a.size() - b.size() + 1;
        NewtonDivider reciprocal(b, (quotient + 1) / 2 + 2);
        reciprocal.keepTransforms(thresholds().nttMul);
        reciprocal.divMod(a, q, r);
        return;
    }
    magDivModClassic(a, b, q, r);
}

void magDivModClassic(const Mag& a, const Mag& b, Mag* q, Mag* r)
{
    if (b.empty())
        raise(MathError::DivisionByZero);
    Mag quotient, remainder;
    if (magCompare(a, b) < 0) {
        remainder = a;
    } else if (b.size() == 1) {
        remainder = magFromU64(magDivModSmall(a, b[0], &quotient));
    } else if (b.size() >= thresholds().recursiveDivision && a.size() - b.size() >= thresholds().recursiveDivision) {
        divRecursive(a, b, quotient, remainder);
    } else {
        unsigned s = static_cast<unsigned>(leadingZeros(b.back()));
        Mag u(a.size() + 1);
        Mag v(b.size());
        if (s) {
            u[a.size()] = shiftLeft(u.data(), a.data(), a.size(), s);
            shiftLeft(v.data(), b.data(), b.size(), s);
        } else {
            std::copy(a.begin(), a.end(), u.begin());
            v = b;
        }
        quotient.resize(a.size() + 1 - b.size());
        divBasecase(quotient.data(), u.data(), u.size(), v.data(), v.size());
        u.resize(b.size());
        if (s)
            shiftRight(u.data(), u.data(), u.size(), s);
        trim(u);
        trim(quotient);
        remainder = std::move(u);
    }
    if (q)
        *q = std::move(quotient);
    if (r)
        *r = std::move(remainder);
}

Mag magPow(const Mag& a, uint64_t exponent)
{
    if (exponent == 0)
        return magFromU64(1);
    if (a.empty())
        return Mag();
    const uint64_t zeros = magLowestSetBit(a);
    const Mag odd = magShiftRight(a, zeros);
    const uint64_t oddBits = magBitLength(odd);
    // Refuse early rather than compute towards a result that cannot be held.
    if ((oddBits > 1 && exponent > MAX_BITS / (oddBits - 1)) || (zeros && exponent > MAX_BITS / zeros))
        raise(MathError::ValueTooLarge);
    Mag result = magFromU64(1);
    if (oddBits > 1) {
        int top = 63 - leadingZeros(exponent);
        result = odd;
        for (int i = top - 1; i >= 0; --i) {
            result = magSqr(result);
            if ((exponent >> i) & 1)
                result = magMul(result, odd);
        }
    }
    return magShiftLeft(result, zeros * exponent);
}

} // namespace detail
} // namespace math
} // namespace qv
