// What every converter shares: substitution settings, argument checks,
// names and sizes.

#include "ConverterHarness.h"

namespace charset_test {
namespace {

TEST(CharsetBasics, SubstitutionSettingsHaveTheirDefaultsAndKeepWhatIsSet)
{
    BTCUTF8 decoder;
    EXPECT_TRUE(decoder.getSubstitutionMode());
    EXPECT_EQ(1, decoder.getSubstitutionChars(nullptr, 0));
    char16_t chars[3] = {};
    EXPECT_EQ(1, decoder.getSubstitutionChars(chars, 3));
    EXPECT_EQ(u'\uFFFD', chars[0]);
    decoder.setSubstitutionChars(u"xyz", 3);
    EXPECT_EQ(3, decoder.getSubstitutionChars(nullptr, 0));
    EXPECT_EQ(2, decoder.getSubstitutionChars(chars, 2));
    EXPECT_EQ(u'y', chars[1]);
    unsigned short wide[3] = {};
    EXPECT_EQ(3, decoder.getSubstitutionChars(wide, 3));
    EXPECT_EQ(u'z', wide[2]);
    EXPECT_THROW(decoder.setSubstitutionChars(u"abcd", 4), RangeError);
    EXPECT_THROW(decoder.setSubstitutionChars(nullptr, 1), RangeError);
    EXPECT_EQ(3, decoder.getSubstitutionChars(nullptr, 0));

    CTBUTF8 encoder;
    signed char bytes[7] = {};
    EXPECT_EQ(1, encoder.getSubstitutionBytes(bytes, 7));
    EXPECT_EQ('?', bytes[0]);
    const signed char seven[7] = {1, 2, 3, 4, 5, 6, 7};
    encoder.setSubstitutionBytes(seven, 7);
    EXPECT_EQ(7, encoder.getSubstitutionBytes(nullptr, 0));
    EXPECT_THROW(encoder.setSubstitutionBytes(seven, 8), RangeError);
    EXPECT_THROW(encoder.setSubstitutionBytes(seven, -1), RangeError);

    // Copies carry the settings along.
    CTBUTF8 copy(encoder);
    EXPECT_EQ(7, copy.getSubstitutionBytes(bytes, 7));
    EXPECT_EQ(7, bytes[6]);
}

TEST(CharsetBasics, BadPositionsAndBuffersThrowBeforeAnythingIsTouched)
{
    for (const Codec& codec : allCodecs()) {
        SCOPED_TRACE(codec.name);
        auto decoder = codec.decoder();
        const signed char in[4] = {'a', 'b', 'c', 'd'};
        char16_t out[4] = {};
        int32_t ip = 0;
        int32_t op = 0;
        EXPECT_THROW(decoder->convert(in, nullptr, 4, out, &op, 4), RangeError);
        EXPECT_THROW(decoder->convert(in, &ip, 4, out, nullptr, 4), RangeError);
        ip = 5;
        EXPECT_THROW(decoder->convert(in, &ip, 4, out, &op, 4), RangeError);
        ip = -1;
        EXPECT_THROW(decoder->convert(in, &ip, 4, out, &op, 4), RangeError);
        ip = 0;
        op = 5;
        EXPECT_THROW(decoder->convert(in, &ip, 4, out, &op, 4), RangeError);
        op = 0;
        EXPECT_THROW(decoder->convert(nullptr, &ip, 4, out, &op, 4), RangeError);
        EXPECT_THROW(decoder->convert(in, &ip, 4, nullptr, &op, 4), RangeError);
        EXPECT_THROW(decoder->flush(nullptr, &op, 4), RangeError);
        EXPECT_EQ(0, ip);
        EXPECT_EQ(0, op);
        EXPECT_EQ(0, decoder->convert(nullptr, &ip, 0, nullptr, &op, 0));

        auto encoder = codec.encoder();
        const char16_t text[2] = {u'a', u'b'};
        signed char bytes[4] = {};
        EXPECT_THROW(encoder->convert(text, &ip, 2, bytes, nullptr, 4), RangeError);
        op = 9;
        EXPECT_THROW(encoder->convert(text, &ip, 2, bytes, &op, 4), RangeError);
        op = 0;
        EXPECT_THROW(encoder->convert(nullptr, &ip, 2, bytes, &op, 4), RangeError);
        EXPECT_THROW(encoder->flush(bytes, nullptr, 4), RangeError);
    }
}

TEST(CharsetBasics, NamesAndSizesDescribeTheEncoding)
{
    for (const Codec& codec : allCodecs()) {
        SCOPED_TRACE(codec.name);
        auto decoder = codec.decoder();
        auto encoder = codec.encoder();
        const Text name(decoder->getEncodingName());
        EXPECT_TRUE(name == Text(encoder->getEncodingName()));
        EXPECT_EQ(decoder->getMaxBytesPerChar(), encoder->getMaxBytesPerChar());
        EXPECT_EQ(1, decoder->getMaxCharsPerByte());

        // No single code unit needs more bytes than the encoding says.
        const Text sample = u"a\u00E9\u20AC\u65E5\uFF71\u4E02\u0416";
        for (char16_t c : sample) {
            encoder->reset();
            const Bytes bytes = encodeAll(*encoder, Text(1, c));
            const size_t mark = name == u"UTF-16" ? 2 : name == u"UTF-32" ? 4 : 0;
            EXPECT_LE(bytes.size(), static_cast<size_t>(encoder->getMaxBytesPerChar()) + mark);
        }
    }
}

TEST(CharsetBasics, ConvertersAreRegisteredLibraryObjects)
{
    const std::pair<const char16_t*, const char16_t*> creatable[] = {
        {u"BTCUTF8", u"UTF-8"},          {u"CTBUTF8", u"UTF-8"},   {u"BTCUTF16LE", u"UTF-16LE"},
        {u"CTBUTF16BE", u"UTF-16BE"},    {u"BTCUTF16", u"UTF-16"}, {u"CTBUTF32LE", u"UTF-32LE"},
        {u"BTCUTF32BE", u"UTF-32BE"},    {u"CTBUTF32", u"UTF-32"}, {u"BTCASCII", u"ASCII"},
        {u"CTBISO8859_1", u"ISO8859_1"}, {u"BTCCP437", u"CP437"},  {u"CTBCP1252", u"CP1252"},
        {u"BTCAMP7", u"AMP-7"},          {u"CTBAMP7", u"AMP-7"},
    };
    for (const auto& c : creatable) {
        const Text name = Text(u"qv::text::charset::") + c.first;
        const qv::Class* cls = qv::Class::forName(name.c_str());
        ASSERT_NE(nullptr, cls);
        qv::Reference<qv::Object> object(cls->createInstance());
        EXPECT_EQ(cls, object->getClass());
        auto* decoder = dynamic_cast<ByteToCharConverter*>(object.get());
        auto* encoder = dynamic_cast<CharToByteConverter*>(object.get());
        ASSERT_TRUE((decoder != nullptr) != (encoder != nullptr));
        EXPECT_TRUE(Text(decoder ? decoder->getEncodingName() : encoder->getEncodingName()) == c.second);
    }
    // The code pages need their number and the bases are abstract.
    EXPECT_THROW(qv::Class::forName(u"qv::text::charset::BTCCodePage")->createInstance(), qv::IllegalAccessException);
    EXPECT_THROW(qv::Class::forName(u"qv::text::charset::ByteToCharConverter")->createInstance(),
                 qv::IllegalAccessException);
    BTCCodePage cp866(866);
    EXPECT_TRUE(Text(cp866.getClass()->getName()) == u"qv::text::charset::BTCCodePage");
    EXPECT_TRUE(qv::Class::forName(u"qv::text::charset::ByteToCharConverter")->isInstance(cp866));

    // The exceptions are library exceptions with their own result codes.
    BTCUTF8 utf8;
    EXPECT_EQ(static_cast<int32_t>(0x8BB34101u),
              qvtest::resultOf<InvalidCharacterException>([&] { decodeAll(utf8, "\xFF"); }));
    EXPECT_EQ("Code page 1 is not supported",
              qvtest::messageOf<UnknownEncodingException>([] { CTBCodePage unknown(1); }, 0x8BB34103u));
}

// A caller's converter pair, every overridable query written non-const as
// callers write them; const holders must still reach these overrides.
class LatinOneDecoder : public ByteToCharConverter {
public:
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override
    {
        const int32_t start = *outPos;
        while (*inPos < inEnd && *outPos < outEnd) {
            out[(*outPos)++] = static_cast<unsigned char>(in[(*inPos)++]);
        }
        return *outPos - start;
    }
    int32_t flush(char16_t*, int32_t*, int32_t) override { return 0; }
    void reset() override {}
    const char16_t* getEncodingName() override { return u"CALLER-1"; }
    int getMaxBytesPerChar() override { return 1; }
    int getMaxCharsPerByte() override { return 1; }
    bool getSubstitutionMode() override { return false; }
    int getSubstitutionChars(char16_t* dest, int max) override
    {
        if (dest != nullptr && max > 0) {
            dest[0] = u'#';
        }
        return 1;
    }
};

class LatinOneEncoder : public CharToByteConverter {
public:
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override
    {
        const int32_t start = *outPos;
        while (*inPos < inEnd && *outPos < outEnd) {
            out[(*outPos)++] = static_cast<signed char>(in[(*inPos)++]);
        }
        return *outPos - start;
    }
    int32_t flush(signed char*, int32_t*, int32_t) override { return 0; }
    void reset() override {}
    const char16_t* getEncodingName() override { return u"CALLER-1"; }
    int getMaxBytesPerChar() override { return 2; }
    int getMaxCharsPerByte() override { return 1; }
    bool getSubstitutionMode() override { return false; }
    int getSubstitutionBytes(signed char* dest, int max) override
    {
        if (dest != nullptr && max > 0) {
            dest[0] = '#';
        }
        return 1;
    }
};

TEST(CharsetBasics, CallerConvertersAnswerThroughConstHolders)
{
    qv::Reference<LatinOneDecoder> decoder(new LatinOneDecoder);
    const ByteToCharConverter& constDecoder = *decoder;
    EXPECT_TRUE(Text(constDecoder.getEncodingName()) == u"CALLER-1");
    EXPECT_FALSE(constDecoder.getSubstitutionMode());
    char16_t unit = 0;
    EXPECT_EQ(constDecoder.getSubstitutionChars(&unit, 1), 1);
    EXPECT_EQ(unit, u'#');
    unsigned short wide = 0;
    EXPECT_EQ(constDecoder.getSubstitutionChars(&wide, 1), 1);
    EXPECT_EQ(wide, u'#');

    qv::Reference<LatinOneEncoder> encoder(new LatinOneEncoder);
    const CharToByteConverter& constEncoder = *encoder;
    EXPECT_TRUE(Text(constEncoder.getEncodingName()) == u"CALLER-1");
    EXPECT_EQ(constEncoder.getMaxBytesPerChar(), 2);
    EXPECT_EQ(constEncoder.getMaxCharsPerByte(), 1);
    signed char byte = 0;
    EXPECT_EQ(constEncoder.getSubstitutionBytes(&byte, 1), 1);
    EXPECT_EQ(byte, '#');
    EXPECT_TRUE(encodeAll(*encoder, Text(u"\u00E9")) == Bytes("\xE9"));
}

} // namespace
} // namespace charset_test
