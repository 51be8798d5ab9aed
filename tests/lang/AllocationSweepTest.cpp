// format, valueOf and the boxed numbers under allocation failure: every
// failed allocation surfaces as OutOfMemoryException and the String being
// written keeps its old text.
#include <qv/core/Reference.h>
#include <qv/lang/Double.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/Integer64.h>
#include <qv/lang/String.h>
#include <qv/lang/UInteger16.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qv;

using LangAllocationSweep = qvtest::AllocationFaultTest;

TEST_F(LangAllocationSweep, FormatKeepsTheOldTextWhenItFails)
{
    String target(u"old text");
    String shared(target);
    const std::u16string longArgument(300, u'x');
    EXPECT_GT(
        qvtest::sweepAllocations([&] { target.format(u"{0} and {1}, {0} again", -1, longArgument.c_str(), u"second"); },
                                 [&] {
                                     EXPECT_EQ(target.toU16String(), u"old text");
                                     EXPECT_EQ(shared.toU16String(), u"old text");
                                 }),
        0);
    EXPECT_EQ(target.toU16String(), longArgument + u" and second, " + longArgument + u" again");

    // The String is its own pattern and argument.
    String self(u"<{0}|{0}>");
    qvtest::sweepAllocations([&] { self.format(self, self); }, [&] { EXPECT_EQ(self.toU16String(), u"<{0}|{0}>"); });
    EXPECT_EQ(self.toU16String(), u"<<{0}|{0}>|<{0}|{0}>>");

    const char16_t* many[40];
    for (auto& argument : many)
        argument = u"arg";
    std::u16string pattern;
    for (int i = 0; i < 40; ++i)
        pattern += u"{" + String::valueOf(i).toU16String() + u"}";
    String array(u"before");
    qvtest::sweepAllocations([&] { array.formatArray(pattern.c_str(), -1, many, 40); },
                             [&] { EXPECT_EQ(array.toU16String(), u"before"); });
    EXPECT_EQ(array.getLength(), 120);
}

// An ordinary format costs the result's block and nothing else; past the
// working tables' stack room (32 placeholders, 16 arguments, 64 indexes
// looked up in a mask) the heap tables fail as cleanly.
TEST_F(LangAllocationSweep, FormatAllocatesOnlyItsResultUntilTheTablesOverflow)
{
    String target(u"old");
    EXPECT_EQ(qvtest::sweepAllocations([&] { target.format(u"request {0} served from shard {1}", -1, u"12345", u"6"); },
                                       [&] { EXPECT_EQ(target.toU16String(), u"old"); }),
              1);
    EXPECT_EQ(target.toU16String(), u"request 12345 served from shard 6");

    std::u16string pattern;
    std::vector<const char16_t*> arguments;
    for (int i = 0; i < 100; ++i) {
        pattern += u"<{" + String::valueOf(i % 70).toU16String() + u"}>";
        arguments.push_back(i % 2 ? u"odd" : u"");
    }
    String many(u"before");
    for (int32_t length : {-1, static_cast<int32_t>(pattern.size())}) {
        EXPECT_GT(qvtest::sweepAllocations([&] { many.formatArray(pattern.c_str(), length, arguments.data(), 70); },
                                           [&] { EXPECT_EQ(many.toU16String(), u"before"); }),
                  2);
        EXPECT_EQ(many.getLength(), 100 * 2 + 50 * 3);
        many = String(u"before");
    }
}

TEST_F(LangAllocationSweep, BoxedNumbersAndValueOf)
{
    qvtest::sweepAllocations([] {
        Integer32 parsed(String(u"-123456"));
        EXPECT_EQ(parsed.toInt32(), -123456);
        EXPECT_EQ(parsed.toString().toU16String(), u"-123456");
        Integer64 wide(static_cast<int64_t>(1) << 40);
        EXPECT_EQ(wide.toString().toU16String(), u"1099511627776");
        Double d(String(u"2.5"));
        EXPECT_EQ(d.toString().toU16String(), u"2.5");
        Reference<Object> copy(d.clone());
        EXPECT_EQ(UInteger16::parseUInt16(String(u"ff"), 16), 255);
        EXPECT_EQ(String::valueOf(-1.5e300).toU16String(), u"-1.5e+300");
    });
}

// A short String is one allocation, a long one two (object and units); a
// String leaving its first block on growth fails cleanly at each step.
TEST_F(LangAllocationSweep, ShortStringsAreOneAllocationAndGrowOutCleanly)
{
    EXPECT_EQ(qvtest::sweepAllocations([] { String made(u"short text"); }), 1);
    EXPECT_EQ(qvtest::sweepAllocations([] { String made(u'x', 300); }), 2);

    String grown(u"0123456789");
    const String shared(grown);
    const std::u16string tail(100, u't');
    qvtest::sweepAllocations([&] { grown.append(tail.c_str()); },
                             [&] {
                                 EXPECT_EQ(grown.toU16String(), u"0123456789");
                                 EXPECT_EQ(shared.toU16String(), u"0123456789");
                             });
    EXPECT_EQ(grown.toU16String(), u"0123456789" + tail);

    String sole(u"abcdef");
    const char16_t* first = sole.getData();
    qvtest::sweepAllocations([&] { sole.ensureCapacity(500); }, [&] { EXPECT_EQ(sole.getData(), first); });
    EXPECT_NE(sole.getData(), first);
    EXPECT_EQ(sole.toU16String(), u"abcdef");

    qvtest::sweepAllocations([] {
        String narrow("narrow text", -1, u"UTF-8");
        narrow.append(u'!');
        EXPECT_EQ(narrow.toU16String(), u"narrow text!");
    });
}
