#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/BufferedInputStream.h>
#include <qv/io/BufferedOutputStream.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/IoException.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

#include <random>

using namespace qv;
using namespace qv::io;
using iotest::messageOf;
using iotest::RecordingOutput;
using iotest::ScriptedInput;

namespace {

std::vector<signed char> counting(size_t n)
{
    std::vector<signed char> v(n);
    for (size_t i = 0; i < n; ++i)
        v[i] = static_cast<signed char>(i * 7 + 3);
    return v;
}

// The same mark and fill rules over absolute positions of the source data:
// the buffer is a window [base, base + count) of the data, so no bytes are
// copied or moved and a mistake there in the stream shows as a difference.
class BufferModel {
public:
    BufferModel(const std::vector<signed char>& data, int32_t size, int32_t chunk)
        : m_data(data), m_bufSize(size < 16 ? 16 : size), m_chunk(chunk)
    {}

    // Bytes or -1/0 as the stream returns them; the bytes in out.
    int32_t read(int32_t len, std::vector<signed char>& out)
    {
        if (len < 1)
            return 0;
        int32_t copied = 0;
        while (copied < len) {
            if (m_pos >= m_count) {
                if (copied > 0 && sourceLeft() == 0)
                    return copied;
                const int32_t wanted = len - copied;
                if (wanted >= m_bufSize && m_markPos < 0) {
                    const int32_t n = sourceRead(wanted);
                    for (int32_t i = 0; i < n; ++i)
                        out.push_back(m_data[m_source - n + i]);
                    return n > 0 ? copied + n : (copied > 0 ? copied : n);
                }
                fill();
                if (m_pos >= m_count)
                    return copied > 0 ? copied : -1;
            }
            const int32_t n = std::min(len - copied, m_count - m_pos);
            for (int32_t i = 0; i < n; ++i)
                out.push_back(m_data[m_base + m_pos + i]);
            m_pos += n;
            copied += n;
        }
        return copied;
    }
    int32_t skip(int32_t n)
    {
        if (n <= 0)
            return 0;
        if (m_pos >= m_count) {
            if (m_markPos < 0) {
                const int32_t k = std::min<int32_t>(n, sourceLeft());
                m_source += k;
                return k;
            }
            fill();
            if (m_pos >= m_count)
                return 0;
        }
        const int32_t k = std::min(n, m_count - m_pos);
        m_pos += k;
        return k;
    }
    void mark(int32_t limit)
    {
        m_markLimit = limit;
        m_markPos = m_pos;
    }
    std::string reset()
    {
        if (m_markPos >= 0 && m_pos - m_markPos > m_markLimit)
            m_markPos = -2;
        if (m_markPos == -2)
            return "mark invalid";
        if (m_markPos < 0)
            return "stream not marked";
        m_pos = m_markPos;
        return "";
    }
    int32_t available() const { return m_count - m_pos + sourceLeft(); }

private:
    int32_t sourceLeft() const { return static_cast<int32_t>(m_data.size()) - m_source; }
    int32_t sourceRead(int32_t n)
    {
        if (sourceLeft() == 0)
            return -1;
        const int32_t k = std::min({n, m_chunk, sourceLeft()});
        m_source += k;
        return k;
    }
    void fill()
    {
        int32_t keep = 0;
        if (m_markPos >= 0) {
            keep = m_pos - m_markPos;
            if (keep < m_markLimit) {
                m_bufSize = std::max(m_bufSize, m_markLimit);
                m_base += m_markPos;
                m_markPos = 0;
                m_pos = m_count = keep;
            } else {
                m_markPos = -2;
                keep = 0;
            }
        }
        const int32_t n = sourceRead(m_bufSize - keep);
        if (n > 0) {
            m_base = m_source - n - keep;
            m_pos = keep;
            m_count = keep + n;
        }
    }

    const std::vector<signed char>& m_data;
    int32_t m_bufSize;
    int32_t m_chunk;
    int32_t m_source = 0;
    int32_t m_base = 0;
    int32_t m_pos = 0;
    int32_t m_count = 0;
    int32_t m_markLimit = 0;
    int32_t m_markPos = -1;
};

} // namespace

TEST(BufferedInputStream, BufferIsNeverSmallerThanSixteenBytes)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(100));
    EXPECT_EQ(BufferedInputStream(source.get(), 1).getBufferSize(), 16);
    EXPECT_EQ(BufferedInputStream(source.get(), -5).getBufferSize(), 16);
    EXPECT_EQ(BufferedInputStream(source.get(), 17).getBufferSize(), 17);
    EXPECT_EQ(BufferedInputStream(source.get()).getBufferSize(), BufferedInputStream::DEFAULT_SIZE);
}

TEST(BufferedInputStream, ZeroByteReadsLeaveTheSourceAloneAndTheEndIsMinusOne)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(3));
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 1);
    signed char buf[8];
    EXPECT_EQ(in->read(buf, 0), 0);
    EXPECT_EQ(in->read(buf, -1), 0);
    EXPECT_TRUE(source->requests.empty());
    EXPECT_EQ(in->read(buf, 8), 3);
    EXPECT_EQ(in->read(buf, 8), -1);
    EXPECT_EQ(in->read(), -1);
    EXPECT_EQ(iotest::resultOf([&] { in->read(static_cast<signed char*>(nullptr), 2); }), results::INVALIDARG);
}

TEST(BufferedInputStream, LargeUnmarkedReadsGoStraightToTheSource)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(300));
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 1);
    std::vector<signed char> buf(100);
    EXPECT_EQ(in->read(buf.data(), 100), 100);
    EXPECT_EQ(source->requests, (std::vector<int32_t>{100}));
    EXPECT_EQ(buf, std::vector<signed char>(counting(100)));

    // With a mark set the bytes must pass through the buffer instead.
    in->mark(1000);
    EXPECT_EQ(in->read(buf.data(), 100), 100);
    EXPECT_EQ(source->requests.size(), 2u);
    EXPECT_EQ(source->requests[1], 1000) << "the buffer grew to the mark's read limit";
    EXPECT_EQ(in->getBufferSize(), 1000);
}

TEST(BufferedInputStream, NeverBlocksForMoreOnceBytesAreInHand)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(100), 10);
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 16);
    signed char buf[15];
    EXPECT_EQ(in->read(buf, 15), 10) << "the source has nothing available after its first 10 bytes";
    EXPECT_EQ(source->requests.size(), 1u);
    source->availableAnswer = 5;
    EXPECT_EQ(in->read(buf, 15), 15) << "with bytes available it reads on";
}

TEST(BufferedInputStream, ResetNeedsAValidMark)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(100));
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 16);
    EXPECT_TRUE(in->markSupported());
    EXPECT_EQ(messageOf<IoException>([&] { in->reset(); }), "stream not marked");

    signed char buf[16];
    ASSERT_EQ(in->read(buf, 12), 12);
    in->mark(4);
    ASSERT_EQ(in->read(buf, 4), 4);
    in->reset();
    EXPECT_EQ(in->read(), static_cast<unsigned char>(counting(13)[12])) << "back at the mark";
    in->reset();
    // Five bytes past a mark with limit 4: the refill after the fourth drops it.
    for (int i = 0; i < 5; ++i)
        ASSERT_GE(in->read(), 0);
    EXPECT_EQ(messageOf<IoException>([&] { in->reset(); }), "mark invalid");
    in->mark(0);
    in->reset();

    // Within one fill: the first read brings in all 16 bytes, and the mark
    // still goes once five bytes past mark(4) were handed out.
    Reference<BufferedInputStream> whole =
        makeReference<BufferedInputStream>(makeReference<ScriptedInput>(counting(16)).get(), 16);
    whole->mark(4);
    ASSERT_EQ(whole->read(buf, 4), 4);
    whole->reset();
    ASSERT_EQ(whole->read(buf, 5), 5);
    EXPECT_EQ(messageOf<IoException>([&] { whole->reset(); }), "mark invalid");
}

TEST(BufferedInputStream, SkipAvailableAndClose)
{
    Reference<ScriptedInput> source = makeReference<ScriptedInput>(counting(100));
    source->availableAnswer = -1;
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 16);
    EXPECT_EQ(in->skip(0), 0);
    EXPECT_EQ(in->skip(10), 10) << "with nothing buffered and no mark the source skips";
    EXPECT_EQ(in->read(), static_cast<unsigned char>(counting(11)[10]));
    EXPECT_EQ(in->available(), 89);
    EXPECT_EQ(in->skip(100), 15) << "then only what the buffer holds";
    in->close();
    EXPECT_EQ(source->closes, 1);
    signed char buf[4];
    iotest::expectEachFails("stream closed", {[&] { in->read(buf, 4); }, [&] { in->read(); }, [&] { in->skip(1); },
                                              [&] { in->available(); }, [&] { in->mark(1); }, [&] { in->reset(); }});
    in->close();
    EXPECT_EQ(source->closes, 1) << "a second close does nothing";
}

TEST(BufferedInputStream, AgreesWithAPlainModelOnRandomOperations)
{
    std::mt19937 random(12345);
    for (int round = 0; round < 300; ++round) {
        const std::vector<signed char> data = counting(random() % 3000);
        const int32_t size = static_cast<int32_t>(random() % 64);
        const int32_t chunk = 1 + static_cast<int32_t>(random() % 80);
        Reference<ScriptedInput> source = makeReference<ScriptedInput>(data, chunk);
        source->availableAnswer = -1;
        Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), size);
        BufferModel model(data, size, chunk);
        std::vector<signed char> got, expected, buf(400);
        for (int step = 0; step < 200; ++step) {
            const int32_t n = static_cast<int32_t>(random() % 200) - 5;
            switch (random() % 6) {
            case 0:
            case 1: {
                const int32_t r = in->read(buf.data(), n);
                ASSERT_EQ(r, model.read(n, expected)) << "round " << round << " step " << step;
                if (r > 0)
                    got.insert(got.end(), buf.begin(), buf.begin() + r);
                break;
            }
            case 2: {
                const int c = in->read();
                std::vector<signed char> one;
                const int32_t r = model.read(1, one);
                ASSERT_EQ(c, r < 0 ? -1 : static_cast<unsigned char>(one[0]));
                if (c >= 0) {
                    got.push_back(static_cast<signed char>(c));
                    expected.push_back(one[0]);
                }
                break;
            }
            case 3: ASSERT_EQ(in->skip(n), model.skip(n)); break;
            case 4:
                in->mark(n);
                model.mark(n);
                break;
            case 5: {
                std::string message;
                try {
                    in->reset();
                } catch (const IoException& e) {
                    message = e.getDescription().toUtf8();
                }
                ASSERT_EQ(message, model.reset());
                ASSERT_EQ(in->available(), model.available());
                break;
            }
            }
        }
        ASSERT_EQ(got, expected) << "round " << round;
    }
}

TEST(BufferedInputStream, AllocationFailureWhileGrowingForAMarkLosesNothing)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const std::vector<signed char> data = counting(500);
    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(data.data(), 500);
    Reference<BufferedInputStream> in = makeReference<BufferedInputStream>(source.get(), 16);
    signed char buf[300];
    ASSERT_EQ(in->read(buf, 8), 8);
    in->mark(300);
    ASSERT_EQ(in->read(buf, 8), 8);
    int32_t got = 0;
    qvtest::sweepAllocations([&] { got = in->read(buf, 100); }, [&] { EXPECT_EQ(in->getBufferSize(), 16); });
    EXPECT_EQ(got, 100);
    in->reset();
    ASSERT_EQ(in->read(buf, 108), 108);
    EXPECT_EQ(std::vector<signed char>(buf, buf + 108), std::vector<signed char>(data.begin() + 8, data.begin() + 116));
}

TEST(BufferedOutputStream, HoldsSmallWritesAndPassesLargeOnesStraightThrough)
{
    Reference<RecordingOutput> sink = makeReference<RecordingOutput>();
    Reference<BufferedOutputStream> out = makeReference<BufferedOutputStream>(sink.get(), 1);
    EXPECT_EQ(out->getBufferSize(), 16);
    out->write("0123456789", 10);
    EXPECT_TRUE(sink->writes.empty());
    out->write("abcdef", 6);
    EXPECT_TRUE(sink->writes.empty()) << "an exact fill is still held";
    out->write(static_cast<signed char>('!'));
    EXPECT_EQ(sink->writes, (std::vector<int32_t>{16}));
    out->write("ABCDEFGHIJKLMNOPQ", 17);
    EXPECT_EQ(sink->writes, (std::vector<int32_t>{16, 1, 17})) << "held bytes first, then the large write";
    out->write("xy", 2);
    out->write("0123456789abcdef", 15);
    EXPECT_EQ(sink->writes, (std::vector<int32_t>{16, 1, 17, 2})) << "a write that does not fit flushes first";
    out->flush();
    EXPECT_EQ(sink->flushes, 1);
    EXPECT_EQ(iotest::text(sink->data), "0123456789abcdef!ABCDEFGHIJKLMNOPQxy0123456789abcde");
    EXPECT_EQ(iotest::resultOf([&] { out->write(static_cast<const char*>("x"), -1); }), results::INVALIDARG);
}

TEST(BufferedOutputStream, DestructorAndCloseFlushCloseOnceAndLaterCallsFail)
{
    Reference<RecordingOutput> sink = makeReference<RecordingOutput>();
    makeReference<BufferedOutputStream>(sink.get(), 64)->write("kept ", 5);
    EXPECT_EQ(iotest::text(sink->data), "kept ") << "the destructor passes on what is held";
    Reference<BufferedOutputStream> out = makeReference<BufferedOutputStream>(sink.get(), 64);
    out->write("tail", 4);
    out->close();
    EXPECT_EQ(iotest::text(sink->data), "kept tail");
    EXPECT_EQ(sink->closes, 1);
    out->close();
    EXPECT_EQ(sink->closes, 1);
    iotest::expectEachFails("stream closed", {[&] { out->write("x", 1); },
                                              [&] { out->write(static_cast<signed char>(1)); }, [&] { out->flush(); }});
}

namespace {

// Refuses every write, as a full disk does.
class RefusingOutput : public RecordingOutput {
public:
    using RecordingOutput::write;
    void write(const signed char*, int32_t) override { throw IoException(u"disk full"); }
};

} // namespace

TEST(BufferedOutputStream, AFailedFlushIsReportedAndTheBytesStayHeld)
{
    Reference<RefusingOutput> sink = makeReference<RefusingOutput>();
    {
        Reference<BufferedOutputStream> out = makeReference<BufferedOutputStream>(sink.get(), 16);
        out->write("abc", 3);
        EXPECT_EQ(messageOf<IoException>([&] { out->flush(); }), "disk full");
        EXPECT_EQ(messageOf<IoException>([&] { out->flush(); }), "disk full") << "still held, still refused";
        EXPECT_EQ(messageOf<IoException>([&] { out->close(); }), "disk full");
        EXPECT_EQ(sink->closes, 1) << "the wrapped stream is closed all the same";
    }
    // Destroyed without close: the destructor's failed flush must not escape.
    Reference<BufferedOutputStream> dropped = makeReference<BufferedOutputStream>(sink.get(), 16);
    dropped->write("abc", 3);
    dropped.reset();
}
