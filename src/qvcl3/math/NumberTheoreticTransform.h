#ifndef QVCL3_MATH_NUMBERTHEORETICTRANSFORM_H
#define QVCL3_MATH_NUMBERTHEORETICTRANSFORM_H

// Multiplication through number-theoretic transforms: the limbs are
// convolved modulo three primes below 2^62 and the exact coefficients
// rebuilt by the Chinese remainder theorem. O(n log n); pays off above
// thresholds().nttMul limbs (docs/math.md).

#include "WideMath.h"

#include <cstddef>

namespace qv {
namespace math {
namespace detail {

// The transform length for a product of rn limbs: the smallest power of two
// that holds its rn - 1 coefficients.
size_t nttLength(size_t rn) noexcept;

// The number of points a product of rn limbs takes: nttLength(rn), or three
// quarters of it when that holds the coefficients (one transform of half
// the length and one of a quarter).
size_t nttProductLength(size_t rn) noexcept;

// r (an + bn limbs, distinct from a and b) = a * b; squares when a and b are
// the same array. an, bn >= 1 and an + bn <= 2^26.
void nttMultiply(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn);

// r (n limbs) = a * b mod (B^n - 1), the product wrapped around, from one
// transform of length n (a power of two, 2 <= n <= 2^25); an, bn <= n, r
// distinct from a and b. Zero may come out as B^n - 1. Half the cost of the
// full product when only its low limbs are unknown.
void nttMultiplyWrapped(Limb* r, size_t n, const Limb* a, size_t an, const Limb* b, size_t bn);

} // namespace detail
} // namespace math
} // namespace qv

#endif
