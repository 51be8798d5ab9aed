#include <qv/math/BigInteger.h>

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "Integer.h"
#include "TextBridge.h"

#include <cstring>

namespace qv {
namespace math {

using namespace detail;

namespace {

Int parse(const String& text, int32_t radix)
{
    TextView view = viewOf(text);
    return intParse(view.data, view.length, radix);
}

} // namespace

BigInteger::BigInteger() noexcept : m_signum(0) {}

BigInteger::BigInteger(Int&& value) noexcept : m_magnitude(std::move(value.mag)), m_signum(value.sign) {}

BigInteger::BigInteger(int value) : BigInteger(intFromInt64(value)) {}
BigInteger::BigInteger(unsigned value) : BigInteger(intFromUInt64(value)) {}
BigInteger::BigInteger(long value) : BigInteger(intFromInt64(value)) {}
BigInteger::BigInteger(unsigned long value) : BigInteger(intFromUInt64(value)) {}
BigInteger::BigInteger(long long value) : BigInteger(intFromInt64(value)) {}
BigInteger::BigInteger(unsigned long long value) : BigInteger(intFromUInt64(value)) {}
BigInteger::BigInteger(double value) : BigInteger(intFromDouble(value)) {}

BigInteger::BigInteger(const String& text, int32_t radix) : BigInteger(parse(text, radix)) {}

BigInteger::BigInteger(const char* text, int32_t radix)
    : BigInteger(intParse(text ? text : "", text ? std::strlen(text) : 0, radix))
{}

BigInteger::BigInteger(const std::string& text, int32_t radix) : BigInteger(intParse(text.data(), text.size(), radix))
{}

// Copies and assignments carry the value only: a copy starts with a
// reference count of its own, and assignment leaves the count alone.
BigInteger::BigInteger(const BigInteger& other) : Object(), m_magnitude(other.m_magnitude), m_signum(other.m_signum) {}

BigInteger::BigInteger(BigInteger&& other) noexcept
    : Object(), m_magnitude(std::move(other.m_magnitude)), m_signum(other.m_signum)
{
    other.m_magnitude.clear();
    other.m_signum = 0;
}

BigInteger& BigInteger::operator=(const BigInteger& other)
{
    if (this != &other) {
        std::vector<uint64_t> copy(other.m_magnitude);
        m_magnitude.swap(copy);
        m_signum = other.m_signum;
    }
    return *this;
}

BigInteger& BigInteger::operator=(BigInteger&& other) noexcept
{
    if (this != &other) {
        m_magnitude = std::move(other.m_magnitude);
        m_signum = other.m_signum;
        other.m_magnitude.clear();
        other.m_signum = 0;
    }
    return *this;
}

BigInteger::~BigInteger() = default;

IntRef BigInteger::ref() const noexcept
{
    return IntRef(m_signum, m_magnitude);
}

const BigInteger& BigInteger::zero()
{
    static const BigInteger value;
    return value;
}

const BigInteger& BigInteger::one()
{
    static const BigInteger value(1);
    return value;
}

const BigInteger& BigInteger::ten()
{
    static const BigInteger value(10);
    return value;
}

Object* BigInteger::clone() const
{
    return new BigInteger(*this);
}

int BigInteger::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const BigInteger* number = dynamic_cast<const BigInteger*>(&other);
    if (!number)
        throw CastFailedException(toQvString("BigInteger compared with an object that is not a BigInteger"));
    return compareTo(*number);
}

bool BigInteger::equals(const Object& other) const
{
    const BigInteger* number = dynamic_cast<const BigInteger*>(&other);
    return number && equals(*number);
}

uint32_t BigInteger::hashCode() const
{
    return intHash(ref());
}

String BigInteger::toString()
{
    return toQvString(intToString(ref(), 10));
}

int BigInteger::compareTo(const BigInteger& other) const noexcept
{
    return intCompare(ref(), other.ref());
}

bool BigInteger::equals(const BigInteger& other) const noexcept
{
    return intEquals(ref(), other.ref());
}

String BigInteger::toString(int32_t radix) const
{
    return toQvString(intToString(ref(), radix));
}

std::string BigInteger::toStdString(int32_t radix) const
{
    return intToString(ref(), radix);
}

int32_t BigInteger::toInt32() const noexcept
{
    return static_cast<int32_t>(toInt64());
}

uint32_t BigInteger::toUInt32() const noexcept
{
    return static_cast<uint32_t>(toUInt64());
}

int64_t BigInteger::toInt64() const noexcept
{
    return intToInt64(ref());
}

uint64_t BigInteger::toUInt64() const noexcept
{
    return intToUInt64(ref());
}

double BigInteger::toDouble() const noexcept
{
    return intToDouble(ref());
}

BigInteger BigInteger::add(const BigInteger& other) const
{
    return BigInteger(intAdd(ref(), other.ref()));
}

BigInteger BigInteger::subtract(const BigInteger& other) const
{
    return BigInteger(intSub(ref(), other.ref()));
}

BigInteger BigInteger::multiply(const BigInteger& other) const
{
    return BigInteger(intMul(ref(), other.ref()));
}

BigInteger BigInteger::divide(const BigInteger& divisor) const
{
    Int q;
    intDivRem(ref(), divisor.ref(), &q, nullptr);
    return BigInteger(std::move(q));
}

BigInteger BigInteger::remainder(const BigInteger& divisor) const
{
    Int r;
    intDivRem(ref(), divisor.ref(), nullptr, &r);
    return BigInteger(std::move(r));
}

std::pair<BigInteger, BigInteger> BigInteger::divideAndRemainder(const BigInteger& divisor) const
{
    Int q, r;
    intDivRem(ref(), divisor.ref(), &q, &r);
    return std::pair<BigInteger, BigInteger>(BigInteger(std::move(q)), BigInteger(std::move(r)));
}

BigInteger BigInteger::mod(const BigInteger& modulus) const
{
    return BigInteger(intMod(ref(), modulus.ref()));
}

BigInteger BigInteger::pow(int32_t exponent) const
{
    return BigInteger(intPow(ref(), exponent));
}

BigInteger BigInteger::modPow(const BigInteger& exponent, const BigInteger& modulus) const
{
    return BigInteger(intModPow(ref(), exponent.ref(), modulus.ref()));
}

BigInteger BigInteger::modInverse(const BigInteger& modulus) const
{
    return BigInteger(intModInverse(ref(), modulus.ref()));
}

BigInteger BigInteger::gcd(const BigInteger& other) const
{
    return BigInteger(intGcd(ref(), other.ref()));
}

BigInteger BigInteger::abs() const
{
    return m_signum >= 0 ? *this : negate();
}

BigInteger BigInteger::negate() const
{
    return BigInteger(intNegate(ref()));
}

BigInteger BigInteger::min(const BigInteger& other) const
{
    return compareTo(other) <= 0 ? *this : other;
}

BigInteger BigInteger::max(const BigInteger& other) const
{
    return compareTo(other) >= 0 ? *this : other;
}

BigInteger BigInteger::shiftLeft(int32_t n) const
{
    return BigInteger(intShiftLeft(ref(), n));
}

BigInteger BigInteger::shiftRight(int32_t n) const
{
    return BigInteger(intShiftRight(ref(), n));
}

BigInteger BigInteger::bitAnd(const BigInteger& other) const
{
    return BigInteger(intAnd(ref(), other.ref()));
}

BigInteger BigInteger::bitOr(const BigInteger& other) const
{
    return BigInteger(intOr(ref(), other.ref()));
}

BigInteger BigInteger::bitXor(const BigInteger& other) const
{
    return BigInteger(intXor(ref(), other.ref()));
}

BigInteger BigInteger::bitNot() const
{
    return BigInteger(intNot(ref()));
}

BigInteger BigInteger::bitAndNot(const BigInteger& other) const
{
    return BigInteger(intAndNot(ref(), other.ref()));
}

bool BigInteger::testBit(int32_t n) const
{
    return intTestBit(ref(), n);
}

BigInteger BigInteger::setBit(int32_t n) const
{
    return BigInteger(intSetBit(ref(), n));
}

BigInteger BigInteger::clearBit(int32_t n) const
{
    return BigInteger(intClearBit(ref(), n));
}

BigInteger BigInteger::flipBit(int32_t n) const
{
    return BigInteger(intFlipBit(ref(), n));
}

int32_t BigInteger::bitLength() const noexcept
{
    return static_cast<int32_t>(intBitLength(ref()));
}

int32_t BigInteger::bitCount() const noexcept
{
    return static_cast<int32_t>(intBitCount(ref()));
}

int32_t BigInteger::getLowestSetBit() const noexcept
{
    return static_cast<int32_t>(intLowestSetBit(ref()));
}

} // namespace math
} // namespace qv
