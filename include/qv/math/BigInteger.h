#ifndef QV_MATH_BIGINTEGER_H
#define QV_MATH_BIGINTEGER_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qv {

class String;

namespace math {

namespace detail {
struct Int;
struct IntRef;
} // namespace detail

// An immutable signed integer of any size (up to 2^31 - 64 bits).
//
// Failures throw qv::Exception descendants (texts in docs/math.md):
//  - qv::ResultException 0x80070057 (invalid argument): malformed text, a
//    radix outside 2..36, NaN or an infinity, a negative exponent or bit
//    index, a modulus that is not positive;
//  - qv::ResultException 0x80020012 (division by zero): divide, remainder,
//    divideAndRemainder and the operators / and % with a zero divisor;
//  - qv::RangeErrorException: no modular inverse exists, or a result would
//    exceed the size limit.
//
// Copies and assignments carry the value only: a copy (and a clone) starts
// with a reference count of its own, and assignment leaves the count alone.
//
// The bitwise operations act on the infinite two's complement form, so
// negative values behave as if sign-extended without end. They are named
// bitAnd, bitOr, bitXor, bitNot and bitAndNot because and, or, xor and not
// are reserved words of C++; the operators &, |, ^ and ~ do the same.
class QV_EXPORT BigInteger : public Object {
public:
    BigInteger() noexcept;
    BigInteger(int value);
    BigInteger(unsigned value);
    BigInteger(long value);
    BigInteger(unsigned long value);
    BigInteger(long long value);
    BigInteger(unsigned long long value);
    // The integer part (truncation toward zero); NaN and infinities throw.
    explicit BigInteger(double value);
    // Optional '+' or '-', then one or more digits of the radix (either
    // case), nothing else: no blanks, no prefix.
    explicit BigInteger(const String& text, int32_t radix = 10);
    explicit BigInteger(const char* text, int32_t radix = 10);
    explicit BigInteger(const std::string& text, int32_t radix = 10);
    BigInteger(const BigInteger& other);
    BigInteger(BigInteger&& other) noexcept;
    BigInteger& operator=(const BigInteger& other);
    BigInteger& operator=(BigInteger&& other) noexcept;
    ~BigInteger() override;

    static const BigInteger& zero();
    static const BigInteger& one();
    static const BigInteger& ten();

    // qv::Object. compareTo throws qv::CastFailedException for an object
    // that is not a BigInteger; equals answers false for one.
    Object* clone() const override;
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    // Consistent with equals; the same value always gives the same hash.
    uint32_t hashCode() const override;
    using Object::toString;
    // Radix 10.
    String toString() override;

    int compareTo(const BigInteger& other) const noexcept;
    bool equals(const BigInteger& other) const noexcept;
    // Lower-case digits, '-' for negative values.
    String toString(int32_t radix) const;
    std::string toStdString(int32_t radix = 10) const;

    // The low bits in two's complement, as integer conversions do.
    int32_t toInt32() const noexcept;
    uint32_t toUInt32() const noexcept;
    int64_t toInt64() const noexcept;
    uint64_t toUInt64() const noexcept;
    // Correctly rounded (ties to even); +-infinity beyond the double range.
    double toDouble() const noexcept;

    BigInteger add(const BigInteger& other) const;
    BigInteger subtract(const BigInteger& other) const;
    BigInteger multiply(const BigInteger& other) const;
    // Rounds toward zero.
    BigInteger divide(const BigInteger& divisor) const;
    // Has the sign of this value (or is zero).
    BigInteger remainder(const BigInteger& divisor) const;
    // {divide, remainder}
    std::pair<BigInteger, BigInteger> divideAndRemainder(const BigInteger& divisor) const;
    // Never negative; the modulus must be positive.
    BigInteger mod(const BigInteger& modulus) const;
    BigInteger pow(int32_t exponent) const;
    // A negative exponent raises the inverse modulo the modulus.
    BigInteger modPow(const BigInteger& exponent, const BigInteger& modulus) const;
    BigInteger modInverse(const BigInteger& modulus) const;
    // Never negative; gcd(0, 0) is 0.
    BigInteger gcd(const BigInteger& other) const;
    BigInteger abs() const;
    BigInteger negate() const;
    // -1, 0 or 1.
    int32_t signum() const noexcept { return m_signum; }
    BigInteger min(const BigInteger& other) const;
    BigInteger max(const BigInteger& other) const;

    // Arithmetic shifts: shiftRight rounds toward negative infinity. A
    // negative count shifts the other way.
    BigInteger shiftLeft(int32_t n) const;
    BigInteger shiftRight(int32_t n) const;
    BigInteger bitAnd(const BigInteger& other) const;
    BigInteger bitOr(const BigInteger& other) const;
    BigInteger bitXor(const BigInteger& other) const;
    BigInteger bitNot() const;
    // this & ~other
    BigInteger bitAndNot(const BigInteger& other) const;
    bool testBit(int32_t n) const;
    BigInteger setBit(int32_t n) const;
    BigInteger clearBit(int32_t n) const;
    BigInteger flipBit(int32_t n) const;
    // Bits of the two's complement form without the sign bit: 0 for 0 and
    // -1, 8 for 255 and -256.
    int32_t bitLength() const noexcept;
    // Bits that differ from the sign bit: set bits of a positive value,
    // clear bits of a negative one.
    int32_t bitCount() const noexcept;
    // Index of the lowest set bit, -1 for zero.
    int32_t getLowestSetBit() const noexcept;

    BigInteger& operator+=(const BigInteger& other) { return *this = add(other); }
    BigInteger& operator-=(const BigInteger& other) { return *this = subtract(other); }
    BigInteger& operator*=(const BigInteger& other) { return *this = multiply(other); }
    BigInteger& operator/=(const BigInteger& other) { return *this = divide(other); }
    BigInteger& operator%=(const BigInteger& other) { return *this = remainder(other); }
    BigInteger& operator&=(const BigInteger& other) { return *this = bitAnd(other); }
    BigInteger& operator|=(const BigInteger& other) { return *this = bitOr(other); }
    BigInteger& operator^=(const BigInteger& other) { return *this = bitXor(other); }
    BigInteger& operator<<=(int32_t n) { return *this = shiftLeft(n); }
    BigInteger& operator>>=(int32_t n) { return *this = shiftRight(n); }

private:
    friend class BigDecimal;
    explicit BigInteger(detail::Int&& value) noexcept;
    detail::IntRef ref() const noexcept;

    std::vector<uint64_t> m_magnitude; // least significant limb first, no zero limb on top
    int32_t m_signum;
};

inline BigInteger operator+(const BigInteger& a, const BigInteger& b)
{
    return a.add(b);
}
inline BigInteger operator-(const BigInteger& a, const BigInteger& b)
{
    return a.subtract(b);
}
inline BigInteger operator*(const BigInteger& a, const BigInteger& b)
{
    return a.multiply(b);
}
inline BigInteger operator/(const BigInteger& a, const BigInteger& b)
{
    return a.divide(b);
}
inline BigInteger operator%(const BigInteger& a, const BigInteger& b)
{
    return a.remainder(b);
}
inline BigInteger operator-(const BigInteger& a)
{
    return a.negate();
}
inline BigInteger operator+(const BigInteger& a)
{
    return a;
}
inline BigInteger operator<<(const BigInteger& a, int32_t n)
{
    return a.shiftLeft(n);
}
inline BigInteger operator>>(const BigInteger& a, int32_t n)
{
    return a.shiftRight(n);
}
inline BigInteger operator&(const BigInteger& a, const BigInteger& b)
{
    return a.bitAnd(b);
}
inline BigInteger operator|(const BigInteger& a, const BigInteger& b)
{
    return a.bitOr(b);
}
inline BigInteger operator^(const BigInteger& a, const BigInteger& b)
{
    return a.bitXor(b);
}
inline BigInteger operator~(const BigInteger& a)
{
    return a.bitNot();
}
inline bool operator==(const BigInteger& a, const BigInteger& b) noexcept
{
    return a.equals(b);
}
inline bool operator!=(const BigInteger& a, const BigInteger& b) noexcept
{
    return !a.equals(b);
}
inline bool operator<(const BigInteger& a, const BigInteger& b) noexcept
{
    return a.compareTo(b) < 0;
}
inline bool operator<=(const BigInteger& a, const BigInteger& b) noexcept
{
    return a.compareTo(b) <= 0;
}
inline bool operator>(const BigInteger& a, const BigInteger& b) noexcept
{
    return a.compareTo(b) > 0;
}
inline bool operator>=(const BigInteger& a, const BigInteger& b) noexcept
{
    return a.compareTo(b) >= 0;
}

} // namespace math
} // namespace qv

#endif
