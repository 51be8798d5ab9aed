#include "NumberTheoreticTransform.h"

#include "Limbs.h"

#include <algorithm>
#include <memory>
#include <mutex>

namespace qv {
namespace math {
namespace detail {

namespace {

// Arithmetic modulo a prime p < 2^62 with 2^42 dividing p - 1. Products go
// through Montgomery's reduction with R = 2^64: mul(a, b) = a * b / R mod p,
// so a factor kept premultiplied by R (twiddles, constants) costs one mul.
class PrimeField {
public:
    PrimeField(Limb p, Limb generator) noexcept : m_p(p), m_generator(generator), m_inverse(0), m_r2(0)
    {
        Limb x = p;
        for (int i = 0; i < 5; ++i)
            x *= 2 - p * x;
        m_inverse = 0 - x;
        Limb rem;
        Limb hi;
        const Limb r = (0 - p) % p;
        const Limb lo = mulWide(r, r, hi);
        divWide(hi, lo, p, rem);
        m_r2 = rem;
    }

    Limb modulus() const noexcept { return m_p; }

    Limb add(Limb a, Limb b) const noexcept
    {
        Limb s = a + b;
        return s >= m_p ? s - m_p : s;
    }

    Limb sub(Limb a, Limb b) const noexcept { return a >= b ? a - b : a + m_p - b; }

    // a, b < 2p; the result is below p.
    Limb mul(Limb a, Limb b) const noexcept
    {
        Limb hi;
        const Limb lo = mulWide(a, b, hi);
        Limb qpHi;
        mulWide(lo * m_inverse, m_p, qpHi);
        // lo + low(q p) is 0 or B: it carries exactly when lo is not 0.
        Limb t = hi + qpHi + (lo != 0);
        return t >= m_p ? t - m_p : t;
    }

    // x * R mod p for x < p.
    Limb toMontgomery(Limb x) const noexcept { return mul(x, m_r2); }

    // Shoup's quotient of a constant w < p: floor(w * 2^64 / p). It is the
    // exact quotient (w 2^64 - (w 2^64 mod p)) / p, taken modulo 2^64 through
    // p^-1 instead of a division.
    Limb shoupQuotient(Limb w) const noexcept { return toMontgomery(w) * m_inverse; }

    // y * w mod p within [0, 2p) for any y, given wq = shoupQuotient(w): the
    // quotient estimate is short by at most one.
    Limb mulShoup(Limb y, Limb w, Limb wq) const noexcept
    {
        Limb qHi;
        mulWide(y, wq, qHi);
        return y * w - qHi * m_p;
    }

    // x < 2p brought below p.
    Limb reduceTwice(Limb x) const noexcept { return x >= m_p ? x - m_p : x; }

    // x < 4p brought below 2p.
    Limb reduceFourTimes(Limb x) const noexcept { return x >= 2 * m_p ? x - 2 * m_p : x; }

    // Any limb reduced below p: 2^64 < 5p, and the top two bits estimate the
    // quotient to within one.
    Limb reduce(Limb x) const noexcept
    {
        x -= (x >> 62) * m_p;
        return x >= m_p ? x - m_p : x;
    }

    // base^e * R mod p for base in Montgomery form.
    Limb power(Limb base, Limb e) const noexcept
    {
        Limb result = toMontgomery(1);
        for (; e; e >>= 1) {
            if (e & 1)
                result = mul(result, base);
            base = mul(base, base);
        }
        return result;
    }

    // A root of unity of order n (any divisor of p - 1: a power of two up
    // to 2^42, or three times one) in Montgomery form.
    Limb rootOfUnity(size_t n) const noexcept { return power(toMontgomery(m_generator), (m_p - 1) / n); }

private:
    Limb m_p;
    Limb m_generator;
    Limb m_inverse; // -p^-1 mod 2^64
    Limb m_r2;      // R^2 mod p
};

// Primes c * 2^42 + 1 just below 2^62, with a generator of each one's
// multiplicative group. Their product exceeds 2^185, above any coefficient
// of a product of two magnitudes (below 2^25 * 2^128).
const PrimeField& field(int i) noexcept
{
    static const PrimeField fields[3] = {PrimeField(0x3FFFC00000000001ULL, 11), PrimeField(0x3FFF840000000001ULL, 19),
                                         PrimeField(0x3FFF540000000001ULL, 5)};
    return fields[i];
}

// Twiddles of every level in one table of pairs: (w, shoupQuotient(w)) at
// 2 (len + j) with w = root(2 len)^j for j < len, len = 1, 2, 4, ..., n / 2.
void fillTwiddles(Limb* tw, const PrimeField& f, size_t n) noexcept
{
    for (size_t len = 1; len < n; len *= 2) {
        const Limb root = f.rootOfUnity(2 * len);
        Limb x = 1;
        for (size_t j = 0; j < len; ++j) {
            tw[2 * (len + j)] = x;
            tw[2 * (len + j) + 1] = f.shoupQuotient(x);
            x = f.mul(x, root);
        }
    }
}

// Turns the table into the inverse roots' in place: root^-j = -root^(len - j)
// for a root of order 2 len, and the pair of -w is (p - w, ~wq) because
// w 2^64 / p is never a whole number.
void invertTwiddles(Limb* tw, const PrimeField& f, size_t n) noexcept
{
    const Limb p = f.modulus();
    for (size_t len = 2; len < n; len *= 2) {
        Limb* w = tw + 2 * len;
        for (size_t j = 1, k = len - 1; j <= k; ++j, --k) {
            const Limb wj = w[2 * j], qj = w[2 * j + 1];
            w[2 * j] = p - w[2 * k];
            w[2 * j + 1] = ~w[2 * k + 1];
            w[2 * k] = p - wj;
            w[2 * k + 1] = ~qj;
        }
    }
}

// Twiddle tables are the same for every product of a length (and a table
// for n points holds those of every shorter length as its prefix), so they
// are kept per prime and direction up to this many points: 3 MiB in all.
// Longer transforms fill theirs per product (small beside the transforms).
constexpr size_t CACHED_TWIDDLE_POINTS = size_t(1) << 15;

typedef std::shared_ptr<const Limb> TwiddleTable;

std::shared_ptr<Limb> newTable(size_t n)
{
    return std::shared_ptr<Limb>(new Limb[2 * n], std::default_delete<Limb[]>());
}

// The twiddles of transforms of n points (a power of two) modulo field(i):
// the kept tables, or above their length, the 2n limbs of `scratch` (the
// caller's, so that no fresh pages are touched per product), filled here
// and turned into the inverse ones in place by inverse(). Kept tables only
// grow and are shared: a product holds the ones it started with while
// another thread may put longer ones in their place.
class Twiddles {
public:
    Twiddles(int i, size_t n, Limb* scratch) : m_field(i), m_points(n), m_scratch(nullptr)
    {
        const PrimeField& f = field(i);
        if (n > CACHED_TWIDDLE_POINTS) {
            fillTwiddles(scratch, f, n);
            m_scratch = scratch;
            return;
        }
        static std::mutex lock;
        static TwiddleTable tables[3][2];
        static size_t points[3];
        std::lock_guard<std::mutex> guard(lock);
        if (points[i] < n) {
            // Doubling at least keeps a growing sequence of lengths from
            // filling every one of them in turn.
            const size_t length = std::min(std::max(n, 2 * points[i]), CACHED_TWIDDLE_POINTS);
            std::shared_ptr<Limb> table = newTable(length), inverted = newTable(length);
            fillTwiddles(table.get(), f, length);
            std::copy(table.get(), table.get() + 2 * length, inverted.get());
            invertTwiddles(inverted.get(), f, length);
            tables[i][0] = table;
            tables[i][1] = inverted;
            points[i] = length;
        }
        m_forward = tables[i][0];
        m_inverse = tables[i][1];
    }

    // Valid until inverse() is called.
    const Limb* forward() const noexcept { return m_scratch ? m_scratch : m_forward.get(); }

    const Limb* inverse() noexcept
    {
        if (!m_scratch)
            return m_inverse.get();
        if (!m_inverted) {
            invertTwiddles(m_scratch, field(m_field), m_points);
            m_inverted = true;
        }
        return m_scratch;
    }

private:
    int m_field;
    size_t m_points;
    Limb* m_scratch;
    bool m_inverted = false;
    TwiddleTable m_forward, m_inverse;
};

// Limbs of scratch a Twiddles of n points needs.
size_t twiddleScratch(size_t n) noexcept
{
    return n > CACHED_TWIDDLE_POINTS ? 2 * n : 0;
}

// Blocks up to this many limbs (128 KiB) finish all their levels before the
// next block starts, so they stay in the cache.
constexpr size_t CACHE_BLOCK = size_t(1) << 14;

// Calls step(x, y, j) for the pairs (x[j], y[j]) of every block of 2 len
// values: y is the block's upper half.
template <class Step>
void forEachPair(Limb* a, size_t n, size_t len, Step step) noexcept
{
    for (size_t s = 0; s < n; s += 2 * len)
        for (size_t j = 0; j < len; ++j)
            step(a + s, a + s + len, j);
}

// Calls step(a0, a1, a2, a3, j) for the quarters of every block of 2 len
// values, so that two levels are done with one load and store of each.
template <class Step>
void forEachQuad(Limb* a, size_t n, size_t len, Step step) noexcept
{
    const size_t q = len / 2;
    for (size_t s = 0; s < n; s += 2 * len)
        for (size_t j = 0; j < q; ++j)
            step(a + s, a + s + q, a + s + len, a + s + len + q, j);
}

// Harvey's butterflies: values are kept in [0, 2p) going forward and in
// [0, 4p) coming back (p < 2^62 leaves the room), which saves most of the
// reductions. The field is copied so that its constants stay in registers:
// the stores into a (limbs, like the constants) would otherwise force
// reloads.
void forwardLevel(Limb* a, size_t n, size_t len, const Limb* tw, const PrimeField field) noexcept
{
    const PrimeField f = field;
    const Limb twoP = 2 * f.modulus();
    const Limb* w = tw + 2 * len;
    forEachPair(a, n, len, [&](Limb* x, Limb* y, size_t j) {
        const Limb u = x[j], v = y[j];
        x[j] = f.reduceFourTimes(u + v);
        y[j] = f.mulShoup(u - v + twoP, w[2 * j], w[2 * j + 1]);
    });
}

void inverseLevel(Limb* a, size_t n, size_t len, const Limb* tw, const PrimeField field) noexcept
{
    const PrimeField f = field;
    const Limb twoP = 2 * f.modulus();
    const Limb* w = tw + 2 * len;
    forEachPair(a, n, len, [&](Limb* x, Limb* y, size_t j) {
        const Limb u = f.reduceFourTimes(x[j]);
        const Limb v = f.mulShoup(y[j], w[2 * j], w[2 * j + 1]);
        x[j] = u + v;
        y[j] = u - v + twoP;
    });
}

unsigned levels(size_t n) noexcept
{
    unsigned k = 0;
    while ((size_t(1) << k) < n)
        ++k;
    return k;
}

// The levels len and len / 2 in one pass.
void forwardTwoLevels(Limb* a, size_t n, size_t len, const Limb* tw, const PrimeField field) noexcept
{
    const PrimeField f = field;
    const Limb twoP = 2 * f.modulus();
    const size_t q = len / 2;
    const Limb* wOuter = tw + 2 * len;
    const Limb* wInner = tw + 2 * q;
    forEachQuad(a, n, len, [&](Limb* a0, Limb* a1, Limb* a2, Limb* a3, size_t j) {
        const Limb u0 = a0[j], u1 = a1[j], u2 = a2[j], u3 = a3[j];
        const Limb x0 = f.reduceFourTimes(u0 + u2);
        const Limb x2 = f.mulShoup(u0 - u2 + twoP, wOuter[2 * j], wOuter[2 * j + 1]);
        const Limb x1 = f.reduceFourTimes(u1 + u3);
        const Limb x3 = f.mulShoup(u1 - u3 + twoP, wOuter[2 * (j + q)], wOuter[2 * (j + q) + 1]);
        const Limb w = wInner[2 * j], wq = wInner[2 * j + 1];
        a0[j] = f.reduceFourTimes(x0 + x1);
        a1[j] = f.mulShoup(x0 - x1 + twoP, w, wq);
        a2[j] = f.reduceFourTimes(x2 + x3);
        a3[j] = f.mulShoup(x2 - x3 + twoP, w, wq);
    });
}

// The levels len / 2 and len in one pass.
void inverseTwoLevels(Limb* a, size_t n, size_t len, const Limb* tw, const PrimeField field) noexcept
{
    const PrimeField f = field;
    const Limb twoP = 2 * f.modulus();
    const size_t q = len / 2;
    const Limb* wOuter = tw + 2 * len;
    const Limb* wInner = tw + 2 * q;
    forEachQuad(a, n, len, [&](Limb* a0, Limb* a1, Limb* a2, Limb* a3, size_t j) {
        const Limb w = wInner[2 * j], wq = wInner[2 * j + 1];
        const Limb u0 = f.reduceFourTimes(a0[j]), v1 = f.mulShoup(a1[j], w, wq);
        const Limb u2 = f.reduceFourTimes(a2[j]), v3 = f.mulShoup(a3[j], w, wq);
        const Limb x0 = f.reduceFourTimes(u0 + v1), x1 = f.reduceFourTimes(u0 - v1 + twoP);
        const Limb y2 = f.mulShoup(u2 + v3, wOuter[2 * j], wOuter[2 * j + 1]);
        const Limb y3 = f.mulShoup(u2 - v3 + twoP, wOuter[2 * (j + q)], wOuter[2 * (j + q) + 1]);
        a0[j] = x0 + y2;
        a2[j] = x0 - y2 + twoP;
        a1[j] = x1 + y3;
        a3[j] = x1 - y3 + twoP;
    });
}

// Decimation in frequency: natural order in, bit-reversed order out; values
// below 2p in and out.
void forward(Limb* a, size_t n, const Limb* tw, const PrimeField& f) noexcept
{
    if (n > CACHE_BLOCK) {
        forwardLevel(a, n, n / 2, tw, f);
        forward(a, n / 2, tw, f);
        forward(a + n / 2, n / 2, tw, f);
        return;
    }
    size_t len = n / 2;
    if (levels(n) % 2) {
        forwardLevel(a, n, len, tw, f);
        len /= 2;
    }
    for (; len >= 2; len /= 4)
        forwardTwoLevels(a, n, len, tw, f);
}

// Decimation in time with the inverse roots: bit-reversed order in, natural
// order out, every value multiplied by n; values below 4p in and out.
void inverse(Limb* a, size_t n, const Limb* tw, const PrimeField& f) noexcept
{
    if (n > CACHE_BLOCK) {
        inverse(a, n / 2, tw, f);
        inverse(a + n / 2, n / 2, tw, f);
        inverseLevel(a, n, n / 2, tw, f);
        return;
    }
    size_t len = 2;
    for (; len < n; len *= 4)
        inverseTwoLevels(a, n, len, tw, f);
    if (len == n)
        inverseLevel(a, n, n / 2, tw, f);
}

void load(Limb* t, size_t n, const Limb* a, size_t an, const PrimeField& f) noexcept
{
    for (size_t i = 0; i < an; ++i)
        t[i] = f.reduce(a[i]);
    std::fill(t + an, t + n, Limb(0));
}

// ta = ta * tb pointwise (tb = ta when squaring), with the factor 1 /
// divisor (n, the inverse transform's, unless the caller has a further one
// to take out; divisor must divide p - 1). mul(x, y) leaves a factor 1/R;
// scale = R^2 / divisor takes it and the divisor out in one more product.
// mul takes factors below 2p and answers below p.
void multiplyPointwise(Limb* ta, const Limb* tb, size_t n, const PrimeField& f, size_t divisor = 0) noexcept
{
    const Limb nInverse = f.modulus() - (f.modulus() - 1) / (divisor ? divisor : n);
    const Limb scale = f.toMontgomery(f.toMontgomery(nInverse));
    for (size_t i = 0; i < n; ++i)
        ta[i] = f.mul(f.mul(ta[i], tb[i]), scale);
}

// The cyclic convolution of a and b modulo field(i), left in ta with each
// value below 4p. fixed, when given, is b's transform (b is then unused).
void convolve(Limb* ta, Limb* tb, Limb* tw, size_t n, const Limb* a, size_t an, const Limb* b, size_t bn,
              const Limb* fixed, int i)
{
    const PrimeField& f = field(i);
    const bool squaring = !fixed && a == b && an == bn;
    Twiddles twiddles(i, n, tw);
    load(ta, n, a, an, f);
    forward(ta, n, twiddles.forward(), f);
    if (!squaring && !fixed) {
        load(tb, n, b, bn, f);
        forward(tb, n, twiddles.forward(), f);
    }
    multiplyPointwise(ta, fixed ? fixed : squaring ? ta : tb, n, f);
    inverse(ta, n, twiddles.inverse(), f);
}

// a (an <= 3m limbs) modulo x^(2m) + 1, its coefficients multiplied by
// psi^i (psi of order 4m, so that the cyclic transform of length 2m gives
// the negacyclic convolution), into t below 2p; and a modulo x^m - 1 into
// c. twist holds the pairs (psi^i, shoupQuotient(psi^i)) for i < 2m: the
// level of a twiddle table of 4m points that no transform of 2m uses. A
// table instead of a running power, whose chain of dependent products set
// the pace of the whole loop.
void loadSplit(Limb* t, Limb* c, size_t m, const Limb* a, size_t an, const Limb* twist, const PrimeField& f) noexcept
{
    // Each digit reduced once: a[0, 2m) into t, a[2m, 3m) into c, then
    // combined in place (t[i + m] is read before it is twisted).
    load(t, 2 * m, a, std::min(an, 2 * m), f);
    if (an > 2 * m)
        load(c, m, a + 2 * m, an - 2 * m, f);
    else
        std::fill(c, c + m, Limb(0));
    for (size_t i = 0; i < m; ++i) {
        const Limb low = t[i], middle = t[i + m], high = c[i];
        c[i] = f.add(f.add(low, middle), high);
        t[i] = f.mulShoup(f.sub(low, high), twist[2 * i], twist[2 * i + 1]);
    }
    for (size_t i = m; i < 2 * m; ++i)
        t[i] = f.mulShoup(t[i], twist[2 * i], twist[2 * i + 1]);
}

// The product of a and b (an + bn - 1 <= 3m coefficients) modulo one prime
// from two transforms of lengths 2m and m instead of one of 4m: modulo
// x^(2m) + 1 it is A, modulo x^m - 1 it is C, and as x^(2m) + 1 = 2 there,
// the product is A + (x^(2m) + 1) (C - A) / 2. Coefficients below p into
// out[0, 3m); scratch holds 6m + twiddleScratch(4m) limbs. b's two
// transforms are the 3m limbs at fixed when given (as NttOperand leaves
// them).
void convolveSplit(Limb* out, Limb* scratch, size_t m, const Limb* a, size_t an, const Limb* b, size_t bn,
                   const Limb* fixed, int i)
{
    const PrimeField& f = field(i);
    const bool squaring = !fixed && a == b && an == bn;
    Limb* ta = scratch;
    Limb* ca = ta + 2 * m;
    Limb* tb = ca + m;
    Limb* cb = tb + 2 * m;
    // 4m points: the transforms use the table's levels up to 2m, the twists
    // its last one.
    Twiddles twiddles(i, 4 * m, cb + m);
    const Limb* tw = twiddles.forward();
    loadSplit(ta, ca, m, a, an, tw + 4 * m, f);
    forward(ta, 2 * m, tw, f);
    forward(ca, m, tw, f);
    const Limb* fb = squaring ? ta : tb;
    const Limb* fc = squaring ? ca : cb;
    if (fixed) {
        fb = fixed;
        fc = fixed + 2 * m;
    } else if (!squaring) {
        loadSplit(tb, cb, m, b, bn, tw + 4 * m, f);
        forward(tb, 2 * m, tw, f);
        forward(cb, m, tw, f);
    }
    multiplyPointwise(ta, fb, 2 * m, f);
    multiplyPointwise(ca, fc, m, f);
    const Limb* twInverse = twiddles.inverse();
    inverse(ta, 2 * m, twInverse, f);
    inverse(ca, m, twInverse, f);

    // The inverse table's last level holds psi^-i.
    const Limb* untwist = twInverse + 4 * m;
    for (size_t i = 0; i < 2 * m; ++i)
        ta[i] = f.reduceTwice(f.mulShoup(ta[i], untwist[2 * i], untwist[2 * i + 1]));
    const Limb half = (f.modulus() + 1) / 2;
    for (size_t i = 0; i < m; ++i) {
        Limb q = f.sub(f.reduceTwice(f.reduceFourTimes(ca[i])), f.add(ta[i], ta[i + m]));
        q = (q >> 1) + (q & 1 ? half : 0);
        out[i] = f.add(ta[i], q);
        out[i + m] = ta[i + m];
        out[i + 2 * m] = q;
    }
}

// Powers of a root psi of order 3m (m a power of two) with their Shoup
// quotients, pairs (psi^k, shoupQuotient(psi^k)) for k <= 3m: psi^k twists
// the thirds forward, psi^(3m - k) = psi^-k back. Kept per prime for m up
// to this many points (the longest table 3 x 2^12 pairs, 192 KiB; all of
// them 1.2 MiB at most), computed per product above.
constexpr size_t CACHED_THIRDS_POINTS = size_t(1) << 12;

TwiddleTable fillThirdsTwist(const PrimeField& f, size_t m)
{
    std::shared_ptr<Limb> table = newTable(3 * m + 1);
    const Limb psi = f.rootOfUnity(3 * m);
    Limb x = 1;
    for (size_t k = 0; k <= 3 * m; ++k) {
        table.get()[2 * k] = x;
        table.get()[2 * k + 1] = f.shoupQuotient(x);
        x = f.mul(x, psi);
    }
    return table;
}

TwiddleTable thirdsTwist(int i, size_t m)
{
    if (m > CACHED_THIRDS_POINTS)
        return fillThirdsTwist(field(i), m);
    static std::mutex lock;
    static TwiddleTable tables[3][13];
    const unsigned level = levels(m);
    std::lock_guard<std::mutex> guard(lock);
    if (!tables[i][level])
        tables[i][level] = fillThirdsTwist(field(i), m);
    return tables[i][level];
}

// a (an <= 3m limbs) modulo x^m - omega^j for j = 0, 1, 2 (omega = psi^m, a
// cube root of unity), the j-th with its coefficients multiplied by
// psi^(j i) so that a cyclic transform of length m gives its products:
// into t[j m, (j + 1) m), below 2p. With a0, a1, a2 the thirds of a and
// omega^2 = -1 - omega, the residues are a0 + a1 + a2,
// a0 - a2 + omega (a1 - a2) and a0 - a1 - omega (a1 - a2).
void loadThirds(Limb* t, size_t m, const Limb* a, size_t an, const Limb* psi, const PrimeField& f) noexcept
{
    load(t, 3 * m, a, an, f);
    const Limb omega = psi[2 * m], omegaQ = psi[2 * m + 1];
    for (size_t i = 0; i < m; ++i) {
        const Limb a0 = t[i], a1 = t[i + m], a2 = t[i + 2 * m];
        const Limb u = f.reduceTwice(f.mulShoup(f.sub(a1, a2), omega, omegaQ));
        t[i] = f.add(f.add(a0, a1), a2);
        t[i + m] = f.mulShoup(f.add(f.sub(a0, a2), u), psi[2 * i], psi[2 * i + 1]);
        t[i + 2 * m] = f.mulShoup(f.sub(f.sub(a0, a1), u), psi[4 * i], psi[4 * i + 1]);
    }
}

void forwardThirds(Limb* t, size_t m, const Limb* tw, const PrimeField& f) noexcept
{
    for (int j = 0; j < 3; ++j)
        forward(t + j * m, m, tw, f);
}

// The cyclic convolution of a and b of length 3m modulo one prime, from
// three transforms of length m (x^(3m) - 1 is the product of the
// x^m - omega^j). Coefficients below p into out[0, 3m), which holds the
// first operand's transforms on the way; scratch holds 3m +
// twiddleScratch(m) limbs. b's transforms are the 3m limbs at fixed when
// given (as NttOperand leaves them).
void convolveThirds(Limb* out, Limb* scratch, size_t m, const Limb* a, size_t an, const Limb* b, size_t bn,
                    const Limb* fixed, int i)
{
    const PrimeField& f = field(i);
    const bool squaring = !fixed && a == b && an == bn;
    const TwiddleTable twistTable = thirdsTwist(i, m);
    const Limb* psi = twistTable.get();
    Twiddles twiddles(i, m, scratch + 3 * m);
    loadThirds(out, m, a, an, psi, f);
    forwardThirds(out, m, twiddles.forward(), f);
    const Limb* tb = squaring ? out : fixed ? fixed : scratch;
    if (!squaring && !fixed) {
        loadThirds(scratch, m, b, bn, psi, f);
        forwardThirds(scratch, m, twiddles.forward(), f);
    }
    // 1 / (3m): the inverse transforms' m and the 3 of the recombination.
    for (int j = 0; j < 3; ++j)
        multiplyPointwise(out + j * m, tb + j * m, m, f, 3 * m);
    const Limb* twInverse = twiddles.inverse();
    for (int j = 0; j < 3; ++j)
        inverse(out + j * m, m, twInverse, f);

    // Untwisted, c0, c1, c2 are the product modulo x^m - omega^j; its thirds
    // are c0 + c1 + c2, c0 - c1 - omega (c1 - c2) and c0 - c2 + omega (c1 -
    // c2) (the 1/3 is already in).
    const Limb* psiInverse = psi + 6 * m; // psi^(3m - k) at psiInverse - 2k
    const Limb omega = psi[2 * m], omegaQ = psi[2 * m + 1];
    for (size_t k = 0; k < m; ++k) {
        const Limb c0 = f.reduceTwice(f.reduceFourTimes(out[k]));
        const Limb c1 =
            f.reduceTwice(f.mulShoup(out[k + m], psiInverse[-2 * ptrdiff_t(k)], psiInverse[1 - 2 * ptrdiff_t(k)]));
        const Limb c2 =
            f.reduceTwice(f.mulShoup(out[k + 2 * m], psiInverse[-4 * ptrdiff_t(k)], psiInverse[1 - 4 * ptrdiff_t(k)]));
        const Limb u = f.reduceTwice(f.mulShoup(f.sub(c1, c2), omega, omegaQ));
        out[k] = f.add(f.add(c0, c1), c2);
        out[k + m] = f.sub(f.sub(c0, c1), u);
        out[k + 2 * m] = f.add(f.sub(c0, c2), u);
    }
}

} // namespace

size_t nttLength(size_t rn) noexcept
{
    size_t n = 1;
    while (n < rn - 1)
        n *= 2;
    return std::max(n, size_t(2));
}

size_t nttProductLength(size_t rn) noexcept
{
    const size_t n = nttLength(rn);
    return n >= 8 && rn - 1 <= 3 * (n / 4) ? 3 * (n / 4) : n;
}

size_t nttWrappedLength(size_t limbs) noexcept
{
    const size_t n = nttLength(limbs + 1);
    return n >= 8 && n / 4 <= CACHED_THIRDS_POINTS && limbs <= 3 * (n / 4) ? 3 * (n / 4) : n;
}

namespace {

// The convolution of a and b of length n, cyclic for a power of two and for
// 3 m when `cyclic`, otherwise the plain product for 3 m (an + bn - 1 <=
// 3 m); its first `coefficients` coefficients added up with carries into
// r[0, limbs) (limbs >= the coefficients). Returns what carries out of r in
// carry[0..1].
void convolveAndRebuild(Limb* r, size_t limbs, size_t n, size_t coefficients, const Limb* a, size_t an, const Limb* b,
                        size_t bn, const Limb* fixed, bool cyclic, Limb carry[2])
{
    // Three residue vectors and the scratch of the transforms (the second
    // operand's); all written before they are read.
    const bool thirds = (n & (n - 1)) != 0;
    const bool split = thirds && !cyclic;
    const size_t points = split ? 4 * (n / 3) : thirds ? n / 3 : n;
    std::unique_ptr<Limb[]> buffer(new Limb[(split ? 3 * n + 6 * (n / 3) : 4 * n) + twiddleScratch(points)]);
    Limb* residues[3] = {buffer.get(), buffer.get() + n, buffer.get() + 2 * n};
    Limb* scratch = buffer.get() + 3 * n;
    for (int i = 0; i < 3; ++i) {
        const PrimeField& f = field(i);
        if (split) {
            convolveSplit(residues[i], scratch, n / 3, a, an, b, bn, fixed ? fixed + i * n : nullptr, i);
            continue;
        }
        if (thirds) {
            convolveThirds(residues[i], scratch, n / 3, a, an, b, bn, fixed ? fixed + i * n : nullptr, i);
            continue;
        }
        convolve(residues[i], scratch, scratch + n, n, a, an, b, bn, fixed ? fixed + i * n : nullptr, i);
        for (size_t j = 0; j < coefficients; ++j)
            residues[i][j] = f.reduceTwice(f.reduceFourTimes(residues[i][j]));
    }

    // Garner's form of the Chinese remainder theorem: a coefficient is
    // x1 + p1 (v2 + p2 v3) with each digit taken modulo its own prime.
    const PrimeField& f1 = field(0);
    const PrimeField& f2 = field(1);
    const PrimeField& f3 = field(2);
    const Limb p1 = f1.modulus(), p2 = f2.modulus();
    Limb p12Hi;
    const Limb p12Lo = mulWide(p1, p2, p12Hi);
    const Limb p1ModP2 = p1 - p2; // p2 < p1 < 2 p2, and the same for p3
    // power() answers in Montgomery form, which is what mul(x, c) needs to
    // multiply x by the plain inverse.
    const Limb p1InverseModP2 = f2.power(f2.toMontgomery(p1ModP2), p2 - 2);
    const Limb p1ModP3 = f3.toMontgomery(p1 - f3.modulus());
    const Limb p12ModP3 = f3.mul(p1ModP3, f3.toMontgomery(f3.reduce(p2)));
    const Limb p12InverseModP3 = f3.power(p12ModP3, f3.modulus() - 2);
    Limb acc0 = 0, acc1 = 0, acc2 = 0;
    for (size_t i = 0; i < limbs; ++i) {
        if (i < coefficients) {
            const Limb x1 = residues[0][i];
            const Limb v2 = f2.mul(f2.sub(residues[1][i], f2.reduce(x1)), p1InverseModP2);
            const Limb low = f3.add(f3.reduce(x1), f3.mul(f3.reduce(v2), p1ModP3));
            const Limb v3 = f3.mul(f3.sub(residues[2][i], low), p12InverseModP3);
            // x1 + p1 v2 < 2^124 fits two limbs; p1 p2 v3 takes three.
            Limb t1;
            Limb t0 = mulAdd2(v2, p1, x1, 0, t1);
            Limb u1, u2;
            Limb u0 = mulWide(v3, p12Lo, u1);
            Limb mid = mulAdd2(v3, p12Hi, u1, 0, u2);
            u1 = mid;
            acc0 += t0;
            Limb c = acc0 < t0;
            acc1 += c;
            c = acc1 < c;
            acc1 += t1;
            c += acc1 < t1;
            acc2 += c;
            acc0 += u0;
            c = acc0 < u0;
            acc1 += c;
            c = acc1 < c;
            acc1 += u1;
            c += acc1 < u1;
            acc2 += c + u2;
        }
        r[i] = acc0;
        acc0 = acc1;
        acc1 = acc2;
        acc2 = 0;
    }
    carry[0] = acc0;
    carry[1] = acc1;
}

} // namespace

void nttMultiply(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    const size_t rn = an + bn;
    Limb carry[2];
    convolveAndRebuild(r, rn, nttProductLength(rn), rn - 1, a, an, b, bn, nullptr, false, carry);
}

namespace {

// r (n limbs) holds the coefficients of a cyclic convolution added up with
// carries; B^n = 1, so what carried out of the top goes in at the bottom,
// and the carry of that addition once more (it is then 1 at most).
void wrapCarry(Limb* r, size_t n, const Limb carry[2]) noexcept
{
    Limb c = add(r, r, n, carry, 2);
    while (c)
        c = add1(r, r, n, c);
}

} // namespace

void nttMultiplyWrapped(Limb* r, size_t n, const Limb* a, size_t an, const Limb* b, size_t bn)
{
    Limb carry[2];
    convolveAndRebuild(r, n, n, n, a, an, b, bn, nullptr, true, carry);
    wrapCarry(r, n, carry);
}

NttOperand::NttOperand(const Limb* b, size_t bn, size_t rn, NttShape shape)
    : m_limbs(bn), m_length(shape == NttShape::Wrapped ? rn : nttProductLength(rn)),
      m_wrapped(shape == NttShape::Wrapped), m_transforms(new Limb[3 * m_length])
{
    const bool thirds = (m_length & (m_length - 1)) != 0;
    const bool split = thirds && !m_wrapped;
    const size_t m = m_length / 3;
    std::unique_ptr<Limb[]> scratch(new Limb[twiddleScratch(split ? 4 * m : thirds ? m : m_length)]);
    for (int i = 0; i < 3; ++i) {
        const PrimeField& f = field(i);
        Limb* t = m_transforms.get() + i * m_length;
        if (thirds && m_wrapped) {
            const Twiddles tw(i, m, scratch.get());
            loadThirds(t, m, b, bn, thirdsTwist(i, m).get(), f);
            forwardThirds(t, m, tw.forward(), f);
        } else if (split) {
            const Twiddles tw(i, 4 * m, scratch.get());
            loadSplit(t, t + 2 * m, m, b, bn, tw.forward() + 4 * m, f);
            forward(t, 2 * m, tw.forward(), f);
            forward(t + 2 * m, m, tw.forward(), f);
        } else {
            const Twiddles tw(i, m_length, scratch.get());
            load(t, m_length, b, bn, f);
            forward(t, m_length, tw.forward(), f);
        }
    }
}

bool NttOperand::fits(size_t an) const noexcept
{
    return an >= 1 && (m_wrapped ? an <= m_length : nttProductLength(an + m_limbs) == m_length);
}

void NttOperand::multiply(Limb* r, const Limb* a, size_t an) const
{
    Limb carry[2];
    if (m_wrapped) {
        convolveAndRebuild(r, m_length, m_length, m_length, a, an, nullptr, 0, m_transforms.get(), true, carry);
        wrapCarry(r, m_length, carry);
        return;
    }
    const size_t rn = an + m_limbs;
    convolveAndRebuild(r, rn, m_length, rn - 1, a, an, nullptr, 0, m_transforms.get(), false, carry);
}

} // namespace detail
} // namespace math
} // namespace qv
