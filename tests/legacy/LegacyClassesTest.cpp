#include <qv/legacy/CQVByteBuffer.h>
#include <qv/legacy/CQVCmdLineParser.h>
#include <qv/legacy/CQVProperty.h>
#include <qv/legacy/CQVPropertySet.h>

#include <gtest/gtest.h>

#include "ChildProcess.h"

#include <string>

using qv::Result;
using qv::String;

namespace {

const Result kNotFound = static_cast<Result>(0x80070002u);
const Result kTooSmall = static_cast<Result>(0x80004009u);
const Result kInvalid = static_cast<Result>(0x80070057u);

} // namespace

TEST(CQVByteBuffer, AppendsGrowLinearlyAndBadArgumentsAreCodes)
{
    CQVByteBuffer buffer("ab", 2);
    for (int i = 0; i < 10000; ++i)
        ASSERT_EQ(buffer.Append("x", 1), 0);
    EXPECT_EQ(buffer.GetLength(), 10002);
    EXPECT_LT(buffer.GetBuffer().getCapacity(), 20000);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.GetData()), 3), "abx");
    EXPECT_EQ(buffer.Append(nullptr, 1), kInvalid);
    EXPECT_EQ(buffer.SetData("xyz", -1), kInvalid);
    EXPECT_EQ(buffer.SetData("xyz", 3), 0);
    CQVByteBuffer copy(buffer);
    buffer.Clear();
    EXPECT_EQ(buffer.GetLength(), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(copy.GetData()), 3), "xyz");
}

TEST(CQVCmdLineParser, CodesBuffersAndTheLastError)
{
    CQVCmdLineParser parser;
    ASSERT_EQ(parser.AddOption(u'o', u"output", true, u"Where to write"), 0);
    EXPECT_EQ(parser.AddOption(0, static_cast<const char16_t*>(nullptr), false, u""), kInvalid);
    const char* argv[] = {"tool", "--output=out.txt", "input"};
    ASSERT_EQ(parser.Parse(3, argv), 0);
    char16_t text[16];
    EXPECT_EQ(parser.GetValue(u"o", text, 16), 0);
    EXPECT_EQ(String(text), String(u"out.txt"));
    EXPECT_EQ(parser.GetValue(u"output", text, 7), kTooSmall);
    EXPECT_EQ(parser.GetArgument(0, text, 16), 0);
    EXPECT_EQ(String(text), String(u"input"));
    EXPECT_EQ(parser.GetArgument(1, text, 16), kInvalid);

    EXPECT_EQ(parser.Parse(u"tool --bogus"), kInvalid);
    char16_t message[64];
    ASSERT_EQ(parser.GetLastError(message, 64), 0);
    EXPECT_EQ(String(message), String(u"unknown option: --bogus"));
    EXPECT_TRUE(parser.IsSet(u"output"));
    ASSERT_EQ(parser.Parse(u"tool"), 0);
    EXPECT_FALSE(parser.IsSet(u"output"));
    EXPECT_EQ(parser.GetValue(u"output", text, 16), kNotFound);
    ASSERT_EQ(parser.GetLastError(message, 64), 0);
    EXPECT_EQ(String(message), String(u""));
}

TEST(CQVPropertySet, TextValuesOrderAndFiles)
{
    CQVPropertySet set;
    ASSERT_EQ(set.SetValue(u"b", u"2"), 0);
    ASSERT_EQ(set.SetValue(u"a", u"1"), 0);
    set.GetPropertySet().setInt(String(u"n"), 5);
    char16_t text[8];
    EXPECT_EQ(set.GetValue(u"n", text, 8), 0);
    EXPECT_EQ(String(text), String(u"5"));
    EXPECT_EQ(set.GetValue(u"zz", text, 8), kNotFound);
    EXPECT_EQ(set.GetName(0, text, 8), 0);
    EXPECT_EQ(String(text), String(u"b"));
    EXPECT_EQ(set.GetName(3, text, 8), kInvalid);

    qv::Reference<CQVProperty> property;
    ASSERT_EQ(set.GetAt(1, &property), 0);
    ASSERT_EQ(property->SetValue(u"one"), 0);
    EXPECT_EQ(set.GetValue(u"a", text, 8), 0);
    EXPECT_EQ(String(text), String(u"one"));

    const qvtest::TempDir folder("qvcl3-cqv");
    const String path = String(folder.file("set.properties").c_str());
    ASSERT_EQ(set.Save(path.getData()), 0);
    CQVPropertySet loaded;
    ASSERT_EQ(loaded.Load(path.getData()), 0);
    EXPECT_EQ(loaded.GetCount(), 3);
    EXPECT_EQ(loaded.Remove(u"b"), 0);
    EXPECT_EQ(loaded.Remove(u"b"), kNotFound);
    EXPECT_EQ(loaded.Load(u"/nonexistent/dir/file.properties"), static_cast<Result>(0x80004005u));
}
