#ifndef QVCL3_MATH_DECIMAL_H
#define QVCL3_MATH_DECIMAL_H

// Decimal numbers unscaled * 10^-scale: the engine behind BigDecimal.

#include "Integer.h"

#include <cstdint>
#include <string>

namespace qv {
namespace math {
namespace detail {

// Same order and meaning as BigDecimal's public rounding modes.
enum class Rounding { Up, Down, Ceiling, Floor, HalfUp, HalfDown, HalfEven, Unnecessary };

struct Dec {
    Int unscaled;
    int32_t scale = 0;

    Dec() = default;
    Dec(Int u, int32_t s) : unscaled(std::move(u)), scale(s) {}
};

struct DecRef {
    IntRef unscaled;
    int32_t scale;
    DecRef(const Dec& d) noexcept : unscaled(d.unscaled), scale(d.scale) {}
    DecRef(IntRef u, int32_t s) noexcept : unscaled(u), scale(s) {}
};

// ScaleOverflow when a computed scale leaves the int32 range.
int32_t checkedScale(int64_t scale);
Rounding checkedRounding(int mode);

// The exact binary value of the double, with the smallest scale that holds it.
Dec decFromDouble(double v);
// The shortest decimal that reads back as the same double.
Dec decFromDoubleShortest(double v);
// [+-] digits [. digits] [(e|E) [+-] digits], or a fraction without integer
// digits (".5"); nothing else. MalformedNumber or ScaleOverflow otherwise.
Dec decParse(const char* text, size_t length);
Dec decParse(const char16_t* text, size_t length);

std::string decToPlainString(DecRef a);
std::string decToScientificString(DecRef a);
std::string decToEngineeringString(DecRef a);

Dec decAdd(DecRef a, DecRef b);
Dec decSub(DecRef a, DecRef b);
Dec decMul(DecRef a, DecRef b);
Dec decDivide(DecRef a, DecRef b, int32_t scale, Rounding mode);
// The exact quotient with the smallest scale not below a.scale - b.scale;
// NonTerminatingDecimal when there is none.
Dec decDivideExact(DecRef a, DecRef b);
Dec decSetScale(DecRef a, int32_t scale, Rounding mode);
Dec decStripTrailingZeros(DecRef a);
// Scale max(scale + n, 0) and max(scale - n, 0) respectively.
Dec decMovePointLeft(DecRef a, int32_t n);
Dec decMovePointRight(DecRef a, int32_t n);

int decCompare(DecRef a, DecRef b);
bool decEquals(DecRef a, DecRef b) noexcept;
uint32_t decHash(DecRef a) noexcept;
// Truncates toward zero.
Int decToInteger(DecRef a);
double decToDouble(DecRef a);
// Digits of the unscaled value (1 for zero).
int64_t decPrecision(DecRef a);

// num / den rounded to an integer by the mode; den != 0.
Int divideRounded(IntRef num, IntRef den, Rounding mode);
Int powerOfTen(uint64_t n);
int64_t decimalDigits(const Mag& m);

} // namespace detail
} // namespace math
} // namespace qv

#endif
