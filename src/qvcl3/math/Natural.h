#ifndef QVCL3_MATH_NATURAL_H
#define QVCL3_MATH_NATURAL_H

// Natural numbers as normalised limb vectors (least significant limb first,
// no zero limb at the top; zero is the empty vector).

#include "Limbs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qv {
namespace math {
namespace detail {

typedef std::vector<Limb> Mag;

// Keeps bit lengths within int32: the largest magnitude has this many limbs.
constexpr size_t MAX_LIMBS = (size_t(1) << 25) - 1;
constexpr uint64_t MAX_BITS = uint64_t(MAX_LIMBS) * 64;

// A zeroed vector of n limbs; ValueTooLarge beyond MAX_LIMBS.
Mag allocMag(size_t n);
void trim(Mag& m) noexcept;

Mag magFromU64(uint64_t v);
int magCompare(const Mag& a, const Mag& b) noexcept;
uint64_t magBitLength(const Mag& a) noexcept;
// Index of the lowest set bit; a must not be zero.
uint64_t magLowestSetBit(const Mag& a) noexcept;
uint64_t magPopCount(const Mag& a) noexcept;
bool magTestBit(const Mag& a, uint64_t bit) noexcept;
bool magIsPowerOfTwo(const Mag& a) noexcept;

Mag magAdd(const Mag& a, const Mag& b);
// a >= b
Mag magSub(const Mag& a, const Mag& b);
Mag magAddSmall(const Mag& a, Limb b);
// a >= b
Mag magSubSmall(const Mag& a, Limb b);
Mag magMul(const Mag& a, const Mag& b);
Mag magMulSmall(const Mag& a, Limb b);
Mag magSqr(const Mag& a);
Mag magShiftLeft(const Mag& a, uint64_t bits);
Mag magShiftRight(const Mag& a, uint64_t bits);
// a * 2^(64 * limbs) + b, where b < 2^(64 * limbs).
Mag magConcat(const Mag& a, const Mag& b, size_t limbs);
Mag magLowLimbs(const Mag& a, size_t limbs);
Mag magHighLimbs(const Mag& a, size_t fromLimb);

// q = a / b, r = a % b; b must not be zero. Either output may be null.
void magDivMod(const Mag& a, const Mag& b, Mag* q, Mag* r);
// The same without the reciprocal path: schoolbook or Burnikel-Ziegler.
void magDivModClassic(const Mag& a, const Mag& b, Mag* q, Mag* r);
Limb magDivModSmall(const Mag& a, Limb b, Mag* q);
Mag magPow(const Mag& a, uint64_t exponent);
Mag magGcd(const Mag& a, const Mag& b);

bool isValidRadix(int radix) noexcept;
// Digits in lower case, no sign; "0" for zero.
std::string magToString(const Mag& a, int radix);
// digits holds digit values (0 .. radix-1), most significant first.
Mag magFromDigits(const unsigned char* digits, size_t n, int radix);

} // namespace detail
} // namespace math
} // namespace qv

#endif
