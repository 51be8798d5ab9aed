#ifndef QVCL3_MATH_INTEGER_H
#define QVCL3_MATH_INTEGER_H

// Signed integers in sign-and-magnitude form: the engine behind BigInteger.
// Bitwise operations behave as on infinitely sign-extended two's complement.

#include "Natural.h"

#include <cstdint>
#include <string>
#include <utility>

namespace qv {
namespace math {
namespace detail {

struct Int {
    int sign = 0; // -1, 0 or 1; 0 exactly when mag is empty
    Mag mag;

    Int() = default;
    Int(int s, Mag m) : sign(m.empty() ? 0 : s), mag(std::move(m)) {}
};

// A borrowed view, so that values held elsewhere need no copy.
struct IntRef {
    int sign;
    const Mag& mag;
    IntRef(const Int& i) noexcept : sign(i.sign), mag(i.mag) {}
    IntRef(int s, const Mag& m) noexcept : sign(s), mag(m) {}
};

Int intFromInt64(int64_t v);
Int intFromUInt64(uint64_t v);
// Truncates toward zero; NotFinite for NaN and infinities.
Int intFromDouble(double v);

// The low bits in two's complement.
int64_t intToInt64(IntRef a) noexcept;
uint64_t intToUInt64(IntRef a) noexcept;
// Correctly rounded (half to even); infinite when too large.
double intToDouble(IntRef a) noexcept;
// m * 2^exp2 rounded to the nearest double (ties to even), with subnormals
// and overflow to infinity; sticky says that nonzero bits were cut off
// below m and must count in the rounding (m then needs at least 55 bits, so
// that they lie below the rounding position).
double roundToDouble(bool negative, const Mag& m, int64_t exp2, bool sticky) noexcept;

int intCompare(IntRef a, IntRef b) noexcept;
bool intEquals(IntRef a, IntRef b) noexcept;
uint32_t intHash(IntRef a) noexcept;

Int intNegate(IntRef a);
Int intAbs(IntRef a);
Int intAdd(IntRef a, IntRef b);
Int intSub(IntRef a, IntRef b);
Int intMul(IntRef a, IntRef b);
Int intMulSmall(IntRef a, int64_t b);
// Truncating division: the quotient rounds toward zero, the remainder has
// the dividend's sign. DivisionByZero for a zero divisor.
void intDivRem(IntRef a, IntRef b, Int* q, Int* r);
// Floor division: the remainder has the divisor's sign.
void intFloorDivMod(IntRef a, IntRef b, Int* q, Int* r);
// The non-negative residue; NonPositiveModulus unless m > 0.
Int intMod(IntRef a, IntRef m);
Int intPow(IntRef a, int64_t exponent);
Int intModPow(IntRef base, IntRef exponent, IntRef m);
Int intModInverse(IntRef a, IntRef m);
Int intGcd(IntRef a, IntRef b);

// Arithmetic shifts: shiftRight rounds toward negative infinity. A negative
// count shifts the other way.
Int intShiftLeft(IntRef a, int64_t n);
Int intShiftRight(IntRef a, int64_t n);
Int intAnd(IntRef a, IntRef b);
Int intOr(IntRef a, IntRef b);
Int intXor(IntRef a, IntRef b);
Int intNot(IntRef a);
Int intAndNot(IntRef a, IntRef b);
bool intTestBit(IntRef a, int64_t n);
Int intSetBit(IntRef a, int64_t n);
Int intClearBit(IntRef a, int64_t n);
Int intFlipBit(IntRef a, int64_t n);
// Bits of the two's complement form, sign bit excluded.
int64_t intBitLength(IntRef a) noexcept;
// Bits that differ from the sign bit.
int64_t intBitCount(IntRef a) noexcept;
// -1 for zero.
int64_t intLowestSetBit(IntRef a) noexcept;

std::string intToString(IntRef a, int radix);
// Optional sign, then at least one digit of the radix, nothing else.
// MalformedNumber or BadRadix otherwise.
Int intParse(const char* text, size_t length, int radix);
Int intParse(const char16_t* text, size_t length, int radix);

} // namespace detail
} // namespace math
} // namespace qv

#endif
