#include <qv/core/Exception.h>
#include <qv/util/CmdLineException.h>
#include <qv/util/CmdLineParser.h>
#include <qv/util/StringTokenizer.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <string>
#include <vector>

using qv::String;
using qv::util::CmdLineException;
using qv::util::CmdLineParser;
using qv::util::StringTokenizer;

namespace {

CmdLineParser makeParser()
{
    CmdLineParser parser;
    parser.addOption(u'v', String(u"verbose"), false, String(u"Say more"));
    parser.addOption(u'a', String(), false);
    parser.addOption(u'o', String(u"output"), true, String(u"Write to FILE"), String(u"FILE"));
    parser.addOption(0, String(u"count"), true, String(u"How many"), String(u"N"));
    return parser;
}

std::string failureOf(CmdLineParser& parser, std::vector<const char*> argv)
{
    try {
        parser.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CmdLineException& e) {
        EXPECT_EQ(e.getResult(), static_cast<qv::Result>(0x80070057u));
        return e.getDescription().toUtf8() + " [" + e.getOption().toUtf8() + "]";
    }
    return "accepted";
}

std::vector<std::string> tokens(StringTokenizer tokenizer)
{
    std::vector<std::string> result;
    while (tokenizer.hasMoreTokens())
        result.push_back(tokenizer.nextToken().toUtf8());
    return result;
}

} // namespace

TEST(CmdLineParser, EveryOptionSpellingAndPositionals)
{
    CmdLineParser parser = makeParser();
    const char* argv[] = {"prog",          "-va",      "in.txt", "-ofirst", "--output", "second", "--count=7",
                          "/OUTPUT:third", "/usr/bin", "-",      "--",      "-v",       "--count"};
    parser.parse(13, argv);
    EXPECT_EQ(parser.getProgramName(), String(u"prog"));
    EXPECT_TRUE(parser.isSet(String(u"verbose")));
    EXPECT_TRUE(parser.isSet(String(u"a")));
    EXPECT_TRUE(parser.getBool(String(u"v"), false));
    EXPECT_EQ(parser.getValue(String(u"output")), String(u"third"));
    EXPECT_EQ(parser.getValues(String(u"o")).size(), 3u);
    EXPECT_EQ(parser.getInt(String(u"count"), 0), 7);
    EXPECT_EQ(parser.getInt(String(u"nothing"), 5), 5);
    ASSERT_EQ(parser.getArgumentCount(), 5);
    const char16_t* positional[] = {u"in.txt", u"/usr/bin", u"-", u"-v", u"--count"};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(parser.getArgument(i), String(positional[i]));
    EXPECT_THROW(parser.getArgument(5), qv::RangeErrorException);
}

TEST(CmdLineParser, ErrorsNameTheOptionAndKeepTheLastGoodParse)
{
    CmdLineParser parser = makeParser();
    const char* good[] = {"prog", "-o", "kept"};
    parser.parse(3, good);
    EXPECT_EQ(failureOf(parser, {"prog", "--colour"}), "unknown option: --colour [--colour]");
    EXPECT_EQ(failureOf(parser, {"prog", "-vx"}), "unknown option: -x [-x]");
    EXPECT_EQ(failureOf(parser, {"prog", "--output"}), "missing value for option --output [--output]");
    EXPECT_EQ(failureOf(parser, {"prog", "-o"}), "missing value for option -o [-o]");
    EXPECT_EQ(failureOf(parser, {"prog", "--verbose=yes"}), "option takes no value: --verbose [--verbose]");
    EXPECT_EQ(parser.getValue(String(u"o")), String(u"kept"));

    EXPECT_EQ(failureOf(parser, {"prog", "--count", "12x"}), "accepted");
    EXPECT_THROW(parser.getInt(String(u"count"), 0), CmdLineException);
    EXPECT_EQ(failureOf(parser, {"prog", "--count", "99999999999"}), "accepted");
    EXPECT_THROW(parser.getInt(String(u"count"), 0), CmdLineException);
    EXPECT_EQ(parser.getInt64(String(u"count"), 0), 99999999999LL);

    parser.setWindowsStyle(false);
    EXPECT_EQ(failureOf(parser, {"prog", "/output:x"}), "accepted");
    EXPECT_FALSE(parser.isSet(String(u"output")));
    EXPECT_EQ(parser.getArgument(0), String(u"/output:x"));
}

TEST(CmdLineParser, CommandLineStringSplitsByTheWindowsRulesAndUsageLinesUp)
{
    CmdLineParser parser = makeParser();
    parser.parse(String(u"prog.exe -o \"my file.txt\" \"a \\\"quoted\\\" word\" -v"));
    EXPECT_EQ(parser.getValue(String(u"o")), String(u"my file.txt"));
    ASSERT_EQ(parser.getArgumentCount(), 1);
    EXPECT_EQ(parser.getArgument(0), String(u"a \"quoted\" word"));
    EXPECT_EQ(parser.getUsage().toUtf8(), "Usage: prog.exe [options] [arguments]\n"
                                          "Options:\n"
                                          "  -v, --verbose      Say more\n"
                                          "  -a\n"
                                          "  -o, --output=FILE  Write to FILE\n"
                                          "      --count=N      How many\n");
}

TEST(StringTokenizer, PlainDelimitersReturnedDelimitersAndQuotes)
{
    EXPECT_EQ(tokens(StringTokenizer(String(u"  a b\t\tc  "))), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(tokens(StringTokenizer(String(u"a,b;;c"), String(u",;"), true)),
              (std::vector<std::string>{"a", ",", "b", ";", ";", "c"}));
    EXPECT_EQ(tokens(StringTokenizer(String(u"a \"b c\" 'd \"e' f\\ g \"h\\\"i\""), String(u" "), false,
                                     StringTokenizer::QUOTED)),
              (std::vector<std::string>{"a", "b c", "d \"e", "f g", "h\"i"}));

    StringTokenizer counted(String(u"x y z"));
    EXPECT_EQ(counted.countTokens(), 3);
    EXPECT_EQ(counted.nextToken(), String(u"x"));
    EXPECT_EQ(counted.countTokens(), 2);
    EXPECT_EQ(counted.nextToken(String(u"z")), String(u" y "));
    EXPECT_FALSE(counted.hasMoreTokens());
    EXPECT_THROW(counted.nextToken(), qv::IllegalStateException);

    StringTokenizer open(String(u"a \"b c"), String(u" "), false, StringTokenizer::QUOTED);
    EXPECT_EQ(open.nextToken(), String(u"a"));
    EXPECT_EQ(qvtest::messageOf<qv::IllegalStateException>([&] { open.nextToken(); }), "unterminated quote at 2");
}
