#ifndef QV_LANG_NUMBER_H
#define QV_LANG_NUMBER_H

#include <qv/core/Object.h>
#include <qv/core/RecycledAllocation.h>
#include <qv/lang/String.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>

#include <cstdint>

namespace qv {

// A boxed primitive number, so numbers can live in collections and be
// compared, hashed and printed like any object. Every conversion between the
// boxed types is a plain truncation or reinterpretation: no range checks and
// no exceptions.
class QV_EXPORT Number : public Object {
public:
    Number() noexcept = default;
    Number(const Number& other) noexcept = default;
    Number& operator=(const Number& other) noexcept = default;
    ~Number() override;

    virtual int64_t toInt64() const = 0;
    virtual double toDouble() const = 0;
    virtual signed char toByte() const;
    virtual short toShort() const;
    virtual int toInt() const;
    // "long" of the original interface: 32 bits.
    virtual int32_t toLong() const;
    virtual unsigned char toUByte() const;
    virtual unsigned short toUShort() const;
    virtual unsigned int toUInt() const;
    virtual uint32_t toULong() const;
    virtual float toFloat() const;
    virtual math::BigInteger toBigInteger() const;
    // Through toDouble() for every class, so 64-bit values beyond 2^53 lose
    // their low digits here; kept as is.
    virtual math::BigDecimal toBigDecimal() const;
    virtual int8_t toInt8() const;
    virtual int16_t toInt16() const;
    virtual int32_t toInt32() const;
    virtual uint8_t toUInt8() const;
    virtual uint16_t toUInt16() const;
    virtual uint32_t toUInt32() const;
    virtual uint64_t toUInt64() const;

    // 0 for the same object; CastFailedException for anything but a Number;
    // otherwise the class's own rule against the other number.
    int compareTo(const Object& other) const override;
    // Only toInt64 and toDouble are required of a number class; one without
    // a compare rule of its own orders by address, as any Object does.
    virtual int compareTo(const Number& other) const;
    // compareTo(other) == 0, so numbers of different classes can be equal.
    bool equals(const Object& other) const override;
    // The low 32 bits of the value (floating values converted toward zero).
    uint32_t hashCode() const override;

    // The narrow parses report nothing: text without digits gives 0 and
    // out-of-range values are truncated.
    static signed char parseByte(const String& text);
    static int8_t parseInt8(const String& text);
    static short parseShort(const String& text);
    static int16_t parseInt16(const String& text);
    static int parseInt(const String& text);
    static int32_t parseInt32(const String& text);
    static int32_t parseLong(const String& text);
    static unsigned char parseUByte(const String& text, int32_t radix = 10);
    static uint8_t parseUInt8(const String& text, int32_t radix = 10);
    static unsigned short parseUShort(const String& text, int32_t radix = 10);
    static uint16_t parseUInt16(const String& text, int32_t radix = 10);
    static unsigned int parseUInt(const String& text, int32_t radix = 10);
    static uint32_t parseUInt32(const String& text, int32_t radix = 10);
    static uint32_t parseULong(const String& text, int32_t radix = 10);
    static double parseDouble(const String& text);
    static float parseFloat(const String& text);
    // These throw what BigInteger / BigDecimal throw for malformed text.
    static int64_t parseInt64(const String& text);
    static uint64_t parseUInt64(const String& text, int32_t radix = 10);
    static math::BigInteger parseBigInteger(const String& text);
    static math::BigDecimal parseBigDecimal(const String& text);
};

class QV_EXPORT SignedInteger : public Number {
public:
    ~SignedInteger() override;
    using Object::toString;
    // toInt64() in decimal.
    String toString() override;
};

class QV_EXPORT UnsignedInteger : public Number {
public:
    ~UnsignedInteger() override;
    using Object::toString;
    String toString() override;
    // toUInt64() in the given radix.
    virtual String toString(int32_t radix) const;
};

namespace detail {

// Storage and the two primary conversions shared by the ten boxed classes.
template <class T, class Base>
class BoxedNumber : public Base {
public:
    typedef T ValueType;

    T getValue() const noexcept { return m_value; }
    operator T() const noexcept { return m_value; }
    int64_t toInt64() const override;
    double toDouble() const override { return static_cast<double>(m_value); }

protected:
    explicit BoxedNumber(T value) noexcept : m_value(value) {}
    BoxedNumber(const BoxedNumber& other) noexcept = default;
    BoxedNumber& operator=(const BoxedNumber& other) noexcept = default;
    ~BoxedNumber() override = default;

    T m_value;
};

// Floating values convert toward zero; NaN and values beyond the 64-bit range
// give the hardware's "integer indefinite" (the most negative value), as the
// platform's own conversion does.
QV_EXPORT int64_t truncateToInt64(double value) noexcept;

template <class T, class Base>
int64_t BoxedNumber<T, Base>::toInt64() const
{
    if constexpr (std::is_floating_point<T>::value)
        return truncateToInt64(m_value);
    else
        return static_cast<int64_t>(m_value);
}

} // namespace detail

// Declares one boxed class: constructors from its value, a copy, any Number
// (through the accessor of its own width) and text (through its parse), the
// assignments, and the class's compare rule and text form. The ten classes
// (Integer8 ... UInteger64, Float, Double) are implemented together in
// BoxedNumbers.cpp.
#define QV_DECLARE_BOXED_NUMBER(Name, Type, Base)                                                                      \
    class QV_EXPORT Name : public detail::BoxedNumber<Type, Base> {                                                    \
    public:                                                                                                            \
        Name() noexcept;                                                                                               \
        Name(Type value) noexcept;                                                                                     \
        Name(const Name& other) noexcept;                                                                              \
        explicit Name(const Number& other);                                                                            \
        explicit Name(const String& text);                                                                             \
        ~Name() override;                                                                                              \
        Name& operator=(Type value) noexcept;                                                                          \
        Name& operator=(const Name& other) noexcept;                                                                   \
        Object* clone() const override;                                                                                \
        using Number::compareTo;                                                                                       \
        int compareTo(const Number& other) const override;                                                             \
        using Base::toString;                                                                                          \
        String toString() override;                                                                                    \
        /* Recycled across threads, as String's heap objects are. */                                                   \
        QV_RECYCLED_ALLOCATION                                                                                         \
    };

} // namespace qv

#endif
