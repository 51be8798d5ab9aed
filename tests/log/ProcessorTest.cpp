#include "AllocationSweep.h"
#include "LogTestSupport.h"
#include "Thrown.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <unistd.h>

using namespace qv;
using namespace qv::log;
using logtest::field;
using logtest::readFile;
using logtest::waitFor;

namespace {

Reference<LogEntry> entryWith(std::initializer_list<std::pair<const char16_t*, const char16_t*>> fields)
{
    Reference<LogEntry> entry = LogEntry::create();
    for (const auto& f : fields) {
        Reference<String> value(new String(f.second));
        entry->setField(f.first, value.get());
    }
    return entry;
}

class ThrowingWriter : public io::Writer {
public:
    using io::Writer::write;
    void write(const char16_t*, int32_t) override { throw ResultException(static_cast<Result>(0x80070070)); }
};

// A processor that fails on entries whose text is "boom".
class FailingProcessor : public logtest::CollectingProcessor {
public:
    void process(const ILogEntry* entry) override
    {
        if (field(entry, u"text") == "boom")
            throw ResultException(static_cast<Result>(0x80004005));
        CollectingProcessor::process(entry);
    }
};

} // namespace

TEST(LogWriterTest, BasicWriterFormat)
{
    Reference<io::StringWriter> out(new io::StringWriter());
    Reference<ILogProcessor> writer = BasicLogWriter::create(out.get());
    writer->process(entryWith({{u"text", u"hi"}}).get());
    EXPECT_EQ(out->toString().toUtf8(), "text=hi\n-------------------------\n");

    Reference<io::StringWriter> two(new io::StringWriter());
    Reference<ILogProcessor> second = BasicLogWriter::create(two.get());
    Reference<Logger> logger = Logger::create();
    logger->addProcessor(second.get());
    logger->log(3, u"x=y");
    Reference<LogEntry> order = entryWith({{u"level", u""}, {u"text", u""}});
    std::string expected;
    const Reference<const collections::Set<String>> orderNames = order->getFieldNames();
    for (const String& name : *orderNames)
        expected += name.toUtf8() == "level" ? "level=3\n" : "text=x=y\n";
    EXPECT_EQ(two->toString().toUtf8(), expected + "-------------------------\n");

    Reference<io::StringWriter> none(new io::StringWriter());
    BasicLogWriter::create(none.get())->process(LogEntry::create().get());
    EXPECT_EQ(none->toString().toUtf8(), "-------------------------\n");
}

TEST(LogWriterTest, XmlWriterDocumentAndUnescapedFields)
{
    Reference<io::StringWriter> out(new io::StringWriter());
    {
        Reference<ILogProcessor> writer = XmlLogWriter::create(out.get());
        EXPECT_EQ(out->toString().toUtf8(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n");
        writer->process(entryWith({{u"text", u"hi"}}).get());
        EXPECT_EQ(out->toString().toUtf8(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n"
                                            "  <entry>\n    <text> hi </text>\n  </entry>\n");
        writer->process(entryWith({{u"a b", u"value"}}).get());
        writer->process(entryWith({{u"field unit=ms", u"a<b & \"c\" {1}"}}).get());
    }
    const std::string doc = out->toString().toUtf8();
    EXPECT_NE(doc.find("  <entry>\n    <a b> value </a>\n  </entry>\n"), std::string::npos);
    EXPECT_NE(doc.find("    <field unit=ms> a<b & \"c\" {1} </field>\n"), std::string::npos);
    EXPECT_EQ(doc.substr(doc.size() - 7), "</log>\n");
}

TEST(LogWriterTest, XmlOfEveryStandardFieldIsWellFormed)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("wellformed.xml");
    {
        Reference<io::FileOutputStream> file(new io::FileOutputStream(String(path.c_str())));
        Reference<io::OutputStreamWriter> utf8(new io::OutputStreamWriter(file.get(), u"UTF-8"));
        Reference<ILogProcessor> writer = XmlLogWriter::create(utf8.get());
        Reference<Logger> logger = Logger::create(u"xml");
        for (const char16_t* key : {u"sequence", u"thread", u"timestamp"})
            logger->enableField(key, true);
        logger->addProcessor(writer.get());
        logger->log(1, u"first");
        logger->log(2, u"gr\u00fc\u00dfe");
        logger.reset();
        writer.reset();
        utf8->close();
    }
    const std::string doc = readFile(path);
    EXPECT_NE(doc.find("<name> xml </name>"), std::string::npos);
    EXPECT_NE(doc.find("gr\xc3\xbc\xc3\x9f"
                       "e"),
              std::string::npos);
    const std::string command = "xmllint --noout " + path + " 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << doc;
}

namespace {

class BracketingWriter : public BasicLogWriter {
public:
    using BasicLogWriter::BasicLogWriter;
    int flushes = 0;
    void flush() override
    {
        ++flushes;
        BasicLogWriter::flush();
    }

protected:
    String format(const ILogEntry* entry) override
    {
        return String(u"[").append(BasicLogWriter::format(entry)).append(String(u"]"));
    }
};

class OneLineXmlWriter : public XmlLogWriter {
public:
    using XmlLogWriter::XmlLogWriter;

protected:
    String format(const ILogEntry*) override { return String(u"<one/>\n"); }
};

// Overrides flush() only: the entries must still be written in full.
class FlushCountingXmlWriter : public XmlLogWriter {
public:
    using XmlLogWriter::XmlLogWriter;
    int flushes = 0;
    void flush() override
    {
        ++flushes;
        XmlLogWriter::flush();
    }
};

} // namespace

TEST(LogWriterTest, ProcessWritesWhatAnOverriddenFormatReturnsAndFlushesThroughTheOverride)
{
    const Reference<LogEntry> entry = entryWith({{u"text", u"hi"}});
    Reference<io::StringWriter> basicOut(new io::StringWriter());
    Reference<BracketingWriter> bracketing(new BracketingWriter(basicOut.get()));
    bracketing->process(entry.get());
    bracketing->process(entry.get());
    EXPECT_EQ(basicOut->toString().toUtf8(),
              "[text=hi\n-------------------------\n][text=hi\n-------------------------\n]");
    EXPECT_EQ(bracketing->flushes, 2);

    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";
    Reference<io::StringWriter> oneOut(new io::StringWriter());
    Reference<io::StringWriter> countedOut(new io::StringWriter());
    {
        Reference<OneLineXmlWriter> one(new OneLineXmlWriter(oneOut.get()));
        one->process(entry.get());
        Reference<FlushCountingXmlWriter> counted(new FlushCountingXmlWriter(countedOut.get()));
        counted->process(entry.get());
        EXPECT_EQ(counted->flushes, 1);
    }
    EXPECT_EQ(oneOut->toString().toUtf8(), head + "<one/>\n</log>\n");
    EXPECT_EQ(countedOut->toString().toUtf8(), head + "  <entry>\n    <text> hi </text>\n  </entry>\n</log>\n");
}

TEST(LogWriterTest, WriterFailurePassesOutOfProcess)
{
    Reference<ThrowingWriter> broken(new ThrowingWriter());
    Reference<ILogProcessor> writer = BasicLogWriter::create(broken.get());
    EXPECT_EQ(static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] {
                  writer->process(entryWith({{u"text", u"lost"}}).get());
              })),
              0x80070070u);
    EXPECT_THROW(BasicLogWriter::create(nullptr), ResultException);
}

TEST(LogWriterTest, AllocationSweepOnFormatting)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Reference<io::StringWriter> out(new io::StringWriter());
    Reference<ILogProcessor> writer = XmlLogWriter::create(out.get());
    Reference<LogEntry> entry = entryWith({{u"text", u"swept"}, {u"a b", u"c"}});
    int failures = qvtest::sweepAllocations([&] { writer->process(entry.get()); });
    EXPECT_GT(failures, 0);
    EXPECT_NE(out->toString().toUtf8().find("<text> swept </text>"), std::string::npos);
}

TEST(MultiProcessorTest, EmptyOrderAndStopOnThrow)
{
    Reference<MultiProcessor> empty = MultiProcessor::create();
    EXPECT_NO_THROW(empty->process(entryWith({{u"text", u"x"}}).get()));

    Reference<MultiProcessor> multi = MultiProcessor::create();
    Reference<logtest::CollectingProcessor> first(new logtest::CollectingProcessor());
    Reference<FailingProcessor> failing(new FailingProcessor());
    Reference<logtest::CollectingProcessor> last(new logtest::CollectingProcessor());
    multi->addProcessor(first.get());
    multi->addProcessor(failing.get());
    multi->addProcessor(last.get());
    multi->process(entryWith({{u"text", u"ok"}}).get());
    EXPECT_THROW(multi->process(entryWith({{u"text", u"boom"}}).get()), ResultException);
    EXPECT_EQ(first->count(), 2u);
    EXPECT_EQ(failing->count(), 1u);
    EXPECT_EQ(last->count(), 1u);
    // The lock was released by the throw.
    std::thread other([&] { multi->process(entryWith({{u"text", u"later"}}).get()); });
    other.join();
    EXPECT_EQ(last->count(), 2u);
}

TEST(AsyncProcessorTest, NoThreadsKeepsEverythingUntilDestroyed)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 0);
    for (int i = 0; i < 20; ++i)
        async->process(entryWith({{u"text", String::valueOf(i).getData()}}).get());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sink->count(), 0u);
    async.reset();
    EXPECT_EQ(sink->values(u"text"), logtest::numbered("", 0, 20));
    EXPECT_THROW(AsyncProcessor::create(nullptr, 1), ResultException);
}

namespace {

// Holds its first caller until released; later calls pass straight on.
class GateProcessor : public logtest::CollectingProcessor {
public:
    std::atomic<bool> entered{false};
    std::atomic<bool> release{false};
    std::atomic<bool> first{true};
    void process(const ILogEntry* entry) override
    {
        if (first.exchange(false)) {
            entered = true;
            while (!release)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        CollectingProcessor::process(entry);
    }
};

} // namespace

TEST(AsyncProcessorTest, ThreadDestructionDrainsQueueInDestroyingThread)
{
    Reference<GateProcessor> sink(new GateProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 1);
    async->process(entryWith({{u"text", u"held"}}).get());
    ASSERT_TRUE(waitFor([&] { return sink->entered.load(); }));
    for (int i = 0; i < 10; ++i)
        async->process(entryWith({{u"text", String::valueOf(i).getData()}}).get());
    async.reset();
    // The ten queued entries reached the target before the destructor
    // returned, in order, while the worker was still inside its call.
    std::vector<std::string> expected = logtest::numbered("", 0, 10);
    EXPECT_EQ(sink->values(u"text"), expected);
    sink->release = true;
    ASSERT_TRUE(waitFor([&] { return sink->count() == 11u; }));
    expected.push_back("held");
    EXPECT_EQ(sink->values(u"text"), expected);
}

TEST(AsyncProcessorTest, ThreadThatThrowsIsLostOthersGoOn)
{
    Reference<FailingProcessor> sink(new FailingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 2);
    async->process(entryWith({{u"text", u"boom"}}).get());
    for (int i = 0; i < 50; ++i)
        async->process(entryWith({{u"text", u"fine"}}).get());
    EXPECT_TRUE(waitFor([&] { return sink->count() == 50u; }));
    async.reset();
    EXPECT_EQ(sink->count(), 50u);
}

TEST(AsyncProcessorTest, ConcurrentProducersLoseNothingOnDestruction)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 3);
    const int producers = 8, perProducer = 500;
    std::vector<std::thread> threads;
    for (int p = 0; p < producers; ++p)
        threads.emplace_back([&] {
            for (int i = 0; i < perProducer; ++i)
                async->process(entryWith({{u"text", u"e"}}).get());
        });
    for (auto& t : threads)
        t.join();
    async.reset();
    EXPECT_TRUE(waitFor([&] { return sink->count() == static_cast<size_t>(producers * perProducer); }));
}

// The processor's last reference goes while the other producers still log:
// whichever thread drops it runs the drain, next to busy workers. Every entry
// process() returned from reaches the target once.
TEST(AsyncProcessorTest, ConcurrentProducersStillLoggingWhenDestructionBegins)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 2);
    std::atomic<int> accepted{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int p = 0; p < 8; ++p) {
        Reference<AsyncProcessor> mine = async;
        threads.emplace_back([mine, p, &accepted, &go]() mutable {
            while (!go.load())
                std::this_thread::yield();
            // Producers leave one after another, so the last reference goes
            // while the others are still at work.
            for (int i = 0; i < 2000 * (p + 1); ++i) {
                mine->process(entryWith({{u"text", u"e"}}).get());
                accepted.fetch_add(1);
            }
            mine.reset();
        });
    }
    async.reset();
    go.store(true);
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(accepted.load(), 2000 * 36);
    EXPECT_TRUE(waitFor([&] { return sink->count() == static_cast<size_t>(accepted.load()); })) << sink->count();
}

TEST(AsyncProcessorTest, ConcurrentLoggersToFileThroughFourWorkers)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("concurrent.log");
    // 800 000 entries in a plain build (about 10 s here); the sanitizers
    // run a share of them to stay within their time.
#if defined(__SANITIZE_THREAD__)
    const int perThread = 5000;
#elif defined(__SANITIZE_ADDRESS__)
    const int perThread = 25000;
#else
    const int perThread = 100000;
#endif
    const int threads = 8;
    {
        Reference<io::FileOutputStream> file(new io::FileOutputStream(String(path.c_str())));
        Reference<io::OutputStreamWriter> utf8(new io::OutputStreamWriter(file.get(), u"UTF-8"));
        // Writers take no lock: a MultiProcessor serialises the four workers.
        Reference<MultiProcessor> serial = MultiProcessor::create();
        Reference<ILogProcessor> basic = BasicLogWriter::create(utf8.get());
        serial->addProcessor(basic.get());
        Reference<AsyncProcessor> async = AsyncProcessor::create(serial.get(), 4);
        Reference<Logger> logger = Logger::create();
        logger->enableField(u"sequence", true);
        logger->addProcessor(async.get());
        Reference<SyncLogger> sync = SyncLogger::create(logger.get());
        std::vector<std::thread> producers;
        for (int t = 0; t < threads; ++t)
            producers.emplace_back([&, t] {
                for (int i = 0; i < perThread; ++i)
                    sync->log(t, u"entry text");
            });
        for (auto& p : producers)
            p.join();
        sync.reset();
        logger.reset();
        async.reset();
        // Workers may still be inside their last call; wait for the file.
        ASSERT_TRUE(waitFor([&] {
            std::string text = readFile(path);
            size_t n = 0;
            for (size_t at = text.find(logtest::kRule); at != std::string::npos; at = text.find(logtest::kRule, at + 1))
                ++n;
            return n == static_cast<size_t>(threads * perThread);
        }));
    }
    std::set<int> sequences;
    for (auto& entry : logtest::basicEntries(readFile(path))) {
        ASSERT_EQ(entry.size(), 3u);
        const int level = std::stoi(entry["level"]), sequence = std::stoi(entry["sequence"]);
        ASSERT_TRUE(entry["text"] == "entry text" && level >= 0 && level < threads && sequence >= 0);
        ASSERT_TRUE(sequences.insert(sequence).second) << sequence;
    }
    EXPECT_EQ(sequences.size(), static_cast<size_t>(threads * perThread));
    EXPECT_EQ(*sequences.rbegin(), threads * perThread - 1);
}

namespace {

class ComponentSink : public logtest::ObjectWith<qv::log::qvcom::ILogProcessor> {
public:
    Result code = 0;
    int calls = 0;
    Result seenHasText = -1;
    Result Process(qv::log::qvcom::ILogEntry* entry) override
    {
        ++calls;
        seenHasText = entry->HasField(u"text");
        return code;
    }
};

// A native entry without the component face.
class NativeOnlyEntry : public logtest::ObjectWith<ILogEntry> {
public:
    void setField(const String&, const Object*) override {}
    Reference<const Object> getField(const String&) const override { return nullptr; }
    bool hasField(const String&) const override { return false; }
    Reference<const collections::Set<String>> getFieldNames() const override
    {
        return Reference<const collections::Set<String>>(new collections::Set<String>());
    }
};

} // namespace

TEST(QvcomProcessorTest, ComponentFaceCodesAndMissingInterface)
{
    Reference<ComponentSink> sink(new ComponentSink());
    Reference<ILogProcessor> bridge = qv::log::qvcom::QvcomProcessor::create(sink.get());
    bridge->process(entryWith({{u"text", u"t"}}).get());
    EXPECT_EQ(sink->calls, 1);
    EXPECT_EQ(sink->seenHasText, 0);

    sink->code = 1; // S_FALSE is a success
    EXPECT_NO_THROW(bridge->process(entryWith({{u"x", u"t"}}).get()));
    EXPECT_EQ(sink->seenHasText, 1);

    sink->code = static_cast<Result>(0x80070005);
    EXPECT_EQ(static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] {
                  bridge->process(entryWith({{u"text", u"t"}}).get());
              })),
              0x80070005u);

    Reference<NativeOnlyEntry> native(new NativeOnlyEntry());
    EXPECT_EQ(static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] { bridge->process(native.get()); })),
              0x80004002u);
    EXPECT_EQ(sink->calls, 3);
}

// A null entry is refused by the processor it reaches, in the caller's
// thread, before anything is written or queued.
TEST(LogProcessorTest, NullEntryIsRefusedWithThePointerCode)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<io::StringWriter> out(new io::StringWriter());
    Reference<ComponentSink> component(new ComponentSink());
    Reference<MultiProcessor> fanOut = MultiProcessor::create();
    fanOut->addProcessor(BasicLogWriter::create(out.get()).get());
    Reference<AsyncProcessor> queued = AsyncProcessor::create(sink.get(), 0);
    Reference<AsyncProcessor> working = AsyncProcessor::create(sink.get(), 1);
    {
        const Reference<ILogProcessor> processors[] = {
            BasicLogWriter::create(out.get()),
            XmlLogWriter::create(out.get()),
            LevelFilterProcessor::create(0, sink.get()),
            qv::log::qvcom::QvcomProcessor::create(component.get()),
            SyslogLogProcessor::createLocal(String(u"/nonexistent/qvcl3-log")),
            Reference<ILogProcessor>(fanOut.get()),
            Reference<ILogProcessor>(queued.get()),
            Reference<ILogProcessor>(working.get()),
        };
        const std::string before = out->toString().toUtf8();
        for (size_t i = 0; i < sizeof processors / sizeof processors[0]; ++i)
            EXPECT_EQ(
                static_cast<uint32_t>(qvtest::resultOf<ResultException>([&] { processors[i]->process(nullptr); })),
                0x80004003u)
                << "processor " << i;
        EXPECT_EQ(out->toString().toUtf8(), before);
    }
    // Destroyed: a queued null would reach the sink now, or crash a worker.
    queued.reset();
    working.reset();
    EXPECT_EQ(sink->count(), 0u);
    EXPECT_EQ(component->calls, 0);
}

namespace {

void expectClassAndInterfaces(Object& object, const char* name, std::initializer_list<GUID> iids)
{
    EXPECT_EQ(String(object.getClass()->getName()).toUtf8(), name);
    for (const GUID& iid : iids) {
        void* face = nullptr;
        EXPECT_EQ(object.QueryInterface(iid, &face), 0) << name;
        if (face)
            static_cast<IQVUnknown*>(face)->Release();
    }
}

} // namespace

TEST(LogProcessorTest, EveryLoggingClassReportsItsNameAndAnswersForItsInterfaces)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<io::StringWriter> out(new io::StringWriter());
    Reference<ComponentSink> component(new ComponentSink());
    Reference<i18n::ListStringBundle> bundle(new i18n::ListStringBundle(String(u"b")));
    Reference<Logger> logger = Logger::create();
    const GUID processor = ILogProcessor::iid;
    expectClassAndInterfaces(*logger, "qv::log::Logger", {ILogger::iid, ILevelLogger::iid});
    expectClassAndInterfaces(*LogEntry::create(), "qv::log::LogEntry",
                             {ILogEntry::iid, qv::log::qvcom::ILogEntry::iid});
    expectClassAndInterfaces(*Reference<TimeStamp>(new TimeStamp()), "qv::log::TimeStamp", {IQVComparable::iid});
    expectClassAndInterfaces(*SyncLogger::create(logger.get()), "qv::log::SyncLogger", {ILevelLogger::iid});
    expectClassAndInterfaces(*StringBundleLogger::create(bundle.get(), logger.get()), "qv::log::StringBundleLogger",
                             {ILevelLogger::iid});
    expectClassAndInterfaces(*MultiProcessor::create(), "qv::log::MultiProcessor", {processor});
    expectClassAndInterfaces(*AsyncProcessor::create(sink.get(), 0), "qv::log::AsyncProcessor", {processor});
    const auto asObject = [](const Reference<ILogProcessor>& made) -> Object& {
        return *dynamic_cast<Object*>(made.get());
    };
    expectClassAndInterfaces(asObject(BasicLogWriter::create(out.get())), "qv::log::BasicLogWriter", {processor});
    expectClassAndInterfaces(asObject(XmlLogWriter::create(out.get())), "qv::log::XmlLogWriter", {processor});
    expectClassAndInterfaces(asObject(LevelFilterProcessor::create(0, sink.get())), "qv::log::LevelFilterProcessor",
                             {processor});
    expectClassAndInterfaces(asObject(qv::log::qvcom::QvcomProcessor::create(component.get())),
                             "qv::log::qvcom::QvcomProcessor", {processor});
    expectClassAndInterfaces(*SyslogLogProcessor::createUdp(String(u"127.0.0.1")), "qv::log::SyslogLogProcessor",
                             {processor});

    // A logger is no processor, and a processor no logger.
    void* face = nullptr;
    EXPECT_EQ(logger->QueryInterface(processor, &face), results::NOINTERFACE);
    EXPECT_EQ(MultiProcessor::create()->QueryInterface(ILevelLogger::iid, &face), results::NOINTERFACE);
}

TEST(LevelFilterProcessorTest, PassesLevelsAtOrAboveTheMinimum)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<Logger> logger = Logger::create();
    logger->addProcessor(LevelFilterProcessor::create(3, sink.get()).get());
    for (int level : {-5, 2, 3, 4, 1000})
        logger->log(level, u"m");
    EXPECT_EQ(sink->values(u"level"), (std::vector<std::string>{"3", "4", "1000"}));

    // Without a numeric level nothing is dropped.
    Reference<ILogProcessor> filter = LevelFilterProcessor::create(3, sink.get());
    filter->process(entryWith({{u"text", u"no level"}}).get());
    filter->process(entryWith({{u"level", u"9"}}).get());
    EXPECT_EQ(sink->count(), 5u);
    EXPECT_THROW(LevelFilterProcessor::create(0, nullptr), ResultException);
}

TEST(AsyncProcessorTest, AllocationFailureInProcessQueuesNothing)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 0);
    Reference<Logger> logger = Logger::create(u"sweep");
    logger->addProcessor(async.get());
    qvtest::sweepAllocations([&] { logger->log(1, u"once"); });
    async->process(entryWith({{u"text", u"last"}}).get());
    logger.reset();
    async.reset();
    // Only the attempt that got through and the last entry arrive.
    EXPECT_EQ(sink->values(u"text"), (std::vector<std::string>{"once", "last"}));
}
