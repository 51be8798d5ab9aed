#ifndef QVCL3_MATH_MATHERROR_H
#define QVCL3_MATH_MATHERROR_H

namespace qv {
namespace math {
namespace detail {

// Every failure of the arithmetic. raise() turns it into the library
// exception documented in docs/math.md.
enum class MathError {
    MalformedNumber,
    BadRadix,
    NotFinite,
    DivisionByZero,
    NegativeExponent,
    NonPositiveModulus,
    NotInvertible,
    NegativeBitIndex,
    ValueTooLarge,
    ScaleOverflow,
    RoundingNecessary,
    NonTerminatingDecimal,
    BadRoundingMode
};

const char* messageOf(MathError error) noexcept;

[[noreturn]] void raise(MathError error);

} // namespace detail
} // namespace math
} // namespace qv

#endif
