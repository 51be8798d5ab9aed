#ifndef QVCL3_MATH_MONTGOMERY_H
#define QVCL3_MATH_MONTGOMERY_H

#include "Natural.h"

namespace qv {
namespace math {
namespace detail {

// Multiplication modulo an odd m of n limbs in Montgomery form: x stands for
// x * B^n mod m, and a product is reduced by n multiply-adds of m instead of
// a division. Elements are vectors of exactly n limbs holding a value below m.
class Montgomery {
public:
    // m odd and greater than 1.
    explicit Montgomery(const Mag& m);

    Mag one() const;
    // x < m, normalised; the element standing for x.
    Mag toForm(const Mag& x) const;
    // The normalised value an element stands for.
    Mag fromForm(const Mag& x) const;
    // r = a * b (r may be a or b); squares when a and b are the same vector.
    void mul(Mag& r, const Mag& a, const Mag& b);

private:
    // r (n limbs) = t * B^-n mod m for t (2n limbs, destroyed) below m * B^n.
    void reduce(Limb* r, Limb* t) const noexcept;

    Mag m_modulus;
    // -m^-1 mod B.
    Limb m_inverse;
    Mag m_product;
};

} // namespace detail
} // namespace math
} // namespace qv

#endif
