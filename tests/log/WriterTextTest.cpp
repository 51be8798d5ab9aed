#include "AllocationSweep.h"
#include "LogTestSupport.h"

#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>
#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <climits>
#include <random>

using namespace qv;
using namespace qv::log;
using logtest::timeOf;

namespace {

// The compact form as exact decimal arithmetic gives it: the reference the
// integer arithmetic of toLog() must match for every field value.
std::string compactByBigDecimal(const STRUCT_QV_TIME& t)
{
    using math::BigInteger;
    const BigInteger hundred(100);
    BigInteger value(static_cast<int>(t.wYear));
    for (const uint16_t part : {t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond})
        value = value * hundred + BigInteger(static_cast<int>(part));
    value = value * BigInteger(1000) + BigInteger(static_cast<int>(t.wMilliseconds));
    return math::BigDecimal(value, 3).toString().toUtf8();
}

// A value whose text is its own, and which may fail once.
class CustomValue : public Object {
public:
    explicit CustomValue(bool failOnce = false) : m_failOnce(failOnce) {}
    String toString() override
    {
        if (m_failOnce) {
            m_failOnce = false;
            throw ResultException(static_cast<Result>(0x80004005));
        }
        return String(u"custom\u00e9");
    }

private:
    bool m_failOnce;
};

class ShoutingInteger : public Integer32 {
public:
    explicit ShoutingInteger(int32_t value) : Integer32(value) {}
    String toString() override { return String(u"INT:").append(Integer32::toString()); }
};

class ShoutingString : public String {
public:
    explicit ShoutingString(const char16_t* text) : String(text) {}
    String toString() override { return String(u"STR:").append(String(*this)); }
};

// An entry that shows only names and lookups, so that writers walk it
// through ILogEntry's own visitFields().
class LookupOnlyEntry : public logtest::ObjectWith<ILogEntry> {
public:
    explicit LookupOnlyEntry(const ILogEntry* inner) : m_inner(inner) {}

    void setField(const String&, const Object*) override { throw IllegalStateException(); }
    Reference<const Object> getField(const String& name) const override { return m_inner->getField(name); }
    bool hasField(const String& name) const override { return m_inner->hasField(name); }
    Reference<const collections::Set<String>> getFieldNames() const override { return m_inner->getFieldNames(); }

private:
    Reference<const ILogEntry> m_inner;
};

// What a writer made of the entry: the UTF-16 text it wrote, the UTF-8
// file it wrote, or the exception either gave.
struct Written {
    std::u16string text;
    std::string file;
    std::string failure;
    bool operator==(const Written& other) const
    {
        return text == other.text && file == other.file && failure == other.failure;
    }
};

template <class LogWriter>
Written writeWith(const ILogEntry* entry, const std::string& path)
{
    Written result;
    Reference<io::StringWriter> out(new io::StringWriter());
    LogWriter::create(out.get())->process(entry);
    const String text = out->toString();
    result.text.assign(text.getData(), static_cast<size_t>(text.getLength()));
    try {
        Reference<io::FileWriter> file(new io::FileWriter(String(path.c_str()), false, u"UTF-8"));
        Reference<ILogProcessor> writer = LogWriter::create(file.get());
        writer->process(entry);
        writer->process(entry);
    } catch (const Exception& e) {
        result.failure = std::string(typeid(e).name()) + ": " + e.getDescription().toUtf8();
    }
    result.file = logtest::readFile(path);
    return result;
}

} // namespace

TEST(LogWriterTest, InPlaceWalkWritesWhatNamesAndLookupsWrite)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("walk.log");
    Reference<Logger> logger = Logger::create(String(u"n\u00e4me \U0001F600"));
    for (const char16_t* key : {u"sequence", u"thread", u"name", u"timestamp", u"level", u"text"})
        logger->enableField(String(key), true);
    Reference<logtest::CollectingProcessor> entries(new logtest::CollectingProcessor());
    logger->addProcessor(entries.get());
    // Each text, and whether UTF-8 can hold it.
    const std::pair<std::u16string, bool> texts[] = {
        {u"plain ASCII text of some length, long enough for the vector blocks: 0123456789", true},
        {u"gr\u00fc\u00dfe \u20ac \u4e2d\u6587 \U0001F600\U0001F4A9 end", true},
        {u"lone high \xD83D then text", false},
        {u"lone low \xDE00", false},
        {u"ends high \xD83D", false},
        {u"", true},
        {std::u16string(u"nul\0inside", 11), true},
    };
    Reference<String> emptyText(new String());
    Reference<String> markup(new String(u"<b>&amp;</b>"));
    for (const auto& [text, encodable] : texts) {
        logger->log(-7, String(text.data(), static_cast<int32_t>(text.size())));
        Reference<ILogEntry> entry(const_cast<ILogEntry*>(entries->entries().back().get()));
        entry->setField(String(u"empty"), emptyText.get());
        entry->setField(String(u"null"), nullptr);
        entry->setField(String(u"tag with space"), markup.get());
        Reference<LookupOnlyEntry> general(new LookupOnlyEntry(entry.get()));
        ASSERT_EQ(logtest::names(entry.get()).size(), 9u);

        const Written basicInPlace = writeWith<BasicLogWriter>(entry.get(), path);
        const Written basicGeneral = writeWith<BasicLogWriter>(general.get(), path);
        EXPECT_TRUE(basicInPlace == basicGeneral) << basicInPlace.file << "\nagainst\n" << basicGeneral.file;
        EXPECT_NE(basicInPlace.text.find(u"empty=\n"), std::u16string::npos);
        EXPECT_NE(basicInPlace.text.find(u"null=\n"), std::u16string::npos);
        const Written xmlInPlace = writeWith<XmlLogWriter>(entry.get(), path);
        const Written xmlGeneral = writeWith<XmlLogWriter>(general.get(), path);
        EXPECT_TRUE(xmlInPlace == xmlGeneral) << xmlInPlace.file << "\nagainst\n" << xmlGeneral.file;
        // A lone surrogate cannot be encoded: the file writer's failure shows
        // the same way on both paths, and nothing else fails.
        EXPECT_EQ(basicInPlace.failure.empty(), encodable) << basicInPlace.failure;
        EXPECT_EQ(xmlInPlace.failure.empty(), encodable) << xmlInPlace.failure;
    }
}

// An entry class derived from LogEntry that answers lookups its own way: the
// writers must write what its getField() gives, not what its storage holds.
TEST(LogWriterTest, DerivedEntryIsWrittenThroughItsOwnLookups)
{
    class MaskingEntry final : public LogEntry {
    public:
        Reference<const Object> getField(const String& name) const override
        {
            if (name == String(u"text"))
                return Reference<const Object>(new String(u"***"));
            return LogEntry::getField(name);
        }
    };
    Reference<MaskingEntry> entry(new MaskingEntry());
    Reference<String> secret(new String(u"secret"));
    Reference<Integer32> level(new Integer32(4));
    entry->setField(String(u"text"), secret.get());
    entry->setField(String(u"level"), level.get());
    for (const bool xml : {false, true}) {
        Reference<io::StringWriter> out(new io::StringWriter());
        Reference<ILogProcessor> writer = xml ? XmlLogWriter::create(out.get()) : BasicLogWriter::create(out.get());
        writer->process(entry.get());
        const std::string written = out->toString().toUtf8();
        EXPECT_EQ(written.find("secret"), std::string::npos) << written;
        EXPECT_NE(written.find("***"), std::string::npos) << written;
        EXPECT_NE(written.find('4'), std::string::npos) << written;
    }
}

// The XML writer closes its document when dropped; dropped while its own
// failure unwinds the stack, it must not throw a second one (which would end
// the process).
TEST(LogWriterTest, XmlWriterDroppedWhileItsFailureUnwindsKeepsThatFailure)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("unwind.xml");
    Reference<io::FileWriter> file(new io::FileWriter(String(path.c_str()), false, u"UTF-8"));
    Reference<LogEntry> entry = LogEntry::create();
    Reference<String> lone(new String(u"before \xD83D after", 14));
    entry->setField(String(u"text"), lone.get());
    bool caught = false;
    try {
        Reference<ILogProcessor> writer = XmlLogWriter::create(file.get());
        writer->process(entry.get());
    } catch (const text::charset::InvalidCharacterException&) {
        caught = true;
    }
    EXPECT_TRUE(caught);
}

TEST(TimeStampTest, CompactFormMatchesExactDecimalForAnyFieldValues)
{
    const uint16_t edges[] = {0, 1, 9, 10, 99, 100, 999, 1000, 9999, 10000, 32767, 32768, 65535};
    for (const uint16_t a : edges) {
        for (const uint16_t b : edges) {
            const STRUCT_QV_TIME times[] = {timeOf(a, b, a, b, a, b, a), timeOf(b, a, b, a, b, a, b),
                                            timeOf(a, 0, 0, 0, 0, 0, b), timeOf(0, 0, 0, 0, 0, a, b)};
            for (const STRUCT_QV_TIME& t : times)
                ASSERT_EQ(TimeStamp(t).toLog().toUtf8(), compactByBigDecimal(t))
                    << t.wYear << " " << t.wMonth << " " << t.wSecond << " " << t.wMilliseconds;
        }
    }
    std::mt19937 random(20140305);
    std::uniform_int_distribution<int> any(0, 65535);
    std::uniform_int_distribution<int> small(0, 120);
    for (int i = 0; i < 20000; ++i) {
        const bool wild = i % 2 == 0;
        auto pick = [&] { return static_cast<uint16_t>(wild ? any(random) : small(random)); };
        const STRUCT_QV_TIME t = timeOf(pick(), pick(), pick(), pick(), pick(), pick(), pick());
        ASSERT_EQ(TimeStamp(t).toLog().toUtf8(), compactByBigDecimal(t)) << "case " << i;
    }
}

TEST(LogWriterTest, ValuesWrittenAsTheirToStringWithoutTheString)
{
    Reference<LogEntry> entry = LogEntry::create();
    const char16_t textWithNul[] = u"a\0b \u00e9\U0001F600";
    Reference<String> text(new String(textWithNul, 8));
    Reference<Integer32> lowest(new Integer32(INT32_MIN)), highest(new Integer32(INT32_MAX)),
        minusOne(new Integer32(-1)), zero(new Integer32(0));
    Reference<Integer64> wide(new Integer64(INT64_MIN));
    Reference<ShoutingInteger> derivedInteger(new ShoutingInteger(7));
    Reference<ShoutingString> derivedText(new ShoutingString(u"x"));
    Reference<CustomValue> custom(new CustomValue());
    Reference<TimeStamp> when(new TimeStamp(timeOf(2014, 3, 5, 7, 8, 9, 10)));
    const std::pair<const char16_t*, const Object*> fields[] = {{u"text", text.get()},
                                                                {u"lowest", lowest.get()},
                                                                {u"highest", highest.get()},
                                                                {u"minus one", minusOne.get()},
                                                                {u"zero", zero.get()},
                                                                {u"wide", wide.get()},
                                                                {u"derived", derivedInteger.get()},
                                                                {u"derived text", derivedText.get()},
                                                                {u"custom", custom.get()},
                                                                {u"timestamp", when.get()},
                                                                {u"empty", nullptr}};
    for (const auto& f : fields)
        entry->setField(String(f.first), f.second);
    entry->setField(String(u"nul\0in name", 11), text.get());

    // The texts as the String-building writers made them: toString() of
    // every value, String::format for the XML line.
    String basic, xml(u"  <entry>\n");
    const Reference<const collections::Set<String>> names = entry->getFieldNames();
    for (const String& name : *names) {
        const Reference<const Object> value = entry->getField(name);
        const String valueText = value ? value->toString() : String();
        basic += name;
        basic += u"=";
        basic += valueText;
        basic += u"\n";
        const int32_t space = name.indexOf(u' ');
        String line;
        line.format(String(u"    <{0}> {1} </{2}>"), name, valueText, space < 0 ? name : name.substring(0, space));
        xml += line;
        xml += u"\n";
    }
    basic += u"-------------------------\n";
    xml += u"  </entry>\n</log>\n";

    Reference<io::StringWriter> basicOut(new io::StringWriter()), xmlOut(new io::StringWriter());
    BasicLogWriter::create(basicOut.get())->process(entry.get());
    XmlLogWriter::create(xmlOut.get())->process(entry.get());
    EXPECT_TRUE(basicOut->toString().equals(basic)) << basicOut->toString().toUtf8();
    const String xmlText = xmlOut->toString();
    const int32_t start = xmlText.indexOf(String(u"  <entry>"));
    ASSERT_GE(start, 0);
    EXPECT_TRUE(xmlText.substring(start).equals(xml)) << xmlText.toUtf8() << "\nexpected:\n" << xml.toUtf8();
    EXPECT_NE(basic.toUtf8().find("lowest=-2147483648\n"), std::string::npos);
    EXPECT_NE(basic.toUtf8().find("derived=INT:7\n"), std::string::npos);
    EXPECT_NE(basic.toUtf8().find("derived text=STR:x\n"), std::string::npos);
}

TEST(LogWriterTest, EachEntryStartsCleanAfterAFailureOrAHugeOne)
{
    Reference<io::StringWriter> out(new io::StringWriter());
    Reference<ILogProcessor> writer = BasicLogWriter::create(out.get());
    Reference<LogEntry> failing = LogEntry::create();
    Reference<String> before(new String(u"written before the failure"));
    Reference<CustomValue> fails(new CustomValue(true));
    for (const char16_t* name : {u"a", u"c", u"d", u"e"})
        failing->setField(String(name), before.get());
    failing->setField(String(u"b"), fails.get());
    // Text is collected before the failing value, so the next entry must not
    // find it left over.
    ASSERT_NE(logtest::names(failing.get()).front(), "b");
    EXPECT_THROW(writer->process(failing.get()), ResultException);
    EXPECT_EQ(out->toString().getLength(), 0);

    Reference<LogEntry> huge = LogEntry::create();
    Reference<String> big(new String(std::string(300000, 'x').c_str()));
    huge->setField(String(u"text"), big.get());
    writer->process(huge.get());
    Reference<LogEntry> small = LogEntry::create();
    Reference<String> hi(new String(u"hi"));
    small->setField(String(u"text"), hi.get());
    writer->process(small.get());
    writer->process(failing.get());

    const std::string all = out->toString().toUtf8();
    const std::string rule = "-------------------------\n";
    const std::string expected = "text=" + std::string(300000, 'x') + "\n" + rule + "text=hi\n" + rule;
    ASSERT_GE(all.size(), expected.size());
    EXPECT_EQ(all.substr(0, expected.size()), expected);
    EXPECT_NE(all.find("written before the failure", expected.size()), std::string::npos);
    EXPECT_NE(all.find("custom\xc3\xa9", expected.size()), std::string::npos);
}

// Each failed attempt must leave the file as it was: the entry's text is
// complete before any of it goes to the file.
TEST(LogWriterTest, AllocationSweepIntoAFileWritesWholeEntriesOnly)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    logtest::TempDirectory dir;
    const std::string path = dir.file("sweep.log");
    Reference<io::FileWriter> file(new io::FileWriter(String(path.c_str()), false, u"UTF-8"));
    Reference<ILogProcessor> writer = BasicLogWriter::create(file.get());
    Reference<LogEntry> entry = LogEntry::create();
    Reference<String> text(new String(u"gr\u00fc\u00dfe"));
    Reference<Integer32> level(new Integer32(-3));
    entry->setField(String(u"text"), text.get());
    entry->setField(String(u"level"), level.get());
    std::string before;
    EXPECT_GT(qvtest::sweepAllocations([&] { writer->process(entry.get()); },
                                       [&] { EXPECT_EQ(logtest::readFile(path), before); }),
              0);
    const std::string one = logtest::readFile(path);
    EXPECT_NE(one.find("text=gr\xc3\xbc\xc3\x9f"
                       "e\n"),
              std::string::npos)
        << one;
    EXPECT_NE(one.find("level=-3\n"), std::string::npos) << one;
    before = one;
    // Once its buffers have grown, the writer allocates nothing per entry.
    EXPECT_EQ(qvtest::sweepAllocations([&] { writer->process(entry.get()); },
                                       [&] { EXPECT_EQ(logtest::readFile(path), before); }),
              0);
    EXPECT_EQ(logtest::readFile(path), one + one);
}
