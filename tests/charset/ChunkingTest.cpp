// Every converter gives the same result however its input and output are
// cut up, down to one element per call.

#include "ConverterHarness.h"

namespace charset_test {
namespace {

const Text sample = u"Hello & w\u00F6rld\t~peter/mail/\u53F0\u5317 \u65E5\u672C\u8A9E\u306E\u30C6\u30AD\u30B9\u30C8 "
                    u"\uFF76\uFF80\uFF76\uFF85 \u4E02 \u0391\u0392\u0393 \u0410\u0411\u0412 \u05D0\u05D1\u05E9\u05C1 "
                    u"\u0627\u0628\u062A \u0104\u010C\u0118 \u1EA6\u1EAC e\u0301 \u20AC\u2500\u2591 "
                    u"\U0001F389\U0001D11E\U0010FFFF\u0000\u007F\u0080\uFFFF\n";

// The sample without what the encoder cannot represent, plus every
// character a single byte of the encoding decodes to.
Text representableText(const Codec& codec)
{
    Text candidates = sample;
    auto decoder = codec.decoder();
    for (int b = 0; b < 256; ++b) {
        decoder->reset();
        try {
            decoder->setSubstitutionMode(false);
            candidates += decodeAll(*decoder, Bytes(1, static_cast<char>(b)));
        } catch (const qv::Exception&) {
        }
    }
    auto encoder = codec.encoder();
    encoder->setSubstitutionMode(false);
    Text kept;
    for (size_t i = 0; i < candidates.size(); ++i) {
        const size_t units = (candidates[i] & 0xFC00) == 0xD800 ? 2 : 1;
        const Text one = candidates.substr(i, units);
        i += units - 1;
        encoder->reset();
        try {
            encodeAll(*encoder, one);
            kept += one;
        } catch (const UnmappableCharacterException&) {
        }
    }
    return kept;
}

TEST(CharsetChunking, EveryConverterGivesTheOneShotResultForAnySplitOfInputAndOutput)
{
    const std::pair<int, int> steps[] = {{1, INT_MAX}, {INT_MAX, 1}, {1, 1}, {3, 2}, {2, 3}, {7, 5}};
    for (const Codec& codec : allCodecs()) {
        SCOPED_TRACE(codec.name);
        const Text text = representableText(codec);
        ASSERT_GT(text.size(), 60u);
        auto encoder = codec.encoder();
        const Bytes bytes = encodeAll(*encoder, text);
        auto decoder = codec.decoder();
        const Text decoded = decodeAll(*decoder, bytes);
        if (codec.name != "CP1255" && codec.name != "CP1258") {
            EXPECT_TRUE(decoded == text);
        }
        for (const auto& step : steps) {
            SCOPED_TRACE(testing::Message() << "input step " << step.first << ", output step " << step.second);
            encoder->reset();
            EXPECT_TRUE(encodeAll(*encoder, text, step.first, step.second) == bytes);
            decoder->reset();
            EXPECT_TRUE(decodeAll(*decoder, bytes, step.first, step.second) == decoded);
        }
    }
}

TEST(CharsetChunking, ResetDropsWhatAConverterHoldsMidCharacter)
{
    for (const Codec& codec : allCodecs()) {
        SCOPED_TRACE(codec.name);
        auto encoder = codec.encoder();
        const Text text = representableText(codec);
        const Bytes bytes = encodeAll(*encoder, text);

        // Stop both directions inside a character, reset, and start over.
        auto decoder = codec.decoder();
        std::vector<char16_t> units(8);
        int32_t ip = 0;
        int32_t op = 0;
        const int32_t cut = static_cast<int32_t>(bytes.size()) - 1;
        const signed char* in = reinterpret_cast<const signed char*>(bytes.data());
        while (ip < cut) {
            op = 0;
            decoder->convert(in, &ip, cut, units.data(), &op, 8);
        }
        decoder->reset();
        EXPECT_TRUE(decodeAll(*decoder, bytes) == decodeAll(*codec.decoder(), bytes));

        std::vector<signed char> out(1);
        ip = 0;
        op = 0;
        encoder->reset();
        encoder->convert(u"\U0001F389", &ip, 1, out.data(), &op, 1);
        encoder->reset();
        EXPECT_TRUE(encodeAll(*encoder, text) == bytes);
    }
}

} // namespace
} // namespace charset_test
