// BigInteger in every radix and BigDecimal parsing: text that parses prints
// back to text that parses to the same value; bad text is rejected with
// ResultException and nothing else.
#include <qv/qvcl3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void bigInteger(const std::string& text, int32_t radix)
{
    qv::math::BigInteger value;
    try {
        value = qv::math::BigInteger(text, radix);
    } catch (const qv::ResultException&) {
        return;
    }
    const qv::String printed = value.toString(radix);
    if (!(qv::math::BigInteger(printed, radix) == value))
        fail("BigInteger does not round-trip in its radix");
    if (!(qv::math::BigInteger(value.toString(), 10) == value))
        fail("BigInteger does not round-trip in decimal");
}

void bigDecimal(const std::string& text)
{
    try {
        qv::math::BigDecimal value(text);
        if (!qv::math::BigDecimal(value.toScientificString()).equals(value))
            fail("BigDecimal does not round-trip through scientific notation");
        // Plain notation writes every zero of the scale.
        if (value.scale() < -100000 || value.scale() > 100000)
            return;
        if (value.compareTo(qv::math::BigDecimal(value.toString())) != 0)
            fail("BigDecimal plain notation changes the value");
        if (value.compareTo(qv::math::BigDecimal(value.toEngineeringString())) != 0)
            fail("BigDecimal engineering notation changes the value");
    } catch (const qv::ResultException&) {
    } catch (const qv::RangeErrorException&) {
        // A scale beyond 32 bits.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0 || size > 2000)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    // Radixes beyond 2..36 must be rejected too.
    const int32_t radix = static_cast<int32_t>(data[0] % 40);
    bigInteger(text, radix);
    bigDecimal(text);
    return 0;
}
