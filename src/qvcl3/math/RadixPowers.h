#ifndef QVCL3_MATH_RADIXPOWERS_H
#define QVCL3_MATH_RADIXPOWERS_H

// The powers base^(2^j) that radix conversions split and join numbers at
// (base: the largest power of the radix that fits a limb), and the
// dividers by them that conversions to text use. Computing them costs a
// tenth to a fifth of a conversion, and every conversion of a similar size
// needs the same ones, so they are kept for the life of the process, up to
// a bounded size, and shared between threads.

#include "Natural.h"
#include "NewtonDivider.h"

#include <memory>

namespace qv {
namespace math {
namespace detail {

// The largest powers, and powers behind dividers, that are kept (in
// limbs): all powers together take less than twice the first, the dividers
// with their reciprocals and transforms about ten times the second. Larger
// ones are computed for each conversion. Tests lower them to reach that
// path with small numbers.
struct KeptLimits {
    size_t powerLimbs;
    size_t dividerLimbs;
};
KeptLimits& keptLimits() noexcept;
KeptLimits defaultKeptLimits() noexcept;

// base^(2^j) for radix (2 to 36); never null. Safe to call from any
// thread; the value pointed to never changes.
std::shared_ptr<const Mag> radixPower(int radix, size_t j);

// A divider by power, which is radixPower(radix, j) (the caller has it
// already; beyond the kept powers it would be computed again), its
// transforms kept (NewtonDivider::keepTransforms); never null. Kept like
// the powers where the power is not above keptLimits().dividerLimbs, made
// afresh otherwise. Safe to call from any thread, and divMod of the result
// as well.
std::shared_ptr<const NewtonDivider> radixPowerDivider(int radix, size_t j, const Mag& power);

} // namespace detail
} // namespace math
} // namespace qv

#endif
