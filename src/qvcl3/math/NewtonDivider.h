#ifndef QVCL3_MATH_NEWTONDIVIDER_H
#define QVCL3_MATH_NEWTONDIVIDER_H

// Division by a fixed divisor through an approximation of its reciprocal,
// computed once by Newton's iteration. Each quotient block then costs two
// products, so repeated divisions by the same number (radix conversion)
// and long quotients pay for the reciprocal many times over.

#include "Natural.h"

#include <memory>

namespace qv {
namespace math {
namespace detail {

// For d of k limbs with its top bit set: X <= B^(2k) / (d + 1), short of it
// by a few units at most (B = 2^64).
Mag approximateReciprocal(const Mag& d);

class NttOperand;

class NewtonDivider {
public:
    // divisor must not be zero. precision (in limbs, at least 2) bounds the
    // quotient blocks: precision - 1 limbs each, or the divisor's length
    // when precision reaches it.
    NewtonDivider(const Mag& divisor, size_t precision);
    ~NewtonDivider();
    NewtonDivider(const NewtonDivider&) = delete;
    NewtonDivider& operator=(const NewtonDivider&) = delete;

    // The number of limbs in a full quotient block.
    size_t blockLimbs() const noexcept;

    // Keeps the transforms of the reciprocal and of the divisor for the two
    // products every full block repeats, so that each further block computes
    // a third fewer transforms. Pays off from two full blocks on, counted
    // over all the dividends this divider will see. Only operands of at
    // least fromLimbs limbs get one: below, the plain product is faster
    // even against a kept transform.
    void keepTransforms(size_t fromLimbs);

    // q = a / divisor, r = a % divisor; either output may be null.
    void divMod(const Mag& a, Mag* q, Mag* r) const;

private:
    // z < 2 d B^m, m at most the block size: one quotient block.
    void divBlock(const Mag& z, size_t m, Mag& q, Mag& r) const;
    // A quotient block, never above the true one and short of it by a few
    // units at most.
    Mag estimateQuotient(const Mag& z, size_t m) const;

    Mag m_divisor;      // shifted left so that its top bit is set
    unsigned m_shift;   // by this many bits
    size_t m_precision; // limbs of the divisor the reciprocal stands for
    Mag m_inverse;      // about B^(2k) / (top k limbs + 1), never above it
    // Set by keepTransforms() where the transform is used: the whole
    // reciprocal (the estimates), the divisor (each block's remainder,
    // wrapped, or as the full product where that is the shorter one).
    std::unique_ptr<NttOperand> m_inverseTransform;
    std::unique_ptr<NttOperand> m_divisorTransform;
};

} // namespace detail
} // namespace math
} // namespace qv

#endif
