#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
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

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace qv;

TEST(Number, DifferenceCompareWidensSmallTypesAndWraps32Bit)
{
    EXPECT_LT(Integer32(2147483647).compareTo(Integer32(-1)), 0);
    EXPECT_EQ(Integer8(-128).compareTo(Integer8(127)), -255);
    EXPECT_EQ(Integer16(-32768).compareTo(Integer16(32767)), -65535);
    EXPECT_EQ(UInteger8(0).compareTo(UInteger8(255)), -255);
    EXPECT_EQ(UInteger16(65535).compareTo(UInteger16(0)), 65535);
    EXPECT_LT(UInteger32(0x80000000u).compareTo(UInteger32(0)), 0);
    EXPECT_EQ(Integer32(7).compareTo(Integer32(3)), 4);
    // The other side is read through the accessor of this class's width.
    EXPECT_EQ(Integer8(1).compareTo(Integer32(257)), 0);
}

TEST(Number, ThreeWayCompareAndNaN)
{
    EXPECT_EQ(Integer64(INT64_MIN).compareTo(Integer64(INT64_MAX)), -1);
    EXPECT_EQ(UInteger64(UINT64_MAX).compareTo(UInteger64(0)), 1);
    EXPECT_EQ(Double(1.5).compareTo(Double(1.5)), 0);
    EXPECT_EQ(Float(-2.0f).compareTo(Double(3.0)), -1);
    double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Double(nan).compareTo(Double(0.0)), 1);
    EXPECT_EQ(Double(0.0).compareTo(Double(nan)), 1);
}

TEST(Number, EqualsHashAndCrossClassRules)
{
    EXPECT_TRUE(Integer32(5).equals(Double(5.9)));
    EXPECT_FALSE(Double(5.9).equals(Integer32(5)));
    EXPECT_EQ(Double(2.7).hashCode(), 2u);
    EXPECT_EQ(Integer64(0x100000005LL).hashCode(), 5u);
    EXPECT_EQ(Integer8(-1).hashCode(), 0xFFFFFFFFu);
    Integer32 self(9);
    EXPECT_EQ(self.compareTo(static_cast<const Object&>(self)), 0);
    EXPECT_THROW(Integer32(1).compareTo(static_cast<const Object&>(String(u"1"))), CastFailedException);
}

TEST(Number, ConversionsTruncateSilently)
{
    EXPECT_EQ(Integer16(Integer32(70000)).getValue(), 4464);
    EXPECT_EQ(UInteger8(Integer32(-1)).getValue(), 255);
    EXPECT_EQ(Integer32(Double(-7.9)).getValue(), -7);
    EXPECT_EQ(Double(-7.9).toInt64(), -7);
    EXPECT_EQ(Double(1e300).toInt64(), INT64_MIN);
    EXPECT_EQ(Double(std::nan("")).toInt64(), INT64_MIN);
    EXPECT_EQ(Integer64(-1).toUInt64(), UINT64_MAX);
    EXPECT_EQ(UInteger64(UINT64_MAX).toInt32(), -1);
    EXPECT_FLOAT_EQ(Double(0.1).toFloat(), 0.1f);
    EXPECT_EQ(Integer64(-42).toBigInteger().toInt64(), -42);
    // The decimal goes through double: 2^53 + 1 loses its last digit.
    EXPECT_TRUE(Integer64(9007199254740993LL).toBigDecimal().toString().equals(u"9007199254740992"));
}

TEST(Number, ParsesNarrowSilentlyAndWideWithErrors)
{
    EXPECT_EQ(Number::parseInt32(u"abc"), 0);
    EXPECT_EQ(Number::parseInt8(u"300"), 44);
    EXPECT_EQ(Number::parseShort(u"  -12x"), -12);
    EXPECT_EQ(Number::parseUInt16(u"ff", 16), 255);
    EXPECT_EQ(Number::parseUInt32(u"4294967295"), 4294967295u);
    EXPECT_DOUBLE_EQ(Number::parseDouble(u"2.5e3"), 2500.0);
    EXPECT_EQ(Number::parseInt64(u"-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(Number::parseUInt64(u"ffffffffffffffff", 16), UINT64_MAX);
    EXPECT_ANY_THROW(Number::parseInt64(u"12z"));
    EXPECT_ANY_THROW(Number::parseBigInteger(u""));
    EXPECT_TRUE(Number::parseBigDecimal(u"-1.250").toString().equals(u"-1.250"));
    EXPECT_EQ(Integer32(String(u"123")).getValue(), 123);
    EXPECT_EQ(UInteger64(String(u"18446744073709551615")).getValue(), UINT64_MAX);
}

TEST(Number, TextForms)
{
    EXPECT_TRUE(Integer8(-5).toString().equals(u"-5"));
    EXPECT_TRUE(UInteger32(4000000000u).toString().equals(u"4000000000"));
    EXPECT_TRUE(Integer64(INT64_MIN).toString().equals(u"-9223372036854775808"));
    EXPECT_TRUE(UInteger64(255).toString(16).equals(u"ff"));
    EXPECT_TRUE(UInteger64(UINT64_MAX).toString().equals(u"18446744073709551615"));
    EXPECT_TRUE(Double(1.0 / 3).toString().equals(u"0.333333"));
    EXPECT_TRUE(Float(1e7f).toString().equals(u"1e+07"));
    Reference<Object> copy(Integer16(12).clone());
    EXPECT_TRUE(copy->equals(Integer16(12)));
    EXPECT_TRUE(copy->getClass()->isInstance(Integer16(0)));
}

namespace {

// A number class of the caller's own: only the two primary conversions are
// required of it, and they disagree on purpose so that each default accessor
// shows which one it went through.
class MeasuredNumber : public Number {
public:
    int64_t toInt64() const override { return 0x123456789ABCDEF0LL; }
    double toDouble() const override { return -2.75; }
};

} // namespace

TEST(Number, DefaultsOfACallersOwnNumberClass)
{
    MeasuredNumber n;
    EXPECT_EQ(n.toByte(), static_cast<signed char>(0xF0));
    EXPECT_EQ(n.toShort(), static_cast<short>(0xDEF0));
    EXPECT_EQ(n.toInt(), static_cast<int>(0x9ABCDEF0u));
    EXPECT_EQ(n.toLong(), static_cast<int32_t>(0x9ABCDEF0u));
    EXPECT_EQ(n.toUByte(), 0xF0u);
    EXPECT_EQ(n.toUShort(), 0xDEF0u);
    EXPECT_EQ(n.toULong(), 0x9ABCDEF0u);
    EXPECT_EQ(n.toUInt64(), 0x123456789ABCDEF0ull);
    EXPECT_EQ(n.hashCode(), 0x9ABCDEF0u);
    EXPECT_EQ(n.toFloat(), -2.75f);
    EXPECT_EQ(n.toBigInteger().toInt64(), 0x123456789ABCDEF0LL);
    EXPECT_TRUE(n.toBigDecimal().toString().equals(u"-2.75"));
    // Without a rule of its own it orders as any object: by address.
    MeasuredNumber other;
    EXPECT_TRUE(n.equals(n));
    EXPECT_FALSE(n.equals(other));
    EXPECT_EQ(n.compareTo(other), -other.compareTo(n));
    // Concrete classes still read it through their own width.
    EXPECT_EQ(Integer16(3).compareTo(static_cast<const Number&>(n)), 3 - static_cast<short>(0xDEF0));
}
