// The UTF-8 converters at every instruction-set level the processor has,
// against the scalar level: output, positions and errors must not differ.

#include "ConverterHarness.h"

#include <random>

namespace charset_test {
namespace {

// One call over all of the input with room for `room` elements, then the
// rest through the harness in pieces.
template <typename Out>
struct Outcome {
    int32_t ip = 0;
    int32_t op = 0;
    std::basic_string<Out> firstCall;
    std::basic_string<Out> whole;
    std::string error;
    bool operator==(const Outcome& o) const
    {
        return ip == o.ip && op == o.op && firstCall == o.firstCall && whole == o.whole && error == o.error;
    }
};

template <typename Out>
std::ostream& operator<<(std::ostream& s, const Outcome<Out>& o)
{
    return s << "{ip " << o.ip << ", op " << o.op << ", error \"" << o.error << "\"}";
}

template <typename Converter, typename In, typename Out>
Outcome<Out> convertAt(SimdLevel level, const std::basic_string<In>& input, int32_t room, int inStep, int outStep)
{
    setUtf8SimdLevel(level);
    Converter c;
    Outcome<Out> o;
    std::vector<Out> out(static_cast<size_t>(room));
    const auto* in = reinterpret_cast<const std::conditional_t<sizeof(In) == 1, signed char, char16_t>*>(input.data());
    auto* to = reinterpret_cast<std::conditional_t<sizeof(Out) == 1, signed char, char16_t>*>(out.data());
    try {
        c.convert(in, &o.ip, static_cast<int32_t>(input.size()), to, &o.op, room);
        o.firstCall.assign(out.data(), static_cast<size_t>(o.op));
        c.reset();
        if constexpr (sizeof(In) == 1) {
            const Text text = decodeAll(c, input, inStep, outStep);
            o.whole.assign(text.begin(), text.end());
        } else {
            const Bytes bytes = encodeAll(c, input, inStep, outStep);
            o.whole.assign(bytes.begin(), bytes.end());
        }
    } catch (const InvalidCharacterException& e) {
        o.error = messageOf(e);
    }
    return o;
}

class CharsetSimdLevels : public testing::Test {
protected:
    void SetUp() override
    {
        m_initial = getUtf8SimdLevel();
        for (SimdLevel level : {SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512}) {
            if (setUtf8SimdLevel(level) == level) {
                m_levels.push_back(level);
            }
        }
    }
    void TearDown() override { setUtf8SimdLevel(m_initial); }

    std::vector<SimdLevel> m_levels;
    std::mt19937 m_random{23};

private:
    SimdLevel m_initial = SimdLevel::Scalar;
};

uint32_t randomCharacter(std::mt19937& random, int kind)
{
    switch (kind) {
    case 0: return random() % 0x80;
    case 1: return 0x80 + random() % 0x780;
    case 2: {
        const uint32_t cp = 0x800 + random() % 0xF800;
        return cp >= 0xD800 && cp < 0xE000 ? cp + 0x800 : cp;
    }
    default: return 0x10000 + random() % 0x100000;
    }
}

// Text of one kind of character with another kind sprinkled in: every mix
// the block loops tell apart, with the edge values of each range now and then.
std::u16string randomText(std::mt19937& random, size_t length)
{
    static const uint32_t edges[] = {0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF};
    const int main = static_cast<int>(random() % 4);
    const int other = static_cast<int>(random() % 4);
    const uint32_t every = 1 + random() % 8;
    std::u16string text;
    while (text.size() < length) {
        uint32_t cp = randomCharacter(random, random() % every == 0 ? other : main);
        if (random() % 64 == 0) {
            cp = edges[random() % 9];
        }
        text += utf16({static_cast<char32_t>(cp)});
    }
    return text;
}

Bytes utf8Of(const std::u16string& text)
{
    CTBUTF8 encoder;
    return encodeAll(encoder, text);
}

// Lengths around every block width (16, 32 and 64 elements, and the room the
// loops want behind a block) and a few longer ones.
std::vector<size_t> lengths()
{
    std::vector<size_t> sizes;
    for (size_t width : {16, 32, 48, 64, 96, 128, 192}) {
        for (size_t d = 0; d < 6; ++d) {
            sizes.push_back(width + d - 3);
        }
    }
    sizes.insert(sizes.end(), {0, 1, 2, 3, 5, 300, 1000});
    return sizes;
}

TEST_F(CharsetSimdLevels, DecodingMatchesTheScalarLevelOnValidAndBrokenInput)
{
    static const Bytes faults[] = {"\x80",         "\xBF",     "\xC0\xAF",         "\xC1",    "\xE0\x9F\xBF",
                                   "\xED\xA0\x80", "\xF0\x8F", "\xF4\x90\x80\x80", "\xF5",    "\xFF",
                                   "\xC3",         "\xE2\x82", "\xF0\x9F\x98",     "\xC3\xC3"};
    for (size_t length : lengths()) {
        for (int round = 0; round < 12; ++round) {
            Bytes bytes = utf8Of(randomText(m_random, length));
            if (round % 3 != 0 && !bytes.empty()) {
                // A fault anywhere: replacing, inserting or cutting.
                const size_t at = m_random() % bytes.size();
                const Bytes& fault = faults[m_random() % (sizeof faults / sizeof faults[0])];
                if (round % 3 == 1) {
                    bytes.replace(at, fault.size(), fault);
                } else {
                    bytes.insert(at, fault);
                }
            }
            const int32_t room = static_cast<int32_t>(m_random() % (bytes.size() + 8)) + 1;
            const int inStep = 1 + static_cast<int>(m_random() % 200);
            const int outStep = 1 + static_cast<int>(m_random() % 200);
            const auto scalar = convertAt<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, room, inStep, outStep);
            for (SimdLevel level : m_levels) {
                SCOPED_TRACE(testing::Message()
                             << "level " << static_cast<int>(level) << ", length " << length << ", room " << room);
                EXPECT_EQ(scalar, (convertAt<BTCUTF8, char, char16_t>(level, bytes, room, inStep, outStep)));
            }
        }
    }
}

TEST_F(CharsetSimdLevels, EncodingMatchesTheScalarLevelOnValidAndBrokenInput)
{
    for (size_t length : lengths()) {
        for (int round = 0; round < 12; ++round) {
            std::u16string text = randomText(m_random, length);
            if (round % 3 != 0 && !text.empty()) {
                // A lone surrogate, or a pair turned round.
                const size_t at = m_random() % text.size();
                if (round % 3 == 1) {
                    text[at] = static_cast<char16_t>(0xD800 + m_random() % 0x800);
                } else {
                    text.insert(at, u"\xDC00\xD800");
                }
            }
            const int32_t room = static_cast<int32_t>(m_random() % (3 * text.size() + 8)) + 1;
            const int inStep = 1 + static_cast<int>(m_random() % 200);
            const int outStep = 1 + static_cast<int>(m_random() % 200);
            const auto scalar = convertAt<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, room, inStep, outStep);
            for (SimdLevel level : m_levels) {
                SCOPED_TRACE(testing::Message()
                             << "level " << static_cast<int>(level) << ", length " << length << ", room " << room);
                EXPECT_EQ(scalar, (convertAt<CTBUTF8, char16_t, char>(level, text, room, inStep, outStep)));
            }
        }
    }
}

// Text of one kind of character throughout, shifted by `shift` ASCII
// letters, so that the sequences meet the block edges in every phase.
Bytes uniformText(const char* character, size_t shift, size_t length)
{
    Bytes bytes(shift, 'a');
    while (bytes.size() < length) {
        bytes += character;
    }
    return bytes;
}

// A sequence of each length at every position of the first blocks, in
// text of each kind: every way a sequence can straddle a block edge, a
// block that starts with the tail of a sequence the block before converted,
// and a block after an ASCII one.
TEST_F(CharsetSimdLevels, DecodingMatchesTheScalarLevelWithASequenceAtEveryPosition)
{
    static const char* const kinds[] = {"a", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"};
    for (const char* kind : kinds) {
        for (const char* sequence : kinds) {
            for (size_t at = 0; at < 200; ++at) {
                Bytes bytes = uniformText(kind, at % 4, 260);
                size_t boundary = at;
                while (boundary < bytes.size() && (static_cast<uint8_t>(bytes[boundary]) & 0xC0) == 0x80) {
                    ++boundary;
                }
                bytes.insert(boundary, sequence);
                const int32_t room = static_cast<int32_t>(bytes.size());
                const auto scalar = convertAt<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, room, 61, 1000);
                ASSERT_EQ("", scalar.error);
                for (SimdLevel level : m_levels) {
                    SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", at " << boundary);
                    EXPECT_EQ(scalar, (convertAt<BTCUTF8, char, char16_t>(level, bytes, room, 61, 1000)));
                }
            }
        }
    }
}

// Every position of clean text of each kind overwritten with a byte that
// breaks it: the same message at the same place, and the same output before
// it, at every level.
TEST_F(CharsetSimdLevels, DecodingMatchesTheScalarLevelWithAFaultAtEveryPosition)
{
    static const char* const kinds[] = {"a", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "a\xC3\xA9\xE4\xB8\xAD"};
    // A stray continuation, C0 and F5 (never valid), an ASCII letter or a
    // lead where a continuation belongs, and the second bytes that E0, ED,
    // F0 and F4 refuse.
    static const uint8_t faults[] = {0x80, 0xBF, 0xC0, 0xF5, 0xFF, 'x', 0xC3, 0xE0, 0xED, 0xF0, 0xF4, 0x9F, 0xA0, 0x8F};
    for (const char* kind : kinds) {
        for (size_t shift = 0; shift < 2; ++shift) {
            const Bytes clean = uniformText(kind, shift, 200);
            for (size_t at = 0; at < clean.size(); ++at) {
                for (uint8_t fault : faults) {
                    Bytes bytes = clean;
                    bytes[at] = static_cast<char>(fault);
                    const int32_t room = static_cast<int32_t>(bytes.size());
                    const auto scalar = convertAt<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, room, 1000, 1000);
                    for (SimdLevel level : m_levels) {
                        SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", kind " << kind
                                                        << ", at " << at << ", fault " << int(fault));
                        EXPECT_EQ(scalar, (convertAt<BTCUTF8, char, char16_t>(level, bytes, room, 1000, 1000)));
                    }
                }
            }
        }
    }
}

// Every byte from C0 up as a lead, followed by every possible second byte
// (and good continuation bytes after it) in East Asian text, placed so that
// the lead falls on each of the last bytes of the first two blocks and on
// the first bytes: the leads that are never valid, and the range each lead
// allows for its second byte, tested at both ends.
TEST_F(CharsetSimdLevels, DecodingMatchesTheScalarLevelForEverySecondByteOfEachLead)
{
    const Bytes clean = uniformText("\xE4\xB8\xAD", 0, 200);
    for (int lead = 0xC0; lead <= 0xFF; ++lead) {
        for (int second = 0; second < 0x100; ++second) {
            Bytes sequence{static_cast<char>(lead), static_cast<char>(second), '\x80', '\xBF'};
            sequence.resize(lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4);
            for (size_t at : {0, 1, 2, 57, 58, 59, 60, 61, 62, 63, 64, 119, 120, 121, 122, 123, 124}) {
                // East Asian text up to the last whole character before
                // `at`, ASCII up to it, so that only the sequence can be bad.
                Bytes bytes = clean.substr(0, at - at % 3) + Bytes(at % 3, 'a') + sequence + clean;
                const int32_t room = static_cast<int32_t>(bytes.size());
                const auto scalar = convertAt<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, room, 1000, 1000);
                for (SimdLevel level : m_levels) {
                    SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", lead " << lead
                                                    << ", second " << second << ", at " << at);
                    EXPECT_EQ(scalar, (convertAt<BTCUTF8, char, char16_t>(level, bytes, room, 1000, 1000)));
                }
            }
        }
    }
}

// Text of each kind with a character of each length, a lone surrogate of
// either kind or a pair turned round at every position of the first blocks:
// pairs across every block edge, and every lane holding the fault.
TEST_F(CharsetSimdLevels, EncodingMatchesTheScalarLevelWithACharacterOrAFaultAtEveryPosition)
{
    static const std::u16string kinds[] = {u"a", u"\u00E9", u"\u4E2D", u"\U0001F600", std::u16string(1, u'\0')};
    static const std::u16string inserts[] = {u"b",          u"\u00FF", u"\uFFFF", u"\U0010FFFF",
                                             u"\U0001F600", u"\xD800", u"\xDFFF", u"\xDC00\xD800"};
    for (const std::u16string& kind : kinds) {
        for (size_t shift = 0; shift < 2; ++shift) {
            std::u16string clean(shift, u'a');
            while (clean.size() < 140) {
                clean += kind;
            }
            for (size_t at = 0; at < 100; ++at) {
                // At a character boundary, so that only the insert can be at fault.
                const size_t boundary = at + ((clean[at] & 0xFC00) == 0xDC00 ? 1 : 0);
                for (const std::u16string& insert : inserts) {
                    std::u16string text = clean;
                    text.insert(boundary, insert);
                    const int32_t room = static_cast<int32_t>(3 * text.size());
                    const auto scalar = convertAt<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, room, 1000, 1000);
                    for (SimdLevel level : m_levels) {
                        SCOPED_TRACE(testing::Message()
                                     << "level " << static_cast<int>(level) << ", kind " << int(kind[0]) << ", at "
                                     << boundary << ", insert " << int(insert[0]));
                        EXPECT_EQ(scalar, (convertAt<CTBUTF8, char16_t, char>(level, text, room, 1000, 1000)));
                    }
                }
            }
        }
    }
}

// Runs of three-byte characters only, with the edge values of the range
// beside the surrogates, in every phase against the blocks and of every
// length around them: the halves that are all three-byte and those that
// are not must both come out as the scalar level writes them.
TEST_F(CharsetSimdLevels, EncodingMatchesTheScalarLevelOnRunsOfThreeByteCharacters)
{
    static const char16_t edges[] = {0x0800, 0x0FFF, 0x1000, 0x4E2D, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF};
    for (size_t shift = 0; shift < 33; ++shift) {
        for (size_t length = 0; length < 100; length += 7) {
            std::u16string text(shift, u'a');
            for (size_t i = 0; i < length; ++i) {
                text += edges[(i * 5 + shift) % 8];
            }
            text += u"\U0001F600";
            const int32_t room = static_cast<int32_t>(3 * text.size());
            const auto scalar = convertAt<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, room, 1000, 1000);
            for (SimdLevel level : m_levels) {
                SCOPED_TRACE(testing::Message()
                             << "level " << static_cast<int>(level) << ", shift " << shift << ", length " << length);
                EXPECT_EQ(scalar, (convertAt<CTBUTF8, char16_t, char>(level, text, room, 1000, 1000)));
            }
        }
    }
}

// Calls with more input than the caches hold take other block loops than
// the short calls above: East Asian text with some ASCII and emoji (halves
// of three-byte characters only, and halves without), clean and with a lone
// surrogate or a pair turned round near its start, middle and end, in one
// call and in pieces.
TEST_F(CharsetSimdLevels, EncodingMatchesTheScalarLevelOnLongInput)
{
    std::u16string clean;
    while (clean.size() < 300000) {
        const uint32_t r = m_random() % 100;
        const uint32_t cp = r < 94 ? 0x4E00 + m_random() % 0x5000 : r < 98 ? 0x20 + m_random() % 0x5F : 0x1F600;
        clean += utf16({static_cast<char32_t>(cp)});
    }
    const std::u16string faults[] = {u"", u"\xD800", u"\xDFFF", u"\xDC00\xD800"};
    for (size_t at : {size_t{5}, clean.size() / 2, clean.size() - 40}) {
        for (const std::u16string& fault : faults) {
            std::u16string text = clean;
            text.insert(at + ((text[at] & 0xFC00) == 0xDC00 ? 1 : 0), fault);
            const int32_t room = static_cast<int32_t>(3 * text.size());
            for (int step : {1 << 20, 70001}) {
                const auto scalar = convertAt<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, room, step, step);
                for (SimdLevel level : m_levels) {
                    SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", at " << at
                                                    << ", fault " << fault.size() << ", step " << step);
                    EXPECT_EQ(scalar, (convertAt<CTBUTF8, char16_t, char>(level, text, room, step, step)));
                }
            }
        }
    }
}

// One call (or two, the first ending at `split`) writing from `start` into
// a buffer with room for `room` more elements and some beyond, all holding a
// sentinel beforehand. Kept: the output with what lies before it, and what
// lies beyond the room, so that a stray write on either side shows (slots
// between the two are scratch).
template <typename Converter, typename In, typename Out>
Outcome<Out> convertFrom(SimdLevel level, const std::basic_string<In>& input, int32_t start, int32_t room,
                         int32_t split = 0)
{
    setUtf8SimdLevel(level);
    Converter c;
    Outcome<Out> o;
    std::basic_string<Out> out(static_cast<size_t>(start + room + 70), static_cast<Out>(0x5A));
    const auto* in = reinterpret_cast<const std::conditional_t<sizeof(In) == 1, signed char, char16_t>*>(input.data());
    auto* to = reinterpret_cast<std::conditional_t<sizeof(Out) == 1, signed char, char16_t>*>(out.data());
    o.op = start;
    try {
        if (split > 0) {
            c.convert(in, &o.ip, split, to, &o.op, start + room);
        }
        c.convert(in, &o.ip, static_cast<int32_t>(input.size()), to, &o.op, start + room);
    } catch (const InvalidCharacterException& e) {
        o.error = messageOf(e);
    }
    o.whole = out.substr(0, static_cast<size_t>(o.op)) + out.substr(static_cast<size_t>(start + room));
    return o;
}

// Calls of more than a mebi-element begin with their ASCII run written
// through a staging buffer: runs ending at every kind of place in a
// staged stretch and in a line, followed by another character or a fault,
// into output starting anywhere in a line and ending before, inside or
// after the run.
TEST_F(CharsetSimdLevels, LongCallsMatchTheScalarLevelAroundTheirLeadingAsciiRun)
{
    const size_t mebi = size_t{1} << 20;
    static const Bytes utf8Tails[] = {"\xC3\xA9xyz", "\xE4\xB8\xAD", "\x80xyz", "\xF0\x9F\x98"};
    static const Text utf16Tails[] = {u"\u00E9xyz", u"\u4E2D", u"\xDC00xyz", u"\xD800"};
    for (size_t run : {mebi, mebi + 1, mebi + 31, mebi + 64, mebi + 4095, mebi + 4096 + 33, 2 * mebi + 7}) {
        for (size_t tail = 0; tail < 4; ++tail) {
            const int32_t start = static_cast<int32_t>((run + 7 * tail) % 67);
            const Bytes bytes = Bytes(run, 'q') + utf8Tails[tail] + Bytes(300, 'r');
            const Text text = Text(run, u'q') + utf16Tails[tail] + Text(300, u'r');
            const int32_t whole = static_cast<int32_t>(bytes.size() + 8);
            for (int32_t room : {whole, static_cast<int32_t>(run) - 100, static_cast<int32_t>(run) + 1}) {
                const auto decoded = convertFrom<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, start, room);
                const auto encoded = convertFrom<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, start, room);
                if (room == whole) {
                    EXPECT_EQ(tail >= 2, !decoded.error.empty());
                    EXPECT_EQ(tail >= 2, !encoded.error.empty());
                }
                for (SimdLevel level : m_levels) {
                    SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", run " << run
                                                    << ", tail " << tail << ", start " << start << ", room " << room);
                    EXPECT_EQ(decoded, (convertFrom<BTCUTF8, char, char16_t>(level, bytes, start, room)));
                    EXPECT_EQ(encoded, (convertFrom<CTBUTF8, char16_t, char>(level, text, start, room)));
                }
            }
        }
    }
    // A text fed in two calls, the second starting with a long run: it is
    // streamed from anywhere in an output line.
    for (size_t run : {mebi + 31, mebi + 4096 + 33}) {
        for (size_t tail = 0; tail < 2; ++tail) {
            const Bytes bytes = Bytes(run, 'q') + utf8Tails[tail] + Bytes(mebi + 5, 'r');
            const Text text = Text(run, u'q') + utf16Tails[tail] + Text(mebi + 5, u'r');
            const int32_t room = static_cast<int32_t>(bytes.size() + 8);
            const auto split8 = static_cast<int32_t>(run + utf8Tails[tail].size());
            const auto split16 = static_cast<int32_t>(run + utf16Tails[tail].size());
            const auto decoded = convertFrom<BTCUTF8, char, char16_t>(SimdLevel::Scalar, bytes, 3, room, split8);
            const auto encoded = convertFrom<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, 3, room, split16);
            EXPECT_EQ(bytes.size(), static_cast<size_t>(decoded.ip));
            EXPECT_EQ(text.size(), static_cast<size_t>(encoded.ip));
            for (SimdLevel level : m_levels) {
                SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << ", run " << run << ", tail "
                                                << tail << ", in two calls");
                EXPECT_EQ(decoded, (convertFrom<BTCUTF8, char, char16_t>(level, bytes, 3, room, split8)));
                EXPECT_EQ(encoded, (convertFrom<CTBUTF8, char16_t, char>(level, text, 3, room, split16)));
            }
        }
    }
}

// Text with emoji: pairs among ASCII (blocks built in their 16-bit lanes),
// among two-byte characters too, and beside a three-byte character (blocks
// widened to 32-bit lanes), each kind in turn at every offset of a block.
// Each text once clean and once with a lone surrogate or a reversed pair at
// that offset; in one call, and in two split there or one unit later (inside
// the pair that starts there in clean text); with room for the output
// before that offset, one byte less or more, or for everything.
TEST_F(CharsetSimdLevels, EncodingMatchesTheScalarLevelOnPairsAmongOtherCharacters)
{
    static const std::u16string neighbours[] = {u"ab", u"a\u00E9", u"\u00E9\u07FF", u"a\u4E2D"};
    static const std::u16string faults[] = {u"", u"\xD83D", u"\xDE00", u"\xDE00\xD83D"};
    for (const std::u16string& neighbour : neighbours) {
        for (size_t at = 0; at < 40; ++at) {
            std::u16string clean;
            for (size_t i = 0; clean.size() < 100; ++i) {
                clean += i % 4 == 0   ? u"\U0001F600"
                         : i % 4 == 1 ? u"\U00010000"
                         : i % 4 == 2 ? u"\U0010FFFF"
                                      : neighbour;
            }
            clean.insert(0, at, u'x');
            const size_t boundary = at + ((clean[at] & 0xFC00) == 0xDC00 ? 1 : 0);
            for (const std::u16string& fault : faults) {
                std::u16string text = clean;
                text.insert(boundary, fault);
                const auto needed = static_cast<int32_t>(utf8Of(text.substr(0, boundary)).size());
                for (int32_t split : {0, static_cast<int32_t>(boundary), static_cast<int32_t>(boundary) + 1}) {
                    for (int32_t room : {needed - 1, needed, needed + 1, static_cast<int32_t>(3 * text.size())}) {
                        if (room < 0) {
                            continue;
                        }
                        const auto scalar =
                            convertFrom<CTBUTF8, char16_t, char>(SimdLevel::Scalar, text, 5, room, split);
                        for (SimdLevel level : m_levels) {
                            SCOPED_TRACE(testing::Message()
                                         << "level " << static_cast<int>(level) << ", neighbour " << int(neighbour[1])
                                         << ", at " << at << ", fault " << fault.size() << ", split " << split
                                         << ", room " << room);
                            EXPECT_EQ(scalar, (convertFrom<CTBUTF8, char16_t, char>(level, text, 5, room, split)));
                        }
                    }
                }
            }
        }
    }
}

TEST_F(CharsetSimdLevels, ALevelAboveTheProcessorsIsLoweredAndTheScalarLevelIsAlwaysThere)
{
    EXPECT_EQ(SimdLevel::Scalar, setUtf8SimdLevel(SimdLevel::Scalar));
    EXPECT_EQ(SimdLevel::Scalar, getUtf8SimdLevel());
    const SimdLevel best = setUtf8SimdLevel(SimdLevel::Avx512);
    EXPECT_EQ(best, getUtf8SimdLevel());
    EXPECT_EQ(m_levels.empty() ? SimdLevel::Scalar : m_levels.back(), best);
}

} // namespace
} // namespace charset_test
