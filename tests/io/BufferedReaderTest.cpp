#include <qv/io/BufferedReader.h>
#include <qv/io/StringReader.h>

#include "AllocationSweep.h"
#include "QvTextPrinting.h"
#include "TextIoSupport.h"

#include <gtest/gtest.h>

using namespace qv;
using namespace qv::io;
using qvtest::ioFailure;
using qvtest::u16;

namespace {

// The reference splitter: "\r\n", "\r" and "\n" end lines; text after the
// last end is a line of its own.
std::vector<std::u16string> splitLines(const std::u16string& text)
{
    std::vector<std::u16string> lines;
    std::u16string current;
    bool open = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char16_t c = text[i];
        if (c == u'\r' || c == u'\n') {
            lines.push_back(current);
            current.clear();
            open = false;
            if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
        } else {
            current += c;
            open = true;
        }
    }
    if (open)
        lines.push_back(current);
    return lines;
}

std::vector<std::u16string> readAllLines(Reader* in, int32_t bufferSize)
{
    BufferedReader reader(in, bufferSize);
    reader.AddRef();
    std::vector<std::u16string> lines;
    String line;
    while (reader.readLine(line))
        lines.push_back(u16(line));
    EXPECT_EQ(0, line.getLength()) << "the end leaves the line empty";
    EXPECT_FALSE(reader.readLine(line)) << "the end stays the end";
    return lines;
}

Reference<Reader> stringReader(const std::u16string& text)
{
    return makeReference<StringReader>(String(text));
}

} // namespace

TEST(BufferedReaderTest, ReadLineSplitsAtEveryKindOfLineEnd)
{
    typedef std::vector<std::u16string> Lines;
    EXPECT_EQ(Lines(), readAllLines(stringReader(u"").get(), 16));
    EXPECT_EQ(Lines({u"a", u"b", u"c", u"", u"d"}), readAllLines(stringReader(u"a\nb\r\nc\r\rd").get(), 16));
    EXPECT_EQ(Lines({u"last"}), readAllLines(stringReader(u"last").get(), 16));
    EXPECT_EQ(Lines({u"x"}), readAllLines(stringReader(u"x\r\n").get(), 16));
    EXPECT_EQ(Lines({u"", u""}), readAllLines(stringReader(u"\n\r").get(), 16));
    EXPECT_EQ(Lines({u"", u""}), readAllLines(stringReader(u"\n\n").get(), 16));
    EXPECT_EQ(Lines({u"\u00e9\U0001F600"}), readAllLines(stringReader(u"\u00e9\U0001F600\n").get(), 16));
}

TEST(BufferedReaderTest, CarriageReturnAtTheEndOfAFillStillPairsWithTheNextLineFeed)
{
    // A 16-unit buffer: the "\r" is the buffer's last unit, the "\n" the
    // first unit of the next fill.
    std::u16string text = std::u16string(15, u'a') + u"\r\nb";
    EXPECT_EQ(std::vector<std::u16string>({std::u16string(15, u'a'), u"b"}),
              readAllLines(stringReader(text).get(), 16));
}

TEST(BufferedReaderTest, ReadLineAgreesWithTheReferenceSplitterOnRandomText)
{
    std::mt19937 random(1234);
    const char16_t alphabet[] = {u'a', u'b', u'\r', u'\n', u'\u00e9', u'\u4e2d', 0xD83D, 0xDE00, u' '};
    for (int round = 0; round < 300; ++round) {
        int32_t length = std::uniform_int_distribution<int32_t>(0, round < 200 ? 64 : 5000)(random);
        std::u16string text;
        for (int32_t i = 0; i < length; ++i) {
            // Long runs without line ends now and then, so lines outgrow the buffer.
            size_t limit = round % 7 == 0 ? 1 : sizeof(alphabet) / sizeof(alphabet[0]) - 1;
            text += alphabet[std::uniform_int_distribution<size_t>(0, limit)(random)];
        }
        int32_t bufferSize = std::uniform_int_distribution<int32_t>(1, 80)(random);
        auto trickle = makeReference<qvtest::TrickleReader>(stringReader(text).get(), round, 1 + round % 23);
        ASSERT_EQ(splitLines(text), readAllLines(trickle.get(), bufferSize)) << "round " << round;
    }
}

TEST(BufferedReaderTest, LinesLongerThanTheBufferComeWhole)
{
    std::u16string longLine(100000, u'x');
    for (size_t i = 0; i < longLine.size(); i += 7)
        longLine[i] = static_cast<char16_t>(u'a' + i % 26);
    auto lines = readAllLines(stringReader(longLine + u"\n" + longLine).get(), 16);
    ASSERT_EQ(2u, lines.size());
    EXPECT_TRUE(lines[0] == longLine);
    EXPECT_TRUE(lines[1] == longLine);
}

TEST(BufferedReaderTest, ReadSkipAndReadLineShareOnePosition)
{
    BufferedReader reader(stringReader(u"ab\r\ncdefg\rhij").get(), 16);
    reader.AddRef();
    String line;
    ASSERT_TRUE(reader.readLine(line));
    EXPECT_EQ(u"ab", u16(line));
    // The "\n" of "\r\n" belongs to the line just read.
    EXPECT_EQ(u'c', reader.read());
    EXPECT_EQ(2, reader.skip(2));
    char16_t units[8] = {};
    EXPECT_EQ(0, reader.read(units, 0));
    EXPECT_EQ(2, reader.read(units, 2));
    EXPECT_EQ(u"fg", std::u16string(units, 2));
    ASSERT_TRUE(reader.readLine(line));
    EXPECT_EQ(u"", u16(line));
    ASSERT_TRUE(reader.readLine(line));
    EXPECT_EQ(u"hij", u16(line));
    EXPECT_EQ(-1, reader.read());
    EXPECT_EQ(-1, reader.read(units, 8));
    EXPECT_EQ(0, reader.skip(5));
}

TEST(BufferedReaderTest, LargeReadsWithoutAMarkBypassTheBuffer)
{
    std::u16string text(1000, u'q');
    BufferedReader reader(stringReader(text).get(), 16);
    reader.AddRef();
    std::vector<char16_t> units(1000);
    EXPECT_EQ(1000, reader.read(units.data(), 1000));
    EXPECT_EQ(-1, reader.read(units.data(), 1000));
}

TEST(BufferedReaderTest, MarkAndResetFollowTheBufferedStreamRules)
{
    BufferedReader reader(stringReader(u"0123456789abcdefghijklmnopqrstuvwxyz").get(), 16);
    reader.AddRef();
    EXPECT_TRUE(reader.markSupported());
    EXPECT_EQ("stream not marked", ioFailure([&] { reader.reset(); }));

    reader.mark(40);
    char16_t units[30];
    ASSERT_EQ(16, reader.read(units, 16));
    // More than the buffer holds, but within the limit: the buffer grows.
    ASSERT_EQ(10, reader.skip(10));
    reader.reset();
    EXPECT_EQ(u'0', reader.read());

    reader.mark(4);
    EXPECT_EQ(4, reader.skip(4));
    reader.reset();
    EXPECT_EQ(u'1', reader.read());

    // Reading past the limit drops the mark at the next fill.
    reader.mark(2);
    String line;
    ASSERT_TRUE(reader.readLine(line));
    EXPECT_EQ(u"23456789abcdefghijklmnopqrstuvwxyz", u16(line));
    EXPECT_EQ("mark invalid", ioFailure([&] { reader.reset(); }));
    EXPECT_EQ(static_cast<Result>(0x80070057), qvtest::resultOf([&] { reader.mark(-1); }));
}

TEST(BufferedReaderTest, ResetRestoresAPendingCarriageReturn)
{
    BufferedReader reader(stringReader(u"a\r\nb").get(), 16);
    reader.AddRef();
    String line;
    ASSERT_TRUE(reader.readLine(line));
    reader.mark(10);
    EXPECT_EQ(u'b', reader.read());
    reader.reset();
    ASSERT_TRUE(reader.readLine(line));
    EXPECT_EQ(u"b", u16(line));
}

TEST(BufferedReaderTest, EveryOperationAfterCloseThrowsStreamClosed)
{
    auto in = makeReference<StringReader>(QV_STR(u"text"));
    auto reader = makeReference<BufferedReader>(in.get());
    reader->close();
    reader->close();
    String line;
    char16_t unit;
    iotest::expectEachFails("stream closed",
                            {[&] { reader->readLine(line); }, [&] { reader->read(); }, [&] { reader->read(&unit, 1); },
                             [&] { reader->skip(1); }, [&] { reader->ready(); }, [&] { reader->mark(1); },
                             [&] { reader->reset(); }});
    // The wrapped reader was closed too.
    EXPECT_EQ("stream closed", ioFailure([&] { in->read(); }));
    EXPECT_EQ(static_cast<Result>(0x80070057), qvtest::resultOf([] { BufferedReader nothing(nullptr); }));
}

TEST(BufferedReaderTest, ReadLineSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    std::u16string text = std::u16string(300, u'k') + u"\r\nshort\n";
    int failures = qvtest::sweepAllocations([&] {
        auto reader = makeReference<BufferedReader>(stringReader(text).get(), 16);
        String line;
        ASSERT_TRUE(reader->readLine(line));
        ASSERT_EQ(300, line.getLength());
        ASSERT_TRUE(reader->readLine(line));
        ASSERT_EQ(u"short", u16(line));
        ASSERT_FALSE(reader->readLine(line));
    });
    EXPECT_GT(failures, 3);
}
