// BigInteger through its public interface: construction, conversions, the
// documented failures, two's complement bit semantics and the object rules.

#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cmath>
#include <limits>
#include <string>

using qv::math::BigInteger;

namespace {

const qv::Result INVALID_ARGUMENT = static_cast<qv::Result>(0x80070057u);
const qv::Result DIVISION_BY_ZERO = static_cast<qv::Result>(0x80020012u);

qv::String wide(const char* s)
{
    std::u16string w(s, s + std::char_traits<char>::length(s));
    return qv::String(w.data(), static_cast<int32_t>(w.size()));
}

template <class F>
std::string resultMessage(F f, qv::Result expected)
{
    return qvtest::messageOf<qv::ResultException>(f, expected);
}

template <class F>
std::string rangeMessage(F f)
{
    return qvtest::messageOf<qv::RangeErrorException>(f);
}

BigInteger big(const char* text, int radix = 10)
{
    return BigInteger(text, radix);
}

} // namespace

TEST(BigInteger, ConstructsFromEveryIntegerType)
{
    EXPECT_EQ(BigInteger(std::numeric_limits<int64_t>::min()).toStdString(), "-9223372036854775808");
    EXPECT_EQ(BigInteger(std::numeric_limits<uint64_t>::max()).toStdString(), "18446744073709551615");
    EXPECT_EQ(BigInteger(std::numeric_limits<int32_t>::min()).toStdString(), "-2147483648");
    EXPECT_EQ(BigInteger(4294967295u).toStdString(), "4294967295");
    EXPECT_EQ(BigInteger().toStdString(), "0");
    EXPECT_EQ(BigInteger().signum(), 0);
}

TEST(BigInteger, ConstructsFromDoublesByTruncation)
{
    EXPECT_EQ(BigInteger(2.99).toInt64(), 2);
    EXPECT_EQ(BigInteger(-2.99).toInt64(), -2);
    EXPECT_EQ(BigInteger(0.5).signum(), 0);
    EXPECT_EQ(BigInteger(-0.0).signum(), 0);
    EXPECT_EQ(BigInteger(1e20).toStdString(), "100000000000000000000");
    EXPECT_EQ(BigInteger(std::ldexp(1.0, 200)), BigInteger(1) << 200);
    EXPECT_EQ(BigInteger(-std::numeric_limits<double>::max()).bitLength(), 1024);
    for (double bad : {std::nan(""), std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(resultMessage([&] { BigInteger b(bad); }, INVALID_ARGUMENT),
                  "NaN or infinity has no exact number value");
}

TEST(BigInteger, ParsesEveryRadixAndRejectsMalformedText)
{
    EXPECT_EQ(big("-FF", 16).toInt64(), -255);
    EXPECT_EQ(big("+zz", 36).toInt64(), 36 * 36 - 1);
    EXPECT_EQ(big("-0").signum(), 0);
    EXPECT_EQ(big("000000000000000000000000000000042").toInt64(), 42);
    EXPECT_EQ(BigInteger(wide("-101"), 2).toInt64(), -5);
    EXPECT_EQ(BigInteger(std::string("123456789012345678901234567890")).toStdString(16), "18ee90ff6c373e0ee4e3f0ad2");
    for (const char* bad : {"", "+", "-", " 1", "1 ", "0x10", "1_000", "12a", "--1", "+-1", "1.0", "1e5"})
        EXPECT_EQ(resultMessage([&] { big(bad); }, INVALID_ARGUMENT), "Malformed number text") << bad;
    EXPECT_EQ(resultMessage([&] { big("z", 35); }, INVALID_ARGUMENT), "Malformed number text");
    const char16_t nonAscii[] = {u'1', u'\u0661'};
    EXPECT_EQ(resultMessage([&] { BigInteger b(qv::String(nonAscii, 2)); }, INVALID_ARGUMENT), "Malformed number text");
    for (int radix : {-10, 0, 1, 37})
        EXPECT_EQ(resultMessage([&] { big("1", radix); }, INVALID_ARGUMENT), "Radix out of range: must be 2 to 36");
    EXPECT_EQ(resultMessage([&] { BigInteger(5).toString(37); }, INVALID_ARGUMENT),
              "Radix out of range: must be 2 to 36");
}

TEST(BigInteger, PrintsInLowerCaseInAnyRadix)
{
    EXPECT_EQ(BigInteger(255).toString(16).toUtf8(), "ff");
    EXPECT_EQ(BigInteger(-255).toString(2).toUtf8(), "-11111111");
    EXPECT_EQ(BigInteger(35).toString(36).toUtf8(), "z");
    EXPECT_EQ(BigInteger().toString(7).toUtf8(), "0");
    EXPECT_EQ(big("-123456789012345678901234567890").toString().toUtf8(), "-123456789012345678901234567890");
}

TEST(BigInteger, IntegerConversionsKeepTheLowBits)
{
    BigInteger twoTo64 = BigInteger(1) << 64;
    EXPECT_EQ((twoTo64 + 5).toInt64(), 5);
    EXPECT_EQ((twoTo64 - 1).toInt64(), -1);
    EXPECT_EQ(BigInteger(-1).toUInt64(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ((BigInteger(1) << 63).toInt64(), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(BigInteger(0x1234567887654321LL).toInt32(), static_cast<int32_t>(0x87654321u));
    EXPECT_EQ(BigInteger(-(1LL << 32) - 7).toUInt32(), 0xFFFFFFF9u);
    EXPECT_EQ((-twoTo64 - 3).toInt64(), -3);
}

TEST(BigInteger, DoubleConversionRoundsHalfToEvenAndOverflowsToInfinity)
{
    BigInteger twoTo53 = BigInteger(1) << 53;
    EXPECT_EQ((twoTo53 + 1).toDouble(), 9007199254740992.0);
    EXPECT_EQ((twoTo53 + 3).toDouble(), 9007199254740996.0);
    EXPECT_EQ(((twoTo53 + 1) << 100).toDouble(), std::ldexp(9007199254740992.0, 100));
    EXPECT_EQ((((twoTo53 + 1) << 100) + 1).toDouble(), std::ldexp(9007199254740994.0, 100));
    BigInteger maxDouble = ((BigInteger(1) << 53) - 1) << 971;
    EXPECT_EQ(maxDouble.toDouble(), std::numeric_limits<double>::max());
    BigInteger halfway = maxDouble + (BigInteger(1) << 970);
    EXPECT_EQ((halfway - 1).toDouble(), std::numeric_limits<double>::max());
    EXPECT_EQ(halfway.toDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ((-halfway).toDouble(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(BigInteger(-12345).toDouble(), -12345.0);
}

TEST(BigInteger, DivisionSignsAndDivisionByZero)
{
    EXPECT_EQ(BigInteger(-7) / 2, BigInteger(-3));
    EXPECT_EQ(BigInteger(-7) % 2, BigInteger(-1));
    EXPECT_EQ(BigInteger(7) / -2, BigInteger(-3));
    EXPECT_EQ(BigInteger(7) % -2, BigInteger(1));
    EXPECT_EQ(BigInteger(-7).mod(2), BigInteger(1));
    auto qr = BigInteger(-7).divideAndRemainder(BigInteger(-2));
    EXPECT_EQ(qr.first, BigInteger(3));
    EXPECT_EQ(qr.second, BigInteger(-1));
    BigInteger zero;
    EXPECT_EQ(resultMessage([&] { BigInteger(1) / zero; }, DIVISION_BY_ZERO), "Division by zero");
    EXPECT_EQ(resultMessage([&] { BigInteger(1) % zero; }, DIVISION_BY_ZERO), "Division by zero");
    EXPECT_EQ(resultMessage([&] { zero.divideAndRemainder(zero); }, DIVISION_BY_ZERO), "Division by zero");
    EXPECT_EQ(resultMessage([&] { big("123456789012345678901234567890").divide(zero); }, DIVISION_BY_ZERO),
              "Division by zero");
    for (int m : {0, -3})
        EXPECT_EQ(resultMessage([&] { BigInteger(5).mod(m); }, INVALID_ARGUMENT), "Modulus not positive");
}

TEST(BigInteger, PowersAndModularArithmetic)
{
    EXPECT_EQ(BigInteger(0).pow(0), BigInteger(1));
    EXPECT_EQ(BigInteger(-2).pow(3), BigInteger(-8));
    EXPECT_EQ(BigInteger(10).pow(30).toStdString(), "1" + std::string(30, '0'));
    EXPECT_EQ(resultMessage([] { BigInteger(2).pow(-1); }, INVALID_ARGUMENT), "Negative exponent");
    EXPECT_EQ(BigInteger(3).modPow(-1, 7), BigInteger(5));
    EXPECT_EQ(BigInteger(-3).modPow(3, 7), BigInteger(1));
    EXPECT_EQ(BigInteger(12345).modPow(0, 1), BigInteger(0));
    EXPECT_EQ(BigInteger(3).modInverse(7), BigInteger(5));
    EXPECT_EQ(BigInteger(-3).modInverse(7), BigInteger(2));
    EXPECT_EQ(resultMessage([] { BigInteger(2).modPow(3, 0); }, INVALID_ARGUMENT), "Modulus not positive");
    EXPECT_EQ(resultMessage([] { BigInteger(2).modInverse(-5); }, INVALID_ARGUMENT), "Modulus not positive");
    EXPECT_EQ(rangeMessage([] { BigInteger(2).modInverse(4); }),
              "Value not invertible: it shares a factor with the modulus");
    EXPECT_EQ(rangeMessage([] { BigInteger(6).modPow(-1, 9); }),
              "Value not invertible: it shares a factor with the modulus");
    EXPECT_EQ(BigInteger(-12).gcd(18), BigInteger(6));
    EXPECT_EQ(BigInteger(0).gcd(0), BigInteger(0));
    EXPECT_EQ(BigInteger(0).gcd(-5), BigInteger(5));
}

TEST(BigInteger, ResultsBeyondTheSizeLimitAreRefusedAtOnce)
{
    const std::string tooLarge = "Value too large: magnitudes are limited to 2147483584 bits";
    EXPECT_EQ(rangeMessage([] { BigInteger(3).pow(std::numeric_limits<int32_t>::max()); }), tooLarge);
    EXPECT_EQ(rangeMessage([] { BigInteger(2).pow(std::numeric_limits<int32_t>::max()); }), tooLarge);
    EXPECT_EQ(rangeMessage([] { BigInteger(1).shiftLeft(std::numeric_limits<int32_t>::max()); }), tooLarge);
    EXPECT_EQ(rangeMessage([] { BigInteger(-1).shiftRight(std::numeric_limits<int32_t>::min()); }), tooLarge);
    EXPECT_EQ(rangeMessage([] { BigInteger(1).setBit(std::numeric_limits<int32_t>::max()); }), tooLarge);
    // Bits that are already what they are asked to be cost nothing.
    EXPECT_EQ(BigInteger(-1).setBit(std::numeric_limits<int32_t>::max()), BigInteger(-1));
    EXPECT_EQ(BigInteger(1).clearBit(std::numeric_limits<int32_t>::max()), BigInteger(1));
    EXPECT_EQ(BigInteger(0).shiftLeft(std::numeric_limits<int32_t>::max()), BigInteger(0));
}

TEST(BigInteger, NegativeValuesActAsInfiniteTwosComplement)
{
    EXPECT_EQ(BigInteger(-1).bitLength(), 0);
    EXPECT_EQ(BigInteger(-128).bitLength(), 7);
    EXPECT_EQ(BigInteger(-129).bitLength(), 8);
    EXPECT_EQ(BigInteger(255).bitLength(), 8);
    EXPECT_EQ(BigInteger(-256).bitLength(), 8);
    EXPECT_EQ(BigInteger(-1).bitCount(), 0);
    EXPECT_EQ(BigInteger(-2).bitCount(), 1);
    EXPECT_EQ(BigInteger(-256).bitCount(), 8);
    EXPECT_EQ(BigInteger(255).bitCount(), 8);
    EXPECT_TRUE(BigInteger(-1).testBit(100000));
    EXPECT_FALSE(BigInteger(-2).testBit(0));
    EXPECT_TRUE(BigInteger(-2).testBit(1));
    EXPECT_EQ(BigInteger(-1).clearBit(0), BigInteger(-2));
    EXPECT_EQ(BigInteger(-2).setBit(0), BigInteger(-1));
    EXPECT_EQ(BigInteger(-1).flipBit(64), -(BigInteger(1) << 64) - 1);
    EXPECT_EQ(BigInteger(5).flipBit(0), BigInteger(4));
    EXPECT_EQ(BigInteger(-5) >> 1, BigInteger(-3));
    EXPECT_EQ(BigInteger(-1) >> 100, BigInteger(-1));
    EXPECT_EQ(BigInteger(-4) >> 2, BigInteger(-1));
    EXPECT_EQ(BigInteger(5) << -1, BigInteger(2));
    EXPECT_EQ(BigInteger(-5) >> -2, BigInteger(-20));
    EXPECT_EQ(~BigInteger(0), BigInteger(-1));
    EXPECT_EQ(BigInteger(-6) & BigInteger(13), BigInteger(8));
    EXPECT_EQ(BigInteger(-6) | BigInteger(13), BigInteger(-1));
    EXPECT_EQ(BigInteger(-6) ^ BigInteger(-13), BigInteger(9));
    EXPECT_EQ(BigInteger(13).bitAndNot(-6), BigInteger(5));
    EXPECT_EQ(BigInteger(-8).getLowestSetBit(), 3);
    EXPECT_EQ(BigInteger(0).getLowestSetBit(), -1);
    for (auto f : {+[] { BigInteger(1).testBit(-1); }, +[] { BigInteger(1).setBit(-1); },
                   +[] { BigInteger(1).clearBit(-1); }, +[] { BigInteger(1).flipBit(-1); }})
        EXPECT_EQ(resultMessage(f, INVALID_ARGUMENT), "Negative bit index");
}

TEST(BigInteger, OperatorsMixWithBuiltInIntegers)
{
    BigInteger x = big("100000000000000000000");
    EXPECT_EQ(x + 1 - x, BigInteger(1));
    EXPECT_EQ(1 + x, x + 1);
    EXPECT_TRUE(x > 0 && -x < 0 && x != 0 && x >= x && x <= x);
    BigInteger y = 7;
    y += 3;
    y *= y;
    y -= 1;
    y /= 9;
    y %= 7;
    y <<= 3;
    y >>= 1;
    y |= 1;
    y &= 13;
    y ^= 2;
    EXPECT_EQ(y, BigInteger(3));
    EXPECT_EQ(BigInteger(-3).abs(), BigInteger(3));
    EXPECT_EQ(BigInteger(-3).min(2), BigInteger(-3));
    EXPECT_EQ(BigInteger(-3).max(2), BigInteger(2));
}

TEST(BigInteger, MovedFromValuesAreZero)
{
    BigInteger a = big("123456789012345678901234567890");
    BigInteger b(std::move(a));
    EXPECT_EQ(a.signum(), 0);
    EXPECT_EQ(a.toStdString(), "0");
    EXPECT_EQ(a + 1, BigInteger(1));
    a = std::move(b);
    EXPECT_EQ(b, BigInteger(0));
    EXPECT_EQ(a.toStdString(), "123456789012345678901234567890");
}

TEST(BigInteger, ObjectRulesEqualityHashingAndComparison)
{
    BigInteger a = big("340282366920938463463374607431768211457");
    BigInteger b = (BigInteger(1) << 128) + 1;
    EXPECT_TRUE(a.equals(static_cast<const qv::Object&>(b)));
    EXPECT_EQ(a.hashCode(), b.hashCode());
    EXPECT_EQ(a.compareTo(static_cast<const qv::Object&>(b)), 0);
    EXPECT_LT(BigInteger(-5).compareTo(static_cast<const qv::Object&>(BigInteger(3))), 0);
    // The hash is a function of the value alone: 31 * h + each 32-bit word.
    EXPECT_EQ(BigInteger(0).hashCode(), 0u);
    EXPECT_EQ(BigInteger(1).hashCode(), 1u);
    EXPECT_EQ(BigInteger(-1).hashCode(), 0xFFFFFFFFu);
    EXPECT_EQ((BigInteger(1) << 32).hashCode(), 31u);
    EXPECT_EQ(BigInteger(0x100000002LL).hashCode(), 33u);
    EXPECT_NE(BigInteger(1).hashCode(), BigInteger(2).hashCode());

    qv::math::BigDecimal decimal(1);
    EXPECT_FALSE(BigInteger(1).equals(static_cast<const qv::Object&>(decimal)));
    EXPECT_THROW(BigInteger(1).compareTo(static_cast<const qv::Object&>(decimal)), qv::CastFailedException);

    ASSERT_NE(a.getClass(), nullptr);
    EXPECT_EQ(std::u16string(a.getClass()->getName()), u"qv::math::BigInteger");
    EXPECT_EQ(std::u16string(decimal.getClass()->getName()), u"qv::math::BigDecimal");
    qv::Object* created = qv::Class::forName(u"qv::math::BigInteger")->createInstance();
    ASSERT_NE(dynamic_cast<BigInteger*>(created), nullptr);
    EXPECT_EQ(*dynamic_cast<BigInteger*>(created), BigInteger(0));
    created->AddRef();
    created->Release();

    // Values are copied and assigned without the reference count.
    BigInteger* held = new BigInteger(5);
    held->AddRef();
    *held = BigInteger(7);
    EXPECT_EQ(held->GetRefCount(), 1);
    BigInteger* copied = new BigInteger(*held);
    EXPECT_EQ(copied->GetRefCount(), 0);
    EXPECT_EQ(*copied, BigInteger(7));
    delete copied;
    held->Release();

    qv::Object* copy = a.clone();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetRefCount(), 0);
    EXPECT_TRUE(copy->equals(a));
    EXPECT_EQ(copy->toString().toUtf8(), "340282366920938463463374607431768211457");
    copy->AddRef();
    copy->Release();
}
