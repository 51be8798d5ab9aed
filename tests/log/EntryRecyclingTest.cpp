// Entries are built by one thread and usually dropped by another, and their
// memory is recycled between threads. These tests look for the faults such
// recycling can bring: a block handed out while its entry is still alive, an
// entry lost on the way, names or values that do not survive the move of the
// fields out of the entry's own storage, a worker that sleeps through a lone
// entry.

#include "AllocationSweep.h"
#include "LogTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace qv;
using namespace qv::log;
using logtest::field;
using logtest::waitFor;

namespace {

Reference<LogEntry> numberedEntry(int producer, int number)
{
    Reference<LogEntry> entry = LogEntry::create();
    Reference<Integer32> from(new Integer32(producer));
    Reference<Integer32> index(new Integer32(number));
    const std::string text = std::to_string(producer) + "-" + std::to_string(number);
    Reference<String> value(new String(text.c_str()));
    // A name made here and dropped at once: the entry must keep its own.
    entry->setField(String(u"producer"), from.get());
    entry->setField(String(u"index"), index.get());
    entry->setField(String(u"text"), value.get());
    return entry;
}

// Whether the entry still holds what numberedEntry gave it.
bool intact(const ILogEntry* entry, int producer, int number)
{
    return field(entry, u"producer") == std::to_string(producer) && field(entry, u"index") == std::to_string(number) &&
           field(entry, u"text") == std::to_string(producer) + "-" + std::to_string(number) &&
           logtest::names(entry).size() == 3;
}

// Checks every entry against its own numbers and counts them, once each.
class CheckingProcessor : public logtest::CollectingProcessor {
public:
    void process(const ILogEntry* entry) override
    {
        const int producer = std::stoi(field(entry, u"producer"));
        const int number = std::stoi(field(entry, u"index"));
        std::lock_guard<std::mutex> hold(m_lock);
        if (!intact(entry, producer, number))
            ++corrupt;
        if (!seen.insert({producer, number}).second)
            ++twice;
    }
    size_t seenCount()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return seen.size();
    }

    std::set<std::pair<int, int>> seen;
    int corrupt = 0;
    int twice = 0;

private:
    std::mutex m_lock;
};

} // namespace

TEST(EntryRecyclingTest, HammerFromProducersToWorkersLosesAndCorruptsNothing)
{
    const int producers = 4;
    // Enough for many batches to go round; the thread sanitizer runs fewer.
#if defined(__SANITIZE_THREAD__)
    const int perProducer = 5000;
#else
    const int perProducer = 20000;
#endif
    Reference<CheckingProcessor> sink(new CheckingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 2);
    std::atomic<int> heldBroken{0};
    std::vector<std::thread> threads;
    for (int p = 0; p < producers; ++p) {
        threads.emplace_back([&, p] {
            // The last entries a producer made stay alive in its hands while
            // the workers drop others: a block handed out twice would show
            // up here as an entry whose fields changed.
            std::deque<Reference<LogEntry>> held;
            for (int i = 0; i < perProducer; ++i) {
                Reference<LogEntry> entry = numberedEntry(p, i);
                async->process(entry.get());
                held.push_back(entry);
                if (held.size() > 40) {
                    const int number = i - 40;
                    if (!intact(held.front().get(), p, number))
                        ++heldBroken;
                    held.pop_front();
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(waitFor([&] { return sink->seenCount() == static_cast<size_t>(producers * perProducer); }))
        << sink->seenCount();
    async.reset();
    EXPECT_EQ(heldBroken.load(), 0);
    EXPECT_EQ(sink->corrupt, 0);
    EXPECT_EQ(sink->twice, 0);
    EXPECT_EQ(sink->seenCount(), static_cast<size_t>(producers * perProducer));
}

TEST(EntryRecyclingTest, ThreadEndingHandsItsBlocksOnAndEntriesOutliveTheirThread)
{
    // Made by a thread that ends before they are dropped here, and dropped
    // by threads that end right after: the ending threads' cached blocks go
    // back while entries made from them are still alive elsewhere.
    std::vector<Reference<LogEntry>> made;
    for (int round = 0; round < 4; ++round) {
        std::thread maker([&, round] {
            for (int i = 0; i < 200; ++i)
                made.push_back(numberedEntry(round, i));
        });
        maker.join();
    }
    std::vector<Reference<LogEntry>> kept;
    for (int round = 0; round < 4; ++round) {
        std::vector<Reference<LogEntry>> batch(made.begin() + round * 200, made.begin() + round * 200 + 100);
        kept.insert(kept.end(), made.begin() + round * 200 + 100, made.begin() + (round + 1) * 200);
        std::thread dropper([&batch] { batch.clear(); });
        dropper.join();
    }
    made.clear();
    // New entries now come from recycled blocks; the kept ones must not.
    std::vector<Reference<LogEntry>> fresh;
    for (int i = 0; i < 800; ++i)
        fresh.push_back(numberedEntry(9, i));
    int broken = 0;
    for (size_t i = 0; i < kept.size(); ++i)
        broken += intact(kept[i].get(), static_cast<int>(i / 100), 100 + static_cast<int>(i % 100)) ? 0 : 1;
    for (size_t i = 0; i < fresh.size(); ++i)
        broken += intact(fresh[i].get(), 9, static_cast<int>(i)) ? 0 : 1;
    EXPECT_EQ(broken, 0);
}

namespace {

class ExtraFieldsLogger : public Logger {
public:
    ExtraFieldsLogger() : Logger(String(u"app")) {}

protected:
    void addCustomFields(ILogEntry* entry) override
    {
        Reference<String> host(new String(u"box1"));
        Reference<Integer32> pid(new Integer32(4242));
        entry->setField(String(u"host"), host.get());
        entry->setField(String(u"pid"), pid.get());
        // Replacing a standard field keeps its place and takes the new value.
        Reference<String> text(new String(u"replaced"));
        entry->setField(String(u"text"), text.get());
    }
};

} // namespace

TEST(EntryRecyclingTest, LoggerKeysAndOwnNamesSurviveTheMoveOutOfTheEntry)
{
    ExtraFieldsLogger logger;
    for (const char16_t* key : {u"sequence", u"thread", u"timestamp"})
        logger.enableField(key, true);
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    logger.addProcessor(sink.get());
    logger.log(7, u"original");
    logger.log(8, u"second");
    ASSERT_EQ(sink->count(), 2u);

    const ILogEntry* entry = sink->entries()[1].get();
    // Eight fields: more than the entry holds by itself.
    const std::vector<std::string> names = logtest::names(entry);
    ASSERT_EQ(names.size(), 8u);
    // The order is a hash map's, the same for every entry with these names.
    EXPECT_EQ(names, logtest::names(sink->entries()[0].get()));
    logtest::Fields all = logtest::fields(entry);
    EXPECT_EQ(all.erase("thread") + all.erase("timestamp"), 2u);
    EXPECT_EQ(all, (logtest::Fields{{"host", "box1"},
                                    {"level", "8"},
                                    {"name", "app"},
                                    {"pid", "4242"},
                                    {"sequence", "1"},
                                    {"text", "replaced"}}));
    EXPECT_TRUE(entry->hasField(u"thread"));
    EXPECT_FALSE(entry->hasField(u"Thread"));
    // The value handed out is the object that was set.
    Reference<const Object> level = entry->getField(u"level");
    ASSERT_TRUE(level);
    EXPECT_NE(dynamic_cast<const Integer32*>(level.get()), nullptr);
}

TEST(AsyncProcessorTest, IdleWorkerThreadsWakeForEachLoneEntry)
{
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 3);
    Reference<Logger> logger = Logger::create();
    logger->addProcessor(async.get());
    for (size_t i = 1; i <= 5; ++i) {
        // Every worker is waiting by now: the entry must wake one.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        logger->log(1, u"lone");
        ASSERT_TRUE(waitFor([&] { return sink->count() == i; })) << "entry " << i << " never delivered";
    }
    // A burst after the pause: every entry arrives, none twice.
    for (int i = 0; i < 300; ++i)
        logger->log(2, u"burst");
    EXPECT_TRUE(waitFor([&] { return sink->count() == 305u; })) << sink->count();
    async.reset();
    logger.reset();
    EXPECT_EQ(sink->count(), 305u);
}

TEST(EntryRecyclingTest, AllocationFailureWhileFieldsMoveOutKeepsTheEntryWhole)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    ExtraFieldsLogger logger;
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    logger.addProcessor(sink.get());
    logger.log(1, u"six fields");
    ASSERT_EQ(sink->count(), 1u);
    Reference<LogEntry> entry(dynamic_cast<LogEntry*>(const_cast<ILogEntry*>(sink->entries()[0].get())));
    ASSERT_TRUE(entry);
    // "level", "text", "name", "host", "pid": the next two new names move
    // every field out of the entry's own storage.
    const std::vector<std::string> before = logtest::names(entry.get());
    ASSERT_EQ(before.size(), 5u);
    Reference<String> value(new String(u"v"));
    const int failures = qvtest::sweepAllocations(
        [&] {
            entry->setField(String(u"sixth"), value.get());
            entry->setField(String(u"seventh"), value.get());
        },
        [&] {
            EXPECT_EQ(field(entry.get(), u"text"), "replaced");
            EXPECT_EQ(field(entry.get(), u"name"), "app");
            EXPECT_EQ(field(entry.get(), u"pid"), "4242");
            EXPECT_FALSE(entry->hasField(u"seventh"));
        });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(logtest::names(entry.get()).size(), 7u);
    EXPECT_EQ(field(entry.get(), u"seventh"), "v");
    EXPECT_EQ(field(entry.get(), u"level"), "1");
}
