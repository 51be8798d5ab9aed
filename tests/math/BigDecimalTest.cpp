// BigDecimal through its public interface: the rounding table, text in both
// directions, exact and rounded division, and the equality rules.

#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qv/math/BigDecimal.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cmath>
#include <limits>
#include <string>

using qv::math::BigDecimal;
using qv::math::BigInteger;

namespace {

const qv::Result INVALID_ARGUMENT = static_cast<qv::Result>(0x80070057u);
const qv::Result DIVISION_BY_ZERO = static_cast<qv::Result>(0x80020012u);

BigDecimal dec(const char* text)
{
    return BigDecimal(text);
}

std::string plain(const BigDecimal& d)
{
    return d.toString().toUtf8();
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

} // namespace

TEST(BigDecimal, RoundingModesOnTheClassicTable)
{
    using R = BigDecimal;
    const char* inputs[] = {"5.5", "2.5", "1.6", "1.1", "1.0", "-1.0", "-1.1", "-1.6", "-2.5", "-5.5"};
    struct Row {
        BigDecimal::RoundingMode mode;
        const char* expected[10]; // nullptr: rounding necessary
    };
    const Row rows[] = {
        {R::ROUND_UP, {"6", "3", "2", "2", "1", "-1", "-2", "-2", "-3", "-6"}},
        {R::ROUND_DOWN, {"5", "2", "1", "1", "1", "-1", "-1", "-1", "-2", "-5"}},
        {R::ROUND_CEILING, {"6", "3", "2", "2", "1", "-1", "-1", "-1", "-2", "-5"}},
        {R::ROUND_FLOOR, {"5", "2", "1", "1", "1", "-1", "-2", "-2", "-3", "-6"}},
        {R::ROUND_HALF_UP, {"6", "3", "2", "1", "1", "-1", "-1", "-2", "-3", "-6"}},
        {R::ROUND_HALF_DOWN, {"5", "2", "2", "1", "1", "-1", "-1", "-2", "-2", "-5"}},
        {R::ROUND_HALF_EVEN, {"6", "2", "2", "1", "1", "-1", "-1", "-2", "-2", "-6"}},
        {R::ROUND_UNNECESSARY, {nullptr, nullptr, nullptr, nullptr, "1", "-1", nullptr, nullptr, nullptr, nullptr}},
    };
    for (const Row& row : rows) {
        for (int i = 0; i < 10; ++i) {
            BigDecimal input = dec(inputs[i]);
            if (row.expected[i]) {
                EXPECT_EQ(plain(input.setScale(0, row.mode)), row.expected[i]) << inputs[i] << " mode " << row.mode;
                // Dividing by one to scale 0 rounds the same way.
                EXPECT_EQ(plain(input.divide(BigDecimal(1), 0, row.mode)), row.expected[i]) << inputs[i];
            } else {
                EXPECT_EQ(rangeMessage([&] { input.setScale(0, row.mode); }), "Rounding necessary") << inputs[i];
            }
        }
    }
    for (int unknown : {-1, 8})
        EXPECT_EQ(resultMessage([&] { BigDecimal(1).setScale(0, static_cast<BigDecimal::RoundingMode>(unknown)); },
                                INVALID_ARGUMENT),
                  "Unknown rounding mode");
}

TEST(BigDecimal, ParsesSignFractionAndExponent)
{
    struct Case {
        const char* text;
        const char* unscaled;
        int32_t scale;
    };
    const Case cases[] = {{"12.340", "12340", 3},
                          {"1.2E+3", "12", -2},
                          {"-.5", "-5", 1},
                          {"+7.", "7", 0},
                          {"0.00", "0", 2},
                          {"1e-2", "1", 2},
                          {"-0", "0", 0},
                          {"123E2", "123", -2},
                          {"1.5e-2147483646", "15", 2147483647},
                          {"1e2147483648", "1", -2147483647 - 1}};
    for (const Case& c : cases) {
        BigDecimal d = dec(c.text);
        EXPECT_EQ(d.unscaledValue().toStdString(), c.unscaled) << c.text;
        EXPECT_EQ(d.scale(), c.scale) << c.text;
    }
    for (const char* bad : {"", "+", ".", "-.", "1e", "1e+", "1.2.3", "1,5", " 1", "1 ", "e5", "1e5.0", "--1", "0x1",
                            "1e+-5", "Infinity", "NaN"})
        EXPECT_EQ(resultMessage([&] { dec(bad); }, INVALID_ARGUMENT), "Malformed number text") << "'" << bad << "'";
    for (const char* huge : {"1e2147483649", "1e-2147483648", "1e99999999999999999999", "1.5e-2147483647"})
        EXPECT_EQ(rangeMessage([&] { dec(huge); }), "Scale out of the 32-bit range") << huge;
}

TEST(BigDecimal, PlainScientificAndEngineeringText)
{
    EXPECT_EQ(plain(dec("12.340")), "12.340");
    EXPECT_EQ(plain(dec("-0.005")), "-0.005");
    EXPECT_EQ(plain(dec("1.2E+3")), "1200");
    EXPECT_EQ(plain(dec("0E+3")), "0");
    EXPECT_EQ(plain(dec("0E-3")), "0.000");
    EXPECT_EQ(plain(BigDecimal(BigInteger(-123), 5)), "-0.00123");
    EXPECT_EQ(dec("1.2E+3").toScientificString().toUtf8(), "1.2E+3");
    EXPECT_EQ(dec("0.000000123").toScientificString().toUtf8(), "1.23E-7");
    EXPECT_EQ(dec("0.00123").toScientificString().toUtf8(), "0.00123");
    EXPECT_EQ(dec("-123.45").toScientificString().toUtf8(), "-123.45");
    EXPECT_EQ(dec("0.000000123").toEngineeringString().toUtf8(), "123E-9");
    EXPECT_EQ(dec("1.2E+4").toEngineeringString().toUtf8(), "12E+3");
    EXPECT_EQ(dec("0E+4").toEngineeringString().toUtf8(), "0.00E+6");
    EXPECT_EQ(dec("-9.75").toStdString(), "-9.75");
}

TEST(BigDecimal, DivisionExactAndRounded)
{
    EXPECT_EQ(plain(dec("1").divide(dec("4"))), "0.25");
    EXPECT_EQ(plain(dec("10").divide(dec("4"))), "2.5");
    EXPECT_EQ(plain(dec("1.00").divide(dec("8"))), "0.125");
    EXPECT_EQ(plain(dec("6.00").divide(dec("2"))), "3.00");
    EXPECT_EQ(plain(dec("2.0").divide(dec("0.25"))), "8");
    EXPECT_EQ(rangeMessage([] { dec("1").divide(dec("3")); }),
              "Non-terminating decimal expansion: no exact decimal quotient");
    EXPECT_EQ(plain(dec("1").divide(dec("3"), 5, BigDecimal::ROUND_HALF_UP)), "0.33333");
    EXPECT_EQ(plain(dec("2").divide(dec("3"), 5, BigDecimal::ROUND_HALF_UP)), "0.66667");
    EXPECT_EQ(plain(dec("-2").divide(dec("3"), 0, BigDecimal::ROUND_FLOOR)), "-1");
    EXPECT_EQ(plain(dec("1.50").divide(dec("7"), BigDecimal::ROUND_DOWN)), "0.21");
    EXPECT_EQ(plain(dec("12345").divide(dec("1"), -2, BigDecimal::ROUND_HALF_EVEN)), "12300");
    for (auto f : {+[] { dec("1").divide(dec("0")); }, +[] { dec("1").divide(dec("0.00"), 2, BigDecimal::ROUND_UP); }})
        EXPECT_EQ(resultMessage(f, DIVISION_BY_ZERO), "Division by zero");
}

TEST(BigDecimal, EqualsSeesScaleCompareToDoesNot)
{
    BigDecimal a = dec("2.0"), b = dec("2.00");
    EXPECT_EQ(a.compareTo(b), 0);
    EXPECT_FALSE(a.equals(b));
    EXPECT_TRUE(a.equals(static_cast<const qv::Object&>(dec("2.0"))));
    EXPECT_EQ(a.hashCode(), dec("2.0").hashCode());
    EXPECT_EQ(a.compareTo(static_cast<const qv::Object&>(b)), 0);
    EXPECT_TRUE(dec("-1.5") < dec("-1.49") && dec("1E+3") > dec("999.999") && dec("0.1") >= dec("0.10"));
    EXPECT_FALSE(a.equals(static_cast<const qv::Object&>(BigInteger(2))));
    EXPECT_THROW(a.compareTo(static_cast<const qv::Object&>(BigInteger(2))), qv::CastFailedException);
    EXPECT_EQ(a.stripTrailingZeros().hashCode(), b.stripTrailingZeros().hashCode());
    EXPECT_TRUE(a.stripTrailingZeros().equals(b.stripTrailingZeros()));
}

TEST(BigDecimal, DoublesExactlyOrShortest)
{
    EXPECT_EQ(plain(BigDecimal(0.1)), "0.1000000000000000055511151231257827021181583404541015625");
    EXPECT_EQ(plain(BigDecimal::valueOf(0.1)), "0.1");
    EXPECT_EQ(BigDecimal::valueOf(1e22).toScientificString().toUtf8(), "1E+22");
    EXPECT_EQ(plain(BigDecimal(-2.5)), "-2.5");
    // Integers never pass through a double.
    EXPECT_EQ(plain(BigDecimal::valueOf(9007199254740993LL)), "9007199254740993");
    EXPECT_EQ(plain(BigDecimal::valueOf(-12345, 2)), "-123.45");
    EXPECT_EQ(plain(BigDecimal::valueOf(18446744073709551615ULL, 20)), "0.18446744073709551615");
    EXPECT_EQ(plain(BigDecimal(1e22)), "10000000000000000000000");
    EXPECT_EQ(BigDecimal(5e-324).toDouble(), 5e-324);
    EXPECT_EQ(dec("1e-400").toDouble(), 0.0);
    EXPECT_TRUE(std::signbit(dec("-1e-400").toDouble()));
    EXPECT_EQ(dec("1.8e308").toDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(dec("0.1").toDouble(), 0.1);
    EXPECT_EQ(dec("2.4703282292062328e-324").toDouble(), 5e-324); // just above half the least subnormal
    EXPECT_EQ(dec("2.4703282292062327e-324").toDouble(), 0.0);
    for (double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_THROW(BigDecimal b(bad), qv::ResultException);
        EXPECT_THROW(BigDecimal::valueOf(bad), qv::ResultException);
    }
}

TEST(BigDecimal, ScaleAndPointMovement)
{
    EXPECT_EQ(plain(dec("12.3").movePointLeft(2)), "0.123");
    EXPECT_EQ(plain(dec("12.3").movePointRight(5)), "1230000");
    EXPECT_EQ(dec("12.3").movePointRight(5).scale(), 0);
    EXPECT_EQ(plain(dec("12.3").movePointLeft(-1)), "123");
    EXPECT_EQ(dec("1200").stripTrailingZeros().scale(), -2);
    EXPECT_EQ(dec("0.000").stripTrailingZeros().scale(), 0);
    EXPECT_EQ(dec("0").precision(), 1);
    EXPECT_EQ(dec("-12.340").precision(), 5);
    EXPECT_EQ(dec("-12.9").toBigInteger(), BigInteger(-12));
    EXPECT_EQ(dec("1.2E+3").toBigInteger(), BigInteger(1200));
    EXPECT_EQ(plain(dec("1.25").setScale(4)), "1.2500");
    EXPECT_EQ(plain(dec("-3.7").abs()), "3.7");
    EXPECT_EQ(dec("-3.7").signum(), -1);
    EXPECT_EQ(plain(dec("1.5") + dec("2.25") - dec("0.75") * dec("2")), "2.25");
    EXPECT_EQ(plain(dec("1.5").min(dec("1.50"))), "1.5");
    EXPECT_EQ(rangeMessage([] { dec("1e-2147483647").movePointLeft(1); }), "Scale out of the 32-bit range");
}

TEST(BigDecimal, ExtremeScalesNeitherHangNorExhaustMemory)
{
    BigDecimal tiny = dec("1e-2000000000"), huge = dec("1e+2000000000");
    EXPECT_LT(tiny.compareTo(BigDecimal(1)), 0);
    EXPECT_GT(huge.compareTo(tiny), 0);
    EXPECT_EQ(plain(tiny.setScale(0, BigDecimal::ROUND_UP)), "1");
    EXPECT_EQ(plain(tiny.setScale(0, BigDecimal::ROUND_HALF_EVEN)), "0");
    EXPECT_EQ(plain(tiny.divide(BigDecimal(3), 5, BigDecimal::ROUND_CEILING)), "0.00001");
    EXPECT_EQ(tiny.toDouble(), 0.0);
    EXPECT_EQ(huge.toDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(tiny.toBigInteger().signum(), 0);
    EXPECT_EQ(huge.toScientificString().toUtf8(), "1E+2000000000");
    const std::string tooLarge = "Value too large: magnitudes are limited to 2147483584 bits";
    EXPECT_EQ(rangeMessage([&] { tiny.add(huge); }), tooLarge);
    EXPECT_EQ(rangeMessage([&] { huge.toString(); }), tooLarge);
    EXPECT_EQ(rangeMessage([&] { huge.toBigInteger(); }), tooLarge);
}
