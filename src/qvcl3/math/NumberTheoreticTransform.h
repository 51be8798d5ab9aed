#ifndef QVCL3_MATH_NUMBERTHEORETICTRANSFORM_H
#define QVCL3_MATH_NUMBERTHEORETICTRANSFORM_H

// Multiplication through number-theoretic transforms: the limbs are
// convolved modulo three primes below 2^62 and the exact coefficients
// rebuilt by the Chinese remainder theorem. O(n log n); pays off above
// thresholds().nttMul limbs (docs/math.md).

#include "WideMath.h"

#include <cstddef>
#include <memory>

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

// The length n of the cheapest wrapped product (below) that holds a value
// of `limbs` limbs (n >= limbs): a power of two, or three quarters of one
// where that is enough, up to 12,288.
size_t nttWrappedLength(size_t limbs) noexcept;

// r (n limbs) = a * b mod (B^n - 1), the product wrapped around, from one
// transform of length n (a power of two, 2 <= n <= 2^25) or three of n / 3
// (n = 3 m, m a power of two); an, bn <= n, r distinct from a and b. Zero
// may come out as B^n - 1. Half the cost of the full product when only its
// low limbs are unknown.
void nttMultiplyWrapped(Limb* r, size_t n, const Limb* a, size_t an, const Limb* b, size_t bn);

enum class NttShape {
    Product, // the whole product, in nttProductLength(rn) points
    Wrapped  // the product modulo B^rn - 1, rn as nttMultiplyWrapped takes it
};

// One operand's transforms (modulo each prime), kept for many products
// with it: a radix conversion multiplies by the same power at every step
// of a level, and a third of each product's transforms is then saved.
class NttOperand {
public:
    // For products of about rn limbs in all (or wrapped modulo B^rn - 1);
    // b (bn >= 1 limbs) is copied into the transforms and not kept.
    NttOperand(const Limb* b, size_t bn, size_t rn, NttShape shape = NttShape::Product);
    NttOperand(const NttOperand&) = delete;
    NttOperand& operator=(const NttOperand&) = delete;

    // Whether a product with an operand of an limbs has the transforms'
    // length (wrapped: fits in it).
    bool fits(size_t an) const noexcept;
    bool wrapped() const noexcept { return m_wrapped; }
    // The transforms' length (wrapped: the n of B^n - 1).
    size_t length() const noexcept { return m_length; }
    // r = a * b, distinct from a, and fits(an) must hold: an + bn limbs, or
    // wrapped, as nttMultiplyWrapped gives it, the wrapped length's.
    void multiply(Limb* r, const Limb* a, size_t an) const;

private:
    size_t m_limbs;
    size_t m_length;
    bool m_wrapped;
    std::unique_ptr<Limb[]> m_transforms;
};

} // namespace detail
} // namespace math
} // namespace qv

#endif
