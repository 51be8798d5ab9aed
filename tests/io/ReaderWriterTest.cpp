#include <qv/io/BufferedWriter.h>
#include <qv/io/CharArrayWriter.h>
#include <qv/io/NullWriter.h>
#include <qv/io/PrintWriter.h>
#include <qv/io/StringReader.h>
#include <qv/io/StringWriter.h>
#include <qv/lang/Integer32.h>

#include "AllocationSweep.h"
#include "QvTextPrinting.h"
#include "TextIoSupport.h"

#include <gtest/gtest.h>

#include <climits>

using namespace qv;
using namespace qv::io;
using qvtest::ioFailure;
using qvtest::resultOf;
using qvtest::u16;

namespace {
const Result kInvalidArgument = static_cast<Result>(0x80070057);
}

TEST(StringReaderTest, ReadsSkipsMarksAndEnds)
{
    auto reader = makeReference<StringReader>(QV_STR(u"hello, world"));
    EXPECT_TRUE(reader->ready());
    EXPECT_TRUE(reader->markSupported());
    char16_t units[5];
    EXPECT_EQ(0, reader->read(units, 0));
    EXPECT_EQ(0, reader->read(units, -3));
    ASSERT_EQ(5, reader->read(units, 5));
    EXPECT_EQ(u"hello", std::u16string(units, 5));
    reader->mark(0);
    EXPECT_EQ(2, reader->skip(2));
    EXPECT_EQ(u'w', reader->read());
    reader->reset();
    EXPECT_EQ(u',', reader->read());
    EXPECT_EQ(0, reader->skip(-4));
    EXPECT_EQ(6, reader->skip(100));
    EXPECT_EQ(-1, reader->read());
    EXPECT_EQ(-1, reader->read(units, 5));
    EXPECT_EQ(kInvalidArgument, resultOf([&] { StringReader(QV_STR(u"x")).read(static_cast<char16_t*>(nullptr), 1); }));
    reader->close();
    iotest::expectEachFails("stream closed",
                            {[&] { reader->read(); }, [&] { reader->read(units, 1); }, [&] { reader->skip(1); },
                             [&] { reader->ready(); }, [&] { reader->mark(1); }, [&] { reader->reset(); }});
}

TEST(ReaderTest, BaseOperationsGoThroughTheBlockRead)
{
    // A reader that implements only the block read gets read(), skip() and
    // the mark defaults from the base.
    class Units : public Reader {
    public:
        using Reader::read;
        int32_t read(char16_t* buffer, int32_t count) override
        {
            if (count < 1)
                return 0;
            if (m_left == 0)
                return -1;
            *buffer = u'z';
            --m_left;
            return 1;
        }
        int m_left = 600;
    };
    auto reader = makeReference<Units>();
    EXPECT_EQ(u'z', reader->read());
    EXPECT_EQ(598, reader->skip(598));
    EXPECT_EQ(1, reader->skip(10));
    EXPECT_EQ(-1, reader->read());
    EXPECT_FALSE(reader->ready());
    EXPECT_FALSE(reader->markSupported());
    reader->mark(10);
    EXPECT_EQ("mark/reset not supported", ioFailure([&] { reader->reset(); }));
}

TEST(CharArrayWriterTest, CollectsEverySpellingOfText)
{
    auto writer = makeReference<StringWriter>(1);
    writer->write(u"abc", 2);
    writer->write(u"cd", -1);
    writer->write(reinterpret_cast<const unsigned short*>(u"ef"), 2);
    writer->write(String(u"g\0h", 3));
    writer->write(u'!');
    writer->write(static_cast<const char16_t*>(nullptr), 0);
    writer->write(static_cast<const char16_t*>(nullptr), -1);
    EXPECT_EQ(kInvalidArgument, resultOf([&] { writer->write(static_cast<const char16_t*>(nullptr), 2); }));
    EXPECT_EQ(std::u16string(u"abcdefg\0h!", 10), u16(writer->toString()));
    EXPECT_EQ(10, writer->size());

    char16_t copy[4] = {};
    EXPECT_EQ(4, writer->getChars(copy, 4));
    EXPECT_EQ(u"abcd", std::u16string(copy, 4));
    EXPECT_EQ(0, writer->getChars(copy, -1));

    auto other = makeReference<CharArrayWriter>();
    writer->writeTo(other.get());
    EXPECT_EQ(u16(writer->toString()), u16(other->toString()));

    writer->reset();
    EXPECT_EQ(0, writer->size());
    EXPECT_EQ(u"", u16(writer->toString()));
    EXPECT_EQ(kInvalidArgument, resultOf([] { CharArrayWriter bad(-1); }));
}

TEST(CharArrayWriterTest, GrowsThroughManySmallWrites)
{
    CharArrayWriter writer(0);
    writer.AddRef();
    std::u16string expected;
    for (int i = 0; i < 20000; ++i) {
        char16_t unit = static_cast<char16_t>(u'A' + i % 50);
        if (i % 3 == 0) {
            writer.write(unit);
            expected += unit;
        } else {
            char16_t pair[2] = {unit, u'-'};
            writer.write(pair, 2);
            expected.append(pair, 2);
        }
    }
    EXPECT_TRUE(expected == u16(writer.toString()));
}

TEST(CharArrayWriterTest, ClosedWriterRefusesWritesButKeepsItsText)
{
    auto writer = makeReference<StringWriter>();
    writer->write(QV_STR(u"kept"));
    writer->close();
    writer->close();
    iotest::expectEachFails("stream closed", {[&] { writer->write(u"x", 1); }, [&] { writer->write(u'x'); },
                                              [&] { writer->write(QV_STR(u"x")); }, [&] { writer->flush(); }});
    EXPECT_EQ(u"kept", u16(writer->toString()));
}

TEST(BufferedWriterTest, HoldsTextUntilFullFlushedOrClosed)
{
    auto sink = makeReference<StringWriter>();
    auto writer = makeReference<BufferedWriter>(sink.get(), 1);
    writer->write(u"0123456789", 10);
    writer->newLine();
    EXPECT_EQ(0, sink->size()) << "eleven units fit into the 16-unit buffer";
    writer->write(u"abcdef", 6);
    EXPECT_EQ(u"0123456789\n", u16(sink->toString())) << "a write that does not fit pushes out what is held";
    std::u16string large(40, u'L');
    writer->write(large.data(), 40);
    EXPECT_EQ(u"0123456789\nabcdef" + large, u16(sink->toString())) << "a write of a buffer or more goes through";
    for (char16_t c = u'a'; c <= u'p'; ++c)
        writer->write(c);
    EXPECT_EQ(57, sink->size());
    writer->write(u'q');
    EXPECT_EQ(73, sink->size());
    writer->flush();
    EXPECT_EQ(74, sink->size());
    writer->write(QV_STR(u"end"));
    writer->close();
    writer->close();
    EXPECT_TRUE(u16(sink->toString()).size() == 77 && u16(sink->toString()).substr(74) == u"end");
    EXPECT_EQ("stream closed", ioFailure([&] { sink->write(u'x'); })) << "close closes the wrapped writer";
    iotest::expectEachFails("stream closed",
                            {[&] { writer->write(u'x'); }, [&] { writer->newLine(); }, [&] { writer->flush(); }});
}

TEST(BufferedWriterTest, AFailingSinkIsReportedByTheWriteOrFlushThatMeetsIt)
{
    auto sink = makeReference<StringWriter>();
    auto writer = makeReference<BufferedWriter>(sink.get(), 16);
    writer->write(u"held", 4);
    sink->close();
    iotest::expectEachFails("stream closed",
                            {[&] { writer->flush(); }, [&] { writer->write(std::u16string(20, u'x').data(), 20); }});
    // Closing still closes (the sink is closed already) and reports the loss.
    iotest::expectEachFails("stream closed", {[&] { writer->close(); }, [&] { writer->write(u'x'); }});
    EXPECT_EQ(0, sink->size());
}

TEST(BufferedWriterTest, DestructionPassesHeldTextOn)
{
    auto sink = makeReference<StringWriter>();
    {
        auto writer = makeReference<BufferedWriter>(sink.get());
        writer->write(QV_STR(u"unflushed"));
    }
    EXPECT_EQ(u"unflushed", u16(sink->toString()));
    EXPECT_EQ(kInvalidArgument, resultOf([] { BufferedWriter bad(nullptr); }));
}

TEST(PrintWriterTest, PrintsNumbersObjectsAndLines)
{
    auto sink = makeReference<StringWriter>();
    auto out = makeReference<PrintWriter>(sink.get());
    out->print(QV_STR(u"s="));
    out->print(true);
    // Each overload in turn, a space before each value.
    const auto spaced = [&](auto value) {
        out->print(u' ');
        out->print(value);
    };
    spaced(-42);
    spaced(4000000000u);
    spaced(LLONG_MIN);
    spaced(18446744073709551615ull);
    spaced(-7L);
    spaced(7UL);
    spaced(2.5);
    spaced(1e7f);
    out->println();
    out->println(u"utf16");
    out->println(reinterpret_cast<const unsigned short*>(u"ushort"));
    out->println(Integer32(12));
    out->print(static_cast<const char16_t*>(nullptr));
    out->write(u"raw", 3);
    EXPECT_EQ(u"s=true -42 4000000000 -9223372036854775808 18446744073709551615 -7 7 2.5 1e+07\nutf16\nushort\n12\nraw",
              u16(sink->toString()));
    out->close();
    iotest::expectEachFails("stream closed",
                            {[&] { out->print(1); }, [&] { out->println(); }, [&] { sink->write(u'x'); }});
}

TEST(PrintWriterTest, AutoFlushFlushesEveryLineAndFailuresPassThrough)
{
    auto sink = makeReference<StringWriter>();
    auto buffered = makeReference<BufferedWriter>(sink.get());
    auto out = makeReference<PrintWriter>(buffered.get(), true);
    out->print(1);
    EXPECT_EQ(0, sink->size());
    out->println(2);
    EXPECT_EQ(u"12\n", u16(sink->toString()));
    sink->close();
    out->print(3);
    iotest::expectEachFails("stream closed", {[&] { out->println(); }, [&] { out->flush(); }});
}

TEST(NullWriterTest, DiscardsUntilClosed)
{
    auto writer = makeReference<NullWriter>();
    writer->write(u"abc", 3);
    writer->write(QV_STR(u"abc"));
    writer->write(u'a');
    writer->flush();
    EXPECT_EQ(kInvalidArgument, resultOf([&] { writer->write(static_cast<const char16_t*>(nullptr), 1); }));
    writer->close();
    iotest::expectEachFails("stream closed", {[&] { writer->write(u"abc", 3); }, [&] { writer->write(QV_STR(u"abc")); },
                                              [&] { writer->write(u'a'); }, [&] { writer->flush(); }});
}

TEST(CharArrayWriterTest, WritesSurviveEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    auto writer = makeReference<CharArrayWriter>(0);
    std::u16string chunk(100, u'c');
    int failures = qvtest::sweepAllocations(
        [&] {
            writer->write(chunk.data(), 100);
            auto buffered = makeReference<BufferedWriter>(writer.get(), 16);
            buffered->write(chunk.data(), 10);
            buffered->flush();
        },
        [&] { EXPECT_EQ(0, writer->size() % 10); });
    EXPECT_GT(failures, 1);
}
