#ifndef QVCL3_MATH_RADIXPOWERS_H
#define QVCL3_MATH_RADIXPOWERS_H

// The powers base^(2^j) that radix conversions split and join numbers at
// (base: the largest power of the radix that fits a limb). Computing them
// by squaring costs a tenth to a fifth of a conversion, and every
// conversion of a similar size needs the same ones, so they are kept for
// the life of the process, up to a bounded size, and shared between
// threads.

#include "Natural.h"

#include <memory>

namespace qv {
namespace math {
namespace detail {

// Powers of at most this many limbs are kept (all of them together take
// less than twice that); larger ones are computed for each conversion.
const size_t MAX_KEPT_POWER_LIMBS = size_t(1) << 16;

// base^(2^j) for radix (2 to 36); never null. Safe to call from any
// thread; the value pointed to never changes.
std::shared_ptr<const Mag> radixPower(int radix, size_t j);

} // namespace detail
} // namespace math
} // namespace qv

#endif
