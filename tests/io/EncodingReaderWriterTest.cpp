#include <qv/io/BufferedReader.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/InputStreamReader.h>
#include <qv/io/OutputStreamWriter.h>
#include <qv/text/charset/CharsetExceptions.h>

#include "AllocationSweep.h"
#include "QvTextPrinting.h"
#include "TextIoSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

using namespace qv;
using namespace qv::io;
using namespace qv::text::charset;
using qvtest::ioFailure;
using qvtest::u16;

namespace {

std::vector<signed char> asBytes(const std::string& text)
{
    return std::vector<signed char>(text.begin(), text.end());
}

std::vector<signed char> encode(const std::u16string& text, const char16_t* encoding)
{
    auto sink = makeReference<ByteArrayOutputStream>();
    auto writer = makeReference<OutputStreamWriter>(sink.get(), encoding);
    writer->write(text.data(), static_cast<int32_t>(text.size()));
    writer->close();
    return std::vector<signed char>(sink->getData(), sink->getData() + sink->size());
}

// Everything a reader gives, asked for in runs of readSize units.
std::u16string readAll(Reader* reader, int32_t readSize)
{
    std::u16string text;
    std::vector<char16_t> units(static_cast<size_t>(readSize));
    for (int32_t n; (n = reader->read(units.data(), readSize)) != -1;) {
        EXPECT_GT(n, 0);
        text.append(units.data(), static_cast<size_t>(n));
    }
    return text;
}

// The characters an encoding round-trips, found by asking its converters:
// a sample of the Basic Multilingual Plane and beyond. Combining marks are
// left out: CP1255 and CP1258 compose them with the letter before them, so
// text holding them decodes to different (equivalent) text.
std::vector<std::u16string> repertoire(const char16_t* encoding)
{
    std::vector<std::u16string> sample;
    for (char32_t c = 0; c < 0x3100; c += (c < 0x500 ? 1 : 7))
        if (c < 0xD800 && !(c >= 0x300 && c <= 0x36F) && !(c >= 0x591 && c <= 0x5C7))
            sample.push_back(std::u16string(1, static_cast<char16_t>(c)));
    for (char32_t c : {0x4E00, 0x4E8C, 0x65E5, 0x672C, 0x8A9E, 0xFF71, 0xFF9F, 0x20AC, 0xFFFD})
        sample.push_back(std::u16string(1, static_cast<char16_t>(c)));
    sample.push_back(u"\U0001F600");
    sample.push_back(u"\U00010000");
    std::vector<std::u16string> kept;
    auto encoder = CharToByteConverter::getConverter(encoding);
    auto decoder = ByteToCharConverter::getConverter(encoding);
    encoder->setSubstitutionMode(false);
    decoder->setSubstitutionMode(false);
    for (const auto& candidate : sample) {
        try {
            encoder->reset();
            decoder->reset();
            signed char bytes[16];
            int32_t in = 0, out = 0;
            encoder->convert(candidate.data(), &in, static_cast<int32_t>(candidate.size()), bytes, &out, 16);
            encoder->flush(bytes, &out, 16);
            char16_t back[8];
            int32_t bin = 0, bout = 0;
            decoder->convert(bytes, &bin, out, back, &bout, 8);
            decoder->flush(back, &bout, 8);
            if (std::u16string(back, static_cast<size_t>(bout)) == candidate)
                kept.push_back(candidate);
        } catch (const Exception&) {
        }
    }
    return kept;
}

const char16_t* const kEncodings[] = {
    u"ASCII",    u"ISO8859_1", u"CP437",  u"CP1252", u"UTF-8",  u"UTF-16LE", u"UTF-16BE", u"UTF-32BE",
    u"UTF-32LE", u"AMP-7",     u"CP1250", u"CP1251", u"CP1253", u"CP1254",   u"CP1255",   u"CP1256",
    u"CP1257",   u"CP1258",    u"CP737",  u"CP775",  u"CP850",  u"CP852",    u"CP855",    u"CP857",
    u"CP858",    u"CP862",     u"CP866",  u"CP932",  u"EUCJP",
};

} // namespace

TEST(EncodingReaderWriterTest, RandomTextRoundTripsInEveryEncodingWithRandomSplits)
{
    std::mt19937 random(77);
    for (const char16_t* encoding : kEncodings) {
        SCOPED_TRACE(String(encoding).toUtf8());
        std::vector<std::u16string> chars = repertoire(encoding);
        ASSERT_GT(chars.size(), 60u);
        for (int round = 0; round < 6; ++round) {
            std::u16string text;
            int32_t length = std::uniform_int_distribution<int32_t>(0, round < 3 ? 300 : 30000)(random);
            std::uniform_int_distribution<size_t> pick(0, chars.size() - 1);
            while (static_cast<int32_t>(text.size()) < length)
                text += random() % 9 == 0 ? std::u16string(1, u"\r\n"[random() % 2]) : chars[pick(random)];

            // Written in runs that split surrogate pairs now and then.
            auto sink = makeReference<ByteArrayOutputStream>();
            auto writer = makeReference<OutputStreamWriter>(sink.get(), encoding);
            for (size_t at = 0; at < text.size();) {
                size_t run = std::uniform_int_distribution<size_t>(1, 4096)(random);
                run = std::min(run, text.size() - at);
                writer->write(text.data() + at, static_cast<int32_t>(run));
                at += run;
            }
            writer->close();

            auto bytes = makeReference<ByteArrayInputStream>(sink->getData(), sink->size());
            int32_t streamRun = std::uniform_int_distribution<int32_t>(1, 4096)(random);
            auto trickle = makeReference<qvtest::TrickleInputStream>(bytes.get(), round, streamRun);
            auto reader = makeReference<InputStreamReader>(trickle.get(), encoding);
            int32_t readSize = std::uniform_int_distribution<int32_t>(1, 4096)(random);
            std::u16string back = readAll(reader.get(), readSize);
            ASSERT_TRUE(back == text) << "round " << round << ", " << text.size() << " units, stream runs of "
                                      << streamRun << ", reads of " << readSize;
        }
    }
}

TEST(EncodingReaderWriterTest, ReadLineOverADecodingReaderMatchesTheLinesWritten)
{
    std::u16string text = u"first \u00e9\r\nsecond \U0001F600\rthird\n\nlast";
    for (const char16_t* encoding : {u"UTF-8", u"UTF-16LE", u"UTF-32BE", u"CP932"}) {
        SCOPED_TRACE(String(encoding).toUtf8());
        std::u16string portable = text;
        if (String(encoding).equals(u"CP932"))
            portable = u"first \u65e5\r\nsecond \uff71\rthird\n\nlast";
        auto bytes = encode(portable, encoding);
        auto in = makeReference<ByteArrayInputStream>(bytes.data(), static_cast<int32_t>(bytes.size()));
        auto trickle = makeReference<qvtest::TrickleInputStream>(in.get(), 5, 3);
        auto reader =
            makeReference<BufferedReader>(makeReference<InputStreamReader>(trickle.get(), encoding).get(), 16);
        std::vector<std::u16string> lines;
        String line;
        while (reader->readLine(line))
            lines.push_back(u16(line));
        ASSERT_EQ(5u, lines.size());
        EXPECT_TRUE(lines[0] + u"\r\n" + lines[1] + u"\r" + lines[2] + u"\n" + lines[3] + u"\n" + lines[4] == portable);
    }
}

TEST(EncodingReaderWriterTest, MalformedInputIsReportedAtItsByteOffsetAfterTheTextBeforeIt)
{
    for (int32_t streamRun : {1, 3, 100, 8192}) {
        std::string prefix = "abc" + std::string(9000, 'x') + "\xc3\xa9";
        auto bytes = asBytes(prefix + "\xc0\x80" + "tail");
        auto in = makeReference<ByteArrayInputStream>(bytes.data(), static_cast<int32_t>(bytes.size()));
        auto trickle = makeReference<qvtest::TrickleInputStream>(in.get(), 1, streamRun);
        auto reader = makeReference<InputStreamReader>(trickle.get(), u"UTF-8");
        std::u16string text;
        char16_t units[700];
        std::string message = qvtest::messageOf<InvalidCharacterException>([&] {
            for (int32_t n; (n = reader->read(units, 700)) > 0;)
                text.append(units, static_cast<size_t>(n));
        });
        EXPECT_EQ(u"abc" + std::u16string(9000, u'x') + u"\u00e9", text) << "stream runs of " << streamRun;
        EXPECT_NE(std::string::npos, message.find(" at byte offset 9005")) << message;
        // The reader stays at the fault.
        EXPECT_EQ(message, qvtest::messageOf<InvalidCharacterException>([&] { reader->read(); }));
    }

    // A sequence cut off by the end of the stream.
    auto cut = asBytes("ok\xe4\xb8");
    auto in = makeReference<ByteArrayInputStream>(cut.data(), static_cast<int32_t>(cut.size()));
    auto reader = makeReference<InputStreamReader>(in.get(), u"UTF-8");
    EXPECT_EQ(u'o', reader->read());
    EXPECT_EQ(u'k', reader->read());
    std::string message = qvtest::messageOf<InvalidCharacterException>([&] { reader->read(); });
    EXPECT_NE(std::string::npos, message.find(" at byte offset 4")) << message;
}

TEST(EncodingReaderWriterTest, TheDecodersSubstitutionSettingsAreReachable)
{
    auto bytes = asBytes("a\x81"
                         "b");
    auto in = makeReference<ByteArrayInputStream>(bytes.data(), 3);
    auto reader = makeReference<InputStreamReader>(in.get(), u"windows-1252");
    EXPECT_EQ(u"CP1252", std::u16string(reader->getEncoding()));
    EXPECT_EQ(u"a\ufffdb", readAll(reader.get(), 10));

    auto again = makeReference<ByteArrayInputStream>(bytes.data(), 3);
    auto strict = makeReference<InputStreamReader>(again.get(), u"CP1252");
    strict->getDecoder()->setSubstitutionMode(false);
    EXPECT_EQ(u'a', strict->read());
    std::string message = qvtest::messageOf<UnmappableCharacterException>([&] { strict->read(); });
    EXPECT_NE(std::string::npos, message.find(" at byte offset 1")) << message;

    EXPECT_THROW(InputStreamReader(in.get(), u"NO-SUCH-ENCODING"), UnknownEncodingException);
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([] { InputStreamReader bad(nullptr); }));
}

TEST(EncodingReaderWriterTest, WriterJoinsSurrogatesAcrossWritesAndFlushesTheEncoderAtClose)
{
    auto sink = makeReference<ByteArrayOutputStream>();
    auto writer = makeReference<OutputStreamWriter>(sink.get(), u"UTF-8");
    writer->write(u"\U0001F600", 1);
    writer->write(u"\U0001F600" + 1, 1);
    writer->flush();
    EXPECT_EQ("\xf0\x9f\x98\x80", std::string(sink->getData(), sink->getData() + sink->size()));

    // AMP-7 closes its base64 run only when the encoder is flushed.
    auto amp = makeReference<ByteArrayOutputStream>();
    auto amp7 = makeReference<OutputStreamWriter>(amp.get(), u"AMP-7");
    amp7->write(u"\u00e9", 1);
    amp7->flush();
    amp7->close();
    EXPECT_EQ("&AOk-", std::string(amp->getData(), amp->getData() + amp->size()));

    // A surrogate still waiting at close is malformed; the stream is closed anyway.
    auto stream = makeReference<qvtest::FillingOutputStream>(1000);
    auto halfPair = makeReference<OutputStreamWriter>(stream.get(), u"UTF-8");
    halfPair->write(u"x\xD83D", 2);
    std::string message = qvtest::messageOf<InvalidCharacterException>([&] { halfPair->close(); });
    EXPECT_NE(std::string::npos, message.find(" at character offset 2")) << message;
    EXPECT_EQ(1, stream->closes);
    EXPECT_EQ("stream closed", ioFailure([&] { halfPair->write(u'x'); }));
}

TEST(EncodingReaderWriterTest, UnencodableTextIsReportedAtItsOffsetAfterTheTextBeforeIt)
{
    auto sink = makeReference<ByteArrayOutputStream>();
    auto writer = makeReference<OutputStreamWriter>(sink.get(), u"ISO8859_1");
    writer->getEncoder()->setSubstitutionMode(false);
    writer->write(u"12345", 5);
    std::string message = qvtest::messageOf<UnmappableCharacterException>([&] { writer->write(u"ab\u20acc", 4); });
    EXPECT_NE(std::string::npos, message.find(" at character offset 7")) << message;
    // Offsets keep counting after a fault: the two units before it were taken.
    message = qvtest::messageOf<UnmappableCharacterException>([&] { writer->write(u"\u20ac", 1); });
    EXPECT_NE(std::string::npos, message.find(" at character offset 7")) << message;
    writer->getEncoder()->setSubstitutionMode(true);
    writer->write(u"\u20ac", 1);
    writer->close();
    EXPECT_EQ("12345ab?", std::string(sink->getData(), sink->getData() + sink->size()));

    auto utf8 = makeReference<ByteArrayOutputStream>();
    auto lone = makeReference<OutputStreamWriter>(utf8.get(), u"UTF-8");
    message = qvtest::messageOf<InvalidCharacterException>([&] { lone->write(u"ok\xDE00!", 4); });
    EXPECT_NE(std::string::npos, message.find(" at character offset 2")) << message;
    lone->close();
    EXPECT_EQ("ok", std::string(utf8->getData(), utf8->getData() + utf8->size()));
}

TEST(EncodingReaderWriterTest, AFailingStreamIsReportedByTheWriteOrFlushThatMeetsIt)
{
    auto device = makeReference<qvtest::FillingOutputStream>(10000);
    auto writer = makeReference<OutputStreamWriter>(device.get(), u"UTF-8");
    std::u16string text(9000, u'w');
    writer->write(text.data(), 9000);
    EXPECT_EQ(8192u, device->bytes.size()) << "a full byte buffer goes out at once";
    writer->write(text.data(), 1000);
    EXPECT_EQ("device full", ioFailure([&] { writer->write(text.data(), 9000); }));
    EXPECT_EQ("device full", ioFailure([&] { writer->flush(); }));
    EXPECT_EQ("device full", ioFailure([&] { writer->close(); }));
    EXPECT_EQ(1, device->closes);
    EXPECT_EQ("stream closed", ioFailure([&] { writer->flush(); }));
}

TEST(EncodingReaderWriterTest, EveryOperationAfterCloseThrowsStreamClosed)
{
    auto bytes = asBytes("text");
    auto in = makeReference<ByteArrayInputStream>(bytes.data(), 4);
    auto reader = makeReference<InputStreamReader>(in.get());
    EXPECT_TRUE(reader->ready());
    reader->close();
    reader->close();
    char16_t unit;
    iotest::expectEachFails("stream closed", {[&] { reader->read(); }, [&] { reader->read(&unit, 1); },
                                              [&] { reader->skip(1); }, [&] { reader->ready(); }});

    auto sink = makeReference<ByteArrayOutputStream>();
    auto writer = makeReference<OutputStreamWriter>(sink.get());
    writer->close();
    writer->close();
    iotest::expectEachFails("stream closed", {[&] { writer->write(u"x", 1); }, [&] { writer->write(QV_STR(u"x")); },
                                              [&] { writer->write(u'x'); }, [&] { writer->flush(); }});
}

TEST(EncodingReaderWriterTest, ConversionSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    std::u16string text = u"line one \u00e9\nline two \U0001F600\n";
    int failures = qvtest::sweepAllocations([&] {
        auto sink = makeReference<ByteArrayOutputStream>(4);
        auto writer = makeReference<OutputStreamWriter>(sink.get(), u"UTF-16BE");
        writer->write(text.data(), static_cast<int32_t>(text.size()));
        writer->close();
        auto in = makeReference<ByteArrayInputStream>(sink->getData(), sink->size());
        auto reader = makeReference<BufferedReader>(makeReference<InputStreamReader>(in.get(), u"UTF-16BE").get());
        String line;
        ASSERT_TRUE(reader->readLine(line));
        ASSERT_TRUE(reader->readLine(line));
        ASSERT_EQ(u"line two \U0001F600", u16(line));
    });
    EXPECT_GT(failures, 5);
}

TEST(EncodingReaderWriterTest, SourcesThatAnswerNothingAreWaitedForButNotForever)
{
    // Answers 0 every other call: the reader asks again.
    auto stutter = makeReference<iotest::ScriptedInput>(asBytes("ab\ncd"), 2, true);
    auto reader = makeReference<BufferedReader>(makeReference<InputStreamReader>(stutter.get(), u"UTF-8").get());
    String line;
    ASSERT_TRUE(reader->readLine(line));
    EXPECT_EQ(u"ab", u16(line));
    ASSERT_TRUE(reader->readLine(line));
    EXPECT_EQ(u"cd", u16(line));

    // Answers 0 for ever: a failure instead of a hang.
    class Silent : public InputStream {
    public:
        using InputStream::read;
        int32_t read(signed char*, int32_t) override { return 0; }
    };
    auto silent = makeReference<InputStreamReader>(makeReference<Silent>().get());
    EXPECT_EQ("stream returned no data", ioFailure([&] { silent->read(); }));
}

// Converters never split a character over two calls; the reader and the
// writer must still hand out a pair one unit at a time and fill their byte
// buffer up to a character that straddles its end.
TEST(EncodingReaderWriterTest, PairsReadOneUnitAtATimeAndCharactersStraddlingTheByteBuffer)
{
    const std::u16string emoji = u"a\U0001F389b\U0001F600";
    const std::vector<signed char> bytes = encode(emoji, u"UTF-8");
    auto in = makeReference<ByteArrayInputStream>(bytes.data(), static_cast<int32_t>(bytes.size()));
    auto reader = makeReference<InputStreamReader>(in.get(), u"UTF-8");
    EXPECT_EQ(emoji, readAll(reader.get(), 1));

    // 8191 ASCII bytes leave one byte of the writer's buffer for a
    // three-byte character.
    std::u16string text(OutputStreamWriter::BYTE_BUFFER_SIZE - 1, u'x');
    text += u"\u20AC\U0001F389";
    const std::vector<signed char> written = encode(text, u"UTF-8");
    ASSERT_EQ(written.size(), text.size() - 3 + 3 + 4);
    EXPECT_EQ(std::string(written.end() - 7, written.end()), "\xE2\x82\xAC\xF0\x9F\x8E\x89");
}

namespace {

// What one write or close did: the bytes the stream holds after it, and
// the exception it threw (type and text), if any.
struct Step {
    std::string bytes;
    std::string failure;
    bool operator==(const Step& other) const { return bytes == other.bytes && failure == other.failure; }
};

template <class Operation>
Step stepOf(ByteArrayOutputStream& sink, Operation&& operation)
{
    Step step;
    try {
        operation();
    } catch (const Exception& e) {
        step.failure = std::string(typeid(e).name()) + ": " + e.getDescription().toUtf8();
    }
    step.bytes.assign(sink.getData(), sink.getData() + sink.size());
    return step;
}

} // namespace

// ASCII skips the UTF-8 encoder while it holds nothing; a writer whose
// encoder was handed out always uses it. Both must write the same bytes and
// fail the same way, wherever the writes split the text.
TEST(EncodingReaderWriterTest, AsciiShortcutWritesWhatTheUtf8EncoderWrites)
{
    std::mt19937 random(20240611);
    const std::u16string valid[] = {u"\u00e9", u"\u20ac", u"\U0001F600", u"\x7F", u"\x80"};
    const std::u16string lone[] = {u"\xD83D", u"\xDE00"};
    for (int round = 0; round < 300; ++round) {
        // Every third text holds lone surrogates; every tenth is longer than
        // the byte buffer.
        const bool faulty = round % 3 == 0;
        std::u16string text;
        while (text.size() < (round % 10 == 0 ? 20000u : 200u)) {
            text.append(random() % 60, static_cast<char16_t>(u' ' + random() % 95));
            text += faulty && random() % 4 == 0 ? lone[random() % 2] : valid[random() % 5];
        }
        auto directSink = makeReference<ByteArrayOutputStream>();
        auto direct = makeReference<OutputStreamWriter>(directSink.get(), u"UTF-8");
        auto encodedSink = makeReference<ByteArrayOutputStream>();
        auto encoded = makeReference<OutputStreamWriter>(encodedSink.get(), u"UTF-8");
        encoded->getEncoder();
        size_t at = 0;
        while (at < text.size()) {
            const size_t count = std::min<size_t>(text.size() - at, 1 + random() % 700);
            auto write = [&](OutputStreamWriter& writer) {
                writer.write(text.data() + at, static_cast<int32_t>(count));
                writer.flush();
            };
            const Step expected = stepOf(*encodedSink, [&] { write(*encoded); });
            ASSERT_TRUE(stepOf(*directSink, [&] { write(*direct); }) == expected)
                << "round " << round << ", units " << at << " to " << at + count << ": " << expected.failure;
            at += count;
        }
        const Step expected = stepOf(*encodedSink, [&] { encoded->close(); });
        ASSERT_TRUE(stepOf(*directSink, [&] { direct->close(); }) == expected) << "round " << round;
        if (!faulty) {
            EXPECT_EQ(expected.failure, "") << "round " << round;
            EXPECT_EQ(expected.bytes, String(text.data(), static_cast<int32_t>(text.size())).toUtf8())
                << "round " << round;
        }
    }
}
