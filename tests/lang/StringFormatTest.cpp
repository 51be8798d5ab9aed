#include <qv/lang/String.h>

#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string>

using namespace qv;

namespace {

std::u16string text(const String& s)
{
    return s.toU16String();
}

// Counts how many arguments formatv reads: each one it takes is a distinct
// pointer, and the sentinel after the last expected one must stay untouched.
String formatVa(const char16_t* pattern, ...)
{
    va_list arguments;
    va_start(arguments, pattern);
    String result;
    result.formatv(pattern, -1, arguments);
    va_end(arguments);
    return result;
}

std::u16string printed(const char* format, double value)
{
    char narrow[64];
    std::snprintf(narrow, sizeof(narrow), format, value);
    return std::u16string(narrow, narrow + std::char_traits<char>::length(narrow));
}

} // namespace

TEST(StringFormat, PlaceholdersAreReplacedInOrderOfIndex)
{
    String s;
    EXPECT_EQ(text(s.format(u"{0}{0}", -1, u"x")), u"xx");
    EXPECT_EQ(text(s.format(u"{1} {0}", -1, u"first", u"second")), u"second first");
    EXPECT_EQ(text(s.format(String(u"<{0}|{1}|{0}>"), u"a", String(u"b"))), u"<a|b|a>");
    const unsigned short wide[] = {'{', '0', '}', '!', 0};
    EXPECT_EQ(text(s.format(wide, -1, u"w")), u"w!");
    EXPECT_EQ(text(s.format(u"{0}-{1}-{2}-{3}-{4}-{5}-{6}-{7}-{8}-{9}-{10}", -1, u"0", u"1", u"2", u"3", u"4", u"5",
                            u"6", u"7", u"8", u"9", u"ten")),
              u"0-1-2-3-4-5-6-7-8-9-ten");
    EXPECT_EQ(text(s.format(u"{0}{1}ignored", 6, u"a", u"b")), u"ab");
}

TEST(StringFormat, TheScanStopsAtTheFirstMissingIndex)
{
    String s;
    EXPECT_EQ(text(s.format(u"{0} {2}", -1, u"a", u"b")), u"a {2}");
    EXPECT_EQ(text(s.format(u"no zero {1}", -1, u"unused")), u"no zero {1}");
    EXPECT_EQ(text(s.format(u"{ 0} {00} {0:d} {-0} {0", -1, u"x")), u"{ 0} {00} {0:d} {-0} {0");
    // Fewer arguments than indexes: what has no argument stays.
    EXPECT_EQ(text(s.format(u"{0} {1}", -1, u"only")), u"only {1}");
    EXPECT_EQ(text(s.format(u"{0}", -1)), u"{0}");

    // Exactly one argument is taken for "{0} {2}": the second is a pointer
    // that would crash the test if it were taken and measured.
    const char16_t* poison = reinterpret_cast<const char16_t*>(static_cast<uintptr_t>(2));
    EXPECT_EQ(text(formatVa(u"{0} {2}", u"a", poison)), u"a {2}");
    EXPECT_EQ(text(s.format(u"{0} {2}", -1, u"a", poison)), u"a {2}");
    EXPECT_EQ(text(formatVa(u"{1}+{0}", u"x", u"y")), u"y+x");
    EXPECT_EQ(text(formatVa(u"plain")), u"plain");
}

TEST(StringFormat, ArgumentTextIsNeverSearchedAgain)
{
    String s;
    EXPECT_EQ(text(s.format(u"{0} {1}", -1, u"{1}", u"B")), u"{1} B");
    EXPECT_EQ(text(s.format(u"{0}{0}", -1, u"{0}")), u"{0}{0}");
    EXPECT_EQ(text(s.format(u"{1}{0}", -1, u"{1}", u"{0}")), u"{0}{1}");
    EXPECT_EQ(text(s.format(u"[{0}]", -1, nullptr)), u"[]") << "a null argument is empty text";
    EXPECT_EQ(text(s.format(u"[{0}]", -1, u"")), u"[]");
}

// A String argument is taken up to its first NUL, as its NUL-terminated
// units always were; a String pattern keeps every unit it holds.
TEST(StringFormat, EmbeddedNulEndsAStringArgumentButNotAStringPattern)
{
    const String withNul(u"ab\0cd", 5);
    ASSERT_EQ(withNul.getLength(), 5);
    String s;
    EXPECT_EQ(text(s.format(u"[{0}|{1}]", -1, withNul, u"x")), u"[ab|x]");
    EXPECT_EQ(text(s.format(String(u"<{0}>"), withNul)), u"<ab>");
    const String leadingNul(u"\0tail", 5);
    EXPECT_EQ(text(s.format(u"[{0}]", -1, leadingNul)), u"[]");

    const String pattern(u"{0}\0{0}", 7);
    s.format(pattern, u"v");
    EXPECT_EQ(s.getLength(), 3);
    EXPECT_EQ(text(s), std::u16string(u"v\0v", 3));
    EXPECT_EQ(text(s.format(u"{0}\0{0}", 7, u"w")), std::u16string(u"w\0w", 3));
    EXPECT_EQ(text(s.format(u"{0}\0{0}", -1, u"t")), u"t") << "a NUL-terminated pattern ends at its NUL";
}

TEST(StringFormat, ThisStringMayBeThePatternOrAnArgument)
{
    String s(u"{0}/{0}");
    s.format(s, u"x");
    EXPECT_EQ(text(s), u"x/x");
    String name(u"name");
    name.format(u"<{0}:{1}>", -1, name, u"v");
    EXPECT_EQ(text(name), u"<name:v>");
    String shared(u"{0}");
    String other(shared);
    shared.format(shared, shared);
    EXPECT_EQ(text(shared), u"{0}");
    EXPECT_EQ(text(other), u"{0}");

    // The result's buffer is this String's alone until copied: edits after
    // a copy leave the copy as it was.
    String formatted;
    formatted.format(u"{0}-{1}", -1, u"a", u"b");
    formatted.append(u'+');
    String copy(formatted);
    formatted.append(u'!');
    formatted.setCharAt(0, u'A');
    EXPECT_EQ(text(formatted), u"A-b+!");
    EXPECT_EQ(text(copy), u"a-b+");
}

TEST(StringValueOf, IntegersPrintLikePrintf)
{
    EXPECT_EQ(text(String::valueOf(true)), u"true");
    EXPECT_EQ(text(String::valueOf(false)), u"false");
    EXPECT_EQ(String::valueOf(true).getData(), String::valueOf(true).getData()) << "constant text, no copy";
    EXPECT_EQ(text(String::valueOf(u'q')), u"q");
    EXPECT_EQ(text(String::valueOf(0)), u"0");
    EXPECT_EQ(text(String::valueOf(-42)), u"-42");
    EXPECT_EQ(text(String::valueOf(std::numeric_limits<int>::min())), u"-2147483648");
    EXPECT_EQ(text(String::valueOf(4294967295u)), u"4294967295");
    EXPECT_EQ(text(String::valueOf(-9000000000L)), u"-9000000000");
    EXPECT_EQ(text(String::valueOf(18446744073709551615UL)), u"18446744073709551615");
    EXPECT_EQ(text(String::valueOf(std::numeric_limits<long long>::min())), u"-9223372036854775808");
    EXPECT_EQ(text(String::valueOf(static_cast<int64_t>(-1))), u"-1");
    EXPECT_EQ(text(String::valueOf(static_cast<uint64_t>(12345678901234ULL))), u"12345678901234");
}

TEST(StringValueOf, FloatingPointIsPercentG)
{
    EXPECT_EQ(text(String::valueOf(1.0 / 3.0)), u"0.333333");
    EXPECT_EQ(text(String::valueOf(1.0f / 3.0f)), u"0.333333");
    EXPECT_EQ(text(String::valueOf(100000.0)), u"100000");
    EXPECT_EQ(text(String::valueOf(1000000.0)), u"1e+06");
    EXPECT_EQ(text(String::valueOf(0.0001)), u"0.0001");
    EXPECT_EQ(text(String::valueOf(0.00001)), u"1e-05");
    EXPECT_EQ(text(String::valueOf(-0.0)), u"-0");
    const double samples[] = {0.0,
                              1.5,
                              -2.25,
                              123456.7,
                              1234567.0,
                              9.999995e-5,
                              6.02214076e23,
                              5e-324,
                              std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(),
                              std::nan("")};
    for (double v : samples)
        EXPECT_EQ(text(String::valueOf(v)), printed("%g", v)) << v;
    EXPECT_EQ(text(String::valueOf(3.5f)), printed("%g", 3.5));
}
