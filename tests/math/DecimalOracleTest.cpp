// Decimal arithmetic against Python's decimal module
// (tests/math/decimal_oracle.py).

#include "Decimal.h"
#include "OracleSupport.h"

#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

using namespace qv::math::detail;

namespace {

Dec dec(const std::string& s)
{
    size_t colon = s.find(':');
    Int u = intParse(s.data(), colon, 10);
    return Dec(std::move(u), static_cast<int32_t>(std::stol(s.substr(colon + 1))));
}

std::string text(const Dec& d)
{
    return intToString(d.unscaled, 10) + ":" + std::to_string(d.scale);
}

Rounding mode(const std::string& name)
{
    static const std::map<std::string, Rounding> modes = {{"UP", Rounding::Up},
                                                          {"DOWN", Rounding::Down},
                                                          {"CEILING", Rounding::Ceiling},
                                                          {"FLOOR", Rounding::Floor},
                                                          {"HALF_UP", Rounding::HalfUp},
                                                          {"HALF_DOWN", Rounding::HalfDown},
                                                          {"HALF_EVEN", Rounding::HalfEven},
                                                          {"UNNECESSARY", Rounding::Unnecessary}};
    return modes.at(name);
}

template <class F>
std::string orRaise(F f)
{
    try {
        return f();
    } catch (const qv::RangeErrorException&) {
        return "raise";
    }
}

std::string doubleText(double d, const std::string& expected)
{
    if (d == std::strtod(expected.c_str(), nullptr) && std::signbit(d) == (expected[0] == '-'))
        return expected;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.17g", d);
    return buf;
}

} // namespace

TEST(DecimalOracle, AgreesWithPythonDecimal)
{
    std::string data = oracle::run("decimal_oracle.py", "20261121", "2", "");
    ASSERT_FALSE(data.empty()) << "the oracle script did not run";
    oracle::Checker c;
    std::istringstream in(data);
    std::string line;
    while (std::getline(in, line)) {
        ++c.lines;
        std::istringstream f(line);
        std::string op, x, y, z, w, v;
        f >> op;
        if (op == "parse") {
            f >> x >> y;
            c(line, y, text(decParse(x.data(), x.size())));
            std::u16string wide(x.begin(), x.end());
            c(line + " (UTF-16)", y, text(decParse(wide.data(), wide.size())));
        } else if (op == "format") {
            f >> x >> y >> z >> w;
            Dec a = dec(x);
            c(line, y + " " + z + " " + w,
              decToPlainString(a) + " " + decToScientificString(a) + " " + decToEngineeringString(a));
        } else if (op == "add" || op == "sub" || op == "mul" || op == "cmp") {
            f >> x >> y >> z;
            Dec a = dec(x), b = dec(y);
            if (op == "cmp")
                c(line, z, std::to_string(decCompare(a, b)));
            else
                c(line, z, text(op == "add" ? decAdd(a, b) : op == "sub" ? decSub(a, b) : decMul(a, b)));
        } else if (op == "div") {
            int scale;
            f >> x >> y >> scale >> z >> w;
            c(line, w, orRaise([&] { return text(decDivide(dec(x), dec(y), scale, mode(z))); }));
        } else if (op == "setscale") {
            int scale;
            f >> x >> scale >> y >> z;
            c(line, z, orRaise([&] { return text(decSetScale(dec(x), scale, mode(y))); }));
        } else if (op == "exact") {
            f >> x >> y >> z;
            std::string actual = orRaise([&] { return text(decDivideExact(dec(x), dec(y))); });
            c(line, z, actual == "raise" ? "none" : actual);
        } else if (op == "strip") {
            f >> x >> y;
            c(line, y, text(decStripTrailingZeros(dec(x))));
        } else if (op == "toint") {
            f >> x >> y;
            c(line, y, intToString(decToInteger(dec(x)), 10));
        } else if (op == "todouble") {
            f >> x >> y;
            c(line, y, doubleText(decToDouble(dec(x)), y));
        } else if (op == "fromdouble") {
            f >> x >> y >> z;
            double d = std::strtod(x.c_str(), nullptr);
            c(line, y, text(decFromDouble(d)));
            c(line + " (shortest)", z, text(decStripTrailingZeros(decFromDoubleShortest(d))));
            c(line + " (back)", x, doubleText(decToDouble(decFromDouble(d)), x));
        } else {
            ADD_FAILURE() << "unknown oracle line: " << line.substr(0, 100);
        }
    }
    EXPECT_GT(c.lines, 10000u);
    EXPECT_EQ(c.failures, 0u);
}
