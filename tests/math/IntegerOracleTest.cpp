// Random operands of mixed sizes and shapes, with results computed by
// Python's integers (tests/math/oracle.py), compared digit for digit.

#include "Integer.h"
#include "OracleSupport.h"
#include "RadixPowers.h"

#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

using namespace qv::math::detail;

namespace {

Int hex(const std::string& s)
{
    return intParse(s.data(), s.size(), 16);
}

std::string hex(const Int& v)
{
    return intToString(v, 16);
}

std::string shortDoubleText(double d)
{
    // Python's repr: shortest round trip; integers print with ".0", large
    // values in exponent form.
    char buf[64];
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(buf, sizeof buf, "%.*g", precision, d);
        if (std::strtod(buf, nullptr) == d)
            break;
    }
    return buf;
}

oracle::Checker runCases(const std::string& data)
{
    oracle::Checker c;
    std::istringstream in(data);
    std::string line;
    Int a, b;
    while (std::getline(in, line)) {
        ++c.lines;
        std::istringstream f(line);
        std::string op;
        f >> op;
        std::string x, y, z, w;
        if (op == "pair") {
            f >> x >> y;
            a = hex(x);
            b = hex(y);
            continue;
        }
        if (op == "add" || op == "sub" || op == "mul" || op == "divt" || op == "remt" || op == "divf" || op == "modf" ||
            op == "mod" || op == "gcd" || op == "and" || op == "or" || op == "xor" || op == "andnot" || op == "not") {
            f >> x;
            Int r;
            if (op == "add")
                r = intAdd(a, b);
            else if (op == "sub")
                r = intSub(a, b);
            else if (op == "mul")
                r = intMul(a, b);
            else if (op == "divt")
                intDivRem(a, b, &r, nullptr);
            else if (op == "remt")
                intDivRem(a, b, nullptr, &r);
            else if (op == "divf")
                intFloorDivMod(a, b, &r, nullptr);
            else if (op == "modf")
                intFloorDivMod(a, b, nullptr, &r);
            else if (op == "mod")
                r = intMod(a, intAbs(b));
            else if (op == "gcd")
                r = intGcd(a, b);
            else if (op == "and")
                r = intAnd(a, b);
            else if (op == "or")
                r = intOr(a, b);
            else if (op == "xor")
                r = intXor(a, b);
            else if (op == "andnot")
                r = intAndNot(a, b);
            else
                r = intNot(a);
            c(line, x, hex(r));
        } else if (op == "cmp") {
            f >> x;
            c(line, x, std::to_string(intCompare(a, b)));
        } else if (op == "bits") {
            f >> x >> y;
            c(line, x + " " + y, std::to_string(intBitLength(a)) + " " + std::to_string(intBitCount(a)));
        } else if (op == "shl" || op == "shr") {
            int64_t n;
            f >> n >> x;
            // A shift by a negative count goes the other way.
            Int r = op == "shl" ? intShiftLeft(a, n) : intShiftRight(a, n);
            Int back = op == "shl" ? intShiftRight(a, -n) : intShiftLeft(a, -n);
            c(line, x, hex(r));
            c(line + " (negated count)", x, hex(back));
        } else if (op == "testbit") {
            int64_t n;
            f >> n >> x;
            c(line, x, intTestBit(a, n) ? "1" : "0");
        } else if (op == "pow") {
            int64_t e;
            f >> x >> e >> y;
            c(line, y, hex(intPow(hex(x), e)));
        } else if (op == "modpow") {
            f >> x >> y >> z >> w;
            c(line, w, hex(intModPow(hex(x), hex(y), hex(z))));
        } else if (op == "modinv") {
            f >> x >> y >> z;
            std::string actual;
            try {
                actual = hex(intModInverse(hex(x), hex(y)));
            } catch (const qv::RangeErrorException&) {
                actual = "none";
            }
            c(line, z, actual);
        } else if (op == "radix") {
            int radix;
            f >> radix >> x >> y;
            Int v = hex(x);
            c(line, y, intToString(v, radix));
            c(line + " (parse)", x, hex(intParse(y.data(), y.size(), radix)));
        } else if (op == "double") {
            f >> x >> y;
            double d = intToDouble(hex(x));
            c(line, y, d == std::strtod(y.c_str(), nullptr) ? y : shortDoubleText(d));
        } else {
            ADD_FAILURE() << "unknown oracle line: " << line.substr(0, 100);
        }
    }
    return c;
}

class ThresholdGuard {
public:
    ThresholdGuard() : m_saved(thresholds()), m_savedConversion(conversionThresholds()) {}
    ~ThresholdGuard()
    {
        thresholds() = m_saved;
        conversionThresholds() = m_savedConversion;
    }

private:
    Thresholds m_saved;
    ConversionThresholds m_savedConversion;
};

} // namespace

TEST(IntegerOracle, AgreesWithPythonAtProductionThresholds)
{
    std::string data = oracle::run("oracle.py", "20261121", "1", "20000");
    ASSERT_FALSE(data.empty()) << "the oracle script did not run";
    oracle::Checker c = runCases(data);
    EXPECT_GT(c.lines, 20000u);
    EXPECT_EQ(c.failures, 0u);
}

TEST(IntegerOracle, AgreesWithPythonWithEveryRecursionForcedEarly)
{
    // Tiny thresholds push small operands through Karatsuba, Toom-3, Toom-4
    // (from 8 limbs) and the recursive division, with all their uneven
    // splits; from 24 limbs on, products go through the transform (from 8
    // limbs of the shorter operand where its cost model picks it), inside
    // divisions and radix conversions as well, and from 3 limbs of divisor
    // and quotient on, divisions go through Newton's reciprocal. Radix
    // conversions divide by kept dividers from powers of 3 limbs and
    // multiply through kept power transforms from 24.
    ThresholdGuard guard;
    thresholds() = Thresholds{2, 2, 3, 3, 2, 24, 24, 3, 8, 8, 8};
    conversionThresholds() = ConversionThresholds{3, 24};
    std::string data = oracle::run("oracle.py", "7", "0.2", "120");
    ASSERT_FALSE(data.empty()) << "the oracle script did not run";
    oracle::Checker c = runCases(data);
    EXPECT_GT(c.lines, 3000u);
    EXPECT_EQ(c.failures, 0u);
}
