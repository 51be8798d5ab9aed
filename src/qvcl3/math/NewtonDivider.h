#ifndef QVCL3_MATH_NEWTONDIVIDER_H
#define QVCL3_MATH_NEWTONDIVIDER_H

// Division by a fixed divisor through an approximation of its reciprocal,
// computed once by Newton's iteration. Each quotient block then costs two
// products, so repeated divisions by the same number (radix conversion)
// and long quotients pay for the reciprocal many times over.

#include "Natural.h"

namespace qv {
namespace math {
namespace detail {

// For d of k limbs with its top bit set: X <= B^(2k) / (d + 1), short of it
// by a few units at most (B = 2^64).
Mag approximateReciprocal(const Mag& d);

class NewtonDivider {
public:
    // divisor must not be zero. precision (in limbs, at least 2) bounds the
    // quotient blocks: precision - 1 limbs each, or the divisor's length
    // when precision reaches it.
    NewtonDivider(const Mag& divisor, size_t precision);

    // q = a / divisor, r = a % divisor; either output may be null.
    void divMod(const Mag& a, Mag* q, Mag* r) const;

private:
    // z < 2 d B^m, m at most the block size: one quotient block.
    void divBlock(const Mag& z, size_t m, Mag& q, Mag& r) const;

    Mag m_divisor;      // shifted left so that its top bit is set
    unsigned m_shift;   // by this many bits
    size_t m_precision; // limbs of the divisor the reciprocal stands for
    Mag m_inverse;      // about B^(2k) / (top k limbs + 1), never above it
};

} // namespace detail
} // namespace math
} // namespace qv

#endif
