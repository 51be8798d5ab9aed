#ifndef QV_MATH_BIGDECIMAL_H
#define QV_MATH_BIGDECIMAL_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/math/BigInteger.h>

#include <cstdint>
#include <string>
#include <type_traits>

namespace qv {

class String;

namespace math {

namespace detail {
struct Dec;
struct DecRef;
} // namespace detail

// An immutable decimal number: an unscaled BigInteger times 10^-scale,
// with a 32-bit scale. 12.340 is (12340, 3); 1.2E+3 is (12, -2).
//
// Failures throw as BigInteger does (docs/math.md), and in addition
// qv::RangeErrorException when rounding is necessary under
// ROUND_UNNECESSARY, when an exact quotient does not terminate, and when a
// scale would leave the 32-bit range.
//
// equals compares value and scale (2.0 and 2.00 differ), compareTo the value
// alone (they are equal); hashCode agrees with equals. There are no == and
// != operators, so that neither meaning is taken by surprise.
class QV_EXPORT BigDecimal : public Object {
public:
    enum RoundingMode {
        ROUND_UP,         // away from zero
        ROUND_DOWN,       // toward zero
        ROUND_CEILING,    // toward positive infinity
        ROUND_FLOOR,      // toward negative infinity
        ROUND_HALF_UP,    // nearest, ties away from zero
        ROUND_HALF_DOWN,  // nearest, ties toward zero
        ROUND_HALF_EVEN,  // nearest, ties to the even neighbour
        ROUND_UNNECESSARY // exact, or throw
    };

    BigDecimal() noexcept;
    BigDecimal(int value);
    BigDecimal(unsigned value);
    BigDecimal(long value);
    BigDecimal(unsigned long value);
    BigDecimal(long long value);
    BigDecimal(unsigned long long value);
    BigDecimal(const BigInteger& unscaled, int32_t scale = 0);
    // The exact binary value of the double: BigDecimal(0.1) has 55 places.
    // valueOf(double) gives the shortest decimal that reads back as the same
    // double instead. NaN and infinities throw.
    explicit BigDecimal(double value);
    // [+|-] digits [. digits] [(e|E) [+|-] digits], or without integer digits
    // (".5"); the scale is the number of fraction digits minus the exponent.
    explicit BigDecimal(const String& text);
    explicit BigDecimal(const char* text);
    explicit BigDecimal(const std::string& text);
    BigDecimal(const BigDecimal& other);
    BigDecimal(BigDecimal&& other) noexcept;
    BigDecimal& operator=(const BigDecimal& other);
    BigDecimal& operator=(BigDecimal&& other) noexcept;
    ~BigDecimal() override;

    // The shortest decimal that reads back as the same double: valueOf(0.1)
    // is 0.1, valueOf(1e22) is 1E+22.
    static BigDecimal valueOf(double value);
    // unscaled x 10^-scale, for every integer type (exact: never through a
    // double).
    template <class T, typename std::enable_if<std::is_integral<T>::value, int>::type = 0>
    static BigDecimal valueOf(T unscaled, int32_t scale = 0)
    {
        return BigDecimal(BigInteger(unscaled), scale);
    }

    // qv::Object. compareTo throws qv::CastFailedException for an object
    // that is not a BigDecimal; equals answers false for one.
    Object* clone() const override;
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    uint32_t hashCode() const override;
    using Object::toString;
    // Plain notation with exactly scale() places: "12.340", "-0.005",
    // "1200" for 1.2E+3. Zero prints "0" whatever its negative scale.
    String toString() override;

    int compareTo(const BigDecimal& other) const;
    bool equals(const BigDecimal& other) const noexcept;
    std::string toStdString() const;
    // An exponent when the scale is negative or the number is smaller than
    // 1E-6: "1.2E+3", "1.23E-7", "0.00123".
    String toScientificString() const;
    // Like toScientificString with exponents that are multiples of three:
    // "1.2E+3", "123E-9".
    String toEngineeringString() const;

    BigDecimal add(const BigDecimal& other) const;
    BigDecimal subtract(const BigDecimal& other) const;
    BigDecimal multiply(const BigDecimal& other) const;
    // The quotient rounded to the given scale.
    BigDecimal divide(const BigDecimal& divisor, int32_t scale, RoundingMode mode) const;
    // The quotient rounded to this number's scale.
    BigDecimal divide(const BigDecimal& divisor, RoundingMode mode) const;
    // The exact quotient, with the smallest scale not below scale() -
    // divisor.scale(); throws when the quotient does not terminate (1/3).
    BigDecimal divide(const BigDecimal& divisor) const;
    BigDecimal setScale(int32_t scale, RoundingMode mode = ROUND_UNNECESSARY) const;
    BigDecimal negate() const;
    BigDecimal abs() const;
    int32_t signum() const noexcept;
    int32_t scale() const noexcept { return m_scale; }
    const BigInteger& unscaledValue() const noexcept { return m_unscaled; }
    // Digits of the unscaled value; 1 for zero.
    int32_t precision() const;
    // The same value with the smallest scale; zero becomes 0 with scale 0.
    BigDecimal stripTrailingZeros() const;
    // The value times 10^-n with scale max(scale() + n, 0).
    BigDecimal movePointLeft(int32_t n) const;
    // The value times 10^n with scale max(scale() - n, 0).
    BigDecimal movePointRight(int32_t n) const;
    BigDecimal min(const BigDecimal& other) const;
    BigDecimal max(const BigDecimal& other) const;

    // The integer part (truncation toward zero).
    BigInteger toBigInteger() const;
    // Correctly rounded (ties to even), with subnormals; +-infinity beyond
    // the double range.
    double toDouble() const;

    BigDecimal& operator+=(const BigDecimal& other) { return *this = add(other); }
    BigDecimal& operator-=(const BigDecimal& other) { return *this = subtract(other); }
    BigDecimal& operator*=(const BigDecimal& other) { return *this = multiply(other); }

private:
    explicit BigDecimal(detail::Dec&& value) noexcept;
    detail::DecRef ref() const noexcept;

    BigInteger m_unscaled;
    int32_t m_scale;
};

inline BigDecimal operator+(const BigDecimal& a, const BigDecimal& b)
{
    return a.add(b);
}
inline BigDecimal operator-(const BigDecimal& a, const BigDecimal& b)
{
    return a.subtract(b);
}
inline BigDecimal operator*(const BigDecimal& a, const BigDecimal& b)
{
    return a.multiply(b);
}
inline BigDecimal operator-(const BigDecimal& a)
{
    return a.negate();
}
inline bool operator<(const BigDecimal& a, const BigDecimal& b)
{
    return a.compareTo(b) < 0;
}
inline bool operator<=(const BigDecimal& a, const BigDecimal& b)
{
    return a.compareTo(b) <= 0;
}
inline bool operator>(const BigDecimal& a, const BigDecimal& b)
{
    return a.compareTo(b) > 0;
}
inline bool operator>=(const BigDecimal& a, const BigDecimal& b)
{
    return a.compareTo(b) >= 0;
}

} // namespace math
} // namespace qv

#endif
