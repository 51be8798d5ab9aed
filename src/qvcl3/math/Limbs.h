#ifndef QVCL3_MATH_LIMBS_H
#define QVCL3_MATH_LIMBS_H

// Kernels over little-endian limb arrays. Lengths are in limbs; unless said
// otherwise an output may be the same array as an input but must not
// partially overlap one.

#include "WideMath.h"

#include <cstddef>

namespace qv {
namespace math {
namespace detail {

// Sizes (in limbs) at which the multiplication and division algorithms take
// over from each other; see docs/math.md for how they were measured.
struct Thresholds {
    size_t karatsubaMul;
    size_t karatsubaSqr;
    size_t toom3Mul;
    size_t toom3Sqr;
    size_t recursiveDivision;
    size_t nttMul;
    size_t nttSqr;
    // Divisor and quotient both at least this long: division through an
    // approximate reciprocal (Newton's iteration) instead of Burnikel-Ziegler.
    size_t newtonDivision;
    // Toom-3 -> Toom-4; last so that the fields above keep their places.
    size_t toom4Mul;
    size_t toom4Sqr;
    // Shorter operand at least this long but under nttMul: the transform
    // when its cost, from the points the product needs, is below Toom's.
    size_t nttUnbalancedMul;
};

// The active thresholds; tests lower them to drive the recursive paths with
// small operands.
Thresholds& thresholds() noexcept;
Thresholds defaultThresholds() noexcept;

// Whether a product of an x bn limbs (an >= bn) is expected to be faster
// through the transform than through Toom when the transform starts at
// `threshold` limbs for balanced products.
bool transformBeatsToom(size_t an, size_t bn, size_t threshold) noexcept;

int compareN(const Limb* a, const Limb* b, size_t n) noexcept;
// Both normalised (no high zero limbs).
int compare(const Limb* a, size_t an, const Limb* b, size_t bn) noexcept;
size_t normalisedLength(const Limb* a, size_t n) noexcept;

Limb addN(Limb* r, const Limb* a, const Limb* b, size_t n) noexcept;
// an >= bn; r has an limbs; returns the carry.
Limb add(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept;
Limb add1(Limb* r, const Limb* a, size_t n, Limb b) noexcept;
Limb subN(Limb* r, const Limb* a, const Limb* b, size_t n) noexcept;
// an >= bn; r has an limbs; returns the borrow.
Limb sub(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept;
Limb sub1(Limb* r, const Limb* a, size_t n, Limb b) noexcept;

// r = a * b, returns the high limb.
Limb mul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept;
// r += a * b, returns the carry limb.
Limb addMul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept;
// r[0, n] = r[0, n) + a * (b[0] + b[1] B) for n >= 1: r[n] is written, not
// added to; returns the limb above it.
Limb addMul2(Limb* r, const Limb* a, size_t n, const Limb* b) noexcept;
// r -= a * b, returns the borrow limb.
Limb subMul1(Limb* r, const Limb* a, size_t n, Limb b) noexcept;

// 0 < s < 64. Return the bits shifted out, in the position they left.
Limb shiftLeft(Limb* r, const Limb* a, size_t n, unsigned s) noexcept;
Limb shiftRight(Limb* r, const Limb* a, size_t n, unsigned s) noexcept;

// Remainder of a by d (d != 0); q may be null or a (in place).
Limb divRem1(Limb* q, const Limb* a, size_t n, Limb d) noexcept;
// a / d where d divides a exactly and d is odd.
void divExact1(Limb* q, const Limb* a, size_t n, Limb d) noexcept;

// r (an + bn limbs, distinct from a and b) = a * b, an >= bn >= 1.
void mulBasecase(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn) noexcept;
// r (2n limbs, distinct from a) = a * a.
void sqrBasecase(Limb* r, const Limb* a, size_t n) noexcept;

// r (an + bn limbs, distinct from a and b) = a * b for any an, bn >= 1,
// choosing the algorithm by size. Squares when a and b are the same array.
void multiply(Limb* r, const Limb* a, size_t an, const Limb* b, size_t bn);

// Schoolbook division of u (un limbs) by the normalised v (vn >= 2 limbs, top
// bit set), requiring u < v * B^(un - vn). Writes un - vn quotient limbs to q
// and leaves the remainder in u[0, vn).
void divBasecase(Limb* q, Limb* u, size_t un, const Limb* v, size_t vn);

} // namespace detail
} // namespace math
} // namespace qv

#endif
