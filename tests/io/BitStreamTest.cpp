#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/BitInputStream.h>
#include <qv/io/BitOutputStream.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/IoException.h>

#include <gtest/gtest.h>

#include <random>

using namespace qv;
using namespace qv::io;

using iotest::collected;

TEST(BitOutputStream, PacksFieldsMostSignificantBitFirst)
{
    Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
    BitOutputStream out(bytes.get());
    out.write(5, 3);
    EXPECT_EQ(bytes->size(), 0);
    out.flush();
    EXPECT_EQ(collected(*bytes), (std::vector<unsigned char>{0xA0}));

    bytes->clear();
    out.writeBit(true);
    out.write(0u, 32);
    out.write(0x7Fu, 7);
    EXPECT_EQ(collected(*bytes), (std::vector<unsigned char>{0x80, 0, 0, 0, 0x7F}));
    out.flush();
    EXPECT_EQ(bytes->size(), 5) << "nothing pending, nothing written";
}

TEST(BitOutputStream, RefusesFieldsThatDoNotFit)
{
    Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
    BitOutputStream out(bytes.get());
    EXPECT_EQ(iotest::messageOf<RangeErrorException>([&] { out.write(1, 32); }), "Number out of range");
    EXPECT_EQ(iotest::messageOf<RangeErrorException>([&] { out.write(0xFFFFFFFFu, 32); }), "Number out of range");
    EXPECT_EQ(iotest::messageOf<RangeErrorException>([&] { out.write(8, 3); }), "Number out of range");
    EXPECT_EQ(iotest::messageOf<RangeErrorException>([&] { out.write(-1, 31); }), "Number out of range");
    EXPECT_EQ(iotest::messageOf<RangeErrorException>([&] { out.write(1ULL << 40, 31); }), "Number out of range");
    EXPECT_EQ(iotest::resultOf([&] { out.write(0, 0); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.write(0, 33); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out.write(0, -1); }), results::INVALIDARG);
    out.write(0x7FFFFFFF, 31);
    out.write(1L, 1);
    EXPECT_EQ(collected(*bytes), (std::vector<unsigned char>{0xFF, 0xFF, 0xFF, 0xFF}))
        << "refused fields wrote nothing";
}

TEST(BitStreams, FieldsOfEveryWidthRoundTrip)
{
    std::mt19937 random(7);
    std::vector<std::pair<uint32_t, int>> fields;
    for (int round = 0; round < 20; ++round)
        for (int bits = 1; bits <= 31; ++bits)
            fields.emplace_back(static_cast<uint32_t>(random()) & ((1u << bits) - 1u), bits);
    fields.emplace_back(0u, 32);
    for (int bits = 1; bits <= 31; ++bits)
        fields.emplace_back((1u << bits) - 1u, bits);

    Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
    BitOutputStream out(bytes.get());
    for (const auto& field : fields)
        out.write(field.first, field.second);
    out.flush();

    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(bytes->getData(), bytes->size());
    BitInputStream in(source.get());
    for (const auto& field : fields)
        ASSERT_EQ(in.read(field.second), static_cast<int>(field.first)) << field.second << " bits";
}

TEST(BitStreams, BytesAtAnyBitPositionRoundTrip)
{
    const std::vector<signed char> payload = iotest::bytes(std::string("\x00\xFF\x80\x01 bits and bytes", 20));
    for (int offset = 0; offset < 8; ++offset) {
        Reference<ByteArrayOutputStream> bytes = makeReference<ByteArrayOutputStream>();
        BitOutputStream out(bytes.get());
        for (int i = 0; i < offset; ++i)
            out.writeBit(i % 2 == 0);
        out.write(payload.data(), static_cast<int32_t>(payload.size()));
        out.write(static_cast<signed char>(0x5A));
        out.writeBit(true);
        out.flush();
        ASSERT_EQ(bytes->size(), static_cast<int32_t>(payload.size()) + 2);

        Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(bytes->getData(), bytes->size());
        BitInputStream in(source.get());
        for (int i = 0; i < offset; ++i)
            ASSERT_EQ(in.readBit(), i % 2 == 0 ? 1 : 0);
        std::vector<signed char> back(payload.size());
        ASSERT_EQ(in.read(back.data(), static_cast<int32_t>(back.size())), static_cast<int32_t>(back.size()));
        EXPECT_EQ(back, payload) << "offset " << offset;
        EXPECT_EQ(in.read(), 0x5A);
        EXPECT_EQ(in.readBit(), 1);
    }
}

TEST(BitInputStream, EndOfInputInsideAFieldGivesMinusOne)
{
    const signed char data[] = {static_cast<signed char>(0xF0)};
    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>(data, 1);
    BitInputStream in(source.get());
    EXPECT_EQ(in.read(0), 0);
    EXPECT_EQ(in.read(-3), 0);
    EXPECT_EQ(in.read(3), 7);
    EXPECT_EQ(in.read(7), -1) << "five bits were left";
    EXPECT_EQ(in.readBit(), -1);
    EXPECT_EQ(in.read(), -1);
    signed char buf[2];
    EXPECT_EQ(in.read(buf, 2), -1);
    EXPECT_FALSE(in.markSupported());
    EXPECT_THROW(in.reset(), IoException);
}

TEST(BitOutputStream, CloseWritesPendingBitsAndClosesTheWrappedStream)
{
    Reference<iotest::RecordingOutput> sink = makeReference<iotest::RecordingOutput>();
    BitOutputStream out(sink.get());
    out.write(3, 2);
    out.close();
    EXPECT_EQ(sink->data, (std::vector<signed char>{static_cast<signed char>(0xC0)}));
    EXPECT_EQ(sink->closes, 1);
}
