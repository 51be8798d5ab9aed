// glibc's iconv as the independent oracle for every table, code page and
// Unicode form.

#include "ConverterHarness.h"

#include <algorithm>

namespace charset_test {
namespace {

Text fromUtf16le(const std::string& bytes)
{
    Text text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(static_cast<uint8_t>(bytes[i]) | (static_cast<uint8_t>(bytes[i + 1]) << 8));
    }
    return text;
}

struct LegacyCodec {
    std::string iconvName;
    Codec codec;
    bool byTable;
};

std::vector<LegacyCodec> legacyCodecs()
{
    std::vector<LegacyCodec> result;
    for (const Codec& c : allCodecs()) {
        if (c.name == "ASCII") {
            result.push_back({"ANSI_X3.4-1968", c, true});
        } else if (c.name == "ISO8859_1") {
            result.push_back({"ISO-8859-1", c, true});
        } else if (c.name == "CP437" || c.name == "CP1252") {
            result.push_back({c.name, c, true});
        }
    }
    for (const CodePageName& cp : codePageNames()) {
        const uint32_t number = cp.codePage;
        result.push_back(
            {cp.iconvName,
             Codec{cp.iconvName, [number] { return std::unique_ptr<ByteToCharConverter>(new BTCCodePage(number)); },
                   [number] { return std::unique_ptr<CharToByteConverter>(new CTBCodePage(number)); }},
             false});
    }
    return result;
}

TEST(CharsetOracle, EveryByteOfEveryLegacyEncodingDecodesAndEncodesAsIconvDoes)
{
    for (const LegacyCodec& legacy : legacyCodecs()) {
        SCOPED_TRACE(legacy.iconvName);
        IconvOracle toUnicode(legacy.iconvName.c_str(), "UTF-16LE");
        IconvOracle fromUnicode("UTF-16LE", legacy.iconvName.c_str());
        auto decoder = legacy.codec.decoder();
        auto encoder = legacy.codec.encoder();
        decoder->setSubstitutionMode(false);
        encoder->setSubstitutionMode(false);
        int mapped = 0;
        for (int b = 0; b < 256; ++b) {
            SCOPED_TRACE(b);
            const Bytes byte(1, static_cast<char>(b));
            std::string expected;
            const bool defined = toUnicode.convert(byte, expected);
            decoder->reset();
            Text got;
            bool decoded = true;
            try {
                got = decodeAll(*decoder, byte);
            } catch (const UnmappableCharacterException&) {
                decoded = false;
            }
            ASSERT_EQ(defined, decoded);
            if (!defined) {
                continue;
            }
            ++mapped;
            EXPECT_EQ(fromUtf16le(expected), got);

            std::string expectedBytes;
            ASSERT_TRUE(fromUnicode.convert(toUtf16le(got), expectedBytes));
            encoder->reset();
            EXPECT_EQ(expectedBytes, encodeAll(*encoder, got));
        }
        EXPECT_GE(mapped, 128);
    }
}

TEST(CharsetOracle, TableEncodersAgreeWithIconvAcrossTheBasicPlane)
{
    Text plane;
    for (uint32_t c = 0; c < 0x10000; ++c) {
        if (c < 0xD800 || c >= 0xE000) {
            plane += static_cast<char16_t>(c);
        }
    }
    // Every byte is some character of ISO 8859-1, so a substitution byte
    // could hide a character wrongly substituted; two different ones can't.
    for (const LegacyCodec& legacy : legacyCodecs()) {
        if (!legacy.byTable) {
            continue;
        }
        SCOPED_TRACE(legacy.iconvName);
        IconvOracle oracle("UTF-16LE", legacy.iconvName.c_str());
        auto encoder = legacy.codec.encoder();
        for (const signed char mark : {static_cast<signed char>(0x1A), static_cast<signed char>('?')}) {
            std::string expected;
            ASSERT_TRUE(oracle.convertMarking(toUtf16le(plane), 2, static_cast<char>(mark), expected));
            encoder->setSubstitutionBytes(&mark, 1);
            const Bytes got = encodeAll(*encoder, plane);
            ASSERT_EQ(expected.size(), got.size());
            size_t differences = 0;
            for (size_t i = 0; i < got.size(); ++i) {
                differences += got[i] != expected[i];
            }
            EXPECT_EQ(0u, differences);
        }
    }
}

Text allScalarValues()
{
    Text text;
    text.reserve(0x110000 * 2);
    for (char32_t cp = 0; cp <= 0x10FFFF; ++cp) {
        if (cp < 0xD800 || cp >= 0xE000) {
            text += utf16({cp});
        }
    }
    return text;
}

TEST(CharsetOracle, EveryScalarValueRoundTripsThroughTheUnicodeFormsByteForByteWithIconv)
{
    const Text text = allScalarValues();
    const std::string source = toUtf16le(text);
    const std::vector<std::string> forms = {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"};
    std::string bigEndian16;
    std::string bigEndian32;
    for (const Codec& c : allCodecs()) {
        const auto form = std::find(forms.begin(), forms.end(), c.name);
        if (form == forms.end()) {
            continue;
        }
        SCOPED_TRACE(c.name);
        std::string expected;
        ASSERT_TRUE(IconvOracle("UTF-16LE", form->c_str()).convert(source, expected));
        auto encoder = c.encoder();
        const Bytes bytes = encodeAll(*encoder, text);
        ASSERT_EQ(expected.size(), bytes.size());
        EXPECT_TRUE(expected == bytes);
        auto decoder = c.decoder();
        EXPECT_TRUE(decodeAll(*decoder, expected) == text);
        // Three elements per call: every character crosses a call boundary.
        encoder->reset();
        EXPECT_TRUE(encodeAll(*encoder, text, 3) == expected);
        decoder->reset();
        EXPECT_TRUE(decodeAll(*decoder, expected, 3) == text);
        if (c.name == "UTF-16BE") {
            bigEndian16 = expected;
        } else if (c.name == "UTF-32BE") {
            bigEndian32 = expected;
        }
    }

    // The byte-order-neutral forms: big-endian behind a byte order mark.
    CTBUTF16 encoder16;
    EXPECT_TRUE(encodeAll(encoder16, text) == "\xFE\xFF" + bigEndian16);
    CTBUTF32 encoder32;
    EXPECT_TRUE(encodeAll(encoder32, text) == std::string("\0\0\xFE\xFF", 4) + bigEndian32);
    BTCUTF16 decoder16;
    EXPECT_TRUE(decodeAll(decoder16, "\xFF\xFE" + source) == text);
    BTCUTF32 decoder32;
    std::string littleEndian32;
    ASSERT_TRUE(IconvOracle("UTF-16LE", "UTF-32LE").convert(source, littleEndian32));
    EXPECT_TRUE(decodeAll(decoder32, std::string("\xFF\xFE\0\0", 4) + littleEndian32) == text);
}

} // namespace
} // namespace charset_test
