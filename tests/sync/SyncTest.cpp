#include <qv/core/Exception.h>
#include <qv/sync/Condition.h>
#include <qv/sync/Event.h>
#include <qv/sync/FakeMutex.h>
#include <qv/sync/Gate.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/sync/Semaphore.h>
#include <qvcore3/qvcore3.h>

#include "Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

qv::Result code(uint32_t value)
{
    return static_cast<qv::Result>(value);
}

using qvtest::resultOf;

} // namespace

TEST(Sync, EventTimedWaitsAndTryWait)
{
    qv::sync::Event event;
    EXPECT_FALSE(event.wait(0ul));
    event.signal();
    // Polling through tryWait never consumes or reports the signal.
    EXPECT_FALSE(event.tryWait());
    EXPECT_TRUE(event.wait(0ul));
    // Auto-reset: the signal was used up.
    EXPECT_FALSE(event.wait(0ul));
}

TEST(Sync, GateReflectsItsState)
{
    qv::sync::Gate gate;
    EXPECT_FALSE(gate.tryWait());
    EXPECT_FALSE(gate.wait(0ul));
    gate.open();
    EXPECT_TRUE(gate.tryWait());
    EXPECT_TRUE(gate.wait(0ul));
    EXPECT_TRUE(gate.wait(10ul));
    gate.close();
    EXPECT_FALSE(gate.tryWait());
}

TEST(Sync, GateThreadsAllPassOnceOpen)
{
    qv::sync::Gate gate;
    std::atomic<int> passed{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 8; ++i)
        waiters.emplace_back([&] {
            gate.wait();
            ++passed;
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(passed.load(), 0);
    gate.open();
    for (auto& t : waiters)
        t.join();
    EXPECT_EQ(passed.load(), 8);
}

TEST(Sync, ConditionTimedWaitThrowsOnTimeout)
{
    qv::sync::Condition condition;
    qv::sync::Condition::Holder hold(condition);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(resultOf([&] { condition.wait(10ul); }), code(0x800705B4u));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9));
}

TEST(Sync, ConditionThreadSignalWakesWaiter)
{
    qv::sync::Condition condition;
    bool ready = false;
    std::thread producer([&] {
        qv::sync::Condition::Holder hold(condition);
        ready = true;
        condition.signal();
    });
    {
        qv::sync::Condition::Holder hold(condition);
        while (!ready)
            condition.wait();
    }
    producer.join();
    EXPECT_TRUE(ready);
}

TEST(Sync, FakeMutexNeverBlocks)
{
    qv::sync::FakeMutex fake;
    fake.wait();
    EXPECT_TRUE(fake.tryWait());
    fake.signal();
}

TEST(Sync, SemaphoreCountsAndTries)
{
    qv::sync::Semaphore semaphore(2);
    EXPECT_EQ(semaphore.getValue(), 2);
    EXPECT_TRUE(semaphore.tryWait());
    semaphore.wait();
    EXPECT_FALSE(semaphore.tryWait());
    semaphore.signal();
    EXPECT_EQ(semaphore.getValue(), 1);
}

TEST(Sync, ReaderWriterLockSharedHoldEndsWithExclusiveRelease)
{
    qv::sync::ReaderWriterLock lock;
    lock.waitShared();
    EXPECT_TRUE(lock.tryWaitShared());
    lock.signalShared();
    EXPECT_FALSE(lock.tryWait());
    // The thread-safe buffers give a read lock back through signal().
    lock.signal();
    EXPECT_TRUE(lock.tryWait());
    EXPECT_FALSE(lock.tryWaitShared());
    lock.signal();
}

TEST(Sync, MutexThreadsHammerACounter)
{
    qv::sync::Mutex mutex("test mutex");
    long counter = 0;
    auto work = [&] {
        for (int i = 0; i < 100000; ++i) {
            mutex.wait();
            ++counter;
            mutex.signal();
        }
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    EXPECT_EQ(counter, 200000);
}

TEST(Sync, PlatformCreateFailureLeavesNoObject)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "platform built without fault injection";
    const qv::Result injected = code(0x80070008u);
    ASSERT_EQ(QVFaultArm("QVMutexCreate", 1, injected), 0);
    EXPECT_EQ(resultOf([] { qv::sync::Mutex m; }), injected);
    ASSERT_EQ(QVFaultArm("QVEventCreate", 1, injected), 0);
    EXPECT_EQ(resultOf([] { qv::sync::Event e; }), injected);
    ASSERT_EQ(QVFaultArm("QVConditionCreate", 1, injected), 0);
    EXPECT_EQ(resultOf([] { qv::sync::Condition c; }), injected);
    QVFaultDisarmAll();
    qv::sync::Mutex works;
    EXPECT_TRUE(works.tryWait());
    works.signal();
}

TEST(Sync, TimedWaitCountsOnlyZeroAsSignalled)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "platform built without fault injection";
    qv::sync::Event event;
    qv::sync::Gate gate;
    gate.open();
    // A success code other than 0 is not a signal.
    ASSERT_EQ(QVFaultArm("QVEventTimedWait", 1, 1), 0);
    EXPECT_FALSE(event.wait(5ul));
    ASSERT_EQ(QVFaultArm("QVGateTimedWait", 1, 1), 0);
    EXPECT_FALSE(gate.wait(5ul));
    // Failures other than the time-out are thrown with their code.
    ASSERT_EQ(QVFaultArm("QVGateTimedWait", 1, code(0x80070006u)), 0);
    EXPECT_EQ(resultOf([&] { gate.wait(5ul); }), code(0x80070006u));
    ASSERT_EQ(QVFaultArm("QVEventTimedWait", 1, code(0x800705B4u)), 0);
    EXPECT_FALSE(event.wait(5ul));
    QVFaultDisarmAll();
    EXPECT_TRUE(gate.wait(5ul));
}
