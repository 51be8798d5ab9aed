#include "AllocationSweep.h"
#include "LogTestSupport.h"
#include "Thrown.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <ctime>
#include <map>
#include <set>
#include <thread>

using namespace qv;
using namespace qv::log;
using logtest::field;
using logtest::names;

namespace {

Reference<logtest::CollectingProcessor> attach(Logger& logger)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    logger.addProcessor(sink.get());
    return sink;
}

std::vector<std::string> keyOrder(collections::StringHashMap& map)
{
    std::vector<std::string> order;
    auto it = map.createIterator();
    while (it.hasNext())
        order.push_back(it.next().getKey().toUtf8());
    return order;
}

} // namespace

TEST(LoggerTest, DefaultFieldsOfBothConstructors)
{
    Reference<Logger> plain = Logger::create();
    auto sink = attach(*plain);
    plain->log(3, u"hello");
    ASSERT_EQ(sink->count(), 1u);
    const ILogEntry* entry = sink->entries()[0].get();
    EXPECT_EQ(logtest::fields(entry), (logtest::Fields{{"level", "3"}, {"text", "hello"}}));
    EXPECT_NE(dynamic_cast<const Integer32*>(entry->getField(u"level").get()), nullptr);

    Reference<Logger> named = Logger::create(u"net");
    auto namedSink = attach(*named);
    named->log(1, u"up");
    EXPECT_EQ(logtest::fields(namedSink->entries()[0].get()),
              (logtest::Fields{{"level", "1"}, {"name", "net"}, {"text", "up"}}));
}

// Each standard value is held once, by its entry: counted more, it would
// outlive the entry; counted less, the entry would hold a freed object.
TEST(LoggerTest, EveryStandardValueIsHeldByItsEntryAlone)
{
    Reference<Logger> logger = Logger::create(u"counted");
    for (const char16_t* key : {u"sequence", u"thread", u"timestamp"})
        logger->enableField(key, true);
    auto sink = attach(*logger);
    logger->log(2, u"once");
    ASSERT_EQ(sink->count(), 1u);
    const ILogEntry* entry = sink->entries()[0].get();
    ASSERT_EQ(names(entry).size(), 6u);
    for (const char16_t* key : {u"level", u"text", u"sequence", u"thread", u"timestamp", u"name"}) {
        Reference<const Object> value = entry->getField(key);
        ASSERT_TRUE(value) << String(key).toUtf8();
        EXPECT_EQ(value->GetRefCount(), 2) << String(key).toUtf8() << ": the entry's and this one";
    }
}

TEST(LoggerTest, DefaultLevelAndNoFiltering)
{
    Logger logger;
    auto sink = attach(logger);
    logger.log(u"zero");
    logger.setDefaultLevel(7);
    logger.log(u"x");
    logger.log(-5, u"low");
    logger.log(1000, u"high");
    // The last through the ILogger face.
    static_cast<ILogger&>(logger).log(u"face");
    EXPECT_EQ(sink->values(u"level"), (std::vector<std::string>{"0", "7", "-5", "1000", "7"}));
}

TEST(LoggerTest, NarrowTextFormsMatchTheWideOnes)
{
    Logger logger("net");
    auto sink = attach(logger);
    logger.enableField("SEQUENCE", true);
    logger.setDefaultLevel(4);
    logger.log("x");
    logger.log(2, "y");
    EXPECT_EQ(sink->values(u"name"), (std::vector<std::string>{"net", "net"}));
    EXPECT_EQ(sink->values(u"level"), (std::vector<std::string>{"4", "2"}));
    EXPECT_EQ(sink->values(u"text"), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(sink->values(u"sequence"), (std::vector<std::string>{"0", "1"}));
    EXPECT_FALSE(Logger::createProcessor("anything"));
}

TEST(LoggerTest, SequenceCountsEveryBuiltEntryButNotDisabledCalls)
{
    Logger logger;
    auto sink = attach(logger);
    logger.log(0, u"a");
    logger.log(0, u"b");
    logger.enableField(u"sequence", true);
    logger.log(0, u"c");
    logger.setEnabled(false);
    logger.log(0, u"dropped");
    logger.log(0, u"dropped too");
    logger.setEnabled(true);
    logger.log(0, u"d");
    EXPECT_EQ(sink->values(u"sequence"), (std::vector<std::string>{"<absent>", "<absent>", "2", "3"}));

    Logger fresh;
    auto freshSink = attach(fresh);
    fresh.enableField(u"sequence", true);
    for (int i = 0; i < 3; ++i)
        fresh.log(0, u"n");
    EXPECT_EQ(freshSink->values(u"sequence"), logtest::numbered("", 0, 3));
}

TEST(LoggerTest, EnableFieldIgnoresCaseAndUnknownKeys)
{
    Logger logger(u"svc");
    auto sink = attach(logger);
    logger.enableField(u"severity", true);
    logger.enableField(u"", true);
    logger.log(0, u"a");
    EXPECT_EQ(logtest::fields(sink->entries()[0].get()),
              (logtest::Fields{{"level", "0"}, {"name", "svc"}, {"text", "a"}}));

    logger.enableField(u"TIMESTAMP", true);
    logger.enableField(u"Thread", true);
    logger.enableField(u"name", false);
    logger.enableField(u"Text", false);
    logger.log(0, u"b");
    const ILogEntry* entry = sink->entries()[1].get();
    logtest::Fields all = logtest::fields(entry);
    EXPECT_EQ(all.erase("timestamp"), 1u);
    EXPECT_EQ(all, (logtest::Fields{{"level", "0"}, {"thread", std::to_string(exec::Thread::getCurrentID())}}));
    EXPECT_NE(dynamic_cast<const TimeStamp*>(entry->getField(u"timestamp").get()), nullptr);
    EXPECT_NE(dynamic_cast<const UInteger32*>(entry->getField(u"thread").get()), nullptr);
}

TEST(LoggerTest, ProcessorsInOrderSetProcessorReplacesAndFactoryIsEmpty)
{
    EXPECT_FALSE(Logger::createProcessor(u"anything"));
    EXPECT_FALSE(Logger::createProcessor(u""));

    Logger nowhere;
    EXPECT_NO_THROW(nowhere.log(1, u"to no processor"));

    Logger logger;
    auto first = attach(logger);
    auto second = attach(logger);
    logger.log(0, u"both");
    ASSERT_EQ(second->count(), 1u);
    EXPECT_EQ(first->entries(), second->entries());

    Reference<logtest::CollectingProcessor> only(new logtest::CollectingProcessor());
    logger.setProcessor(only.get());
    logger.log(0, u"only");
    EXPECT_EQ(first->count(), 1u);
    EXPECT_EQ(second->count(), 1u);
    EXPECT_EQ(only->count(), 1u);
}

namespace {

class HostLogger : public Logger {
public:
    int calls = 0;
    bool fail = false;

protected:
    void addCustomFields(ILogEntry* entry) override
    {
        ++calls;
        if (fail)
            throw IllegalStateException();
        Reference<String> host(new String(u"box1"));
        entry->setField(u"host", host.get());
    }
};

} // namespace

TEST(LoggerTest, CustomFieldsHookRunsForEveryEntry)
{
    HostLogger logger;
    auto sink = attach(logger);
    logger.enableField(u"host", false); // no switch: changes nothing
    logger.enableField(u"sequence", true);
    logger.log(0, u"a");
    // An entry whose building fails is not counted.
    logger.fail = true;
    EXPECT_THROW(logger.log(0, u"lost"), IllegalStateException);
    logger.fail = false;
    logger.log(0, u"b");
    EXPECT_EQ(logger.calls, 3);
    EXPECT_EQ(sink->values(u"host"), (std::vector<std::string>{"box1", "box1"}));
    EXPECT_EQ(sink->values(u"sequence"), (std::vector<std::string>{"0", "1"}));
}

namespace {

// Records what reaches the level face: a text-only call must come through it.
class LevelRecordingLogger : public Logger {
public:
    using Logger::log;
    LevelRecordingLogger() : Logger(String(u"order")) {}
    std::vector<int> levels;
    void log(int level, const String& text) override
    {
        levels.push_back(level);
        Logger::log(level, text);
    }
};

} // namespace

TEST(LoggerTest, TextOnlyCallsGoThroughTheLevelFaceAndFieldsComeInTheMapOrder)
{
    LevelRecordingLogger logger;
    auto sink = attach(logger);
    logger.setDefaultLevel(4);
    logger.log(u"plain");
    static_cast<ILogger&>(logger).log(u"face");
    EXPECT_EQ(logger.levels, (std::vector<int>{4, 4}));

    // Every standard field on: the names come as a StringHashMap of the same
    // size hands them out.
    for (const char16_t* key : {u"sequence", u"thread", u"timestamp"})
        logger.enableField(key, true);
    logger.log(1, u"all");
    collections::StringHashMap reference(101, 0.75f);
    Reference<String> value(new String(u"v"));
    for (const char16_t* key : {u"level", u"text", u"sequence", u"thread", u"timestamp", u"name"})
        reference.put(String(key), value->GetUnknown());
    ASSERT_EQ(sink->count(), 3u);
    EXPECT_EQ(names(sink->entries()[2].get()), keyOrder(reference));
    EXPECT_EQ(field(sink->entries()[2].get(), u"sequence"), "2");
}

TEST(LoggerTest, ClockFailurePropagatesFromLog)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Logger logger;
    auto sink = attach(logger);
    logger.enableField(u"timestamp", true);
    logger.enableField(u"sequence", true);
    ASSERT_EQ(QVFaultArm("QVTimeGetLocal", 1, static_cast<QVRESULT>(0x80004005)), 0);
    EXPECT_EQ(static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] { logger.log(0, u"x"); })), 0x80004005u);
    QVFaultDisarmAll();
    EXPECT_EQ(sink->count(), 0u);
    logger.log(0, u"y");
    EXPECT_EQ(sink->values(u"sequence"), std::vector<std::string>{"0"});
}

TEST(LoggerTest, AllocationFailureInLogLeavesLoggerUsable)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Logger logger(u"sweep");
    logger.enableField(u"sequence", true);
    logger.enableField(u"timestamp", true);
    auto sink = attach(logger);
    int failures = qvtest::sweepAllocations([&] { logger.log(1, u"swept"); });
    EXPECT_GT(failures, 0);
    logger.log(1, u"after");
    auto entries = sink->entries();
    ASSERT_GE(entries.size(), 2u);
    EXPECT_EQ(field(entries.back().get(), u"text"), "after");
}

TEST(LogEntryTest, NativeAndComponentFaces)
{
    Reference<LogEntry> entry = LogEntry::create();
    EXPECT_EQ(entry->getFieldNames()->size(), 0);
    Reference<Integer32> one(new Integer32(1));
    Reference<Integer32> two(new Integer32(2));
    entry->setField(u"n", one.get());
    entry->setField(u"n", two.get());
    EXPECT_EQ(field(entry.get(), u"n"), "2");
    EXPECT_EQ(one->GetRefCount(), 1);
    EXPECT_TRUE(entry->hasField(u"n"));
    EXPECT_FALSE(entry->hasField(u"N"));
    EXPECT_FALSE(entry->getField(u"missing"));

    qv::log::qvcom::ILogEntry* face = entry.get();
    EXPECT_EQ(face->HasField(u"n"), 0);
    EXPECT_EQ(face->HasField(u"missing"), 1);
    EXPECT_EQ(face->HasField(static_cast<const char16_t*>(nullptr)), results::POINTER);

    Reference<String> text(new String(u"via face"));
    EXPECT_EQ(face->SetField(u"t", text->GetUnknown()), 0);
    EXPECT_EQ(field(entry.get(), u"t"), "via face");

    void* out = nullptr;
    EXPECT_EQ(face->GetField(u"t", IQVComparable::iid, &out), 0);
    ASSERT_NE(out, nullptr);
    static_cast<IQVComparable*>(out)->Release();
    EXPECT_EQ(face->GetField(u"nope", IQVComparable::iid, &out), 1);
    EXPECT_EQ(out, nullptr);
    const GUID unknownIid = {0x12345678, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(face->GetField(u"t", unknownIid, &out), results::NOINTERFACE);

    void* asComponent = nullptr;
    ASSERT_EQ(static_cast<ILogEntry*>(entry.get())->QueryInterface(qv::log::qvcom::ILogEntry::iid, &asComponent), 0);
    EXPECT_EQ(asComponent, static_cast<void*>(face));
    face->Release();
}

TEST(LogEntryTest, NamesComeInTheMapOrderAndTheIteratorAgrees)
{
    Reference<LogEntry> entry = LogEntry::create();
    collections::StringHashMap reference(101, 0.75f);
    const char16_t* keys[] = {u"timestamp", u"text", u"level", u"sequence", u"name", u"thread", u"zeta"};
    Reference<String> value(new String(u"v"));
    for (const char16_t* key : keys) {
        entry->setField(key, value.get());
        reference.put(String(key), value->GetUnknown());
    }
    const std::vector<std::string> expected = keyOrder(reference);
    EXPECT_EQ(names(entry.get()), expected);

    qv::log::qvcom::IFieldIterator* raw = nullptr;
    ASSERT_EQ(entry->GetFieldIterator(&raw), 0);
    Reference<qv::log::qvcom::IFieldIterator> walk;
    walk.attach(raw);
    std::vector<std::string> walked;
    const char16_t* name = nullptr;
    int32_t length = 0;
    while (walk->HasNext() == 0) {
        ASSERT_EQ(walk->Next(&name, &length), 0);
        walked.push_back(String(name, length).toUtf8());
    }
    EXPECT_EQ(walk->Next(&name, &length), 1);
    EXPECT_EQ(walked, expected);
    walk->Reset();
    EXPECT_EQ(walk->HasNext(), 0);

    // Many names, some set twice, shared buckets, and the map's growth past
    // 75 entries: the order stays the map's at every size.
    Reference<LogEntry> many = LogEntry::create();
    collections::StringHashMap manyReference(101, 0.75f);
    for (int i = 0; i < 240; ++i) {
        const String key = String(u"f").append(String::valueOf(i % 3 == 2 ? i / 2 : i));
        many->setField(key, value.get());
        manyReference.put(key, value->GetUnknown());
        ASSERT_EQ(names(many.get()), keyOrder(manyReference)) << "after " << i + 1 << " puts";
    }
    EXPECT_TRUE(many->hasField(u"f10"));
    EXPECT_EQ(many->HasField(u"f238"), 0);
    EXPECT_EQ(many->HasField(u"nope"), 1);
}

namespace {

using WalkedField = std::pair<std::string, const Object*>;

template <class Visit>
class VisitorOf final : public ILogEntry::FieldVisitor {
public:
    explicit VisitorOf(Visit visit) : m_visit(visit) {}
    void visit(const String& name, const Object* value) override { m_visit(name, value); }

private:
    Visit m_visit;
};

template <class Visit>
void walk(const ILogEntry* entry, Visit visit)
{
    VisitorOf<Visit> visitor(visit);
    entry->visitFields(visitor);
}

std::vector<WalkedField> walked(const ILogEntry* entry)
{
    std::vector<WalkedField> fields;
    walk(entry, [&](const String& name, const Object* value) { fields.emplace_back(name.toUtf8(), value); });
    return fields;
}

std::vector<WalkedField> lookedUp(const ILogEntry* entry)
{
    std::vector<WalkedField> fields;
    const Reference<const collections::Set<String>> all = entry->getFieldNames();
    for (const String& name : *all)
        fields.emplace_back(name.toUtf8(), entry->getField(name).get());
    return fields;
}

// A value set through the component face that is not a qv::Object.
class BareUnknown : public IQVUnknown {
public:
    Result QueryInterface(const GUID& iid, void** out) override
    {
        if (iid != IQVUnknown::iid)
            return results::NOINTERFACE;
        AddRef();
        *out = this;
        return results::OK;
    }
    uint32_t AddRef() const override { return ++m_count; }
    uint32_t Release() const override { return --m_count; }

private:
    mutable uint32_t m_count = 1;
};

} // namespace

TEST(LogEntryTest, InPlaceWalkAgreesWithNamesAndLookupsAtEverySize)
{
    Reference<LogEntry> entry = LogEntry::create();
    EXPECT_TRUE(walked(entry.get()).empty());
    Reference<String> text(new String(u"v"));
    Reference<Integer32> number(new Integer32(5));
    BareUnknown bare;
    std::set<std::string> distinct;
    // Own names and repeated ones, nulls, values that are not Objects, the
    // move into the vector past six fields and into the map past 75.
    for (int i = 0; i < 240; ++i) {
        const String key = String(u"f").append(String::valueOf(i % 3 == 2 ? i / 2 : i));
        distinct.insert(key.toUtf8());
        switch (i % 4) {
        case 0: entry->setField(key, text.get()); break;
        case 1: entry->setField(key, nullptr); break;
        case 2: ASSERT_EQ(entry->SetField(key.getData(), &bare), 0); break;
        default: entry->setField(key, number.get()); break;
        }
        ASSERT_EQ(walked(entry.get()), lookedUp(entry.get())) << "after " << i + 1 << " puts";
    }
    EXPECT_EQ(walked(entry.get()).size(), distinct.size());
}

TEST(LogEntryTest, InPlaceWalkFailsFastWhenTheVisitorAddsAndPassesItsExceptionsOut)
{
    Reference<String> value(new String(u"v"));
    for (const int size : {3, 6, 7, 75, 76}) {
        Reference<LogEntry> entry = LogEntry::create();
        for (int i = 0; i < size; ++i)
            entry->setField(String(u"k").append(String::valueOf(i)), value.get());
        // Replacing a value is no structural change: the walk goes on.
        int seen = 0;
        walk(entry.get(), [&](const String& name, const Object*) {
            entry->setField(name, nullptr);
            ++seen;
        });
        EXPECT_EQ(seen, size);
        EXPECT_FALSE(entry->getField(String(u"k0")));
        // A new field may move the storage under the walk.
        int added = 0;
        EXPECT_THROW(walk(entry.get(),
                          [&](const String&, const Object*) {
                              entry->setField(String(u"new").append(String::valueOf(added++)), value.get());
                          }),
                     Exception)
            << size << " fields";
        EXPECT_EQ(added, 1) << size << " fields";
        EXPECT_EQ(walked(entry.get()), lookedUp(entry.get()));
        EXPECT_THROW(walk(entry.get(), [](const String&, const Object*) { throw IllegalStateException(); }),
                     IllegalStateException);
    }
}

TEST(LogEntryTest, ComponentFaceReportsAllocationFailureAsCode)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Reference<LogEntry> entry = LogEntry::create();
    Reference<String> value(new String(u"v"));
    int failures = 0;
    for (int n = 1; n < 100; ++n) {
        QVFaultArmAllocation(n);
        Result code = static_cast<qv::log::qvcom::ILogEntry*>(entry.get())->SetField(u"k", value->GetUnknown());
        QVFaultDisarmAll();
        if (code == 0)
            break;
        EXPECT_EQ(static_cast<uint32_t>(code), 0x8007000Eu);
        EXPECT_FALSE(entry->hasField(u"k"));
        ++failures;
    }
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(entry->hasField(u"k"));
}

namespace {

std::string localeForm(const STRUCT_QV_TIME& t, const char* format)
{
    tm broken{};
    broken.tm_year = t.wYear - 1900;
    broken.tm_mon = t.wMonth - 1;
    broken.tm_mday = t.wDay;
    broken.tm_wday = t.wDayOfWeek;
    broken.tm_hour = t.wHour;
    broken.tm_min = t.wMinute;
    broken.tm_sec = t.wSecond;
    broken.tm_isdst = -1;
    char buffer[200];
    size_t n = strftime(buffer, sizeof buffer, format, &broken);
    return std::string(buffer, n);
}

} // namespace

TEST(TimeStampTest, CompactFormAndConstructors)
{
    // Every field value against exact decimals is in WriterTextTest; these
    // pin the form itself, the year unpadded.
    EXPECT_EQ(TimeStamp(logtest::timeOf(2014, 3, 5, 7, 8, 9, 10)).toLog().toUtf8(), "20140305070809.010");
    EXPECT_EQ(TimeStamp(logtest::timeOf(999, 1, 2, 3, 4, 5, 6)).toLog().toUtf8(), "9990102030405.006");

    STRUCT_QV_TIME epoch{};
    ASSERT_EQ(QVTimeFromPosix(86400 * 365, 1, &epoch), 0);
    TimeStamp fromSeconds(86400L * 365);
    EXPECT_EQ(fromSeconds.toLog().toUtf8(), TimeStamp(epoch).toLog().toUtf8());
    // A plain int literal counts seconds too, never picks the bool form.
    EXPECT_EQ(TimeStamp(86400 * 365).toLog().toUtf8(), fromSeconds.toLog().toUtf8());

    TimeStamp utc(false);
    TimeStamp local;
    EXPECT_GE(utc.getTime().wYear, 2020);
    EXPECT_GE(local.getTime().wYear, 2020);
}

TEST(TimeStampTest, LocaleFormsFollowTheProcessLocale)
{
    STRUCT_QV_TIME t = logtest::timeOf(2014, 3, 5, 7, 8, 9, 10);
    t.wDayOfWeek = 3;
    TimeStamp stamp(t);
    EXPECT_EQ(stamp.toString().toUtf8(), localeForm(t, "%x") + " " + localeForm(t, "%X"));
    EXPECT_EQ(stamp.toString(false).toUtf8(), stamp.toString().toUtf8());
    const std::string longForm = stamp.toString(true).toUtf8();
    EXPECT_NE(longForm.find("2014"), std::string::npos);
    EXPECT_NE(longForm, stamp.toString(false).toUtf8());
    EXPECT_EQ(longForm.substr(longForm.size() - localeForm(t, "%X").size()), localeForm(t, "%X"));

    STRUCT_QV_TIME bad = t;
    bad.wMonth = 13;
    EXPECT_THROW(TimeStamp(bad).toString(), ResultException);
}

TEST(TimeStampTest, FormattingAndClockFailuresThrowTheirCodes)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    TimeStamp stamp(logtest::timeOf(2014, 3, 5, 7, 8, 9, 10));
    ASSERT_EQ(QVFaultArm("QVTimeFormat", 1, static_cast<QVRESULT>(0x80070008)), 0);
    EXPECT_EQ(static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] { (void)stamp.toString(true); })),
              0x80070008u);
    QVFaultDisarmAll();
    ASSERT_EQ(QVFaultArm("QVTimeGetSystem", 1, static_cast<QVRESULT>(0x80004005)), 0);
    EXPECT_THROW(TimeStamp(false), ResultException);
    QVFaultDisarmAll();
    ASSERT_EQ(QVFaultArm("QVTimeFromPosix", 1, static_cast<QVRESULT>(0x80070057)), 0);
    EXPECT_THROW(TimeStamp(0L), ResultException);
    QVFaultDisarmAll();
}

namespace {

class ThrowingLevelLogger : public logtest::ObjectWith<ILevelLogger> {
public:
    void log(int, const String&) override { throw ResultException(static_cast<Result>(0x80004005)); }
};

class MapBundle : public i18n::StringBundle {
public:
    std::map<std::u16string, std::u16string> texts;
    String getString(const String& key) const override
    {
        auto it = texts.find(key.toU16String());
        if (it == texts.end())
            throw i18n::MissingResourceException(getBundleName(), key);
        return String(it->second.c_str());
    }
    String getBundleName() const override { return String(u"test"); }
};

std::string fill(const char16_t* text, std::initializer_list<const char16_t*> args)
{
    collections::List<Object> list;
    for (const char16_t* arg : args)
        list.add(Reference<Object>(new String(arg)));
    return StringBundleLogger::fillArguments(String(text), list).toUtf8();
}

} // namespace

TEST(SyncLoggerTest, ThreadSeesLockReleasedAfterTargetThrew)
{
    Reference<ThrowingLevelLogger> target(new ThrowingLevelLogger());
    Reference<SyncLogger> sync = SyncLogger::create(target.get());
    EXPECT_THROW(sync->log(1, u"x"), ResultException);
    bool threw = false;
    std::thread other([&] {
        try {
            sync->log(1, u"y");
        } catch (const ResultException&) {
            threw = true;
        }
    });
    other.join();
    EXPECT_TRUE(threw);
    EXPECT_THROW(SyncLogger(nullptr), ResultException);
}

TEST(SyncLoggerTest, ConcurrentCallersGetOneSequenceNumberEach)
{
    Reference<Logger> logger = Logger::create();
    logger->enableField(u"sequence", true);
    auto sink = attach(*logger);
    Reference<SyncLogger> sync = SyncLogger::create(logger.get());
    const int threads = 4, perThread = 500;
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&] {
            for (int i = 0; i < perThread; ++i)
                sync->log(1, u"m");
        });
    for (auto& w : workers)
        w.join();
    EXPECT_EQ(sink->values(u"sequence"), logtest::numbered("", 0, threads * perThread));
}

TEST(StringBundleLoggerTest, ArgumentFilling)
{
    EXPECT_EQ(fill(u"{0}+{1}", {u"a", u"b"}), "a+b");
    EXPECT_EQ(fill(u"{1}{0}", {u"a", u"b"}), "ba");
    EXPECT_EQ(fill(u"{0}{0}", {u"x"}), "xx");
    EXPECT_EQ(fill(u"{0} {1}", {u"a"}), "{0} {1}");
    EXPECT_EQ(fill(u"{0} {2}", {u"a", u"b", u"c"}), "a {2}");
    EXPECT_EQ(fill(u"{0}-{1}", {u"{1}", u"b"}), "{1}-b");
    EXPECT_EQ(fill(u"{1}-{0}", {u"x{0}", u"{0}y"}), "{0}y-x{0}");
    EXPECT_EQ(fill(u"no markers", {u"a"}), "no markers");
    EXPECT_EQ(fill(u"{0}", {}), "{0}");
    EXPECT_EQ(fill(u"", {}), "");
    EXPECT_EQ(fill(u"{10}{0}", {u"a"}), "{10}a");

    collections::List<Object> withNumber;
    withNumber.add(Reference<Object>(new Integer32(42)));
    withNumber.add(Reference<Object>());
    EXPECT_EQ(StringBundleLogger::fillArguments(u"n={0} [{1}]", withNumber).toUtf8(), "n=42 []");
}

TEST(StringBundleLoggerTest, LooksUpKeysAndPassesMissingKeysOn)
{
    Reference<MapBundle> bundle(new MapBundle());
    bundle->texts[u"disk.full"] = u"disk {0} is {1}% full";
    bundle->texts[u"hello"] = u"hello";
    Reference<Logger> logger = Logger::create();
    auto sink = attach(*logger);
    Reference<StringBundleLogger> messages = StringBundleLogger::create(bundle.get(), logger.get());
    messages->log(2, u"hello");
    collections::List<Object> args;
    args.add(Reference<Object>(new String(u"/var")));
    args.add(Reference<Object>(new Integer32(97)));
    messages->log(4, u"disk.full", args);
    EXPECT_THROW(messages->log(1, u"absent"), i18n::MissingResourceException);
    EXPECT_THROW(messages->log(1, u"absent", args), i18n::MissingResourceException);
    EXPECT_EQ(sink->values(u"text"), (std::vector<std::string>{"hello", "disk /var is 97% full"}));
    EXPECT_EQ(sink->values(u"level"), (std::vector<std::string>{"2", "4"}));
}

TEST(CollectionsValueTest, SetKeepsInsertionOrderAndListIndexes)
{
    collections::Set<String> set;
    EXPECT_TRUE(set.add(String(u"b")));
    EXPECT_TRUE(set.add(String(u"a")));
    EXPECT_FALSE(set.add(String(u"b")));
    EXPECT_EQ(set.size(), 2);
    EXPECT_TRUE(set.contains(String(u"a")));
    EXPECT_FALSE(set.contains(String(u"c")));
    EXPECT_EQ(set[0].toUtf8(), "b");
    EXPECT_THROW(set.get(2), ResultException);
    auto it = set.iterator();
    EXPECT_EQ(it.next().toUtf8(), "b");
    EXPECT_EQ(it.next().toUtf8(), "a");
    EXPECT_FALSE(it.hasNext());
    EXPECT_THROW(it.next(), ResultException);

    collections::List<Object> list;
    list.add(Reference<Object>(new Integer32(5)));
    EXPECT_EQ(list.size(), 1);
    EXPECT_EQ(list[0]->toString().toUtf8(), "5");
    EXPECT_THROW(list.get(-1), ResultException);
}
