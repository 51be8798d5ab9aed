// A converter stops exactly before the first character whose output does not
// fit: never half a character, never one character too early. Checked for
// every room size from nothing to enough, on every converter.

#include "ConverterHarness.h"

#include <algorithm>

namespace charset_test {
namespace {

// Characters of one to four bytes in most encodings, a surrogate pair, and
// ASCII between them so that a run of base64 opens and closes.
const Text candidates = u"A\u20AC\u00E9b\U0001F389&c\u53F0\u0391 \u0410~\u00FC\u2500d";

// The candidates that the codec's encoder can represent, whole pairs kept.
Text representable(const Codec& codec)
{
    Text kept;
    for (size_t i = 0; i < candidates.size(); ++i) {
        const size_t units = (candidates[i] & 0xFC00) == 0xD800 ? 2 : 1;
        const Text one = candidates.substr(i, units);
        i += units - 1;
        auto encoder = codec.encoder();
        encoder->setSubstitutionMode(false);
        try {
            encodeAll(*encoder, one);
            kept += one;
        } catch (const UnmappableCharacterException&) {
        }
    }
    return kept;
}

template <typename Converter, typename In, typename Out>
int32_t convertOnce(Converter& c, const In* in, int32_t& ip, int32_t inEnd, Out* out, int32_t& op, int32_t outEnd)
{
    const int32_t before = op;
    const int32_t written = c.convert(in, &ip, inEnd, out, &op, outEnd);
    EXPECT_EQ(written, op - before);
    return written;
}

// produced[j]: output elements of a fresh converter given the first j input
// elements and unlimited room, without a flush.
template <typename Make, typename In, typename Out>
std::vector<int32_t> outputPerPrefix(Make make, const std::basic_string<In>& input)
{
    std::vector<int32_t> produced;
    std::vector<Out> out(input.size() * 8 + 16);
    for (size_t j = 0; j <= input.size(); ++j) {
        auto c = make();
        int32_t ip = 0;
        int32_t op = 0;
        c->convert(input.data(), &ip, static_cast<int32_t>(j), out.data(), &op, static_cast<int32_t>(out.size()));
        produced.push_back(op);
    }
    return produced;
}

// For every room from 0 to the whole output: the first call writes exactly
// the characters that fit, its positions show where the next character
// begins, and a second call with enough room writes the rest whole.
// exactInput: the input position must be the start of that character (an
// encoder never takes half a surrogate pair); otherwise it may lie inside it,
// as long as nothing consumed was owed to the output.
template <typename Make, typename In, typename Out>
void checkEveryRoom(Make make, const std::basic_string<In>& input, bool exactInput)
{
    const std::vector<int32_t> produced = outputPerPrefix<Make, In, Out>(make, input);
    const int32_t inEnd = static_cast<int32_t>(input.size());
    const int32_t total = produced.back();
    std::vector<Out> whole(static_cast<size_t>(total) + 16);
    {
        auto c = make();
        int32_t ip = 0;
        int32_t op = 0;
        c->convert(input.data(), &ip, inEnd, whole.data(), &op, static_cast<int32_t>(whole.size()));
        ASSERT_EQ(op, total);
    }
    for (int32_t room = 0; room <= total; ++room) {
        SCOPED_TRACE(testing::Message() << "room " << room);
        int32_t fits = 0;
        for (int32_t p : produced) {
            if (p <= room) {
                fits = std::max(fits, p);
            }
        }
        const int32_t firstWith =
            static_cast<int32_t>(std::find(produced.begin(), produced.end(), fits) - produced.begin());
        const int32_t firstBeyond = static_cast<int32_t>(
            std::find_if(produced.begin(), produced.end(), [fits](int32_t p) { return p > fits; }) - produced.begin());

        auto c = make();
        std::vector<Out> out(whole.size());
        int32_t ip = 0;
        int32_t op = 0;
        convertOnce(*c, input.data(), ip, inEnd, out.data(), op, room);
        ASSERT_EQ(op, fits);
        if (exactInput) {
            EXPECT_EQ(ip, firstWith);
        } else {
            EXPECT_EQ(produced[static_cast<size_t>(ip)], op);
            EXPECT_LT(ip, firstBeyond);
        }
        convertOnce(*c, input.data(), ip, inEnd, out.data(), op, static_cast<int32_t>(out.size()));
        EXPECT_EQ(ip, inEnd);
        ASSERT_EQ(op, total);
        EXPECT_TRUE(std::equal(out.begin(), out.begin() + total, whole.begin()));
    }
}

TEST(CharsetOutputLimit, EveryEncoderStopsBeforeTheFirstCharacterThatDoesNotFit)
{
    for (const Codec& codec : allCodecs()) {
        SCOPED_TRACE(codec.name);
        const Text text = representable(codec);
        ASSERT_GE(text.size(), 7u);
        checkEveryRoom<decltype(codec.encoder), char16_t, signed char>(codec.encoder, text, true);
    }
}

TEST(CharsetOutputLimit, EveryDecoderStopsBeforeTheFirstCharacterThatDoesNotFit)
{
    for (const Codec& codec : allCodecs()) {
        // iconv keeps a base letter of these two back until it knows no
        // combining mark follows, so a prefix's output says nothing there.
        if (codec.name == "CP1255" || codec.name == "CP1258") {
            continue;
        }
        SCOPED_TRACE(codec.name);
        auto encoder = codec.encoder();
        const Bytes bytes = encodeAll(*encoder, representable(codec));
        const std::basic_string<signed char> input(reinterpret_cast<const signed char*>(bytes.data()), bytes.size());
        checkEveryRoom<decltype(codec.decoder), signed char, char16_t>(codec.decoder, input, false);
    }
}

TEST(CharsetOutputLimit, TwoByteUnitsAreNeverSplitOverCalls)
{
    // Room for one unit and a half: the euro sign waits for the next call.
    CTBUTF16LE le;
    const char16_t text[] = u"A\u20AC";
    signed char out[8] = {};
    int32_t ip = 0;
    int32_t op = 0;
    EXPECT_EQ(le.convert(text, &ip, 2, out, &op, 3), 2);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(op, 2);
    EXPECT_EQ(le.convert(text, &ip, 2, out, &op, 8), 2);
    EXPECT_EQ(ip, 2);
    EXPECT_EQ(Bytes(reinterpret_cast<char*>(out), 4), Bytes("A\0\xAC\x20", 4));

    // The byte order mark goes out with the first character or not at all.
    CTBUTF16 neutral;
    ip = 0;
    op = 0;
    EXPECT_EQ(neutral.convert(text, &ip, 2, out, &op, 3), 0);
    EXPECT_EQ(ip, 0);
    EXPECT_EQ(neutral.convert(text, &ip, 2, out, &op, 5), 4);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(Bytes(reinterpret_cast<char*>(out), 4), Bytes("\xFE\xFF\0A", 4));

    // A pair is one UTF-32 value: with seven bytes of room after "A" it waits.
    CTBUTF32BE be;
    const char16_t pair[] = u"A\U0001F389";
    ip = 0;
    op = 0;
    EXPECT_EQ(be.convert(pair, &ip, 3, out, &op, 7), 4);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(be.convert(pair, &ip, 3, out, &op, 8), 4);
    EXPECT_EQ(ip, 3);
    EXPECT_EQ(Bytes(reinterpret_cast<char*>(out) + 4, 4), Bytes("\0\x01\xF3\x89", 4));

    // Decoding, a character beyond the first plane needs two free slots.
    BTCUTF8 utf8;
    const char bytes[] = "A\xF0\x9F\x8E\x89";
    char16_t units[4] = {};
    ip = 0;
    op = 0;
    EXPECT_EQ(utf8.convert(reinterpret_cast<const signed char*>(bytes), &ip, 5, units, &op, 2), 1);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(utf8.convert(reinterpret_cast<const signed char*>(bytes), &ip, 5, units, &op, 3), 2);
    EXPECT_EQ(ip, 5);
    EXPECT_EQ(Text(units, 3), u"A\U0001F389");
}

TEST(CharsetOutputLimit, AHighSurrogateEndingTheInputWaitsForItsLowHalfAndItsRoom)
{
    // The high half is taken as state; the low half then needs room for the
    // whole character and is left where it is until that room comes.
    CTBUTF8 encoder;
    const char16_t text[] = u"\U0001F389";
    signed char out[4] = {};
    int32_t ip = 0;
    int32_t op = 0;
    EXPECT_EQ(encoder.convert(text, &ip, 1, out, &op, 4), 0);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(encoder.convert(text, &ip, 2, out, &op, 3), 0);
    EXPECT_EQ(ip, 1);
    EXPECT_EQ(encoder.convert(text, &ip, 2, out, &op, 4), 4);
    EXPECT_EQ(ip, 2);
    EXPECT_EQ(encoder.flush(out, &op, 4), 0);
}

} // namespace
} // namespace charset_test
