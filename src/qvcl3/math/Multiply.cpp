#include "Limbs.h"
#include "NumberTheoreticTransform.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qv {
namespace math {
namespace detail {

namespace {

// Measured crossovers of Toom-3, Toom-4 and the transform (docs/math.md).
constexpr size_t NTT_MUL = 1800;
constexpr size_t NTT_SQR = 1900;
constexpr size_t NEWTON_DIVISION = 3800;
constexpr size_t TOOM4_MUL = 900;
constexpr size_t TOOM4_SQR = 900;

} // namespace

Thresholds defaultThresholds() noexcept
{
    return Thresholds{32, 64, 500, 500, 64, NTT_MUL, NTT_SQR, NEWTON_DIVISION, TOOM4_MUL, TOOM4_SQR};
}

Thresholds& thresholds() noexcept
{
    static Thresholds active = defaultThresholds();
    return active;
}

namespace {

typedef std::vector<Limb> Vec;

void square(Limb* r, const Limb* a, size_t n);

// r (xn limbs) = |x - y| for xn >= yn; true when x < y.
bool absDiff(Limb* r, const Limb* x, size_t xn, const Limb* y, size_t yn) noexcept
{
    bool xHigh = normalisedLength(x + yn, xn - yn) != 0;
    if (xHigh || compareN(x, y, yn) >= 0) {
        sub(r, x, xn, y, yn);
        return false;
    }
    subN(r, y, x, yn);
    std::fill(r + yn, r + xn, Limb(0));
    return true;
}

// r[0, rn) += x (xn limbs); the sum is known to fit.
void addInto(Limb* r, size_t rn, const Limb* x, size_t xn) noexcept
{
    xn = std::min(normalisedLength(x, xn), rn);
    Limb carry = addN(r, r, x, xn);
    add1(r + xn, r + xn, rn - xn, carry);
}

// an >= bn > ceil(an / 2).
void karatsuba(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t m = (an + 1) / 2, h = an - m, k = bn - m;
    const bool squaring = a == b && an == bn;
    Vec tmp(6 * m + 1);
    Limb* da = tmp.data();
    Limb* db = squaring ? da : da + m;
    Limb* z1 = da + 2 * m;
    Limb* mid = z1 + 2 * m;

    bool negA = absDiff(da, a, m, a + m, h);
    bool negB = squaring ? negA : absDiff(db, b, m, b + m, k);
    multiply(r, a, m, b, m);
    multiply(r + 2 * m, a + m, h, b + m, k);
    multiply(z1, da, m, db, m);

    // mid = a0*b1 + a1*b0 = z0 + z2 - (a0 - a1)(b0 - b1)
    std::copy(r, r + 2 * m, mid);
    mid[2 * m] = add(mid, mid, 2 * m, r + 2 * m, h + k);
    if (negA == negB)
        sub(mid, mid, 2 * m + 1, z1, 2 * m);
    else
        add(mid, mid, 2 * m + 1, z1, 2 * m);
    addInto(r + m, an + bn - m, mid, 2 * m + 1);
}

// a is much longer than b: multiply b by slices of a of b's length.
void mulUnbalanced(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    Vec tmp(2 * bn);
    multiply(r, a, bn, b, bn);
    std::fill(r + 2 * bn, r + an + bn, Limb(0));
    for (size_t i = bn; i < an; i += bn) {
        size_t len = std::min(bn, an - i);
        multiply(tmp.data(), a + i, len, b, bn);
        addInto(r + i, an + bn - i, tmp.data(), len + bn);
    }
}

// Signed numbers for the Toom-3 evaluation and interpolation.
struct Signed {
    Vec mag;
    bool neg = false;
};

void trim(Vec& v) noexcept
{
    v.resize(normalisedLength(v.data(), v.size()));
}

Vec magOf(const Limb* p, size_t n)
{
    Vec v(p, p + normalisedLength(p, n));
    return v;
}

Vec magAdd(const Vec& a, const Vec& b)
{
    const Vec& x = a.size() >= b.size() ? a : b;
    const Vec& y = a.size() >= b.size() ? b : a;
    Vec r(x.size() + 1);
    r[x.size()] = add(r.data(), x.data(), x.size(), y.data(), y.size());
    trim(r);
    return r;
}

// a >= b
Vec magSub(const Vec& a, const Vec& b)
{
    Vec r(a.size());
    sub(r.data(), a.data(), a.size(), b.data(), b.size());
    trim(r);
    return r;
}

int magCompare(const Vec& a, const Vec& b) noexcept
{
    return compare(a.data(), a.size(), b.data(), b.size());
}

Signed signedAdd(const Signed& a, const Signed& b, bool negateB = false)
{
    bool bNeg = b.neg != negateB && !b.mag.empty();
    Signed r;
    if (a.neg == bNeg) {
        r.mag = magAdd(a.mag, b.mag);
        r.neg = a.neg;
    } else if (magCompare(a.mag, b.mag) >= 0) {
        r.mag = magSub(a.mag, b.mag);
        r.neg = a.neg;
    } else {
        r.mag = magSub(b.mag, a.mag);
        r.neg = bNeg;
    }
    if (r.mag.empty())
        r.neg = false;
    return r;
}

Signed signedSub(const Signed& a, const Signed& b)
{
    return signedAdd(a, b, true);
}

void shiftVec(Vec& v, int bits)
{
    if (v.empty())
        return;
    if (bits > 0) {
        v.push_back(0);
        shiftLeft(v.data(), v.data(), v.size(), static_cast<unsigned>(bits));
    } else {
        shiftRight(v.data(), v.data(), v.size(), static_cast<unsigned>(-bits));
    }
    trim(v);
}

Signed signedMul(const Signed& a, const Signed& b)
{
    Signed r;
    if (a.mag.empty() || b.mag.empty())
        return r;
    r.mag.resize(a.mag.size() + b.mag.size());
    multiply(r.mag.data(), a.mag.data(), a.mag.size(), b.mag.data(), b.mag.size());
    trim(r.mag);
    r.neg = a.neg != b.neg;
    return r;
}

struct Toom3Points {
    Signed one, minusOne, minusTwo;
};

Toom3Points evaluate(const Vec& p0, const Vec& p1, const Vec& p2)
{
    Toom3Points e;
    Signed sum02{magAdd(p0, p2), false};
    Signed s1{p1, false};
    e.one = signedAdd(sum02, s1);
    e.minusOne = signedSub(sum02, s1);
    // p(-2) = 2 * (p(-1) + p2) - p0
    e.minusTwo = signedAdd(e.minusOne, Signed{p2, false});
    shiftVec(e.minusTwo.mag, 1);
    e.minusTwo = signedSub(e.minusTwo, Signed{p0, false});
    return e;
}

// Splits both operands in three pieces of k limbs (the top ones shorter),
// multiplies at the points 0, 1, -1, -2 and infinity, and interpolates with
// Bodrato's sequence. Needs bn > 2 * ceil(an / 3).
void toom3(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t k = (an + 2) / 3;
    const bool squaring = a == b && an == bn;
    Vec a0 = magOf(a, k), a1 = magOf(a + k, k), a2 = magOf(a + 2 * k, an - 2 * k);
    Toom3Points pa = evaluate(a0, a1, a2);
    Toom3Points pb;
    Vec b0, b1, b2;
    if (!squaring) {
        b0 = magOf(b, k);
        b1 = magOf(b + k, k);
        b2 = magOf(b + 2 * k, bn - 2 * k);
        pb = evaluate(b0, b1, b2);
    }
    const Toom3Points& qb = squaring ? pa : pb;

    Signed v1 = signedMul(pa.one, qb.one);
    Signed vm1 = signedMul(pa.minusOne, qb.minusOne);
    Signed vm2 = signedMul(pa.minusTwo, qb.minusTwo);

    // v0 and vinf go straight to their places in r.
    std::fill(r, r + an + bn, Limb(0));
    if (k > 0)
        multiply(r, a, k, b, k);
    multiply(r + 4 * k, a + 2 * k, an - 2 * k, b + 2 * k, bn - 2 * k);
    Signed v0{magOf(r, 2 * k), false};
    Signed vinf{magOf(r + 4 * k, an + bn - 4 * k), false};

    Signed r3 = signedSub(vm2, v1);
    divExact1(r3.mag.data(), r3.mag.data(), r3.mag.size(), 3);
    trim(r3.mag);
    Signed r1 = signedSub(v1, vm1);
    shiftVec(r1.mag, -1);
    Signed r2 = signedSub(vm1, v0);
    r3 = signedSub(r2, r3);
    shiftVec(r3.mag, -1);
    Signed twoVinf = vinf;
    shiftVec(twoVinf.mag, 1);
    r3 = signedAdd(r3, twoVinf);
    r2 = signedSub(signedAdd(r2, r1), vinf);
    r1 = signedSub(r1, r3);

    const size_t rn = an + bn;
    addInto(r + k, rn - k, r1.mag.data(), r1.mag.size());
    addInto(r + 2 * k, rn - 2 * k, r2.mag.data(), r2.mag.size());
    addInto(r + 3 * k, rn - 3 * k, r3.mag.data(), r3.mag.size());
}

// Exact division of a signed value by a small odd constant.
void divideExactly(Signed& x, Limb d) noexcept
{
    divExact1(x.mag.data(), x.mag.data(), x.mag.size(), d);
    trim(x.mag);
}

Signed shifted(Signed x, int bits)
{
    shiftVec(x.mag, bits);
    return x;
}

struct Toom4Points {
    Signed one, minusOne, two, minusTwo, half;
};

// p(1), p(-1), p(2), p(-2) and 8 p(1/2) of p0 + p1 x + p2 x^2 + p3 x^3.
Toom4Points evaluate(const Vec& p0, const Vec& p1, const Vec& p2, const Vec& p3)
{
    Toom4Points e;
    const Signed even{magAdd(p0, p2), false}, odd{magAdd(p1, p3), false};
    e.one = signedAdd(even, odd);
    e.minusOne = signedSub(even, odd);
    Vec x = p2;
    shiftVec(x, 2);
    const Signed evenTwo{magAdd(p0, x), false};
    x = p3;
    shiftVec(x, 2);
    Signed oddTwo{magAdd(p1, x), false};
    shiftVec(oddTwo.mag, 1);
    e.two = signedAdd(evenTwo, oddTwo);
    e.minusTwo = signedSub(evenTwo, oddTwo);
    // 8 p(1/2) = ((2 p0 + p1) 2 + p2) 2 + p3, all positive.
    x = p0;
    shiftVec(x, 1);
    x = magAdd(x, p1);
    shiftVec(x, 1);
    x = magAdd(x, p2);
    shiftVec(x, 1);
    e.half = Signed{magAdd(x, p3), false};
    return e;
}

// Splits both operands in four pieces of k limbs (the top ones shorter) and
// multiplies at 0, 1, -1, 2, -2, 1/2 and infinity: seven products of a
// quarter the length against Toom-3's five of a third. Needs
// bn > 3 * ceil(an / 4). Every coefficient of the product is a sum of
// products of pieces, so none is negative, and each step of the
// interpolation below divides exactly.
void toom4(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t k = (an + 3) / 4;
    const bool squaring = a == b && an == bn;
    const Toom4Points pa = evaluate(magOf(a, k), magOf(a + k, k), magOf(a + 2 * k, k), magOf(a + 3 * k, an - 3 * k));
    Toom4Points pb;
    if (!squaring)
        pb = evaluate(magOf(b, k), magOf(b + k, k), magOf(b + 2 * k, k), magOf(b + 3 * k, bn - 3 * k));
    const Toom4Points& qb = squaring ? pa : pb;

    const Signed v1 = signedMul(pa.one, qb.one);
    const Signed vm1 = signedMul(pa.minusOne, qb.minusOne);
    const Signed v2 = signedMul(pa.two, qb.two);
    const Signed vm2 = signedMul(pa.minusTwo, qb.minusTwo);
    const Signed vh = signedMul(pa.half, qb.half); // 64 c(1/2)

    const size_t rn = an + bn;
    std::fill(r, r + rn, Limb(0));
    multiply(r, a, k, b, k);
    multiply(r + 6 * k, a + 3 * k, an - 3 * k, b + 3 * k, bn - 3 * k);
    const Signed c0{magOf(r, 2 * k), false};
    const Signed c6{magOf(r + 6 * k, rn - 6 * k), false};

    // Even coefficients: c2 + c4 and c2 + 4 c4 from the pairs at +-1, +-2.
    const Signed e1 = signedSub(signedSub(shifted(signedAdd(v1, vm1), -1), c0), c6);
    const Signed e2 = shifted(signedSub(signedSub(shifted(signedAdd(v2, vm2), -1), c0), shifted(c6, 6)), -2);
    Signed c4 = signedSub(e2, e1);
    divideExactly(c4, 3);
    const Signed c2 = signedSub(e1, c4);

    // Odd ones: c1 + c3 + c5, c1 + 4 c3 + 16 c5 and, from 1/2 with the even
    // ones taken out, 16 c1 + 4 c3 + c5.
    const Signed o1 = shifted(signedSub(v1, vm1), -1);
    const Signed o2 = shifted(signedSub(v2, vm2), -2);
    Signed h = signedSub(signedSub(vh, shifted(c0, 6)), shifted(c2, 4));
    h = shifted(signedSub(signedSub(h, shifted(c4, 2)), c6), -1);
    Signed x = signedSub(o2, o1); // 3 c3 + 15 c5
    divideExactly(x, 3);
    Signed y = signedSub(shifted(o1, 4), h); // 12 c3 + 15 c5
    divideExactly(y, 3);
    Signed c3 = signedSub(y, x); // 3 c3
    divideExactly(c3, 3);
    Signed c5 = signedSub(x, c3);
    divideExactly(c5, 5);
    const Signed c1 = signedSub(signedSub(o1, c3), c5);

    addInto(r + k, rn - k, c1.mag.data(), c1.mag.size());
    addInto(r + 2 * k, rn - 2 * k, c2.mag.data(), c2.mag.size());
    addInto(r + 3 * k, rn - 3 * k, c3.mag.data(), c3.mag.size());
    addInto(r + 4 * k, rn - 4 * k, c4.mag.data(), c4.mag.size());
    addInto(r + 5 * k, rn - 5 * k, c5.mag.data(), c5.mag.size());
}

void square(Limb* r, const Limb* a, size_t n)
{
    const Thresholds& t = thresholds();
    if (n < t.karatsubaSqr)
        sqrBasecase(r, a, n);
    else if (n >= t.nttSqr)
        nttMultiply(r, a, n, a, n);
    else if (n < t.toom3Sqr || n <= 2 * ((n + 2) / 3))
        karatsuba(r, a, n, a, n);
    else if (n < t.toom4Sqr || n <= 3 * ((n + 3) / 4))
        toom3(r, a, n, a, n);
    else
        toom4(r, a, n, a, n);
}

} // namespace

void multiply(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    if (an < bn) {
        std::swap(a, b);
        std::swap(an, bn);
    }
    if (a == b && an == bn) {
        square(r, a, an);
        return;
    }
    const Thresholds& t = thresholds();
    if (bn < t.karatsubaMul) {
        mulBasecase(r, a, an, b, bn);
    } else if (bn >= t.nttMul) {
        nttMultiply(r, a, an, b, bn);
    } else if (bn <= (an + 1) / 2) {
        mulUnbalanced(r, a, an, b, bn);
    } else if (bn >= t.toom4Mul && bn > 3 * ((an + 3) / 4)) {
        toom4(r, a, an, b, bn);
    } else if (bn >= t.toom3Mul && bn > 2 * ((an + 2) / 3)) {
        toom3(r, a, an, b, bn);
    } else {
        karatsuba(r, a, an, b, bn);
    }
}

} // namespace detail
} // namespace math
} // namespace qv
