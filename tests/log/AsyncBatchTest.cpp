// A worker takes what is queued in one go and passes it on entry by entry;
// these cases pin down what happens to the entries it holds when the
// processor goes away or the target throws.

#include "AllocationSweep.h"
#include "LogTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>

using namespace qv;
using namespace qv::log;
using logtest::field;
using logtest::numbered;
using logtest::waitFor;

namespace {

Reference<LogEntry> entryWithText(const std::string& text)
{
    Reference<LogEntry> entry = LogEntry::create();
    Reference<String> value(new String(text.c_str()));
    entry->setField(u"text", value.get());
    return entry;
}

thread_local bool t_producer = false;

// Records each entry's text and the thread it came in on. Entries whose text
// is a gate wait inside process() until the test opens it; "boom" throws;
// "drop" gives up the processor's last reference, which the target holds.
class ScriptedProcessor : public logtest::CollectingProcessor {
public:
    void process(const ILogEntry* entry) override
    {
        // Asleep rather than spinning: the producers keep the cores and run
        // far ahead of the workers, and a drain in a producer is quick.
        if (slowInWorkers && !t_producer)
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        const std::string text = field(entry, u"text");
        if (text == "boom")
            throw ResultException(static_cast<Result>(0x80004005));
        {
            std::unique_lock<std::mutex> hold(m_gateLock);
            auto gate = m_gates.find(text);
            if (gate != m_gates.end()) {
                gate->second = Gate::ENTERED;
                m_gateChanged.notify_all();
                m_gateChanged.wait(hold, [&] { return gate->second == Gate::OPEN; });
            }
            m_threads.push_back(std::this_thread::get_id());
        }
        CollectingProcessor::process(entry);
        if (text == "drop") {
            Reference<AsyncProcessor> last = std::move(owner);
            last.reset();
        }
    }

    void addGate(const std::string& text)
    {
        std::lock_guard<std::mutex> hold(m_gateLock);
        m_gates[text] = Gate::CLOSED;
    }
    bool waitUntilEntered(const std::string& text)
    {
        std::unique_lock<std::mutex> hold(m_gateLock);
        return m_gateChanged.wait_for(hold, std::chrono::seconds(10), [&] { return m_gates[text] == Gate::ENTERED; });
    }
    void open(const std::string& text)
    {
        std::lock_guard<std::mutex> hold(m_gateLock);
        m_gates[text] = Gate::OPEN;
        m_gateChanged.notify_all();
    }
    std::vector<std::thread::id> threads()
    {
        std::lock_guard<std::mutex> hold(m_gateLock);
        return m_threads;
    }

    Reference<AsyncProcessor> owner;
    bool slowInWorkers = false;

private:
    enum class Gate { CLOSED, ENTERED, OPEN };
    std::mutex m_gateLock;
    std::condition_variable m_gateChanged;
    std::map<std::string, Gate> m_gates;
    std::vector<std::thread::id> m_threads;
};

} // namespace

TEST(AsyncBatchTest, ThreadDestructionDeliversWhatAWorkerTookButHasNotStarted)
{
    Reference<ScriptedProcessor> sink(new ScriptedProcessor());
    sink->addGate("first");
    sink->addGate("e0");
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 1);
    async->process(entryWithText("first").get());
    ASSERT_TRUE(sink->waitUntilEntered("first"));
    // Queued while the worker is busy: it takes all ten at once next.
    for (const std::string& text : numbered("e", 0, 10))
        async->process(entryWithText(text).get());
    sink->open("first");
    ASSERT_TRUE(sink->waitUntilEntered("e0"));
    async.reset();
    // e1 to e9 were in the worker's hands, not in the queue, and still
    // reached the target before the destructor returned, in order.
    std::vector<std::string> expected = numbered("e", 1, 10);
    expected.insert(expected.begin(), "first");
    EXPECT_EQ(sink->values(u"text"), expected);
    const auto threads = sink->threads();
    ASSERT_EQ(threads.size(), 10u);
    for (size_t i = 1; i < threads.size(); ++i)
        EXPECT_EQ(threads[i], std::this_thread::get_id());
    sink->open("e0");
    ASSERT_TRUE(waitFor([&] { return sink->count() == 11u; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sink->count(), 11u);
    EXPECT_EQ(sink->values(u"text").back(), "e0");
}

TEST(AsyncBatchTest, ThreadDestroyedByItsOwnWorkerMidBatchDeliversEachEntryOnce)
{
    Reference<ScriptedProcessor> sink(new ScriptedProcessor());
    sink->addGate("first");
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 1);
    sink->owner = async;
    async->process(entryWithText("first").get());
    ASSERT_TRUE(sink->waitUntilEntered("first"));
    std::vector<std::string> expected{"first", "a0", "drop"};
    async->process(entryWithText("a0").get());
    async->process(entryWithText("drop").get());
    for (const std::string& text : numbered("a", 1, 6)) {
        async->process(entryWithText(text).get());
        expected.push_back(text);
    }
    // The target now holds the last reference and drops it from the worker,
    // in the middle of the batch: the drain runs nested in that call and
    // must neither wait for the worker nor deliver an entry twice.
    async.reset();
    sink->open("first");
    ASSERT_TRUE(waitFor([&] { return sink->count() >= expected.size(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sink->values(u"text"), expected);
    const auto threads = sink->threads();
    ASSERT_EQ(threads.size(), expected.size());
    for (size_t i = 1; i < threads.size(); ++i)
        EXPECT_EQ(threads[i], threads[0]);
    EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(AsyncBatchTest, ThreadThatThrowsHandsTheRestOfItsBatchToTheOthers)
{
    Reference<ScriptedProcessor> sink(new ScriptedProcessor());
    sink->addGate("gate1");
    sink->addGate("gate2");
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), 2);
    async->process(entryWithText("gate1").get());
    async->process(entryWithText("gate2").get());
    ASSERT_TRUE(sink->waitUntilEntered("gate1"));
    ASSERT_TRUE(sink->waitUntilEntered("gate2"));
    async->process(entryWithText("boom").get());
    for (const std::string& text : numbered("f", 0, 5))
        async->process(entryWithText(text).get());
    // The second worker takes half of the six, throws on "boom" and is lost;
    // f0 and f1, which it held, go back ahead of f2 to f4.
    sink->open("gate2");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    sink->open("gate1");
    ASSERT_TRUE(waitFor([&] { return sink->count() == 7u; })) << sink->count();
    std::vector<std::string> expected = numbered("f", 0, 5);
    expected.insert(expected.begin(), {"gate2", "gate1"});
    EXPECT_EQ(sink->values(u"text"), expected);
    async.reset();
    EXPECT_EQ(sink->count(), 7u);
}

// Producers log while the last reference goes from one of them; the target
// is slow enough for the workers to hold batches when that happens. Every
// accepted entry arrives exactly once, and when the destructor returns at
// most one per worker (the one it is inside) is still on its way.
TEST(AsyncBatchTest, HammerDestructionMidStreamDeliversEveryAcceptedEntryOnce)
{
    constexpr int kProducers = 8, kWorkers = 3;
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kBase = 100;
#else
    constexpr int kBase = 400;
#endif
    Reference<ScriptedProcessor> sink(new ScriptedProcessor());
    sink->slowInWorkers = true;
    Reference<AsyncProcessor> async = AsyncProcessor::create(sink.get(), kWorkers);
    std::atomic<bool> go{false};
    std::atomic<size_t> accepted{0};
    std::vector<size_t> deliveredAfterRelease(kProducers);
    std::vector<std::thread> threads;
    for (int p = 0; p < kProducers; ++p) {
        Reference<AsyncProcessor> mine = async;
        threads.emplace_back([mine, p, &go, &accepted, &deliveredAfterRelease, &sink]() mutable {
            t_producer = true;
            while (!go.load())
                std::this_thread::yield();
            for (int i = 0; i < kBase * (p + 1); ++i) {
                mine->process(entryWithText(std::to_string(p) + ":" + std::to_string(i)).get());
                accepted.fetch_add(1);
            }
            mine.reset();
            deliveredAfterRelease[static_cast<size_t>(p)] = sink->count();
        });
    }
    async.reset();
    go.store(true);
    for (auto& t : threads)
        t.join();
    const size_t total = accepted.load();
    ASSERT_EQ(total, static_cast<size_t>(kBase * kProducers * (kProducers + 1) / 2));
    // The thread whose release ran the destructor saw everything but the
    // workers' current entries; no other thread can have seen more.
    EXPECT_GE(*std::max_element(deliveredAfterRelease.begin(), deliveredAfterRelease.end()), total - kWorkers);
    ASSERT_TRUE(waitFor([&] { return sink->count() >= total; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::vector<std::string> texts = sink->values(u"text");
    EXPECT_EQ(texts.size(), total);
    const std::set<std::string> distinct(texts.begin(), texts.end());
    EXPECT_EQ(distinct.size(), total);
}

// Creation allocates a slot per worker before the workers start; a failure
// there or at any thread's start surfaces as OutOfMemoryException, and the
// workers already running end without leaking the implementation.
TEST(AsyncBatchTest, AllocationSweepOnCreationWithWorkers)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Reference<logtest::CollectingProcessor> sink(new logtest::CollectingProcessor());
    const int failures =
        qvtest::sweepAllocations([&] { AsyncProcessor::create(sink.get(), 3); }, [&] { EXPECT_EQ(sink->count(), 0u); });
    EXPECT_GE(failures, 4);
}
