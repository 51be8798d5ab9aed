// Substitution, positions after a throw, and surrogates in the table-driven
// single-byte converters.

#include "ConverterHarness.h"

namespace charset_test {
namespace {

TEST(CharsetSingleByte, UndefinedBytesFollowTheSubstitutionRules)
{
    BTCCP1252 decoder;
    const Bytes bytes = "a\x81"
                        "b\x9D";
    EXPECT_TRUE(decodeAll(decoder, bytes) == u"a\uFFFDb\uFFFD");

    decoder.setSubstitutionChars(u"?", 1);
    EXPECT_TRUE(decodeAll(decoder, bytes, 1, 1) == u"a?b?");

    // Any other length drops the byte.
    decoder.setSubstitutionChars(u"<>", 2);
    EXPECT_TRUE(decodeAll(decoder, bytes) == u"ab");
    decoder.setSubstitutionChars(u"", 0);
    EXPECT_TRUE(decodeAll(decoder, bytes) == u"ab");

    decoder.setSubstitutionMode(false);
    EXPECT_EQ("Byte 0x81 has no mapping in CP1252",
              qvtest::messageOf<UnmappableCharacterException>([&] { decodeAll(decoder, bytes); }, 0x8BB34102u));

    BTCASCII ascii;
    EXPECT_TRUE(decodeAll(ascii, Bytes(40, 'x') + "\xE9") == Text(40, u'x') + u"\uFFFD");
    BTCISO8859_1 latin1;
    EXPECT_TRUE(decodeAll(latin1, "\xE9\xFF\x80") == u"\u00E9\u00FF\u0080");
}

TEST(CharsetSingleByte, UnmappableCharactersFollowTheSubstitutionRulesAndAPairIsOneCharacter)
{
    CTBISO8859_1 encoder;
    const Text text = u"a\u20ACb\U0001F389c";
    EXPECT_EQ("a?b?c", encodeAll(encoder, text));
    EXPECT_EQ("a?b?c", encodeAll(encoder, text, 1, 1));

    const signed char sub[] = {0x1A};
    encoder.setSubstitutionBytes(sub, 1);
    EXPECT_EQ("a\x1A"
              "b\x1A"
              "c",
              encodeAll(encoder, text));
    const signed char two[] = {'<', '>'};
    encoder.setSubstitutionBytes(two, 2);
    EXPECT_EQ("abc", encodeAll(encoder, text));

    encoder.setSubstitutionMode(false);
    EXPECT_EQ("U+20AC has no mapping in ISO8859_1",
              qvtest::messageOf<UnmappableCharacterException>([&] { encodeAll(encoder, text); }));

    CTBCP1252 cp1252;
    EXPECT_EQ("\x80\x9F\xFF", encodeAll(cp1252, u"\u20AC\u0178\u00FF"));
    CTBCP437 cp437;
    EXPECT_EQ("\xC9\xB0?", encodeAll(cp437, u"\u2554\u2591\u20AC"));
}

TEST(CharsetSingleByte, AThrowingCallLeavesBothPositionsWhereTheCallFoundThem)
{
    BTCCP1252 decoder;
    decoder.setSubstitutionMode(false);
    const Bytes bytes = Bytes(20, 'x') + "\x90" + "yz";
    char16_t out[32] = {};
    int32_t ip = 3;
    int32_t op = 5;
    EXPECT_THROW(decoder.convert(reinterpret_cast<const signed char*>(bytes.data()), &ip, 23, out, &op, 32),
                 UnmappableCharacterException);
    EXPECT_EQ(3, ip);
    EXPECT_EQ(5, op);

    CTBASCII encoder;
    encoder.setSubstitutionMode(false);
    signed char bytesOut[32] = {};
    const Text text = u"abc\u00E9";
    ip = 1;
    op = 2;
    EXPECT_THROW(encoder.convert(text.data(), &ip, 4, bytesOut, &op, 32), UnmappableCharacterException);
    EXPECT_EQ(1, ip);
    EXPECT_EQ(2, op);

    // A pending high surrogate survives a throwing call too.
    encoder.setSubstitutionMode(true);
    const Text high = u"\xD83C";
    ip = 0;
    op = 0;
    encoder.convert(high.data(), &ip, 1, bytesOut, &op, 32);
    const Text lone = u"x";
    ip = 0;
    EXPECT_THROW(encoder.convert(lone.data(), &ip, 1, bytesOut, &op, 32), InvalidCharacterException);
    EXPECT_EQ(0, ip);
    const Text low = u"\xDF89";
    EXPECT_EQ(1, encoder.convert(low.data(), &ip, 1, bytesOut, &op, 32));
    EXPECT_EQ('?', bytesOut[0]);
}

TEST(CharsetSingleByte, LoneSurrogatesAreMalformedEvenWithSubstitutionOn)
{
    CTBCP437 encoder;
    EXPECT_THROW(encodeAll(encoder, u"a\xDC00"), InvalidCharacterException);
    encoder.reset();
    EXPECT_THROW(encodeAll(encoder, u"a\xD800"
                                    "b"),
                 InvalidCharacterException);
    encoder.reset();
    EXPECT_THROW(encodeAll(encoder, u"a\xD800"), InvalidCharacterException);
}

} // namespace
} // namespace charset_test
