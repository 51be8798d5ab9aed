#include "NewtonDivider.h"

#include "NumberTheoreticTransform.h"

#include <algorithm>

namespace qv {
namespace math {
namespace detail {

namespace {

// Below this the reciprocal is one schoolbook division.
const size_t RECIPROCAL_BASECASE_LIMBS = 8;

Mag powerOfLimbBase(size_t limbs)
{
    Mag p = allocMag(limbs + 1);
    p[limbs] = 1;
    return p;
}

// x mod (B^n - 1): the n-limb pieces of x added up, carries going around.
// B^n - 1 itself stands for zero and is left so.
Mag foldedModBaseMinusOne(const Mag& x, size_t n)
{
    Mag r = allocMag(n);
    for (size_t i = 0; i < x.size(); i += n) {
        const size_t len = std::min(n, x.size() - i);
        Limb carry = add(r.data(), r.data(), n, x.data() + i, len);
        while (carry)
            carry = add1(r.data(), r.data(), n, carry);
    }
    return r;
}

// (x - y) mod (B^n - 1) for x, y of n limbs, normalised, below B^n - 1.
Mag subtractModBaseMinusOne(Mag x, const Mag& y, size_t n)
{
    if (sub(x.data(), x.data(), n, y.data(), n))
        sub1(x.data(), x.data(), n, 1); // went round: add B^n - 1
    trim(x);
    return x;
}

// The length of a wrapped product a * b mod (B^n - 1) that determines a
// value known to be below B^limbs, or 0 when the full product is as cheap:
// when an operand is short, or when the full product takes fewer points.
// Only about half the points of a full product are needed, so the wrapped
// one beats Toom from a sixth of the plain transform's threshold on (n x n
// limbs, Toom against wrapped: 127: 9.1 against 19.4 us; 253: 23.1
// against 19.9; 505: 67.0 against 43.0; 1,010: 193.7 against 89.4), and
// at the same number of points it still beats a full product that would
// go through Toom (2,603 x 1,304 limbs, the top Newton step of a
// 2,602-limb reciprocal: 395 us against 573).
size_t wrappedLength(const Mag& a, const Mag& b, size_t limbs) noexcept
{
    if (std::min(a.size(), b.size()) < thresholds().nttMul / 6)
        return 0;
    const size_t n = nttWrappedLength(limbs + 1);
    return n <= nttProductLength(a.size() + b.size()) && a.size() <= n && b.size() <= n ? n : 0;
}

// result = x - a * b for a difference expected below B^(n-1), from
// `product`, a * b wrapped modulo B^n - 1 (n limbs). False when the result
// is out of that range, as a negative difference would be (the caller then
// takes the full product).
bool differenceFromWrapped(const Mag& x, Mag product, size_t n, Mag& result)
{
    Mag folded = foldedModBaseMinusOne(x, n);
    // Both below B^n - 1 before subtracting: fold an all-ones value to 0.
    for (Mag* v : {&product, &folded})
        if (std::all_of(v->begin(), v->end(), [](Limb l) { return l == ~Limb(0); }))
            std::fill(v->begin(), v->end(), Limb(0));
    result = subtractModBaseMinusOne(std::move(folded), product, n);
    return result.size() < n;
}

Mag wrappedProduct(const Mag& a, const Mag& b, size_t n)
{
    Mag product = allocMag(n);
    nttMultiplyWrapped(product.data(), n, a.data(), a.size(), b.data(), b.size());
    return product;
}

} // namespace

// Staying below the true value keeps every quotient estimate below the true
// quotient, so corrections only ever add.
//
// One Newton step doubles the correct limbs: with X_h for the top h limbs,
// X = X_h B^(k-h) + X_h (B^(k+h) - (d + 1) X_h) / B^(2h). The error term is
// the square of the previous one; h = ceil(k / 2) + 1 leaves two limbs of
// margin for the truncations, each of which only lowers the result.
Mag approximateReciprocal(const Mag& d)
{
    const size_t k = d.size();
    if (k <= RECIPROCAL_BASECASE_LIMBS) {
        Mag x;
        magDivModClassic(powerOfLimbBase(2 * k), magAddSmall(d, 1), &x, nullptr);
        return x;
    }
    const size_t h = (k + 1) / 2 + 1;
    const Mag xh = approximateReciprocal(magHighLimbs(d, k - h));
    const Mag d1 = magAddSmall(d, 1);
    // (d + 1) xh <= B^(k+h) because xh is not above the reciprocal of d's
    // top limbs plus one; the residue is small, at most k + 1 limbs, so a
    // product wrapped around B^n - 1 with n above that gives it.
    Mag residue;
    const size_t wrap = wrappedLength(d1, xh, k + 1);
    if (!wrap || !differenceFromWrapped(powerOfLimbBase(k + h), wrappedProduct(d1, xh, wrap), wrap, residue) ||
        residue.size() > k + 1) {
        const Mag p = magMul(d1, xh);
        residue.clear();
        if (p.size() <= k + h)
            residue = magSub(powerOfLimbBase(k + h), p);
    }
    const size_t keep = k - h + 2;
    const size_t u = xh.size() > keep ? xh.size() - keep : 0;
    size_t s = residue.size() > keep ? residue.size() - keep : 0;
    s = std::min(s, 2 * h - u);
    const Mag correction = magHighLimbs(magMul(magHighLimbs(residue, s), magHighLimbs(xh, u)), 2 * h - s - u);
    return magAdd(magConcat(xh, Mag(), k - h), correction);
}

NewtonDivider::NewtonDivider(const Mag& divisor, size_t precision)
    : m_shift(static_cast<unsigned>(leadingZeros(divisor.back()))),
      m_precision(std::min(std::max(precision, size_t(2)), divisor.size()))
{
    m_divisor = magShiftLeft(divisor, m_shift);
    m_inverse = approximateReciprocal(magHighLimbs(m_divisor, m_divisor.size() - m_precision));
}

NewtonDivider::~NewtonDivider() = default;

size_t NewtonDivider::blockLimbs() const noexcept
{
    return m_precision == m_divisor.size() ? m_precision : m_precision - 1;
}

void NewtonDivider::keepTransforms(size_t fromLimbs)
{
    const size_t n = m_divisor.size();
    const size_t block = blockLimbs();
    const size_t threshold = std::max(fromLimbs, size_t(1));
    // A full block's estimate multiplies the top block + 2 limbs of its
    // dividend by the whole reciprocal.
    if (!m_inverseTransform && std::min(m_inverse.size(), block) >= threshold)
        m_inverseTransform.reset(new NttOperand(m_inverse.data(), m_inverse.size(), m_inverse.size() + block + 2));
    // The remainder: with the divisor's transform kept, a full product costs
    // two transforms of the product's length and a wrapped one two of a
    // length above the divisor's (three without). Short blocks under a long
    // divisor favour the first; otherwise the wrapped one is kept.
    if (m_divisorTransform || std::min(n, block) < threshold)
        return;
    const size_t full = nttProductLength(n + block + 1);
    const size_t wrapped = nttWrappedLength(n + 2);
    if (wrapped <= full)
        m_divisorTransform.reset(new NttOperand(m_divisor.data(), n, wrapped, NttShape::Wrapped));
    else if (2 * full < 3 * wrapped)
        m_divisorTransform.reset(new NttOperand(m_divisor.data(), n, n + block + 1));
}

Mag NewtonDivider::estimateQuotient(const Mag& z, size_t m) const
{
    const size_t n = m_divisor.size();
    const Mag zHigh = magHighLimbs(z, n - 1);
    // A block shorter than a full one needs fewer limbs of the reciprocal,
    // but the whole one only makes the estimate closer; with its transform
    // kept that product is the cheaper one wherever the lengths fit.
    if (m_inverseTransform && m_inverseTransform->fits(zHigh.size())) {
        Mag product = allocMag(zHigh.size() + m_inverse.size());
        m_inverseTransform->multiply(product.data(), zHigh.data(), zHigh.size());
        trim(product);
        return magHighLimbs(product, m_precision + 1);
    }
    // q ~ floor(z / B^(n-1)) X / B^(n+1), with X the reciprocal taken to n
    // limbs. Dropping the low limbs of z and of X makes the estimate short
    // by at most a few units: X needs only m + 2 significant limbs.
    size_t cut = m + 1 < n ? n - m - 1 : 0;
    cut = std::max(cut, n - m_precision);
    return magHighLimbs(magMul(zHigh, magHighLimbs(m_inverse, cut - (n - m_precision))), n + 1 - cut);
}

void NewtonDivider::divBlock(const Mag& z, size_t m, Mag& q, Mag& r) const
{
    const size_t n = m_divisor.size();
    q = estimateQuotient(z, m);
    Mag product;
    const bool kept = m_divisorTransform && m_divisorTransform->fits(q.size());
    if (kept && !m_divisorTransform->wrapped()) {
        product = allocMag(q.size() + n);
        m_divisorTransform->multiply(product.data(), q.data(), q.size());
        trim(product);
    } else {
        // The remainder is below a few times the divisor, so where the
        // transform is used only the product modulo B^w - 1 (w > n + 1) is
        // needed.
        size_t wrap = wrappedLength(q, m_divisor, n + 1);
        Mag wrapped;
        if (kept) {
            wrap = m_divisorTransform->length();
            wrapped = allocMag(wrap);
            m_divisorTransform->multiply(wrapped.data(), q.data(), q.size());
        } else if (wrap) {
            wrapped = wrappedProduct(q, m_divisor, wrap);
        }
        if (wrap && differenceFromWrapped(z, std::move(wrapped), wrap, r) && r.size() <= n + 1) {
            while (magCompare(r, m_divisor) >= 0) {
                r = magSub(r, m_divisor);
                q = magAddSmall(q, 1);
            }
            return;
        }
        product = magMul(q, m_divisor);
    }
    // The estimate never exceeds the quotient; this loop only guards that.
    while (magCompare(product, z) > 0) {
        product = magSub(product, m_divisor);
        q = magSubSmall(q, 1);
    }
    r = magSub(z, product);
    while (magCompare(r, m_divisor) >= 0) {
        r = magSub(r, m_divisor);
        q = magAddSmall(q, 1);
    }
}

void NewtonDivider::divMod(const Mag& a, Mag* q, Mag* r) const
{
    const Mag as = magShiftLeft(a, m_shift);
    const size_t n = m_divisor.size();
    if (magCompare(as, m_divisor) < 0) {
        if (r)
            *r = a;
        if (q)
            q->clear();
        return;
    }
    // The dividend's limbs below its top n are taken in blocks, the first
    // one shorter when they do not divide evenly; each block's remainder
    // (below the divisor) heads the next one.
    const size_t block = m_precision == n ? n : m_precision - 1;
    const size_t low = as.size() - n;
    size_t first = low % block;
    if (first == 0 && low > 0)
        first = block;
    size_t position = low - first;
    Mag quotient = allocMag(low + 1);
    Mag blockQuotient, remainder;
    divBlock(magHighLimbs(as, position), first, blockQuotient, remainder);
    std::copy(blockQuotient.begin(), blockQuotient.end(), quotient.begin() + static_cast<ptrdiff_t>(position));
    while (position > 0) {
        position -= block;
        const Mag z = magConcat(remainder, magLowLimbs(magHighLimbs(as, position), block), block);
        divBlock(z, block, blockQuotient, remainder);
        std::copy(blockQuotient.begin(), blockQuotient.end(), quotient.begin() + static_cast<ptrdiff_t>(position));
    }
    if (q) {
        trim(quotient);
        *q = std::move(quotient);
    }
    if (r)
        *r = magShiftRight(remainder, m_shift);
}

} // namespace detail
} // namespace math
} // namespace qv
