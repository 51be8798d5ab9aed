#include "MathError.h"

#include <stdexcept>

namespace qv {
namespace math {
namespace detail {

const char* messageOf(MathError error) noexcept
{
    switch (error) {
    case MathError::MalformedNumber:
        return "Malformed number text";
    case MathError::BadRadix:
        return "Radix out of range: must be 2 to 36";
    case MathError::NotFinite:
        return "NaN or infinity has no exact number value";
    case MathError::DivisionByZero:
        return "Division by zero";
    case MathError::NegativeExponent:
        return "Negative exponent";
    case MathError::NonPositiveModulus:
        return "Modulus not positive";
    case MathError::NotInvertible:
        return "Value not invertible: it shares a factor with the modulus";
    case MathError::NegativeBitIndex:
        return "Negative bit index";
    case MathError::ValueTooLarge:
        return "Value too large: magnitudes are limited to 2147483584 bits";
    case MathError::ScaleOverflow:
        return "Scale out of the 32-bit range";
    case MathError::RoundingNecessary:
        return "Rounding necessary";
    case MathError::NonTerminatingDecimal:
        return "Non-terminating decimal expansion: no exact decimal quotient";
    case MathError::BadRoundingMode:
        return "Unknown rounding mode";
    }
    return "Arithmetic error";
}

void raise(MathError error)
{
    throw std::domain_error(messageOf(error));
}

} // namespace detail
} // namespace math
} // namespace qv
