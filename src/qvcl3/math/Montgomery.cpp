#include "Montgomery.h"

#include <algorithm>

namespace qv {
namespace math {
namespace detail {

Montgomery::Montgomery(const Mag& m) : m_modulus(m), m_inverse(0), m_product(allocMag(2 * m.size()))
{
    // Newton's iteration doubles the correct low bits of m^-1 each step;
    // m * m = 1 mod 8 gives the first three.
    Limb x = m[0];
    for (int i = 0; i < 5; ++i)
        x *= 2 - m[0] * x;
    m_inverse = 0 - x;
}

Mag Montgomery::one() const
{
    return toForm(magFromU64(1));
}

Mag Montgomery::toForm(const Mag& x) const
{
    const size_t n = m_modulus.size();
    Mag r;
    magDivMod(magShiftLeft(x, 64 * uint64_t(n)), m_modulus, nullptr, &r);
    r.resize(n);
    return r;
}

Mag Montgomery::fromForm(const Mag& x) const
{
    const size_t n = m_modulus.size();
    Mag t = allocMag(2 * n);
    std::copy(x.begin(), x.end(), t.begin());
    Mag r = allocMag(n);
    reduce(r.data(), t.data());
    trim(r);
    return r;
}

void Montgomery::mul(Mag& r, const Mag& a, const Mag& b)
{
    const size_t n = m_modulus.size();
    multiply(m_product.data(), a.data(), n, b.data(), n);
    reduce(r.data(), m_product.data());
}

void Montgomery::reduce(Limb* r, Limb* t) const noexcept
{
    const size_t n = m_modulus.size();
    const Limb* m = m_modulus.data();
    // Each step clears limb i of t; its carry is parked in that limb and all
    // of them are added at once, which keeps carries out of the inner loop.
    for (size_t i = 0; i < n; ++i)
        t[i] = addMul1(t + i, m, n, t[i] * m_inverse);
    // t < m * B^n keeps the sum below 2m: one subtraction at most.
    Limb carry = addN(r, t + n, t, n);
    if (carry || compareN(r, m, n) >= 0)
        subN(r, r, m, n);
}

} // namespace detail
} // namespace math
} // namespace qv
