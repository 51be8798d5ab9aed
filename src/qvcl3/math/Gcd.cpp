#include "Integer.h"

#include "MathError.h"

#include <utility>

namespace qv {
namespace math {
namespace detail {

namespace {

// One Lehmer step: the cofactor matrix (a b; c d) that the Euclidean
// algorithm on the leading 62 bits of x and y proves valid for x and y
// themselves (Knuth's Algorithm L). b == 0 means no step could be proved.
struct Cofactors {
    int64_t a = 1, b = 0, c = 0, d = 1;
};

Cofactors lehmerStep(const Mag& x, const Mag& y) noexcept
{
    const uint64_t bits = magBitLength(x);
    const uint64_t shift = bits - 62;
    auto top = [&](const Mag& m) {
        size_t limb = static_cast<size_t>(shift / 64);
        unsigned s = static_cast<unsigned>(shift % 64);
        uint64_t v = limb < m.size() ? m[limb] >> s : 0;
        if (s && limb + 1 < m.size())
            v |= m[limb + 1] << (64 - s);
        return static_cast<int64_t>(v & ((uint64_t(1) << 62) - 1));
    };
    int64_t u = top(x), v = top(y);
    Cofactors m;
    for (;;) {
        int64_t den1 = v + m.c, den2 = v + m.d;
        if (den1 <= 0 || den2 <= 0)
            break;
        int64_t q = (u + m.a) / den1;
        if (q != (u + m.b) / den2)
            break;
        int64_t t = m.a - q * m.c;
        m.a = m.c;
        m.c = t;
        t = m.b - q * m.d;
        m.b = m.d;
        m.d = t;
        t = u - q * v;
        u = v;
        v = t;
    }
    return m;
}

// p * x + q * y, known to be non-negative (so p and q are not both negative).
Mag combine(const Mag& x, int64_t p, const Mag& y, int64_t q)
{
    if (p < 0) {
        std::swap(p, q);
        return combine(y, p, x, q);
    }
    const size_t n = std::max(x.size(), y.size()) + 2;
    Mag r(n);
    r[x.size()] = mul1(r.data(), x.data(), x.size(), static_cast<uint64_t>(p));
    Limb* tail = r.data() + y.size();
    const size_t tailLength = n - y.size();
    if (q >= 0)
        add1(tail, tail, tailLength, addMul1(r.data(), y.data(), y.size(), static_cast<uint64_t>(q)));
    else
        sub1(tail, tail, tailLength, subMul1(r.data(), y.data(), y.size(), 0 - static_cast<uint64_t>(q)));
    trim(r);
    return r;
}

Int combineSigned(const Int& x, int64_t p, const Int& y, int64_t q)
{
    return intAdd(intMulSmall(x, p), intMulSmall(y, q));
}

uint64_t gcdWord(uint64_t a, uint64_t b) noexcept
{
    while (b) {
        uint64_t t = a % b;
        a = b;
        b = t;
    }
    return a;
}

} // namespace

Mag magGcd(const Mag& a0, const Mag& b0)
{
    Mag a = a0, b = b0;
    if (magCompare(a, b) < 0)
        std::swap(a, b);
    while (b.size() > 1) {
        Cofactors m;
        if (a.size() == b.size())
            m = lehmerStep(a, b);
        if (m.b == 0) {
            Mag r;
            magDivMod(a, b, nullptr, &r);
            a = std::move(b);
            b = std::move(r);
        } else {
            Mag na = combine(a, m.a, b, m.b);
            Mag nb = combine(a, m.c, b, m.d);
            a = std::move(na);
            b = std::move(nb);
        }
    }
    if (b.empty())
        return a;
    return magFromU64(gcdWord(b[0], magDivModSmall(a, b[0], nullptr)));
}

Int intModInverse(IntRef a, IntRef m)
{
    if (m.sign <= 0)
        raise(MathError::NonPositiveModulus);
    if (m.mag.size() == 1 && m.mag[0] == 1)
        return Int();
    // Invariants: x == sx * a (mod m), y == sy * a (mod m).
    Mag x = m.mag;
    Mag y = intMod(a, m).mag;
    Int sx, sy = intFromInt64(1);
    while (!y.empty()) {
        Cofactors c;
        if (x.size() == y.size() && x.size() > 1)
            c = lehmerStep(x, y);
        if (c.b == 0) {
            Mag q, r;
            magDivMod(x, y, &q, &r);
            Int nsy = intSub(sx, intMul(Int(1, std::move(q)), sy));
            x = std::move(y);
            y = std::move(r);
            sx = std::move(sy);
            sy = std::move(nsy);
        } else {
            Mag nx = combine(x, c.a, y, c.b);
            Mag ny = combine(x, c.c, y, c.d);
            Int nsx = combineSigned(sx, c.a, sy, c.b);
            Int nsy = combineSigned(sx, c.c, sy, c.d);
            x = std::move(nx);
            y = std::move(ny);
            sx = std::move(nsx);
            sy = std::move(nsy);
        }
    }
    if (!(x.size() == 1 && x[0] == 1))
        raise(MathError::NotInvertible);
    return intMod(sx, m);
}

} // namespace detail
} // namespace math
} // namespace qv
