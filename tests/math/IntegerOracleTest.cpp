// Random operands of mixed sizes and shapes, with results computed by
// Python's integers (tests/math/oracle.py), compared digit for digit.

#include "Integer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

using namespace qv::math::detail;

namespace {

std::string runOracle(const char* seed, const char* scale)
{
    std::string command = std::string(QVCL3_PYTHON) + " " + QVCL3_MATH_ORACLE + " " + seed + " " + scale;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return std::string();
    std::string data;
    char buffer[1 << 16];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        data.append(buffer, n);
    if (pclose(pipe) != 0)
        data.clear();
    return data;
}

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

struct Counts {
    size_t lines = 0;
    size_t failures = 0;
};

void check(Counts& c, const std::string& line, const std::string& expected, const std::string& actual)
{
    if (expected != actual) {
        if (++c.failures <= 5)
            ADD_FAILURE() << "case: " << line.substr(0, 300) << "\n expected: " << expected.substr(0, 200)
                          << "\n actual:   " << actual.substr(0, 200);
    }
}

Counts runCases(const std::string& data)
{
    Counts c;
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
        if (op == "add" || op == "sub" || op == "mul" || op == "divt" || op == "remt" || op == "divf" ||
            op == "modf" || op == "mod" || op == "gcd" || op == "and" || op == "or" || op == "xor" ||
            op == "andnot" || op == "not") {
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
            check(c, line, x, hex(r));
        } else if (op == "cmp") {
            f >> x;
            check(c, line, x, std::to_string(intCompare(a, b)));
        } else if (op == "bits") {
            f >> x >> y;
            check(c, line, x + " " + y, std::to_string(intBitLength(a)) + " " + std::to_string(intBitCount(a)));
        } else if (op == "shl" || op == "shr") {
            int64_t n;
            f >> n >> x;
            // A shift by a negative count goes the other way.
            Int r = op == "shl" ? intShiftLeft(a, n) : intShiftRight(a, n);
            Int back = op == "shl" ? intShiftRight(a, -n) : intShiftLeft(a, -n);
            check(c, line, x, hex(r));
            check(c, line + " (negated count)", x, hex(back));
        } else if (op == "testbit") {
            int64_t n;
            f >> n >> x;
            check(c, line, x, intTestBit(a, n) ? "1" : "0");
        } else if (op == "pow") {
            int64_t e;
            f >> x >> e >> y;
            check(c, line, y, hex(intPow(hex(x), e)));
        } else if (op == "modpow") {
            f >> x >> y >> z >> w;
            check(c, line, w, hex(intModPow(hex(x), hex(y), hex(z))));
        } else if (op == "modinv") {
            f >> x >> y >> z;
            std::string actual;
            try {
                actual = hex(intModInverse(hex(x), hex(y)));
            } catch (const std::exception&) {
                actual = "none";
            }
            check(c, line, z, actual);
        } else if (op == "radix") {
            int radix;
            f >> radix >> x >> y;
            Int v = hex(x);
            check(c, line, y, intToString(v, radix));
            check(c, line + " (parse)", x, hex(intParse(y.data(), y.size(), radix)));
        } else if (op == "double") {
            f >> x >> y;
            double d = intToDouble(hex(x));
            check(c, line, y, d == std::strtod(y.c_str(), nullptr) ? y : shortDoubleText(d));
        } else {
            ADD_FAILURE() << "unknown oracle line: " << line.substr(0, 100);
        }
    }
    return c;
}

class ThresholdGuard {
public:
    ThresholdGuard() : m_saved(thresholds()) {}
    ~ThresholdGuard() { thresholds() = m_saved; }

private:
    Thresholds m_saved;
};

} // namespace

TEST(IntegerOracle, AgreesWithPythonAtProductionThresholds)
{
    std::string data = runOracle("20261121", "1");
    ASSERT_FALSE(data.empty()) << "the oracle script did not run";
    Counts c = runCases(data);
    EXPECT_GT(c.lines, 30000u);
    EXPECT_EQ(c.failures, 0u);
}

TEST(IntegerOracle, AgreesWithPythonWithEveryRecursionForcedEarly)
{
    // Tiny thresholds push small operands through Karatsuba, Toom-3 and the
    // recursive division, with all their uneven splits.
    ThresholdGuard guard;
    thresholds() = Thresholds{2, 2, 3, 3, 2};
    std::string data = runOracle("7", "0.15");
    ASSERT_FALSE(data.empty()) << "the oracle script did not run";
    Counts c = runCases(data);
    EXPECT_GT(c.lines, 3000u);
    EXPECT_EQ(c.failures, 0u);
}
