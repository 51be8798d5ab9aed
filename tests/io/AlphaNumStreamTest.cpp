#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/AlphaNumInputStream.h>
#include <qv/io/AlphaNumOutputStream.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/text/charset/CharsetExceptions.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <unistd.h>

using namespace qv;
using namespace qv::io;
using qv::text::charset::InvalidCharacterException;

namespace {

std::string encode(const std::vector<signed char>& data, const char16_t* alphabet = nullptr)
{
    Reference<ByteArrayOutputStream> text = makeReference<ByteArrayOutputStream>();
    AlphaNumOutputStream out(text.get(), alphabet);
    out.write(data.data(), static_cast<int32_t>(data.size()));
    out.flush();
    return std::string(text->getData(), text->getData() + text->size());
}

std::vector<signed char> decode(const std::string& text, int32_t chunk = 4096, const char16_t* alphabet = nullptr)
{
    Reference<ByteArrayInputStream> source =
        makeReference<ByteArrayInputStream>(text.data(), static_cast<int32_t>(text.size()));
    AlphaNumInputStream in(source.get(), alphabet);
    std::vector<signed char> result, buf(static_cast<size_t>(chunk));
    for (int32_t n; (n = in.read(buf.data(), chunk)) > 0;)
        result.insert(result.end(), buf.begin(), buf.begin() + n);
    return result;
}

std::vector<signed char> raw(std::initializer_list<int> values)
{
    std::vector<signed char> v;
    for (int x : values)
        v.push_back(static_cast<signed char>(x));
    return v;
}

} // namespace

TEST(AlphaNumOutputStream, EncodesFiveBitsPerCharacterWithoutPadding)
{
    EXPECT_EQ(encode(raw({0x00})), "AA");
    EXPECT_EQ(encode(raw({0, 0, 0, 0, 0})), "AAAAAAAA");
    EXPECT_EQ(encode(raw({0xFF})), "96");
    EXPECT_EQ(encode({}), "");
    for (size_t n = 0; n <= 12; ++n)
        EXPECT_EQ(encode(std::vector<signed char>(n, 'x')).size(), (8 * n + 4) / 5) << n << " bytes";
}

TEST(AlphaNumOutputStream, MatchesCoreutilsBase32WithItsAlphabet)
{
    // Same bit order as the published Base32; with that alphabet the text is
    // base32's output without the '=' padding.
    const char16_t base32Alphabet[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
    std::mt19937 random(99);
    std::vector<signed char> data(20003);
    for (auto& b : data)
        b = static_cast<signed char>(random());
    char path[] = "/tmp/qvcl3-alphanum-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, data.data(), data.size()), static_cast<ssize_t>(data.size()));
    close(fd);
    const std::string command = std::string("base32 -w0 ") + path + " > " + path + ".txt";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream file(std::string(path) + ".txt");
    std::string expected((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::remove(path);
    std::remove((std::string(path) + ".txt").c_str());
    while (!expected.empty() && expected.back() == '=')
        expected.pop_back();
    EXPECT_EQ(encode(data, base32Alphabet), expected);
}

TEST(AlphaNumInputStream, DecodesWithTheKeptExtraByte)
{
    EXPECT_EQ(decode("96"), raw({0xFF, 0x00}));
    EXPECT_EQ(decode("AAAAAAAA"), raw({0, 0, 0, 0, 0}));
    EXPECT_EQ(decode(""), raw({}));

    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>("AA", 2);
    AlphaNumInputStream in(source.get());
    signed char buf[4];
    EXPECT_EQ(in.read(buf, 0), -1);
    EXPECT_EQ(in.read(buf, -1), -1);
    EXPECT_EQ(in.read(buf, 1), 1) << "the request is met before the text ends";
    EXPECT_EQ(in.read(buf, 1), 1) << "then the open group gives its extra byte";
    EXPECT_EQ(in.read(buf, 1), -1);
}

TEST(AlphaNumStreams, RandomLengthsRoundTrip)
{
    std::mt19937 random(2024);
    for (int round = 0; round < 60; ++round) {
        const size_t n = round < 11 ? static_cast<size_t>(round) : random() % 10001;
        std::vector<signed char> data(n);
        for (auto& b : data)
            b = static_cast<signed char>(random());
        const std::string text = encode(data);
        std::vector<signed char> expected = data;
        if (n % 5 != 0)
            expected.push_back(0);
        const int32_t chunk = 1 + static_cast<int32_t>(random() % 700);
        EXPECT_EQ(decode(text, chunk), expected) << n << " bytes in chunks of " << chunk;
    }
}

TEST(AlphaNumStreams, OwnAlphabetsAndBadOnes)
{
    const char16_t lower[] = u"abcdefghjklmnpqrstuvwxyz23456789";
    EXPECT_EQ(encode(raw({0xFF}), lower), "96");
    EXPECT_EQ(encode(raw({0x08}), lower), "ba");
    EXPECT_EQ(decode("ba", 16, lower), raw({0x08, 0x00}));

    const unsigned short* wide = reinterpret_cast<const unsigned short*>(u"0123456789ABCDEFGHIJKLMNOPQRSTUV");
    Reference<ByteArrayOutputStream> text = makeReference<ByteArrayOutputStream>();
    AlphaNumOutputStream(text.get(), wide).write(raw({0xFF}).data(), 1);
    EXPECT_EQ(std::string(text->getData(), text->getData() + text->size()), "V");

    Reference<ByteArrayOutputStream> sink = makeReference<ByteArrayOutputStream>();
    const char16_t* bad[] = {u"", u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678", u"ABCDEFGHJKLMNPQRSTUVWXYZ234567899"};
    for (const char16_t* alphabet : bad) {
        EXPECT_EQ(iotest::resultOf([&] { AlphaNumOutputStream s(sink.get(), alphabet); }), results::INVALIDARG);
        Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>("", 0);
        EXPECT_EQ(iotest::resultOf([&] { AlphaNumInputStream s(source.get(), alphabet); }), results::INVALIDARG);
    }
    // Only the length is checked: a wide character goes out as its low eight
    // bits (and matches no input byte); a repeated one decodes as its first index.
    EXPECT_EQ(encode(raw({0xFF}), u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678\u0139"), "96");
    EXPECT_THROW(decode("96", 16, u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678\u0139"), InvalidCharacterException);
    EXPECT_EQ(encode(raw({0xFF}), u"ABCDEFGHJKLMNPQRSTUVWXYZ23456788"), "86");
    EXPECT_EQ(decode("86", 16, u"ABCDEFGHJKLMNPQRSTUVWXYZ23456788"), raw({0xF7, 0x00}));
    AlphaNumOutputStream defaults(sink.get(), nullptr);
    defaults.write(static_cast<signed char>(0));
    defaults.flush();
    EXPECT_EQ(std::string(sink->getData(), sink->getData() + sink->size()), "AA");
}

TEST(AlphaNumInputStream, CharactersOutsideTheAlphabetAreRefused)
{
    for (const char* text : {"aa", "A A", "AA\n", "AI", "A0", "A1", "AO"}) {
        EXPECT_EQ(iotest::messageOf<InvalidCharacterException>([&] { decode(text); }), "Invalid AlphaNum character")
            << text;
    }
    // The characters before the bad one are consumed; decoding goes on after it.
    Reference<ByteArrayInputStream> source = makeReference<ByteArrayInputStream>("9a6", 3);
    AlphaNumInputStream in(source.get());
    signed char buf[4];
    EXPECT_THROW(in.read(buf, 4), InvalidCharacterException);
    EXPECT_EQ(in.read(buf, 4), 2);
    EXPECT_EQ(buf[0], static_cast<signed char>(0xFF));
    EXPECT_EQ(iotest::resultOf([] { decode("a"); }), static_cast<Result>(0x8BB34101));
}

TEST(AlphaNumInputStream, SingleBytesSkipAndAvailableGoThroughTheDecoder)
{
    const std::string text = encode(iotest::bytes("hello, world"));
    Reference<ByteArrayInputStream> source =
        makeReference<ByteArrayInputStream>(text.data(), static_cast<int32_t>(text.size()));
    AlphaNumInputStream in(source.get());
    EXPECT_EQ(in.read(), 'h');
    EXPECT_EQ(in.skip(6), 6);
    EXPECT_EQ(in.available(), 0);
    EXPECT_FALSE(in.markSupported());
    EXPECT_EQ(in.read(), 'w');
    EXPECT_EQ(in.skip(100), 5) << "orld and the extra zero byte";
    EXPECT_EQ(in.read(), -1);
}

TEST(AlphaNumInputStream, TakesNoMoreCharactersThanTheRequestNeeds)
{
    const std::string text = encode(iotest::bytes("0123456789"));
    Reference<ByteArrayInputStream> source =
        makeReference<ByteArrayInputStream>(text.data(), static_cast<int32_t>(text.size()));
    AlphaNumInputStream in(source.get());
    signed char buf[8];
    ASSERT_EQ(in.read(buf, 3), 3);
    EXPECT_EQ(source->available(), 16 - 5) << "three bytes need five characters";
    ASSERT_EQ(in.read(buf, 2), 2);
    EXPECT_EQ(source->available(), 8);
}

TEST(AlphaNumOutputStream, CloseEndsTheGroup)
{
    Reference<iotest::RecordingOutput> sink = makeReference<iotest::RecordingOutput>();
    AlphaNumOutputStream out(sink.get());
    out.write(static_cast<signed char>(0xFF));
    out.close();
    EXPECT_EQ(iotest::text(sink->data), "96");
    EXPECT_EQ(sink->closes, 1);
    EXPECT_EQ(sink->flushes, 1);
}
