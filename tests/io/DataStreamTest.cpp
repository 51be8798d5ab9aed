#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/DataInputStream.h>
#include <qv/io/DataOutputStream.h>
#include <qv/io/IoException.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace qv;
using namespace qv::io;
using iotest::collected;

namespace {

template <class T>
uint64_t bitsOf(T value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

template <class T, class Bits>
T fromBits(Bits bits)
{
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

TEST(DataOutputStream, WritesEveryTypeBigEndian)
{
    Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
    Reference<DataOutputStream> out = makeReference<DataOutputStream>(bytes.get());
    out->writeBool(true);
    out->writeBool(false);
    out->writeByte(-2);
    out->writeUnsignedByte(0xC8);
    out->writeInt16(0x0102);
    out->writeUnsignedShort(0xFFFE);
    out->writeChar16(u'\u20AC');
    out->writeInt32(0x01020304);
    out->writeLong(-1);
    out->writeChar32(U'\U0001F600');
    out->writeInt64(0x0102030405060708LL);
    out->writeFloat(1.0f);
    out->writeDouble(-2.0);
    out->writeString(String(u"ignored")); // strings have no wire form
    const std::vector<unsigned char> expected = {
        1,    0, 0xFE, 0xC8, 1, 2, 0xFF, 0xFE, 0x20, 0xAC, 1,    2, 3, 4,    0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x01, 0xF6,
        0x00, 1, 2,    3,    4, 5, 6,    7,    8,    0x3F, 0x80, 0, 0, 0xC0, 0x00, 0,    0,    0,    0,    0,    0};
    EXPECT_EQ(collected(*bytes), expected);
}

TEST(DataInputStream, ReadsEveryTypeBack)
{
    const uint32_t floatPayloads[] = {0x7FC00001u, 0xFFBFFFFFu, 0x7F800001u};
    const uint64_t doublePayloads[] = {0x7FF8000000000001ULL, 0xFFF0DEADBEEF0001ULL, 0x7FF0000000000001ULL};
    Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
    {
        DataOutputStream out(bytes.get());
        out.writeBool(true);
        out.writeByte(-128);
        out.writeUnsignedInt16(0xABCD);
        out.writeShort(-2);
        out.writeChar(u'\uFFFF');
        out.writeInt(std::numeric_limits<int32_t>::min());
        out.writeUnsignedInt(0xDEADBEEF);
        out.writeUnsignedLong(7);
        out.writeChar32(U'\U0010FFFF');
        out.writeInt64(std::numeric_limits<int64_t>::min());
        out.writeUnsignedInt64(0xFEDCBA9876543210ULL);
        out.writeFloat(-0.0f);
        out.writeDouble(-0.0);
        out.writeFloat(std::numeric_limits<float>::infinity());
        out.writeDouble(std::numeric_limits<double>::denorm_min());
        for (uint32_t bits : floatPayloads)
            out.writeFloat(fromBits<float>(bits));
        for (uint64_t bits : doublePayloads)
            out.writeDouble(fromBits<double>(bits));
    }
    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(bytes->getData(), bytes->size());
    DataInputStream in(source.get());
    EXPECT_TRUE(in.readBool());
    EXPECT_EQ(in.readByte(), -128);
    EXPECT_EQ(in.readUnsignedShort(), 0xABCD);
    EXPECT_EQ(in.readInt16(), -2);
    EXPECT_EQ(in.readChar16(), u'\uFFFF');
    EXPECT_EQ(in.readInt32(), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(in.readUnsignedInt32(), 0xDEADBEEFu);
    EXPECT_EQ(in.readLong(), 7);
    EXPECT_EQ(in.readChar32(), U'\U0010FFFF');
    EXPECT_EQ(in.readInt64(), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(in.readUnsignedInt64(), 0xFEDCBA9876543210ULL);
    EXPECT_EQ(bitsOf(in.readFloat()), bitsOf(-0.0f)) << "negative zero keeps its sign";
    EXPECT_EQ(bitsOf(in.readDouble()), bitsOf(-0.0));
    EXPECT_TRUE(std::isinf(in.readFloat()));
    EXPECT_EQ(in.readDouble(), std::numeric_limits<double>::denorm_min());
    for (uint32_t bits : floatPayloads)
        EXPECT_EQ(bitsOf(in.readFloat()), bits) << "NaN payloads survive bit for bit";
    for (uint64_t bits : doublePayloads)
        EXPECT_EQ(bitsOf(in.readDouble()), bits);
    EXPECT_EQ(in.read(), -1);
}

TEST(DataInputStream, ShortValuesThrowAfterConsumingWhatWasThere)
{
    const signed char full[] = {1, 2, 3, 4};
    Reference<ByteArrayInputStream> four = makeReference<ByteArrayInputStream>(full, 4);
    EXPECT_EQ(DataInputStream(four.get()).readInt32(), 0x01020304);

    Reference<ByteArrayInputStream> three = makeReference<ByteArrayInputStream>(full, 3);
    DataInputStream in(three.get());
    EXPECT_THROW(in.readInt32(), UnexpectedEOFException);
    EXPECT_EQ(three->available(), 0) << "all three bytes were consumed";

    // Served a byte at a time, the bulk read gives one and the rest come singly.
    Reference<iotest::ScriptedInput> trickle = makeReference<iotest::ScriptedInput>(iotest::bytes("\x01\x02\x03"), 1);
    DataInputStream slow(trickle.get());
    EXPECT_EQ(slow.readInt16(), 0x0102);
    EXPECT_THROW(slow.readInt16(), UnexpectedEOFException);
    EXPECT_EQ(trickle->position(), 3u);

    // The high word of a 64-bit value is complete, the low one is not.
    const signed char six[] = {0, 0, 0, 1, 0, 2};
    Reference<ByteArrayInputStream> partial = makeReference<ByteArrayInputStream>(six, 6);
    EXPECT_THROW(DataInputStream(partial.get()).readInt64(), UnexpectedEOFException);
    EXPECT_EQ(partial->available(), 0);

    Reference<ByteArrayInputStream> empty = makeReference<ByteArrayInputStream>(six, 0);
    DataInputStream none(empty.get());
    EXPECT_THROW(none.readBool(), UnexpectedEOFException);
    EXPECT_THROW(none.readByte(), UnexpectedEOFException);
    EXPECT_THROW(none.readUnsignedByte(), UnexpectedEOFException);
    EXPECT_THROW(none.readChar16(), UnexpectedEOFException);
    EXPECT_THROW(none.readDouble(), UnexpectedEOFException);
    // The end of the data is no I/O failure: another exception type fails.
    EXPECT_THROW(none.readInt32(), UnexpectedEOFException);
}

TEST(DataInputStream, ReadFullyWaitsForEveryByte)
{
    const std::vector<signed char> data = iotest::bytes("0123456789");
    Reference<iotest::ScriptedInput> source = makeReference<iotest::ScriptedInput>(data, 3, true);
    DataInputStream in(source.get());
    signed char buf[8] = {};
    in.readFully(buf, 0);
    in.readFully(buf, 8);
    EXPECT_EQ(std::string(buf, buf + 8), "01234567");

    signed char rest[4];
    EXPECT_THROW(in.readFully(rest, 4), UnexpectedEOFException);
    EXPECT_EQ(iotest::resultOf([&] { in.readFully(rest, -1); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { in.readFully(static_cast<char*>(nullptr), 2); }), results::INVALIDARG);
}

TEST(DataInputStream, StringsHaveNoWireForm)
{
    const signed char data[] = {'a', 'b'};
    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(data, 2);
    DataInputStream in(source.get());
    EXPECT_EQ(in.readString().getLength(), 0);
    EXPECT_EQ(source->available(), 2) << "nothing was read";
}
