#include <qv/lang/Double.h>
#include <qv/lang/Float.h>
#include <qv/lang/Integer16.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/Integer64.h>
#include <qv/lang/Integer8.h>
#include <qv/lang/UInteger16.h>
#include <qv/lang/UInteger32.h>
#include <qv/lang/UInteger64.h>
#include <qv/lang/UInteger8.h>

#include "core/RecycledBlocks.h"

namespace qv {

namespace {

template <class T>
int threeWay(T a, T b)
{
    if (a < b)
        return -1;
    if (a == b)
        return 0;
    // Greater, or unordered: a comparison involving NaN gives 1.
    return 1;
}

// The 32-bit classes subtract with wrap-around: far-apart values can give the
// wrong sign. Kept as is.
int wrappingDifference(uint32_t a, uint32_t b)
{
    return static_cast<int32_t>(a - b);
}

} // namespace

#define QV_DEFINE_BOXED_NUMBER(Name, Type, Base, accessor, parse)                                                      \
    Name::Name() noexcept : BoxedNumber(Type()) {}                                                                     \
    Name::Name(Type value) noexcept : BoxedNumber(value) {}                                                            \
    Name::Name(const Name& other) noexcept = default;                                                                  \
    Name::Name(const Number& other) : BoxedNumber(other.accessor()) {}                                                 \
    Name::Name(const String& text) : BoxedNumber(static_cast<Type>(parse(text))) {}                                    \
    Name::~Name() = default;                                                                                           \
    Name& Name::operator=(Type value) noexcept                                                                         \
    {                                                                                                                  \
        m_value = value;                                                                                               \
        return *this;                                                                                                  \
    }                                                                                                                  \
    Name& Name::operator=(const Name& other) noexcept = default;                                                       \
    Object* Name::clone() const                                                                                        \
    {                                                                                                                  \
        return new Name(*this);                                                                                        \
    }                                                                                                                  \
    void* Name::operator new(size_t size)                                                                              \
    {                                                                                                                  \
        return detail::allocateRecycled<Name>(size);                                                                   \
    }                                                                                                                  \
    void Name::operator delete(void* block, size_t size) noexcept                                                      \
    {                                                                                                                  \
        detail::releaseRecycled<Name>(block, size);                                                                    \
    }

QV_DEFINE_BOXED_NUMBER(Integer8, int8_t, SignedInteger, toInt8, Number::parseInt8)
QV_DEFINE_BOXED_NUMBER(Integer16, int16_t, SignedInteger, toInt16, Number::parseInt16)
QV_DEFINE_BOXED_NUMBER(Integer32, int32_t, SignedInteger, toInt32, Number::parseInt32)
QV_DEFINE_BOXED_NUMBER(Integer64, int64_t, SignedInteger, toInt64, Number::parseInt64)
QV_DEFINE_BOXED_NUMBER(UInteger8, uint8_t, UnsignedInteger, toUInt8, Number::parseUInt8)
QV_DEFINE_BOXED_NUMBER(UInteger16, uint16_t, UnsignedInteger, toUInt16, Number::parseUInt16)
QV_DEFINE_BOXED_NUMBER(UInteger32, uint32_t, UnsignedInteger, toUInt32, Number::parseUInt32)
QV_DEFINE_BOXED_NUMBER(UInteger64, uint64_t, UnsignedInteger, toUInt64, Number::parseUInt64)
QV_DEFINE_BOXED_NUMBER(Float, float, Number, toFloat, Number::parseFloat)
QV_DEFINE_BOXED_NUMBER(Double, double, Number, toDouble, Number::parseDouble)

// The 8- and 16-bit classes widen first, so the sign of the difference is right.
int Integer8::compareTo(const Number& other) const
{
    return int32_t(m_value) - int32_t(other.toInt8());
}
int Integer16::compareTo(const Number& other) const
{
    return int32_t(m_value) - int32_t(other.toInt16());
}
int Integer32::compareTo(const Number& other) const
{
    return wrappingDifference(static_cast<uint32_t>(m_value), static_cast<uint32_t>(other.toInt32()));
}
int Integer64::compareTo(const Number& other) const
{
    return threeWay<int64_t>(m_value, other.toInt64());
}
int UInteger8::compareTo(const Number& other) const
{
    return int32_t(m_value) - int32_t(other.toUInt8());
}
int UInteger16::compareTo(const Number& other) const
{
    return int32_t(m_value) - int32_t(other.toUInt16());
}
int UInteger32::compareTo(const Number& other) const
{
    return wrappingDifference(m_value, other.toUInt32());
}
int UInteger64::compareTo(const Number& other) const
{
    return threeWay<uint64_t>(m_value, other.toUInt64());
}
int Float::compareTo(const Number& other) const
{
    return threeWay<float>(m_value, other.toFloat());
}
int Double::compareTo(const Number& other) const
{
    return threeWay<double>(m_value, other.toDouble());
}

String Integer8::toString()
{
    return String::valueOf(static_cast<int>(m_value));
}
String Integer16::toString()
{
    return String::valueOf(static_cast<int>(m_value));
}
String Integer32::toString()
{
    return String::valueOf(static_cast<long>(m_value));
}
String Integer64::toString()
{
    return SignedInteger::toString();
}
String UInteger8::toString()
{
    return String::valueOf(static_cast<int>(m_value));
}
String UInteger16::toString()
{
    return String::valueOf(static_cast<unsigned int>(m_value));
}
String UInteger32::toString()
{
    return String::valueOf(static_cast<unsigned long>(m_value));
}
String UInteger64::toString()
{
    return UnsignedInteger::toString(10);
}
String Float::toString()
{
    return String::valueOf(m_value);
}
String Double::toString()
{
    return String::valueOf(m_value);
}

} // namespace qv
