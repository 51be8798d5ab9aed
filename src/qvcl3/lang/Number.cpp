#include <qv/lang/Number.h>

#include <qv/core/Exception.h>
#include <qvcore3/qvcore3.h>

#include <cmath>

namespace qv {

Number::~Number() = default;

signed char Number::toByte() const
{
    return toInt8();
}
short Number::toShort() const
{
    return toInt16();
}
int Number::toInt() const
{
    return toInt32();
}
int32_t Number::toLong() const
{
    return toInt32();
}
unsigned char Number::toUByte() const
{
    return toUInt8();
}
unsigned short Number::toUShort() const
{
    return toUInt16();
}
unsigned int Number::toUInt() const
{
    return toUInt32();
}
uint32_t Number::toULong() const
{
    return toUInt32();
}
float Number::toFloat() const
{
    return static_cast<float>(toDouble());
}
math::BigInteger Number::toBigInteger() const
{
    return math::BigInteger(static_cast<long long>(toInt64()));
}
math::BigDecimal Number::toBigDecimal() const
{
    return math::BigDecimal(toDouble());
}
int8_t Number::toInt8() const
{
    return static_cast<int8_t>(toInt64());
}
int16_t Number::toInt16() const
{
    return static_cast<int16_t>(toInt64());
}
int32_t Number::toInt32() const
{
    return static_cast<int32_t>(toInt64());
}
uint8_t Number::toUInt8() const
{
    return static_cast<uint8_t>(toUInt64());
}
uint16_t Number::toUInt16() const
{
    return static_cast<uint16_t>(toUInt64());
}
uint32_t Number::toUInt32() const
{
    return static_cast<uint32_t>(toUInt64());
}
uint64_t Number::toUInt64() const
{
    return static_cast<uint64_t>(toInt64());
}

int Number::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const Number* number = dynamic_cast<const Number*>(&other);
    if (!number)
        throw CastFailedException();
    return compareTo(*number);
}

int Number::compareTo(const Number& other) const
{
    return Object::compareTo(other);
}

bool Number::equals(const Object& other) const
{
    return compareTo(other) == 0;
}

uint32_t Number::hashCode() const
{
    return toULong();
}

signed char Number::parseByte(const String& text)
{
    return static_cast<signed char>(QVStrToIW(text.getData()));
}
int8_t Number::parseInt8(const String& text)
{
    return static_cast<int8_t>(QVStrToIW(text.getData()));
}
short Number::parseShort(const String& text)
{
    return static_cast<short>(QVStrToIW(text.getData()));
}
int16_t Number::parseInt16(const String& text)
{
    return static_cast<int16_t>(QVStrToIW(text.getData()));
}
int Number::parseInt(const String& text)
{
    return QVStrToIW(text.getData());
}
int32_t Number::parseInt32(const String& text)
{
    return QVStrToIW(text.getData());
}
int32_t Number::parseLong(const String& text)
{
    return QVStrToIW(text.getData());
}
unsigned char Number::parseUByte(const String& text, int32_t radix)
{
    return static_cast<unsigned char>(QVStrToULW(text.getData(), nullptr, radix));
}
uint8_t Number::parseUInt8(const String& text, int32_t radix)
{
    return static_cast<uint8_t>(QVStrToULW(text.getData(), nullptr, radix));
}
unsigned short Number::parseUShort(const String& text, int32_t radix)
{
    return static_cast<unsigned short>(QVStrToULW(text.getData(), nullptr, radix));
}
uint16_t Number::parseUInt16(const String& text, int32_t radix)
{
    return static_cast<uint16_t>(QVStrToULW(text.getData(), nullptr, radix));
}
unsigned int Number::parseUInt(const String& text, int32_t radix)
{
    return QVStrToULW(text.getData(), nullptr, radix);
}
uint32_t Number::parseUInt32(const String& text, int32_t radix)
{
    return QVStrToULW(text.getData(), nullptr, radix);
}
uint32_t Number::parseULong(const String& text, int32_t radix)
{
    return QVStrToULW(text.getData(), nullptr, radix);
}
double Number::parseDouble(const String& text)
{
    return QVStrToDW(text.getData(), nullptr);
}
float Number::parseFloat(const String& text)
{
    return static_cast<float>(parseDouble(text));
}
int64_t Number::parseInt64(const String& text)
{
    return math::BigInteger(text, 10).toInt64();
}
uint64_t Number::parseUInt64(const String& text, int32_t radix)
{
    return math::BigInteger(text, radix).toUInt64();
}
math::BigInteger Number::parseBigInteger(const String& text)
{
    return math::BigInteger(text, 10);
}
math::BigDecimal Number::parseBigDecimal(const String& text)
{
    return math::BigDecimal(text);
}

SignedInteger::~SignedInteger() = default;

String SignedInteger::toString()
{
    return math::BigInteger(static_cast<long long>(toInt64())).toString();
}

UnsignedInteger::~UnsignedInteger() = default;

String UnsignedInteger::toString()
{
    return toString(10);
}

String UnsignedInteger::toString(int32_t radix) const
{
    return math::BigInteger(static_cast<unsigned long long>(toUInt64())).toString(radix);
}

namespace detail {

int64_t truncateToInt64(double value) noexcept
{
    // 2^63 exactly; every double below it in magnitude converts.
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(value) || value >= limit || value < -limit)
        return INT64_MIN;
    return static_cast<int64_t>(value);
}

} // namespace detail

} // namespace qv
