// The code pages converted through iconv: construction, multi-byte and
// stateful code pages across calls, substitution, and where errors surface.

#include "ConverterHarness.h"

namespace charset_test {
namespace {

TEST(CharsetCodePage, OnlyTheListedCodePagesExist)
{
    for (uint32_t unknown : {0u, 1252u, 437u, 65001u, 20127u, 99999u}) {
        EXPECT_THROW(BTCCodePage{unknown}, UnknownEncodingException);
        EXPECT_THROW(CTBCodePage{unknown}, UnknownEncodingException);
    }
    BTCCodePage eucjp(20932);
    EXPECT_TRUE(Text(eucjp.getEncodingName()) == u"EUCJP");
    EXPECT_EQ(20932u, eucjp.getCodePage());
    EXPECT_EQ(3, eucjp.getMaxBytesPerChar());
    CTBCodePage cp1250(1250);
    EXPECT_TRUE(Text(cp1250.getEncodingName()) == u"CP1250");
    EXPECT_EQ(1, cp1250.getMaxBytesPerChar());
}

TEST(CharsetCodePage, MultiByteCharactersSurviveAnySplit)
{
    BTCCodePage cp932(932);
    const Bytes sjis = "\x82\xA0\x93\xFA\x96\x7B\xB1";
    const Text expected = u"\u3042\u65E5\u672C\uFF71";
    for (int step : {INT_MAX, 1, 2, 3}) {
        cp932.reset();
        EXPECT_TRUE(decodeAll(cp932, sjis, step, step) == expected);
    }
    CTBCodePage eucjp(20932);
    EXPECT_EQ("\x8F\xB0\xA1\xA4\xA2", encodeAll(eucjp, u"\u4E02\u3042", 1, 1));
}

TEST(CharsetCodePage, StatefulCodePagesComposeAcrossCallsAndFlushWhatTheyHold)
{
    // CP1255: shin followed by shin dot is one precomposed letter.
    BTCCodePage cp1255(1255);
    EXPECT_TRUE(decodeAll(cp1255, "\xF9\xD1") == u"\uFB2A");
    cp1255.reset();
    EXPECT_TRUE(decodeAll(cp1255, "\xF9\xD1", 1) == u"\uFB2A");
    cp1255.reset();
    EXPECT_TRUE(decodeAll(cp1255, "\xF9") == u"\u05E9");

    // An undefined byte releases the held letter before its substitution.
    cp1255.reset();
    EXPECT_TRUE(decodeAll(cp1255, "\xF9\xFF", 1, 1) == u"\u05E9\uFFFD");
}

TEST(CharsetCodePage, UndefinedAndIncompleteInputFollowTheSubstitutionRules)
{
    BTCCodePage cp932(932);
    EXPECT_TRUE(decodeAll(cp932, "a\x81 b") == u"a\uFFFD b");
    cp932.reset();
    EXPECT_TRUE(decodeAll(cp932, "a\x82", 1) == u"a\uFFFD");
    cp932.setSubstitutionChars(u"??", 2);
    cp932.reset();
    EXPECT_TRUE(decodeAll(cp932, "a\x81 b\x82") == u"a b");

    BTCCodePage cp1253(1253);
    cp1253.setSubstitutionMode(false);
    EXPECT_THROW(decodeAll(cp1253, "x\xAAy"), UnmappableCharacterException);
    cp932.setSubstitutionMode(false);
    cp932.reset();
    EXPECT_THROW(decodeAll(cp932, "a\x82"), UnmappableCharacterException);

    CTBCodePage cp1251(1251);
    EXPECT_EQ("\xCF?\x80?", encodeAll(cp1251, u"\u041F\u65E5\u0402\U0001F389"));
    cp1251.setSubstitutionMode(false);
    cp1251.reset();
    EXPECT_THROW(encodeAll(cp1251, u"\u65E5"), UnmappableCharacterException);
    cp1251.setSubstitutionMode(true);
    cp1251.reset();
    EXPECT_THROW(encodeAll(cp1251, u"a\xDC00"), InvalidCharacterException);
    cp1251.reset();
    EXPECT_THROW(encodeAll(cp1251, u"a\xD800"), InvalidCharacterException);
}

TEST(CharsetCodePage, WithoutSubstitutionACallStopsBeforeTheBadElementAndTheNextOneThrows)
{
    BTCCodePage cp932(932);
    cp932.setSubstitutionMode(false);
    const Bytes bytes = "ab\x81 c";
    const signed char* in = reinterpret_cast<const signed char*>(bytes.data());
    char16_t out[8] = {};
    int32_t ip = 0;
    int32_t op = 0;
    EXPECT_EQ(2, cp932.convert(in, &ip, 5, out, &op, 8));
    EXPECT_EQ(2, ip);
    EXPECT_THROW(cp932.convert(in, &ip, 5, out, &op, 8), UnmappableCharacterException);
    EXPECT_EQ(2, ip);
    EXPECT_EQ(2, op);
    cp932.setSubstitutionMode(true);
    EXPECT_EQ(3, cp932.convert(in, &ip, 5, out, &op, 8));
    EXPECT_TRUE(Text(out, 5) == u"ab\uFFFD c");

    CTBCodePage cp1250(1250);
    cp1250.setSubstitutionMode(false);
    const Text text = u"ab\u65E5";
    signed char bytesOut[8] = {};
    ip = 0;
    op = 0;
    EXPECT_EQ(2, cp1250.convert(text.data(), &ip, 3, bytesOut, &op, 8));
    EXPECT_THROW(cp1250.convert(text.data(), &ip, 3, bytesOut, &op, 8), UnmappableCharacterException);
    EXPECT_EQ(2, ip);
    EXPECT_EQ(2, op);
}

} // namespace
} // namespace charset_test
