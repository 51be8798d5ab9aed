#include <qv/math/BigDecimal.h>

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "Decimal.h"
#include "TextBridge.h"

#include <cstring>

namespace qv {
namespace math {

using namespace detail;

namespace {

Rounding rounding(BigDecimal::RoundingMode mode)
{
    return checkedRounding(static_cast<int>(mode));
}

Dec parse(const String& text)
{
    TextView view = viewOf(text);
    return decParse(view.data, view.length);
}

} // namespace

BigDecimal::BigDecimal() noexcept : m_scale(0) {}

BigDecimal::BigDecimal(Dec&& value) noexcept : m_unscaled(std::move(value.unscaled)), m_scale(value.scale) {}

BigDecimal::BigDecimal(int value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(unsigned value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(long value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(unsigned long value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(long long value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(unsigned long long value) : m_unscaled(value), m_scale(0) {}
BigDecimal::BigDecimal(const BigInteger& unscaled, int32_t scale) : m_unscaled(unscaled), m_scale(scale) {}
BigDecimal::BigDecimal(double value) : BigDecimal(decFromDouble(value)) {}

BigDecimal::BigDecimal(const String& text) : BigDecimal(parse(text)) {}

BigDecimal::BigDecimal(const char* text) : BigDecimal(decParse(text ? text : "", text ? std::strlen(text) : 0)) {}

BigDecimal::BigDecimal(const std::string& text) : BigDecimal(decParse(text.data(), text.size())) {}

// Copies and assignments carry the value only, as for BigInteger.
BigDecimal::BigDecimal(const BigDecimal& other) : Object(), m_unscaled(other.m_unscaled), m_scale(other.m_scale) {}

BigDecimal::BigDecimal(BigDecimal&& other) noexcept
    : Object(), m_unscaled(std::move(other.m_unscaled)), m_scale(other.m_scale)
{
    other.m_scale = 0;
}

BigDecimal& BigDecimal::operator=(const BigDecimal& other)
{
    if (this != &other) {
        BigInteger unscaled(other.m_unscaled);
        m_unscaled = std::move(unscaled);
        m_scale = other.m_scale;
    }
    return *this;
}

BigDecimal& BigDecimal::operator=(BigDecimal&& other) noexcept
{
    if (this != &other) {
        m_unscaled = std::move(other.m_unscaled);
        m_scale = other.m_scale;
        other.m_scale = 0;
    }
    return *this;
}

BigDecimal::~BigDecimal() = default;

DecRef BigDecimal::ref() const noexcept
{
    return DecRef(m_unscaled.ref(), m_scale);
}

BigDecimal BigDecimal::valueOf(double value)
{
    return BigDecimal(decFromDoubleShortest(value));
}

Object* BigDecimal::clone() const
{
    return new BigDecimal(*this);
}

int BigDecimal::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const BigDecimal* number = dynamic_cast<const BigDecimal*>(&other);
    if (!number)
        throw CastFailedException(toQvString("BigDecimal compared with an object that is not a BigDecimal"));
    return compareTo(*number);
}

bool BigDecimal::equals(const Object& other) const
{
    const BigDecimal* number = dynamic_cast<const BigDecimal*>(&other);
    return number && equals(*number);
}

uint32_t BigDecimal::hashCode() const
{
    return decHash(ref());
}

String BigDecimal::toString()
{
    return toQvString(decToPlainString(ref()));
}

int BigDecimal::compareTo(const BigDecimal& other) const
{
    return decCompare(ref(), other.ref());
}

bool BigDecimal::equals(const BigDecimal& other) const noexcept
{
    return decEquals(ref(), other.ref());
}

std::string BigDecimal::toStdString() const
{
    return decToPlainString(ref());
}

String BigDecimal::toScientificString() const
{
    return toQvString(decToScientificString(ref()));
}

String BigDecimal::toEngineeringString() const
{
    return toQvString(decToEngineeringString(ref()));
}

BigDecimal BigDecimal::add(const BigDecimal& other) const
{
    return BigDecimal(decAdd(ref(), other.ref()));
}

BigDecimal BigDecimal::subtract(const BigDecimal& other) const
{
    return BigDecimal(decSub(ref(), other.ref()));
}

BigDecimal BigDecimal::multiply(const BigDecimal& other) const
{
    return BigDecimal(decMul(ref(), other.ref()));
}

BigDecimal BigDecimal::divide(const BigDecimal& divisor, int32_t scale, RoundingMode mode) const
{
    return BigDecimal(decDivide(ref(), divisor.ref(), scale, rounding(mode)));
}

BigDecimal BigDecimal::divide(const BigDecimal& divisor, RoundingMode mode) const
{
    return divide(divisor, m_scale, mode);
}

BigDecimal BigDecimal::divide(const BigDecimal& divisor) const
{
    return BigDecimal(decDivideExact(ref(), divisor.ref()));
}

BigDecimal BigDecimal::setScale(int32_t scale, RoundingMode mode) const
{
    return BigDecimal(decSetScale(ref(), scale, rounding(mode)));
}

BigDecimal BigDecimal::negate() const
{
    return BigDecimal(m_unscaled.negate(), m_scale);
}

BigDecimal BigDecimal::abs() const
{
    return m_unscaled.signum() >= 0 ? *this : negate();
}

int32_t BigDecimal::signum() const noexcept
{
    return m_unscaled.signum();
}

int32_t BigDecimal::precision() const
{
    return static_cast<int32_t>(decPrecision(ref()));
}

BigDecimal BigDecimal::stripTrailingZeros() const
{
    return BigDecimal(decStripTrailingZeros(ref()));
}

BigDecimal BigDecimal::movePointLeft(int32_t n) const
{
    return BigDecimal(decMovePointLeft(ref(), n));
}

BigDecimal BigDecimal::movePointRight(int32_t n) const
{
    return BigDecimal(decMovePointRight(ref(), n));
}

BigDecimal BigDecimal::min(const BigDecimal& other) const
{
    return compareTo(other) <= 0 ? *this : other;
}

BigDecimal BigDecimal::max(const BigDecimal& other) const
{
    return compareTo(other) >= 0 ? *this : other;
}

BigInteger BigDecimal::toBigInteger() const
{
    return BigInteger(decToInteger(ref()));
}

double BigDecimal::toDouble() const
{
    return decToDouble(ref());
}

} // namespace math
} // namespace qv
