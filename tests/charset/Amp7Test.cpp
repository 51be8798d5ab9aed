// AMP-7, the modified UTF-7 of IMAP mailbox names.

#include "ConverterHarness.h"

namespace charset_test {
namespace {

TEST(CharsetAmp7, ExamplesFromRfc3501RoundTrip)
{
    const std::pair<Bytes, Text> cases[] = {
        {"~peter/mail/&U,BTFw-/&ZeVnLIqe-", u"~peter/mail/\u53F0\u5317/\u65E5\u672C\u8A9E"},
        {"&-", u"&"},
        {"Tom &- Jerry", u"Tom & Jerry"},
        {"&AAk-tab", u"\ttab"},
        {"&AH8-", u"\u007F"},
        {"&2DzfiQ-", u"\U0001F389"},
        {"&AOkA6QDp-", u"\u00E9\u00E9\u00E9"},
        {"", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        CTBAMP7 encoder;
        EXPECT_EQ(c.first, encodeAll(encoder, c.second));
        encoder.reset();
        EXPECT_EQ(c.first, encodeAll(encoder, c.second, 1, 1));
        BTCAMP7 decoder;
        EXPECT_TRUE(decodeAll(decoder, c.first) == c.second);
        decoder.reset();
        EXPECT_TRUE(decodeAll(decoder, c.first, 1, 1) == c.second);
    }
}

TEST(CharsetAmp7, MalformedAndNonCanonicalFormsAreRejected)
{
    const std::pair<Bytes, std::string> cases[] = {
        {"a\tb", "outside printable US-ASCII"},
        {"caf\xC3\xA9", "outside printable US-ASCII"},
        {"&U,BTFw", "not closed at end of input"},
        {"&", "not closed at end of input"},
        {"&U/BTFw-", "outside the base64 alphabet"},
        {"&U,BTFw.-", "outside the base64 alphabet"},
        {"&AGE-", "printable US-ASCII character encoded"},
        {"&ACY-", "printable US-ASCII character encoded"},
        {"&U,BTFx-", "does not end on a code unit"},
        {"&U,BTFwA-", "does not end on a code unit"},
        {"&AA-", "does not end on a code unit"},
        {"&2D0-", "high surrogate not followed"},
        {"&2DwA6Q-", "high surrogate not followed"},
        {"&3ok-", "low surrogate without a high surrogate"},
    };
    BTCAMP7 decoder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        for (int step : {INT_MAX, 1}) {
            decoder.reset();
            const std::string message =
                qvtest::messageOf<InvalidCharacterException>([&] { decodeAll(decoder, c.first, step); });
            EXPECT_NE(message.find(c.second), std::string::npos) << message;
        }
    }
}

TEST(CharsetAmp7, ABase64RunStaysOpenAcrossCallsUntilFlush)
{
    CTBAMP7 encoder;
    signed char out[16] = {};
    const Text text = u"\u53F0\u5317";
    int32_t ip = 0;
    int32_t op = 0;
    encoder.convert(text.data(), &ip, 2, out, &op, 16);
    EXPECT_EQ("&U,BTF", Bytes(reinterpret_cast<char*>(out), static_cast<size_t>(op)));
    EXPECT_EQ(2, encoder.flush(out, &op, 16));
    EXPECT_EQ("&U,BTFw-", Bytes(reinterpret_cast<char*>(out), static_cast<size_t>(op)));
    EXPECT_EQ(0, encoder.flush(out, &op, 16));
}

} // namespace
} // namespace charset_test
