#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/FilterInputStream.h>
#include <qv/io/FilterOutputStream.h>
#include <qv/io/IoException.h>
#include <qv/text/charset/CharsetExceptions.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

using namespace qv;
using namespace qv::io;
using iotest::bytes;
using iotest::RecordingOutput;
using iotest::ScriptedInput;

TEST(InputStreamBase, DefaultsAreBuiltOnTheOneAbstractRead)
{
    Reference<ScriptedInput> in = makeReference<ScriptedInput>(std::vector<signed char>{'a', -1, 'c', 'd'});
    InputStream& base = *in;
    EXPECT_EQ(base.read(), 'a');
    EXPECT_EQ(base.read(), 255) << "a byte comes back as 0..255";
    char c[1];
    EXPECT_EQ(base.read(c, 1), 1);
    EXPECT_EQ(c[0], 'c');
    unsigned char u[4];
    EXPECT_EQ(base.read(u, 4), 1);
    EXPECT_EQ(u[0], 'd');
    EXPECT_EQ(base.read(), -1);
    EXPECT_EQ(base.available(), 0);
    EXPECT_FALSE(base.markSupported());
    base.mark(10);
    EXPECT_EQ(iotest::messageOf<IoException>([&] { base.reset(); }), "mark/reset not supported");
}

TEST(InputStreamBase, ReadOfOneByteTreatsZeroAsEnd)
{
    // A source that answers 0 is not at its end, but read() has no way to
    // say "nothing yet": it gives -1, as it does for any result <= 0.
    Reference<ScriptedInput> in = makeReference<ScriptedInput>(bytes("xy"), 1 << 30, true);
    EXPECT_EQ(static_cast<InputStream&>(*in).read(), -1);
    EXPECT_EQ(static_cast<InputStream&>(*in).read(), 'x');
}

TEST(InputStreamBase, SkipReadsAtMost256AtATimeAndStopsOnlyAtEnd)
{
    Reference<ScriptedInput> in = makeReference<ScriptedInput>(std::vector<signed char>(700, 7));
    InputStream& base = *in;
    EXPECT_EQ(base.skip(0), 0);
    EXPECT_EQ(base.skip(-5), 0);
    EXPECT_TRUE(in->requests.empty());
    EXPECT_EQ(base.skip(600), 600);
    EXPECT_EQ(in->requests, (std::vector<int32_t>{256, 256, 88}));
    EXPECT_EQ(base.skip(600), 100) << "the end stops the loop";

    // Answers of 0 keep the loop going.
    Reference<ScriptedInput> stutter = makeReference<ScriptedInput>(std::vector<signed char>(300, 1), 100, true);
    EXPECT_EQ(static_cast<InputStream&>(*stutter).skip(250), 250);
}

TEST(OutputStreamBase, DefaultsAreBuiltOnTheOneAbstractWrite)
{
    Reference<RecordingOutput> out = makeReference<RecordingOutput>();
    OutputStream& base = *out;
    base.write(static_cast<signed char>('a'));
    base.write("bc", 2);
    const unsigned char u[] = {0xFF, 'd'};
    base.write(u, 2);
    EXPECT_EQ(out->data, (std::vector<signed char>{'a', 'b', 'c', -1, 'd'}));
    EXPECT_EQ(out->writes, (std::vector<int32_t>{1, 2, 2}));
}

TEST(FilterStreams, ForwardEveryOperationAndCloseTheWrappedStream)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(bytes("hello world"));
    source->availableAnswer = 42;
    Reference<FilterInputStream> in = makeReference<FilterInputStream>(source.get());
    signed char buf[5];
    EXPECT_EQ(in->read(buf, 5), 5);
    EXPECT_EQ(in->read(), ' ');
    EXPECT_EQ(in->skip(2), 2);
    EXPECT_EQ(in->available(), 42);
    EXPECT_FALSE(in->markSupported());
    EXPECT_THROW(in->reset(), IoException);
    in->close();
    EXPECT_EQ(source->closes, 1);
    EXPECT_EQ(source->position(), 8u);

    Reference<RecordingOutput> sink = makeReference<RecordingOutput>();
    Reference<FilterOutputStream> out = makeReference<FilterOutputStream>(sink.get());
    out->write("ab", 2);
    out->write(static_cast<signed char>('c'));
    out->flush();
    out->close();
    EXPECT_EQ(iotest::text(sink->data), "abc");
    EXPECT_EQ(sink->flushes, 1);
    EXPECT_EQ(sink->closes, 1);
}

TEST(FilterStreams, HoldTheWrappedStreamAndRefuseNull)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(bytes("x"));
    {
        Reference<FilterInputStream> in = makeReference<FilterInputStream>(source.get());
        EXPECT_EQ(source->GetRefCount(), 2);
    }
    EXPECT_EQ(source->GetRefCount(), 1);
    EXPECT_EQ(iotest::resultOf([] { FilterInputStream f(nullptr); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([] { FilterOutputStream f(nullptr); }), results::INVALIDARG);
}

TEST(ByteArrayInputStream, ReadsWithoutCopyingAndEndsWithMinusOne)
{
    signed char data[] = {1, 2, 3, 4, 5};
    Reference<ByteArrayInputStream> in = makeReference<ByteArrayInputStream>(data, 5);
    signed char buf[8] = {};
    EXPECT_EQ(in->available(), 5);
    EXPECT_EQ(in->read(buf, 0), 0);
    EXPECT_EQ(in->read(buf, -3), 0);
    EXPECT_EQ(in->read(static_cast<signed char*>(nullptr), 0), 0);
    EXPECT_EQ(in->read(buf, 2), 2);
    data[2] = 30;
    EXPECT_EQ(in->read(), 30) << "the bytes are read in place";
    EXPECT_EQ(in->skip(10), 2);
    EXPECT_EQ(in->available(), 0);
    EXPECT_EQ(in->read(buf, 8), -1);
    EXPECT_EQ(in->read(buf, 0), -1) << "the end is checked first";
    EXPECT_EQ(in->read(), -1);
    EXPECT_EQ(in->skip(1), 0);
}

TEST(ByteArrayInputStream, RefusesBadArguments)
{
    signed char data[2] = {};
    EXPECT_EQ(iotest::resultOf([&] { ByteArrayInputStream s(data, -1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([] { ByteArrayInputStream s(static_cast<const char*>(nullptr), 3); }),
              results::INVALIDARG);
    ByteArrayInputStream empty(static_cast<const char*>(nullptr), 0);
    EXPECT_EQ(empty.read(), -1);
    ByteArrayInputStream in(data, 2);
    EXPECT_EQ(iotest::resultOf([&] { in.read(static_cast<signed char*>(nullptr), 1); }), results::INVALIDARG);
}

TEST(ByteArrayOutputStream, GrowsToAQuarterMoreThanNeeded)
{
    ByteArrayOutputStream out(8);
    EXPECT_EQ(out.getCapacity(), 8);
    out.write("0123456789", 10);
    EXPECT_EQ(out.getCapacity(), 12);
    out.write("ab", 2);
    EXPECT_EQ(out.getCapacity(), 12) << "an exact fit does not grow";
    out.write(static_cast<signed char>('c'));
    EXPECT_EQ(out.getCapacity(), 16);
    out.ensureCapacity(10);
    EXPECT_EQ(out.getCapacity(), 16);
    out.ensureCapacity(20);
    EXPECT_EQ(out.getCapacity(), 25);
    EXPECT_EQ(out.size(), 13);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(out.getData()), 13), "0123456789abc");

    ByteArrayOutputStream zero(0);
    EXPECT_EQ(zero.getCapacity(), 0);
    zero.write(static_cast<signed char>(1));
    EXPECT_EQ(zero.getCapacity(), 1);
    EXPECT_EQ(ByteArrayOutputStream().getCapacity(), ByteArrayOutputStream::DEFAULT_CAPACITY);
}

TEST(ByteArrayOutputStream, HandsOutWhatItCollected)
{
    ByteArrayOutputStream out;
    out.write("h\xC3\xA9llo", 6);
    signed char dest[4] = {};
    EXPECT_EQ(out.getBytes(dest, 4), 4);
    EXPECT_EQ(std::string(dest, dest + 4), "h\xC3\xA9l");
    signed char all[16] = {};
    EXPECT_EQ(out.getBytes(all, 16), 6);
    EXPECT_EQ(out.getBytes(nullptr, 0), 0);

    RecordingOutput sink;
    out.writeTo(&sink);
    EXPECT_EQ(iotest::text(sink.data), "h\xC3\xA9llo");
    ByteArrayOutputStream().writeTo(&sink);
    EXPECT_EQ(sink.writes.size(), 1u) << "nothing collected, nothing written";

    EXPECT_EQ(out.toString(u"UTF-8"), String(u"h\u00E9llo"));
    EXPECT_EQ(out.toString(reinterpret_cast<const unsigned short*>(u"ISO-8859-1")), String(u"h\u00C3\u00A9llo"));
    EXPECT_EQ(ByteArrayOutputStream().toString(u"UTF-8").getLength(), 0);
    EXPECT_THROW(out.toString(u"no-such-encoding"), text::charset::UnknownEncodingException);
    out.clear();
    EXPECT_EQ(out.size(), 0);
}

TEST(ByteArrayOutputStream, RefusesBadArguments)
{
    ByteArrayOutputStream out(4);
    EXPECT_EQ(iotest::resultOf([] { ByteArrayOutputStream s(-1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.write(static_cast<const char*>("x"), -1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.write(static_cast<const char*>(nullptr), 1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.getBytes(nullptr, 2); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.writeTo(nullptr); }), results::INVALIDARG);
    out.write(static_cast<const char*>(nullptr), 0);
    EXPECT_EQ(out.size(), 0);
}

TEST(ByteArrayOutputStream, AllocationFailureKeepsTheCollectedBytes)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    ByteArrayOutputStream out(4);
    out.write("abcd", 4);
    const std::vector<signed char> more(100, 'x');
    const int failures = qvtest::sweepAllocations([&] { out.write(more.data(), 100); },
                                                  [&] {
                                                      EXPECT_EQ(out.size(), 4);
                                                      EXPECT_EQ(out.getCapacity(), 4);
                                                      EXPECT_EQ(std::string(out.getData(), out.getData() + 4), "abcd");
                                                  });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(out.size(), 104);
    EXPECT_EQ(qvtest::sweepAllocations([] { ByteArrayOutputStream s(64); }), 1);
}
