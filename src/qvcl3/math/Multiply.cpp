#include "Limbs.h"
#include "NumberTheoreticTransform.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace qv {
namespace math {
namespace detail {

namespace {

// Measured crossovers of Toom-3, Toom-4 and the transform (docs/math.md).
constexpr size_t TOOM3_MUL = 200;
constexpr size_t TOOM3_SQR = 200;
constexpr size_t NTT_MUL = 1500;
constexpr size_t NTT_SQR = 1500;
constexpr size_t NEWTON_DIVISION = 2800;
constexpr size_t TOOM4_MUL = 900;
constexpr size_t TOOM4_SQR = 900;
constexpr size_t NTT_UNBALANCED_MUL = 500;

} // namespace

// Whether the transform is expected to beat Toom on a product whose shorter
// operand is under the transform's threshold. Toom on such a shape costs the
// pieces of the shorter length, about an bn^0.47 in all; the transform costs
// P log P in the points P the whole product needs, which jumps at powers of
// two and at three quarters of them, so a long operand can make it cheaper below
// the threshold and one limb more can make it dearer again. Both costs are
// scaled so that they meet at the balanced product of the threshold's
// length, which keeps the rule where the threshold is put (and lets tests
// reach it with small operands).
bool transformBeatsToom(size_t an, size_t bn, size_t threshold) noexcept
{
    // A threshold this large switches the transform off (tests do that).
    if (threshold > std::numeric_limits<size_t>::max() / 4)
        return false;
    auto transformCost = [](size_t points) {
        return static_cast<double>(points) * std::log2(static_cast<double>(points));
    };
    const double n0 = static_cast<double>(threshold);
    const double toom = static_cast<double>(an) * std::pow(static_cast<double>(bn), 0.47) / std::pow(n0, 1.47);
    const double transform = transformCost(nttProductLength(an + bn)) / transformCost(nttProductLength(2 * threshold));
    return transform < toom;
}

Thresholds defaultThresholds() noexcept
{
    return Thresholds{32,        64,        TOOM3_MUL,         TOOM3_SQR, 64, NTT_MUL, NTT_SQR, NEWTON_DIVISION,
                      TOOM4_MUL, TOOM4_SQR, NTT_UNBALANCED_MUL};
}

Thresholds& thresholds() noexcept
{
    static Thresholds active = defaultThresholds();
    return active;
}

namespace {

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

// an >= bn > ceil(an / 2), so that z2 = a1 * b1 has at least m limbs.
void karatsuba(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t m = (an + 1) / 2, h = an - m, k = bn - m, rn = an + bn;
    const bool squaring = a == b && an == bn;
    // Every limb is written before it is read.
    std::unique_ptr<Limb[]> tmp(new Limb[5 * m]);
    Limb* da = tmp.get();
    Limb* db = squaring ? da : da + m;
    Limb* z1 = da + 2 * m;
    Limb* t = z1 + 2 * m;

    bool negA = absDiff(da, a, m, a + m, h);
    bool negB = squaring ? negA : absDiff(db, b, m, b + m, k);
    multiply(r, a, m, b, m);
    multiply(r + 2 * m, a + m, h, b + m, k);
    multiply(z1, da, m, db, m);

    // r += (z0 + z2 - (a0 - a1)(b0 - b1)) B^m, that is a0*b1 + a1*b0. With
    // z0 = L0 + H0 B^m and z2 = L2 + H2 B^m, z0 + z2 lands as t + L0 at m
    // and t + H2 at 2m, t = H0 + L2: the shared half is added once and
    // nothing is copied.
    const Limb carryT = addN(t, r + m, r + 2 * m, m);
    const Limb carryLow = addN(r + m, t, r, m);
    const Limb carryHigh = add(r + 2 * m, t, m, r + 3 * m, h + k - m);
    add1(r + 2 * m, r + 2 * m, rn - 2 * m, carryLow + carryT);
    add1(r + 3 * m, r + 3 * m, rn - 3 * m, carryHigh + carryT);
    if (negA == negB)
        sub(r + m, r + m, rn - m, z1, 2 * m);
    else
        add(r + m, r + m, rn - m, z1, 2 * m);
}

// a is much longer than b: multiply b by slices of a of b's length.
void mulUnbalanced(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    std::unique_ptr<Limb[]> tmp(new Limb[2 * bn]);
    multiply(r, a, bn, b, bn);
    std::fill(r + 2 * bn, r + an + bn, Limb(0));
    for (size_t i = bn; i < an; i += bn) {
        size_t len = std::min(bn, an - i);
        multiply(tmp.get(), a + i, len, b, bn);
        addInto(r + i, an + bn - i, tmp.get(), len + bn);
    }
}

// The interpolations below work in two's complement over a fixed width:
// every value they pass through fits it with room for the sign, and exact
// division by an odd constant is multiplication by its inverse modulo B^n,
// which is the same on a negative value's two's complement.
void negate(Limb* x, size_t n) noexcept
{
    size_t i = 0;
    while (i < n && x[i] == 0)
        ++i;
    if (i == n)
        return;
    x[i] = 0 - x[i];
    for (++i; i < n; ++i)
        x[i] = ~x[i];
}

void halveSigned(Limb* x, size_t n) noexcept
{
    const Limb sign = x[n - 1] & (Limb(1) << 63);
    shiftRight(x, x, n, 1);
    x[n - 1] |= sign;
}

// v (w limbs, two's complement) = x * y, negated when negative; squares when
// x and y are the same array. xn + yn <= w.
void signedProduct(Limb* v, size_t w, const Limb* x, size_t xn, const Limb* y, size_t yn, bool negative)
{
    const bool squaring = x == y && xn == yn;
    xn = normalisedLength(x, xn);
    yn = squaring ? xn : normalisedLength(y, yn);
    if (xn == 0 || yn == 0) {
        std::fill(v, v + w, Limb(0));
        return;
    }
    multiply(v, x, xn, y, yn);
    std::fill(v + xn + yn, v + w, Limb(0));
    if (negative)
        negate(v, w);
}

// p = p0 + p1 x + p2 x^2 (pieces of k, k and s <= k limbs) at 1, -1 and -2
// into e[0, k], e[k + 1, 2k + 1], e[2k + 2, 3k + 2] (the last two as
// magnitudes; returns their signs, true when negative); tmp holds k + 1
// limbs.
std::pair<bool, bool> evaluateToom3(Limb* e, const Limb* p, size_t k, size_t s, Limb* tmp) noexcept
{
    const size_t n = k + 1;
    Limb* one = e;
    Limb* minusOne = e + n;
    Limb* minusTwo = minusOne + n;
    const Limb* p1 = p + k;
    const Limb* p2 = p + 2 * k;
    minusTwo[k] = add(minusTwo, p, k, p2, s); // p0 + p2, for the moment
    add(one, minusTwo, n, p1, k);
    const bool negOne = absDiff(minusOne, minusTwo, n, p1, k);
    // p(-2) = (p0 + 4 p2) - 2 p1
    tmp[s] = shiftLeft(tmp, p2, s, 2);
    std::fill(tmp + s + 1, tmp + n, Limb(0));
    add(minusTwo, tmp, n, p, k);
    tmp[k] = shiftLeft(tmp, p1, k, 1);
    const bool negTwo = absDiff(minusTwo, minusTwo, n, tmp, n);
    return {negOne, negTwo};
}

// Splits both operands in three pieces of k limbs (the top ones shorter),
// multiplies at the points 0, 1, -1, -2 and infinity, and interpolates with
// Bodrato's sequence. Needs bn > 2 * ceil(an / 3). One scratch block for
// the evaluations and the three inner products, interpolated in place.
void toom3(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t k = (an + 2) / 3, n = k + 1, w = 2 * k + 2, rn = an + bn;
    const bool squaring = a == b && an == bn;
    std::unique_ptr<Limb[]> scratch(new Limb[3 * w + 7 * n]);
    Limb* v1 = scratch.get();
    Limb* vm1 = v1 + w;
    Limb* vm2 = vm1 + w;
    Limb* ea = vm2 + w;
    Limb* eb = squaring ? ea : ea + 3 * n;
    Limb* tmp = ea + 6 * n;
    const std::pair<bool, bool> sa = evaluateToom3(ea, a, k, an - 2 * k, tmp);
    const std::pair<bool, bool> sb = squaring ? sa : evaluateToom3(eb, b, k, bn - 2 * k, tmp);
    signedProduct(v1, w, ea, n, eb, n, false);
    signedProduct(vm1, w, ea + n, n, eb + n, n, sa.first != sb.first);
    signedProduct(vm2, w, ea + 2 * n, n, eb + 2 * n, n, sa.second != sb.second);

    // v0 and vinf go straight to their places in r.
    multiply(r, a, k, b, k);
    std::fill(r + 2 * k, r + 4 * k, Limb(0));
    multiply(r + 4 * k, a + 2 * k, an - 2 * k, b + 2 * k, bn - 2 * k);
    const Limb* v0 = r;
    const Limb* vinf = r + 4 * k;
    const size_t vinfn = rn - 4 * k;

    sub(vm2, vm2, w, v1, w); // r3 = (v(-2) - v(1)) / 3
    divExact1(vm2, vm2, w, 3);
    sub(v1, v1, w, vm1, w); // r1 = (v(1) - v(-1)) / 2
    halveSigned(v1, w);
    sub(vm1, vm1, w, v0, 2 * k); // r2 = v(-1) - v0
    sub(vm2, vm1, w, vm2, w);    // r3 = (r2 - r3) / 2 + 2 vinf
    halveSigned(vm2, w);
    add(vm2, vm2, w, vinf, vinfn);
    add(vm2, vm2, w, vinf, vinfn);
    add(vm1, vm1, w, v1, w); // r2 = r2 + r1 - vinf
    sub(vm1, vm1, w, vinf, vinfn);
    sub(v1, v1, w, vm2, w); // r1 = r1 - r3

    addInto(r + k, rn - k, v1, w);
    addInto(r + 2 * k, rn - 2 * k, vm1, w);
    addInto(r + 3 * k, rn - 3 * k, vm2, w);
}

// p = p0 + p1 x + p2 x^2 + p3 x^3 (pieces of k, k, k and s <= k limbs) at
// 1, -1, 2, -2 and 8 p(1/2) into five values of k + 1 limbs at e, the ones
// at -1 and -2 as magnitudes (returns their signs, true when negative);
// tmp holds 2k + 2 limbs.
std::pair<bool, bool> evaluateToom4(Limb* e, const Limb* p, size_t k, size_t s, Limb* tmp) noexcept
{
    const size_t n = k + 1;
    Limb* one = e;
    Limb* minusOne = e + n;
    Limb* two = e + 2 * n;
    Limb* minusTwo = e + 3 * n;
    Limb* half = e + 4 * n;
    const Limb* p1 = p + k;
    const Limb* p2 = p + 2 * k;
    const Limb* p3 = p + 3 * k;
    Limb* even = tmp;
    Limb* odd = tmp + n;
    even[k] = addN(even, p, p2, k);
    odd[k] = add(odd, p1, k, p3, s);
    addN(one, even, odd, n);
    const bool negOne = absDiff(minusOne, even, n, odd, n);
    // p0 + 4 p2 and 2 (p1 + 4 p3)
    even[k] = shiftLeft(even, p2, k, 2);
    add(even, even, n, p, k);
    odd[s] = shiftLeft(odd, p3, s, 2);
    std::fill(odd + s + 1, odd + n, Limb(0));
    add(odd, odd, n, p1, k);
    shiftLeft(odd, odd, n, 1);
    addN(two, even, odd, n);
    const bool negTwo = absDiff(minusTwo, even, n, odd, n);
    // 8 p(1/2) = ((2 p0 + p1) 2 + p2) 2 + p3
    half[k] = shiftLeft(half, p, k, 1);
    add(half, half, n, p1, k);
    shiftLeft(half, half, n, 1);
    add(half, half, n, p2, k);
    shiftLeft(half, half, n, 1);
    add(half, half, n, p3, s);
    return {negOne, negTwo};
}

// x -= y << bits (x w limbs, y yn <= w limbs, 0 < bits < 64) through tmp (w
// limbs); what leaves the top of w is known to be zero.
void subShifted(Limb* x, size_t w, const Limb* y, size_t yn, unsigned bits, Limb* tmp) noexcept
{
    const Limb out = shiftLeft(tmp, y, yn, bits);
    if (yn < w) {
        tmp[yn] = out;
        std::fill(tmp + yn + 1, tmp + w, Limb(0));
    }
    sub(x, x, w, tmp, w);
}

// Splits both operands in four pieces of k limbs (the top ones shorter) and
// multiplies at 0, 1, -1, 2, -2, 1/2 and infinity: seven products of a
// quarter the length against Toom-3's five of a third. Needs
// bn > 3 * ceil(an / 4). Every coefficient of the product is a sum of
// products of pieces, so none is negative, and each step of the
// interpolation below divides exactly.
void toom4(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t k = (an + 3) / 4, n = k + 1, w = 2 * k + 2, rn = an + bn;
    const bool squaring = a == b && an == bn;
    std::unique_ptr<Limb[]> scratch(new Limb[6 * w + 10 * n]);
    Limb* v1 = scratch.get();
    Limb* vm1 = v1 + w;
    Limb* v2 = vm1 + w;
    Limb* vm2 = v2 + w;
    Limb* vh = vm2 + w; // 64 c(1/2)
    Limb* tmp = vh + w;
    Limb* ea = tmp + w;
    Limb* eb = squaring ? ea : ea + 5 * n;
    const std::pair<bool, bool> sa = evaluateToom4(ea, a, k, an - 3 * k, tmp);
    const std::pair<bool, bool> sb = squaring ? sa : evaluateToom4(eb, b, k, bn - 3 * k, tmp);
    signedProduct(v1, w, ea, n, eb, n, false);
    signedProduct(vm1, w, ea + n, n, eb + n, n, sa.first != sb.first);
    signedProduct(v2, w, ea + 2 * n, n, eb + 2 * n, n, false);
    signedProduct(vm2, w, ea + 3 * n, n, eb + 3 * n, n, sa.second != sb.second);
    signedProduct(vh, w, ea + 4 * n, n, eb + 4 * n, n, false);

    multiply(r, a, k, b, k);
    std::fill(r + 2 * k, r + 6 * k, Limb(0));
    multiply(r + 6 * k, a + 3 * k, an - 3 * k, b + 3 * k, bn - 3 * k);
    const Limb* c0 = r;
    const Limb* c6 = r + 6 * k;
    const size_t c6n = rn - 6 * k;

    // The pairs at +-1 and +-2 split into even and odd halves:
    // o1 = c1 + c3 + c5 and (v1 + vm1) / 2 = v1 - o1, o2 = c1 + 4 c3 + 16 c5.
    sub(vm1, v1, w, vm1, w);
    halveSigned(vm1, w);
    sub(v1, v1, w, vm1, w);
    sub(vm2, v2, w, vm2, w);
    halveSigned(vm2, w);
    sub(v2, v2, w, vm2, w);
    halveSigned(vm2, w);
    // e1 = c2 + c4, e2 = c2 + 4 c4, then c4 into v2 and c2 into v1.
    sub(v1, v1, w, c0, 2 * k);
    sub(v1, v1, w, c6, c6n);
    sub(v2, v2, w, c0, 2 * k);
    subShifted(v2, w, c6, c6n, 6, tmp);
    halveSigned(v2, w);
    halveSigned(v2, w);
    sub(v2, v2, w, v1, w);
    divExact1(v2, v2, w, 3);
    sub(v1, v1, w, v2, w);
    // h = 16 c1 + 4 c3 + c5: 64 c(1/2) with the even coefficients out, halved.
    subShifted(vh, w, c0, 2 * k, 6, tmp);
    subShifted(vh, w, v1, w, 4, tmp);
    subShifted(vh, w, v2, w, 2, tmp);
    sub(vh, vh, w, c6, c6n);
    halveSigned(vh, w);
    // x = (o2 - o1) / 3 = c3 + 5 c5 into vm2, y = (16 o1 - h) / 3 = 4 c3 +
    // 5 c5 into vh; then c3 = (y - x) / 3, c5 = (x - c3) / 5, c1 = o1 - c3 - c5.
    sub(vm2, vm2, w, vm1, w);
    divExact1(vm2, vm2, w, 3);
    shiftLeft(tmp, vm1, w, 4);
    sub(vh, tmp, w, vh, w);
    divExact1(vh, vh, w, 3);
    sub(vh, vh, w, vm2, w);
    divExact1(vh, vh, w, 3);
    sub(vm2, vm2, w, vh, w);
    divExact1(vm2, vm2, w, 5);
    sub(vm1, vm1, w, vh, w);
    sub(vm1, vm1, w, vm2, w);

    addInto(r + k, rn - k, vm1, w);
    addInto(r + 2 * k, rn - 2 * k, v1, w);
    addInto(r + 3 * k, rn - 3 * k, vh, w);
    addInto(r + 4 * k, rn - 4 * k, v2, w);
    addInto(r + 5 * k, rn - 5 * k, vm2, w);
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
    } else if (bn >= t.nttMul || (bn >= t.nttUnbalancedMul && transformBeatsToom(an, bn, t.nttMul))) {
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
