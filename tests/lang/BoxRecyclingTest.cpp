// Heap Strings and boxed numbers are often made by one thread and dropped by
// another, and their memory is recycled between threads. These tests look for
// what such recycling can break: a block handed out while its object is still
// alive, an object lost or corrupted on the way, a derived class squeezed into
// a block of the base's size, an allocation failure swallowed by the pool.
#include <qv/core/Reference.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/String.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <iterator>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

using namespace qv;

namespace {

struct Boxes {
    Reference<Integer32> number;
    Reference<String> text;
};

std::string label(int producer, int index)
{
    return std::to_string(producer) + "-" + std::to_string(index);
}

Boxes makeBoxes(int producer, int index)
{
    Boxes made;
    made.number = Reference<Integer32>(new Integer32(producer * 1000000 + index));
    made.text = Reference<String>(new String(label(producer, index).c_str()));
    return made;
}

bool intact(const Boxes& boxes, int producer, int index)
{
    return boxes.number->getValue() == producer * 1000000 + index && boxes.text->toUtf8() == label(producer, index);
}

} // namespace

TEST(BoxRecyclingTest, HammerFromProducersToConsumersLosesAndCorruptsNothing)
{
    const int producers = 4;
    const int consumers = 2;
#if defined(__SANITIZE_THREAD__)
    const int perProducer = 5000;
#else
    const int perProducer = 30000;
#endif
    std::mutex lock;
    std::condition_variable ready;
    std::deque<std::pair<int, Boxes>> queue;
    int producersLeft = producers;
    std::vector<std::atomic<int>> seen(static_cast<size_t>(producers * perProducer));
    std::atomic<int> corrupt{0};
    std::atomic<int> heldBroken{0};

    std::vector<std::thread> threads;
    for (int c = 0; c < consumers; ++c) {
        threads.emplace_back([&] {
            for (;;) {
                std::pair<int, Boxes> item;
                {
                    std::unique_lock<std::mutex> hold(lock);
                    ready.wait(hold, [&] { return !queue.empty() || producersLeft == 0; });
                    if (queue.empty())
                        return;
                    item = std::move(queue.front());
                    queue.pop_front();
                }
                const int producer = item.first / perProducer;
                const int index = item.first % perProducer;
                if (!intact(item.second, producer, index))
                    ++corrupt;
                ++seen[static_cast<size_t>(item.first)];
                // The boxes are dropped here, in the consumer's thread.
            }
        });
    }
    for (int p = 0; p < producers; ++p) {
        threads.emplace_back([&, p] {
            // The producer's last boxes stay alive in its hands while the
            // consumers drop others: a block handed out twice shows up here.
            std::deque<Boxes> held;
            for (int i = 0; i < perProducer; ++i) {
                Boxes boxes = makeBoxes(p, i);
                held.push_back(boxes);
                {
                    std::lock_guard<std::mutex> hold(lock);
                    queue.emplace_back(p * perProducer + i, std::move(boxes));
                }
                ready.notify_one();
                if (held.size() > 40) {
                    if (!intact(held.front(), p, i - 40))
                        ++heldBroken;
                    held.pop_front();
                }
            }
            std::lock_guard<std::mutex> hold(lock);
            if (--producersLeft == 0)
                ready.notify_all();
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    int missing = 0, twice = 0;
    for (const std::atomic<int>& count : seen) {
        missing += count.load() == 0 ? 1 : 0;
        twice += count.load() > 1 ? 1 : 0;
    }
    EXPECT_EQ(missing, 0);
    EXPECT_EQ(twice, 0);
    EXPECT_EQ(corrupt.load(), 0);
    EXPECT_EQ(heldBroken.load(), 0);
}

namespace {

// Larger than the class it derives from: its objects must not land in the
// recycled blocks of the base's size.
template <class Base>
class Wide : public Base {
public:
    template <class Value>
    Wide(Value value, unsigned char fill) : Base(value), m_fill(fill)
    {
        std::memset(m_tail, fill, sizeof m_tail);
    }
    bool tailIntact() const
    {
        return std::all_of(std::begin(m_tail), std::end(m_tail), [this](unsigned char byte) { return byte == m_fill; });
    }

private:
    unsigned char m_fill;
    unsigned char m_tail[160];
};

} // namespace

TEST(BoxRecyclingTest, LargerDerivedObjectsTakeTheGeneralAllocatorAndRecycledOnesStayWhole)
{
    // Wide and plain objects made, half of them dropped (through the base,
    // by another thread, as a queue's worker would) and made again, so that
    // plain blocks go round while wide objects live next to them.
    std::vector<Reference<Object>> kept;
    std::vector<const Wide<Integer32>*> wideNumbers;
    std::vector<const Wide<String>*> wideTexts;
    std::vector<const Integer32*> plainNumbers;
    for (int round = 0; round < 3; ++round) {
        std::vector<Reference<Object>> dropped;
        for (int i = 0; i < 300; ++i) {
            auto* number = new Wide<Integer32>(i, static_cast<unsigned char>(i));
            auto* text = new Wide<String>(u"wide", static_cast<unsigned char>(i));
            auto* plain = new Integer32(i);
            std::vector<Reference<Object>>& into = i % 2 == 0 ? kept : dropped;
            into.emplace_back(number);
            into.emplace_back(text);
            into.emplace_back(plain);
            if (i % 2 == 0) {
                wideNumbers.push_back(number);
                wideTexts.push_back(text);
                plainNumbers.push_back(plain);
            }
        }
        std::thread([&dropped] { dropped.clear(); }).join();
    }
    int broken = 0;
    for (size_t i = 0; i < plainNumbers.size(); ++i) {
        const int32_t expected = static_cast<int32_t>(i % 150) * 2;
        broken += wideNumbers[i]->tailIntact() && wideNumbers[i]->getValue() == expected ? 0 : 1;
        broken += wideTexts[i]->tailIntact() && wideTexts[i]->toUtf8() == "wide" ? 0 : 1;
        broken += plainNumbers[i]->getValue() == expected ? 0 : 1;
    }
    EXPECT_EQ(broken, 0);
}

TEST(BoxRecyclingTest, EveryBlockHandedOutCanFailAsOutOfMemoryFreshOrRecycled)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    // Blocks dropped by this thread wait here for reuse; a sweep must still
    // meet each allocation, as without the recycling.
    const String shared(u"shared text");
    for (int i = 0; i < 100; ++i) {
        Reference<Integer32> number(new Integer32(i));
        Reference<String> text(new String(shared));
        String own(u"own text");
    }
    EXPECT_EQ(qvtest::sweepAllocations([] { Reference<Integer32> number(new Integer32(7)); }), 1);
    EXPECT_EQ(qvtest::sweepAllocations([&] { Reference<String> text(new String(shared)); }), 1);
    EXPECT_EQ(qvtest::sweepAllocations([] { String own(u"own text"); }), 1);

    // More boxes alive at once than can be recycled, made by a thread that
    // has none of its own: fresh and recycled blocks fail alike, and the
    // boxes made before each failure are given back.
    const int count = 300;
    std::vector<Reference<Object>> alive;
    alive.reserve(2 * count);
    int failures = -1;
    std::thread([&] {
        failures = qvtest::sweepAllocations([&] {
            alive.clear();
            for (int i = 0; i < count; ++i) {
                alive.emplace_back(new Integer32(i));
                alive.emplace_back(new String(shared));
            }
            for (int i = 0; i < count; ++i) {
                if (static_cast<Integer32*>(alive[2 * i].get())->getValue() != i ||
                    !static_cast<String*>(alive[2 * i + 1].get())->equals(shared))
                    ADD_FAILURE() << "box " << i << " changed";
            }
            alive.clear();
        });
    }).join();
    EXPECT_EQ(failures, 2 * count);
    EXPECT_EQ(shared.toUtf8(), "shared text");
}

TEST(BoxRecyclingTest, NothrowAndPlacementFormsStayAvailable)
{
    // A class-level operator new hides the global forms; code written
    // against these classes before they recycled their memory still uses
    // them.
    Reference<String> text(new (std::nothrow) String(u"nothrow"));
    Reference<Integer32> number(new (std::nothrow) Integer32(9));
    ASSERT_TRUE(text && number);
    EXPECT_EQ(text->toUtf8(), "nothrow");
    EXPECT_EQ(number->getValue(), 9);

    alignas(String) unsigned char room[sizeof(String)];
    String* placed = new (room) String(u"placed");
    EXPECT_EQ(placed->toUtf8(), "placed");
    placed->~String();

    if (qvtest::allocationFaultsAvailable()) {
        QVFaultArmAllocation(1);
        String* refused = new (std::nothrow) String(u"refused");
        QVFaultDisarmAll();
        EXPECT_EQ(refused, nullptr);
        delete refused;
    }
}
