#include "Limbs.h"

namespace qv {
namespace math {
namespace detail {

int compareN(const Limb* a, const Limb* b, size_t n) noexcept
{
    while (n-- > 0) {
        if (a[n] != b[n])
            return a[n] < b[n] ? -1 : 1;
    }
    return 0;
}

int compare(const Limb* a, size_t an, const Limb* b, size_t bn) noexcept
{
    if (an != bn)
        return an < bn ? -1 : 1;
    return compareN(a, b, an);
}

size_t normalisedLength(const Limb* a, size_t n) noexcept
{
    while (n > 0 && a[n - 1] == 0)
        --n;
    return n;
}

Limb addN(Limb* r, const Limb* a, const Limb* b, size_t n) noexcept
{
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i)
        r[i] = addCarry(a[i], b[i], carry);
    return carry;
}

Limb add1(Limb* r, const Limb* a, size_t n, Limb b) noexcept
{
    size_t i = 0;
    for (; i < n && b; ++i) {
        Limb t = a[i] + b;
        b = t < b;
        r[i] = t;
    }
    if (r != a) {
        for (; i < n; ++i)
            r[i] = a[i];
    }
    return b;
}

Limb add(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept
{
    Limb carry = addN(r, a, b, bn);
    return add1(r + bn, a + bn, an - bn, carry);
}

Limb subN(Limb* r, const Limb* a, const Limb* b, size_t n) noexcept
{
    Limb borrow = 0;
    for (size_t i = 0; i < n; ++i)
        r[i] = subBorrow(a[i], b[i], borrow);
    return borrow;
}

Limb sub1(Limb* r, const Limb* a, size_t n, Limb b) noexcept
{
    size_t i = 0;
    for (; i < n && b; ++i) {
        Limb x = a[i];
        r[i] = x - b;
        b = x < b;
    }
    if (r != a) {
        for (; i < n; ++i)
            r[i] = a[i];
    }
    return b;
}

Limb sub(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept
{
    Limb borrow = subN(r, a, b, bn);
    return sub1(r + bn, a + bn, an - bn, borrow);
}

Limb mul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept
{
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i)
        r[i] = mulAdd2(a[i], b, carry, 0, carry);
    return carry;
}

Limb addMul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept
{
    Limb carry = 0;
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        r[i] = mulAdd2(a[i], b, r[i], carry, carry);
        r[i + 1] = mulAdd2(a[i + 1], b, r[i + 1], carry, carry);
        r[i + 2] = mulAdd2(a[i + 2], b, r[i + 2], carry, carry);
        r[i + 3] = mulAdd2(a[i + 3], b, r[i + 3], carry, carry);
    }
    for (; i < n; ++i)
        r[i] = mulAdd2(a[i], b, r[i], carry, carry);
    return carry;
}

namespace {

inline Limb subMulStep(Limb* r, const Limb* a, size_t i, Limb b, Limb borrow) noexcept
{
    Limb hi;
    const Limb lo = mulAdd1(a[i], b, borrow, hi);
    const Limb x = r[i];
    r[i] = x - lo;
    return hi + (x < lo);
}

} // namespace

Limb subMul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept
{
    // Unrolled as addMul1 is: this is the inner loop of schoolbook division.
    Limb borrow = 0;
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        borrow = subMulStep(r, a, i, b, borrow);
        borrow = subMulStep(r, a, i + 1, b, borrow);
        borrow = subMulStep(r, a, i + 2, b, borrow);
        borrow = subMulStep(r, a, i + 3, b, borrow);
    }
    for (; i < n; ++i)
        borrow = subMulStep(r, a, i, b, borrow);
    return borrow;
}

Limb shiftLeft(Limb* r, const Limb* a, size_t n, unsigned s) noexcept
{
    if (n == 0)
        return 0;
    Limb out = a[n - 1] >> (64 - s);
    for (size_t i = n - 1; i > 0; --i)
        r[i] = (a[i] << s) | (a[i - 1] >> (64 - s));
    r[0] = a[0] << s;
    return out;
}

Limb shiftRight(Limb* r, const Limb* a, size_t n, unsigned s) noexcept
{
    if (n == 0)
        return 0;
    Limb out = a[0] << (64 - s);
    for (size_t i = 0; i + 1 < n; ++i)
        r[i] = (a[i] >> s) | (a[i + 1] << (64 - s));
    r[n - 1] = a[n - 1] >> s;
    return out;
}

Limb divRem1(Limb* q, const Limb* a, size_t n, Limb d) noexcept
{
    if (n == 0)
        return 0;
    unsigned s = static_cast<unsigned>(leadingZeros(d));
    Reciprocal rec(d << s);
    Limb r = 0;
    if (s == 0) {
        for (size_t i = n; i-- > 0;) {
            Limb qi = rec.divide(r, a[i], r);
            if (q)
                q[i] = qi;
        }
        return r;
    }
    r = a[n - 1] >> (64 - s);
    for (size_t i = n; i-- > 0;) {
        Limb next = (a[i] << s) | (i ? a[i - 1] >> (64 - s) : 0);
        Limb qi = rec.divide(r, next, r);
        if (q)
            q[i] = qi;
    }
    return r >> s;
}

void divExact1(Limb* q, const Limb* a, size_t n, Limb d) noexcept
{
    // Inverse of d modulo 2^64 by Newton's iteration; each step doubles the
    // number of correct low bits, starting from 3 (d * d == 1 mod 8).
    Limb inv = d;
    for (int i = 0; i < 5; ++i)
        inv *= 2 - d * inv;
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
        Limb x = a[i];
        Limb t = x - carry;
        Limb borrow = x < carry;
        Limb qi = t * inv;
        q[i] = qi;
        Limb hi;
        mulWide(qi, d, hi);
        carry = hi + borrow;
    }
}

Limb addMul2(Limb* r, const Limb* a, size_t n, const Limb* b) noexcept
{
    // Two carry chains, one per multiplier limb: each limb of r is loaded
    // and stored once for both rows, which is what the schoolbook product
    // spends most of its time on with one row per pass.
    const Limb b0 = b[0], b1 = b[1];
    Limb c0, c1 = 0;
    r[0] = mulAdd2(a[0], b0, r[0], 0, c0);
    size_t i = 1;
    for (; i + 2 <= n; i += 2) {
        Limb lo = mulAdd2(a[i], b0, r[i], c0, c0);
        r[i] = mulAdd2(a[i - 1], b1, lo, c1, c1);
        lo = mulAdd2(a[i + 1], b0, r[i + 1], c0, c0);
        r[i + 1] = mulAdd2(a[i], b1, lo, c1, c1);
    }
    for (; i < n; ++i) {
        const Limb lo = mulAdd2(a[i], b0, r[i], c0, c0);
        r[i] = mulAdd2(a[i - 1], b1, lo, c1, c1);
    }
    r[n] = mulAdd2(a[n - 1], b1, c0, c1, c1);
    return c1;
}

void mulBasecase(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept
{
    size_t j = 1;
    r[an] = mul1(r, a, an, b[0]);
    if (bn % 2 == 0) {
        r[an + 1] = addMul1(r + 1, a, an, b[1]);
        j = 2;
    }
    for (; j < bn; j += 2)
        r[an + j + 1] = addMul2(r + j, a, an, b + j);
}

void sqrBasecase(Limb* r, const Limb* a, size_t n) noexcept
{
    // Each cross product a[i] * a[j] (i < j) once, doubled, plus the squares.
    r[0] = 0;
    r[2 * n - 1] = 0;
    r[n] = mul1(r + 1, a + 1, n - 1, a[0]);
    // Rows i and i + 1 in one pass of the two-row kernel: it adds a[i] a[j]
    // and a[i + 1] a[j] for j > i + 1, which leaves a[i] a[i + 1] to add on
    // its own.
    size_t i = 1;
    for (; i + 2 < n; i += 2) {
        r[n + i + 1] = addMul2(r + 2 * i + 2, a + i + 2, n - i - 2, a + i);
        Limb pair[2];
        pair[0] = mulWide(a[i], a[i + 1], pair[1]);
        add(r + 2 * i + 1, r + 2 * i + 1, n - i + 1, pair, 2);
    }
    if (i + 1 < n)
        r[n + i] = addMul1(r + 2 * i + 1, a + i + 1, n - i - 1, a[i]);
    shiftLeft(r, r, 2 * n, 1);
    Limb carry = 0;
    for (size_t i = 0; i < n; ++i) {
        Limb hi;
        Limb lo = mulWide(a[i], a[i], hi);
        Limb s = r[2 * i] + lo;
        Limb c = s < lo;
        Limb t = s + carry;
        c += t < s;
        r[2 * i] = t;
        s = r[2 * i + 1] + hi;
        carry = s < hi;
        t = s + c;
        carry += t < s;
        r[2 * i + 1] = t;
    }
}

void divBasecase(Limb* q, Limb* u, size_t un, const Limb* v, size_t vn)
{
    const Limb v1 = v[vn - 1], v0 = v[vn - 2];
    const Reciprocal rec(v1);
    for (size_t j = un - vn; j-- > 0;) {
        Limb n2 = u[j + vn], n1 = u[j + vn - 1], n0 = u[j + vn - 2];
        Limb qhat, rhat;
        bool rhatOverflow = false;
        if (n2 == v1) {
            qhat = ~Limb(0);
            rhat = n1 + v1;
            rhatOverflow = rhat < n1;
        } else {
            qhat = rec.divide(n2, n1, rhat);
        }
        if (!rhatOverflow) {
            // Knuth's test: qhat * v0 > rhat * B + n0 means qhat is too big.
            Limb ph;
            Limb pl = mulWide(qhat, v0, ph);
            while (ph > rhat || (ph == rhat && pl > n0)) {
                --qhat;
                Limb old = rhat;
                rhat += v1;
                if (rhat < old)
                    break;
                ph -= pl < v0;
                pl -= v0;
            }
        }
        Limb borrow = subMul1(u + j, v, vn, qhat);
        u[j + vn] = n2 - borrow;
        if (borrow > n2) {
            --qhat;
            u[j + vn] += addN(u + j, u + j, v, vn);
        }
        q[j] = qhat;
    }
}

} // namespace detail
} // namespace math
} // namespace qv
