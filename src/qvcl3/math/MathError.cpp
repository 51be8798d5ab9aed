#include "MathError.h"

#include <qv/core/Exception.h>

#include "TextBridge.h"

namespace qv {
namespace math {
namespace detail {

namespace {

const Result INVALID_ARGUMENT = static_cast<Result>(0x80070057u);
// DISP_E_DIVBYZERO, the component model's code for a division by zero.
const Result DIVISION_BY_ZERO = static_cast<Result>(0x80020012u);

} // namespace

const char* messageOf(MathError error) noexcept
{
    switch (error) {
    case MathError::MalformedNumber: return "Malformed number text";
    case MathError::BadRadix: return "Radix out of range: must be 2 to 36";
    case MathError::NotFinite: return "NaN or infinity has no exact number value";
    case MathError::DivisionByZero: return "Division by zero";
    case MathError::NegativeExponent: return "Negative exponent";
    case MathError::NonPositiveModulus: return "Modulus not positive";
    case MathError::NotInvertible: return "Value not invertible: it shares a factor with the modulus";
    case MathError::NegativeBitIndex: return "Negative bit index";
    case MathError::ValueTooLarge: return "Value too large: magnitudes are limited to 2147483584 bits";
    case MathError::ScaleOverflow: return "Scale out of the 32-bit range";
    case MathError::RoundingNecessary: return "Rounding necessary";
    case MathError::NonTerminatingDecimal: return "Non-terminating decimal expansion: no exact decimal quotient";
    case MathError::BadRoundingMode: return "Unknown rounding mode";
    }
    return "Arithmetic error";
}

void raise(MathError error)
{
    const String message = toQvString(messageOf(error));
    switch (error) {
    case MathError::DivisionByZero: throw ResultException(DIVISION_BY_ZERO, message);
    case MathError::NotInvertible:
    case MathError::ValueTooLarge:
    case MathError::ScaleOverflow:
    case MathError::RoundingNecessary:
    case MathError::NonTerminatingDecimal: throw RangeErrorException(message);
    case MathError::MalformedNumber:
    case MathError::BadRadix:
    case MathError::NotFinite:
    case MathError::NegativeExponent:
    case MathError::NonPositiveModulus:
    case MathError::NegativeBitIndex:
    case MathError::BadRoundingMode: break;
    }
    throw ResultException(INVALID_ARGUMENT, message);
}

} // namespace detail
} // namespace math
} // namespace qv
