// The Unicode forms: malformed input of every kind, byte order marks, and
// what a throwing call leaves behind.

#include "ConverterHarness.h"

#include <random>

namespace charset_test {
namespace {

void expectInvalid(ByteToCharConverter& decoder, const Bytes& bytes, const std::string& messagePart, int inStep)
{
    decoder.reset();
    const std::string message =
        qvtest::messageOf<InvalidCharacterException>([&] { decodeAll(decoder, bytes, inStep); }, 0x8BB34101u);
    EXPECT_NE(message.find(messagePart), std::string::npos) << message;
}

TEST(CharsetUtf8, EveryKindOfMalformedSequenceThrowsWithItsOwnMessage)
{
    const std::pair<Bytes, std::string> cases[] = {
        {"\x80", "continuation byte without a lead byte"},
        {"\xBF\x80", "continuation byte without a lead byte"},
        {"\xC0\xAF", "overlong"},
        {"\xC1\xBF", "overlong"},
        {"\xE0\x80\xAF", "overlong"},
        {"\xE0\x9F\xBF", "overlong"},
        {"\xF0\x80\x80\xAF", "overlong"},
        {"\xF0\x8F\xBF\xBF", "overlong"},
        {"\xED\xA0\x80", "encoded surrogate"},
        {"\xED\xBF\xBF", "encoded surrogate"},
        {"\xF4\x90\x80\x80", "above U+10FFFF"},
        {"\xF5\x80\x80\x80", "above U+10FFFF"},
        {"\xFF", "above U+10FFFF"},
        {"\xC3\x41", "truncated sequence"},
        {"\xE2\x82\x41", "truncated sequence"},
        {"\xF0\x9F\x98\x41", "truncated sequence"},
        {"\xE2\x82", "truncated sequence"},
        {"\xF0\x9F\x98", "truncated sequence"},
    };
    BTCUTF8 decoder;
    const Bytes ascii(37, 'a');
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.first));
        for (int step : {INT_MAX, 1}) {
            expectInvalid(decoder, c.first, c.second, step);
            // Behind and inside long ASCII runs, where the block loops work.
            expectInvalid(decoder, ascii + c.first + ascii, c.second, step);
            expectInvalid(decoder, ascii + "\xC3\xA9\xE6\x97\xA5" + c.first, c.second, step);
        }
    }
    expectInvalid(decoder, ascii + "\xF0\x9F\x98", "truncated sequence at end of input", 1);
}

TEST(CharsetUtf8, BlockLoopsHandOverAtEveryOffset)
{
    // ASCII runs of every length around each sequence length, checked
    // against iconv in both directions.
    for (const Text& special : {Text(u"\u00E9"), Text(u"\u65E5"), Text(u"\U0001F389"), Text(u"\u00E9\u65E5")}) {
        Text text;
        for (int n = 0; n < 40; ++n) {
            text += Text(static_cast<size_t>(n), u'x') + special;
        }
        std::string expected;
        ASSERT_TRUE(IconvOracle("UTF-16LE", "UTF-8").convert(toUtf16le(text), expected));
        CTBUTF8 encoder;
        EXPECT_TRUE(encodeAll(encoder, text) == expected);
        BTCUTF8 decoder;
        EXPECT_TRUE(decodeAll(decoder, expected) == text);
    }
}

uint32_t below(std::mt19937& random, uint32_t bound)
{
    return static_cast<uint32_t>(random() % bound);
}

// Text of ASCII runs, two- and three-byte characters and surrogate pairs in
// a random mix and density, so that every block loop meets every neighbour.
Text randomText(std::mt19937& random, size_t length)
{
    const uint32_t weights[4] = {below(random, 100), below(random, 30), below(random, 30), below(random, 30)};
    const uint32_t total = weights[0] + weights[1] + weights[2] + weights[3] + 1;
    Text text;
    while (text.size() < length) {
        uint32_t pick = below(random, total);
        int kind = 0;
        while (kind < 3 && pick >= weights[kind]) {
            pick -= weights[kind++];
        }
        if (kind == 0) {
            text += static_cast<char16_t>(below(random, 0x80));
        } else if (kind == 1) {
            text += static_cast<char16_t>(0x80 + below(random, 0x780));
        } else if (kind == 2) {
            char16_t c = static_cast<char16_t>(0x800 + below(random, 0xF800));
            text += (c & 0xF800) == 0xD800 ? u'\u4E00' : c;
        } else {
            const uint32_t cp = 0x10000 + below(random, 0x100000);
            text += static_cast<char16_t>(0xD7C0 + (cp >> 10));
            text += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        }
    }
    return text;
}

TEST(CharsetUtf8, RandomMixturesMatchIconvInBothDirections)
{
    std::mt19937 random(20261121);
    IconvOracle oracle("UTF-16LE", "UTF-8");
    for (int round = 0; round < 300; ++round) {
        const Text text = randomText(random, below(random, 700));
        std::string expected;
        ASSERT_TRUE(oracle.convert(toUtf16le(text), expected));
        CTBUTF8 encoder;
        BTCUTF8 decoder;
        const int inStep = 1 + static_cast<int>(below(random, 64));
        const int outStep = 1 + static_cast<int>(below(random, 64));
        ASSERT_TRUE(encodeAll(encoder, text) == expected) << "round " << round;
        ASSERT_TRUE(decodeAll(decoder, expected) == text) << "round " << round;
        encoder.reset();
        decoder.reset();
        ASSERT_TRUE(encodeAll(encoder, text, inStep, outStep) == expected) << "round " << round;
        ASSERT_TRUE(decodeAll(decoder, expected, inStep, outStep) == text) << "round " << round;
    }
}

TEST(CharsetUtf8, ABadElementAnywhereInRandomTextIsRejected)
{
    std::mt19937 random(7);
    const Bytes badSequences[] = {"\x80", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC3"};
    for (int round = 0; round < 300; ++round) {
        Text text = randomText(random, 1 + below(random, 300));
        CTBUTF8 encoder;
        Bytes bytes = encodeAll(encoder, text);

        // Lone surrogates, cut at a character boundary so as not to pair up.
        size_t at = below(random, text.size() + 1);
        while (at > 0 && at < text.size() && (text[at] & 0xFC00) == 0xDC00) {
            --at;
        }
        const char16_t lone = round % 2 == 0 ? u'\xD834' : u'\xDD1E';
        Text broken = text.substr(0, at) + lone + (round % 2 == 0 ? u"x" : u"") + text.substr(at);
        encoder.reset();
        EXPECT_THROW(encodeAll(encoder, broken), InvalidCharacterException) << "round " << round;

        size_t cut = below(random, bytes.size() + 1);
        while (cut > 0 && cut < bytes.size() && (static_cast<uint8_t>(bytes[cut]) & 0xC0) == 0x80) {
            --cut;
        }
        const Bytes& bad = badSequences[round % 6];
        BTCUTF8 decoder;
        EXPECT_THROW(decodeAll(decoder, bytes.substr(0, cut) + bad + "x" + bytes.substr(cut)),
                     InvalidCharacterException)
            << "round " << round;
    }
}

TEST(CharsetUtf8, AThrowingCallLeavesPositionsAndThePartialSequenceAlone)
{
    BTCUTF8 decoder;
    char16_t out[16] = {};
    const Bytes first = "ab\xC3";
    int32_t ip = 0;
    int32_t op = 0;
    EXPECT_EQ(2, decoder.convert(reinterpret_cast<const signed char*>(first.data()), &ip, 3, out, &op, 16));
    EXPECT_EQ(3, ip);

    const Bytes bad = "\x41";
    ip = 0;
    op = 2;
    EXPECT_THROW(decoder.convert(reinterpret_cast<const signed char*>(bad.data()), &ip, 1, out, &op, 16),
                 InvalidCharacterException);
    EXPECT_EQ(0, ip);
    EXPECT_EQ(2, op);

    // The lead byte is still there: the right continuation completes it.
    const Bytes good = "\xA9!";
    EXPECT_EQ(2, decoder.convert(reinterpret_cast<const signed char*>(good.data()), &ip, 2, out, &op, 16));
    EXPECT_TRUE(Text(out, 4) == u"ab\u00E9!");
}

TEST(CharsetUnicodeEncoders, LoneSurrogatesAreMalformedInEveryUnicodeForm)
{
    for (const Codec& codec : allCodecs()) {
        if (codec.name.rfind("UTF", 0) != 0 && codec.name != "AMP-7") {
            continue;
        }
        SCOPED_TRACE(codec.name);
        auto encoder = codec.encoder();
        for (const Text& text : {Text(u"a\xDC00"),
                                 Text(u"\xD800"
                                      "b"),
                                 Text(u"\xD800\xD800\xDC00"), Text(u"\xDBFF\U0001F389")}) {
            for (int step : {INT_MAX, 1}) {
                encoder->reset();
                EXPECT_THROW(encodeAll(*encoder, text, step), InvalidCharacterException);
            }
        }
        // A high surrogate at the very end fails at flush.
        encoder->reset();
        EXPECT_NE(qvtest::messageOf<InvalidCharacterException>([&] {
                      encodeAll(*encoder, u"ab\xD83C");
                  }).find("at end of input"),
                  std::string::npos);
    }
}

TEST(CharsetUtf16And32, MalformedUnitsAndPartialUnitsThrowWithTheirOwnMessage)
{
    BTCUTF16BE big16;
    BTCUTF16LE little16;
    BTCUTF32BE big32;
    BTCUTF32LE little32;
    struct Case {
        ByteToCharConverter& decoder;
        Bytes bytes;
        const char* message;
        int step;
    } cases[] = {
        {big16, Bytes("\xDC\x00", 2), "low surrogate without a high surrogate", INT_MAX},
        {big16, Bytes("\xD8\x00\x00\x41", 4), "high surrogate not followed", 1},
        {big16, Bytes("\xD8\x00", 2), "high surrogate at end of input", INT_MAX},
        {big16, Bytes("\x00\x41\x00", 3), "odd byte at end of input", 1},
        {little16, Bytes("\x00\xDC", 2), "low surrogate without a high surrogate", 1},
        {little16, Bytes("\x41\x00\x00\xD8\x41\x00", 6), "high surrogate not followed", INT_MAX},
        {big32, Bytes("\x00\x11\x00\x00", 4), "above U+10FFFF", INT_MAX},
        {big32, Bytes("\xFF\xFF\xFF\xFF", 4), "above U+10FFFF", 1},
        {big32, Bytes("\x00\x00\xD8\x00", 4), "surrogate code point", INT_MAX},
        {big32, Bytes("\x00\x00\x00\x41\x00\x00", 6), "partial unit at end of input", 1},
        {little32, Bytes("\x00\xDC\x00\x00", 4), "surrogate code point", 1},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.bytes));
        expectInvalid(c.decoder, c.bytes, c.message, c.step);
    }
}

TEST(CharsetUtf16, TheNeutralDecoderFollowsAByteOrderMarkAndOtherwiseReadsBigEndian)
{
    BTCUTF16 decoder;
    EXPECT_TRUE(decodeAll(decoder, Bytes("\xFE\xFF\x00\x41\xFE\xFF", 6)) == u"A\uFEFF");
    decoder.reset();
    EXPECT_TRUE(decodeAll(decoder, Bytes("\xFF\xFE\x41\x00", 4), 1) == u"A");
    decoder.reset();
    EXPECT_TRUE(decodeAll(decoder, Bytes("\x00\x41\xFF\xFE", 4)) == u"A\uFFFE");
    decoder.reset();
    EXPECT_TRUE(decodeAll(decoder, Bytes("", 0)) == u"");
    expectInvalid(decoder, Bytes("\xFE", 1), "odd byte at end of input", INT_MAX);
}

TEST(CharsetUtf16, TheNeutralEncodersWriteOneByteOrderMarkBeforeTheFirstCharacter)
{
    CTBUTF16 encoder16;
    EXPECT_TRUE(encodeAll(encoder16, u"") == "");
    EXPECT_TRUE(encodeAll(encoder16, u"A") == Bytes("\xFE\xFF\x00\x41", 4));
    EXPECT_TRUE(encodeAll(encoder16, u"B") == Bytes("\x00\x42", 2));
    encoder16.reset();
    EXPECT_TRUE(encodeAll(encoder16, u"\U0001F389", 1, 1) == Bytes("\xFE\xFF\xD8\x3C\xDF\x89", 6));
    CTBUTF32 encoder32;
    EXPECT_TRUE(encodeAll(encoder32, u"A") == Bytes("\x00\x00\xFE\xFF\x00\x00\x00\x41", 8));
}

TEST(CharsetUtf32, TheNeutralDecoderFollowsAByteOrderMarkAndOtherwiseReadsBigEndian)
{
    BTCUTF32 neutral;
    EXPECT_TRUE(decodeAll(neutral, Bytes("\xFF\xFE\x00\x00\x89\xF3\x01\x00", 8), 1) == u"\U0001F389");
    neutral.reset();
    EXPECT_TRUE(decodeAll(neutral, Bytes("\x00\x01\xF3\x89", 4)) == u"\U0001F389");
}

} // namespace
} // namespace charset_test
