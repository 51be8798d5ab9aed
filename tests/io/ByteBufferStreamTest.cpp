#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/ByteBuffer.h>
#include <qv/io/ByteBufferInputStream.h>
#include <qv/io/ByteBufferOutputStream.h>
#include <qv/io/DataInputStream.h>
#include <qv/io/DataOutputStream.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

using namespace qv;
using namespace qv::io;

TEST(ByteBuffer, CursorsMoveWithWritesAndReads)
{
    Reference<ByteBuffer> buffer = makeReference<ByteBuffer>(16);
    EXPECT_EQ(buffer->getCapacity(), 16);
    buffer->write("abcdefghij", 10);
    EXPECT_EQ(buffer->getWritePosition(), 10);
    signed char out[8];
    EXPECT_EQ(buffer->read(out, 4), 4);
    EXPECT_EQ(buffer->getReadPosition(), 4);
    EXPECT_EQ(buffer->getLength(), 6);
    EXPECT_EQ(std::string(buffer->getData(), buffer->getData() + 6), "efghij");

    buffer->write("klmnopqr", 8);
    EXPECT_EQ(buffer->getCapacity(), 16) << "the unread bytes moved to the front instead of growing";
    EXPECT_EQ(buffer->getReadPosition(), 0);
    EXPECT_EQ(std::string(buffer->getData(), buffer->getData() + 14), "efghijklmnopqr");

    EXPECT_EQ(buffer->skip(20), 14);
    EXPECT_TRUE(buffer->isEmpty());
    EXPECT_EQ(buffer->getWritePosition(), 0) << "drained: both cursors back to 0";
    EXPECT_EQ(buffer->read(out, 4), 0);

    buffer->write(std::vector<signed char>(40, 'z').data(), 40);
    EXPECT_EQ(buffer->getCapacity(), 48) << "grows to what is needed, rounded to 16";
    buffer->write("1", 1);
    buffer->write(std::vector<signed char>(8, 'y').data(), 8);
    EXPECT_EQ(buffer->getCapacity(), 80) << "or by half, whichever is more";
    buffer->clear();
    EXPECT_EQ(buffer->getLength(), 0);
    EXPECT_EQ(buffer->getCapacity(), 80);
}

TEST(ByteBuffer, RefusesBadArguments)
{
    EXPECT_EQ(iotest::resultOf([] { ByteBuffer b(-1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([] { ByteBuffer b(static_cast<const signed char*>(nullptr), 2); }), results::INVALIDARG);
    ByteBuffer buffer;
    EXPECT_EQ(iotest::resultOf([&] { buffer.write(static_cast<const signed char*>(nullptr), 1); }),
              results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { buffer.ensureWritable(-1); }), results::INVALIDARG);
    EXPECT_EQ(buffer.read(static_cast<char*>(nullptr), 0), 0);
}

TEST(ByteBufferStreams, ShareOneBufferAsAPipe)
{
    Reference<ByteBufferOutputStream> out = makeReference<ByteBufferOutputStream>();
    Reference<ByteBufferInputStream> in = makeReference<ByteBufferInputStream>(out->getByteBuffer().get());
    signed char buf[16];
    EXPECT_EQ(in->read(buf, 16), -1) << "nothing written yet";
    EXPECT_EQ(in->read(), -1);
    out->write("ping", 4);
    EXPECT_EQ(in->available(), 4);
    EXPECT_EQ(in->read(), 'p');
    EXPECT_EQ(in->read(buf, 16), 3);
    EXPECT_EQ(in->read(buf, 16), -1);
    out->write("pong", 4);
    EXPECT_EQ(in->skip(2), 2);
    EXPECT_EQ(in->read(buf, 0), 0);
    EXPECT_EQ(in->read(buf, 16), 2);

    DataOutputStream data(out.get());
    DataInputStream back(in.get());
    for (int32_t i = 0; i < 1000; ++i) {
        data.writeInt32(i * 7919);
        if (i % 3 == 0) {
            EXPECT_EQ(back.readInt32(), (i / 3) * 7919);
        }
    }
    EXPECT_LE(out->getByteBuffer()->getCapacity(), 4096) << "a pipe stays as large as its backlog";
    EXPECT_EQ(iotest::resultOf([] { ByteBufferInputStream s(nullptr); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([] { ByteBufferOutputStream s(nullptr); }), results::INVALIDARG);
}

TEST(ByteBuffer, AllocationFailureKeepsTheUnreadBytes)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    ByteBuffer buffer(16);
    buffer.write("0123456789abcdef", 16);
    signed char two[2];
    buffer.read(two, 2);
    const std::vector<signed char> more(100, 'm');
    EXPECT_EQ(qvtest::sweepAllocations([&] { buffer.write(more.data(), 100); },
                                       [&] {
                                           EXPECT_EQ(buffer.getLength(), 14);
                                           EXPECT_EQ(std::string(buffer.getData(), buffer.getData() + 14),
                                                     "23456789abcdef");
                                       }),
              1);
    EXPECT_EQ(buffer.getLength(), 114);
}
