// Fails each allocation of an operation in turn (the platform layer's fault
// injection, reached through the test programs' counting operator new):
// every failure must surface as qv::OutOfMemoryException and leave the
// operands as they were; the sanitizer build checks for leaks.

#include <qv/core/Exception.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include "AllocationSweep.h"
#include "Limbs.h"
#include "Natural.h"
#include "NumberTheoreticTransform.h"
#include "RadixPowers.h"

#include <functional>
#include <new>
#include <string>
#include <vector>

using qv::math::BigDecimal;
using qv::math::BigInteger;

namespace {

using MathAllocationFailure = qvtest::AllocationFaultTest;

int failEachAllocation(const std::function<void()>& op)
{
    return qvtest::sweepAllocations(op);
}

} // namespace

TEST_F(MathAllocationFailure, EveryFailedAllocationThrowsAndChangesNothing)
{
    // Big enough for Toom-3, the recursive division and the divide and
    // conquer radix conversion.
    const BigInteger a = BigInteger(7).pow(13000) + 12345;
    const BigInteger b = BigInteger(-3).pow(12001) + 1;
    const std::string aText = a.toStdString(), bText = b.toStdString();
    const BigDecimal d(b, 40);

    const std::function<void()> ops[] = {
        [&] { BigInteger r = a * (a + 1); },
        [&] { auto qr = (a * a).divideAndRemainder(b); },
        [&] { std::string s = a.toStdString(); },
        [&] { BigInteger r(aText); },
        [&] { BigInteger r = (a >> 30000).gcd(b >> 15000); },
        [&] { BigInteger r = BigInteger(12345).modPow(b.abs() >> 18000, BigInteger(1000003)); },
        [&] { BigInteger r = a.bitXor(b).shiftRight(77); },
        [&] { BigDecimal q = d.divide(BigDecimal(7), 50, BigDecimal::ROUND_HALF_EVEN); },
        [&] { qv::String s = d.toString(); },
        [&] {
            BigInteger target = 42;
            try {
                target = a;
            } catch (const qv::OutOfMemoryException&) {
                EXPECT_EQ(target, BigInteger(42)) << "a failed assignment changed its target";
                throw;
            }
        },
    };
    for (const auto& op : ops)
        EXPECT_GT(failEachAllocation(op), 0);
    EXPECT_EQ(a.toStdString(), aText);
    EXPECT_EQ(b.toStdString(), bText);
}

TEST_F(MathAllocationFailure, DecimalArithmeticAndEveryRadix)
{
    const BigDecimal x(std::string("-123456789012345678901234567890.123456789"));
    const BigDecimal y(std::string("98765432109876543210.00000000000000000001"));
    const std::string xText = x.toStdString();
    const BigInteger big = BigInteger(3).pow(4000) - 1;
    const std::string hex = big.toString(16).toUtf8();

    const std::function<void()> ops[] = {
        [&] { BigDecimal r = x.add(y); },
        [&] { BigDecimal r = x.subtract(y); },
        [&] { BigDecimal r = x.multiply(y); },
        [&] { BigDecimal r = x.setScale(3, BigDecimal::ROUND_HALF_UP); },
        [&] { qv::String s = y.toScientificString(); },
        [&] { qv::String s = x.toEngineeringString(); },
        [&] { BigDecimal r(std::string("-1.000000000000000000000000000000000000001E-300")); },
        [&] { qv::String s = big.toString(16); },
        [&] { qv::String s = big.toString(2); },
        [&] { qv::String s = big.toString(36); },
        [&] { BigInteger r(hex, 16); },
        [&] { BigInteger r(std::string("zyxwvutsrqponmlkjihgfedcba9876543210zyxwvutsrqponmlkjihgfedcba"), 36); },
    };
    for (const auto& op : ops)
        EXPECT_GT(failEachAllocation(op), 0);
    EXPECT_EQ(x.toStdString(), xText);
    EXPECT_EQ(big.toString(16).toUtf8(), hex);
}

TEST_F(MathAllocationFailure, ToomThreeAndFourProductsAndSquares)
{
    using namespace qv::math::detail;
    // The engine compiled into this program (whose thresholds the test
    // lowers), not the shared library's copy behind BigInteger.
    const Thresholds saved = thresholds();
    const Mag a = magAddSmall(magPow(magFromU64(7), 2500), 12345);
    const Mag b = magAddSmall(magPow(magFromU64(3), 3601), 1);
    const Mag aCopy = a;
    const Mag expected = magMul(a, b);
    // Toom-4 from 24 limbs: a (110 limbs) times b (90 limbs) and a squared
    // split in four, their pieces through Toom-3 and Karatsuba; then Toom-3
    // alone on top.
    thresholds().toom3Mul = thresholds().toom3Sqr = 12;
    for (const size_t toom4 : {size_t(24), ~size_t(0)}) {
        thresholds().toom4Mul = thresholds().toom4Sqr = toom4;
        const std::function<void()> ops[] = {
            [&] { Mag r = magMul(a, b); },
            [&] { Mag r = magSqr(a); },
        };
        for (const auto& op : ops)
            EXPECT_GT(failEachAllocation(op), 0) << "Toom-4 from " << toom4;
        EXPECT_EQ(magMul(a, b), expected) << "Toom-4 from " << toom4;
    }
    thresholds() = saved;
    EXPECT_EQ(a, aCopy);
}

TEST_F(MathAllocationFailure, TransformProductsDivisionAndText)
{
    using namespace qv::math::detail;
    // The lowered thresholds belong to the engine compiled into this
    // program, so the operations call it directly (the public classes use
    // the shared library's own copy, which keeps its thresholds).
    const Thresholds saved = thresholds();
    const Mag a = magAddSmall(magPow(magFromU64(7), 6000), 12345);
    const Mag b = magAddSmall(magPow(magFromU64(3), 5001), 1);
    const Mag square = magSqr(a);
    const Mag shortFactor = magPow(magFromU64(5), 1000);
    const std::string squareText = magToString(square, 10);
    std::vector<unsigned char> squareDigits;
    for (char c : squareText)
        squareDigits.push_back(static_cast<unsigned char>(c - '0'));
    // A remainder wrapped in 96 points (three transforms of 32) through the
    // divisor's kept transform; the quotient as the production thresholds
    // give it.
    const Mag thirdsDivisor = magAddSmall(magPow(magFromU64(3), 3500), 2);
    const Mag thirdsDividend = magAddSmall(magPow(magFromU64(7), 4300), 5);
    Mag thirdsQuotient, thirdsRemainder;
    magDivMod(thirdsDividend, thirdsDivisor, &thirdsQuotient, &thirdsRemainder);
    ASSERT_EQ(nttWrappedLength(thirdsDivisor.size() + 2), 96u);
    ASSERT_LT(shortFactor.size(), 40u);
    ASSERT_TRUE(transformBeatsToom(a.size(), shortFactor.size(), 40));
    // Transforms from 40 limbs (a * a takes the split one); division
    // through Newton's reciprocal in two blocks from 40 limbs of divisor
    // and quotient (with wrapped products); in the conversion to text one
    // reciprocal per level with its transforms kept, and kept power
    // transforms in the conversion from text; a product with a shorter
    // operand under 40 limbs that the cost model sends to the transform.
    const ConversionThresholds savedConversion = conversionThresholds();
    thresholds().nttMul = thresholds().nttSqr = 40;
    thresholds().nttUnbalancedMul = 10;
    thresholds().newtonDivision = 40;
    conversionThresholds() = ConversionThresholds{40, 40};
    const std::function<void()> ops[] = {
        [&] { Mag r = magMul(a, b); },
        [&] { Mag r = magSqr(a); },
        [&] { Mag r = magMul(a, shortFactor); },
        [&] {
            Mag q, r;
            magDivMod(square, b, &q, &r);
        },
        [&] { Mag r = magFromDigits(squareDigits.data(), squareDigits.size(), 10); },
        [&] { std::string s = magToString(square, 10); },
        // A radix whose powers no other operation has asked for yet: the
        // first attempts fail while the shared powers, power transforms
        // and dividers are being computed and published.
        [&] { Mag r = magFromDigits(squareDigits.data(), squareDigits.size(), 31); },
        [&] { std::string s = magToString(square, 31); },
        [&] {
            Mag q, r;
            magDivMod(thirdsDividend, thirdsDivisor, &q, &r);
        },
    };
    for (const auto& op : ops)
        EXPECT_GT(failEachAllocation(op), 0);
    Mag q, r;
    magDivMod(thirdsDividend, thirdsDivisor, &q, &r);
    EXPECT_EQ(q, thirdsQuotient);
    EXPECT_EQ(r, thirdsRemainder);
    EXPECT_EQ(magToString(square, 10), squareText);
    thresholds() = saved;
    conversionThresholds() = savedConversion;
}
