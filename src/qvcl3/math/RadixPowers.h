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
#include "NumberTheoreticTransform.h"

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

// Where conversions switch to what the kept values make cheap (in limbs).
// Tests lower them to drive those paths with small numbers.
struct ConversionThresholds {
    // Powers from this size on are divided by through their kept divider
    // (two products per quotient block, the reciprocal paid once for the
    // process) instead of by Burnikel-Ziegler.
    size_t levelDivider;
    // Products with a kept operand (a power, a divider's reciprocal or
    // divisor) go through its kept transform when both operands have at
    // least this many limbs: two transforms instead of three per prime
    // beat Toom from here, well below the plain transform's threshold.
    size_t keptTransform;
};
ConversionThresholds& conversionThresholds() noexcept;
ConversionThresholds defaultConversionThresholds() noexcept;

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

// The transforms of power (radixPower(radix, j)) for a product of
// productLimbs limbs in all, kept like the dividers (a power has one per
// transform length it is used at). Safe to call from any thread, and
// multiply of the result as well.
std::shared_ptr<const NttOperand> radixPowerTransform(int radix, size_t j, const Mag& power, size_t productLimbs);

} // namespace detail
} // namespace math
} // namespace qv

#endif
