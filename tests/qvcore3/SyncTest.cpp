#include "TestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {

constexpr QVRESULT kNotOwner = static_cast<QVRESULT>(0x80070001);
constexpr QVRESULT kDeadlock = static_cast<QVRESULT>(0x80070023);

// Creates one object and destroys it with the test.
struct Handle {
    QVHANDLE value = QV_INVALID_HANDLE;
    QVRESULT (*destroy)(QVHANDLE) = nullptr;
    ~Handle()
    {
        if (destroy && value != QV_INVALID_HANDLE) {
            EXPECT_EQ(destroy(value), QV_S_OK);
        }
    }
};

TEST(MutexThread, HammeredCounterStaysExact)
{
    Handle mutex{QV_INVALID_HANDLE, QVMutexDestroy};
    ASSERT_EQ(QVMutexCreate("counter", 0, &mutex.value), QV_S_OK);
    long counter = 0;
    auto hammer = [&] {
        for (int i = 0; i < 100000; ++i) {
            ASSERT_EQ(QVMutexAcquire(mutex.value), QV_S_OK);
            counter = counter + 1;
            ASSERT_EQ(QVMutexRelease(mutex.value), QV_S_OK);
        }
    };
    std::thread a(hammer);
    std::thread b(hammer);
    a.join();
    b.join();
    EXPECT_EQ(counter, 200000);
}

TEST(MutexThread, RecursiveForOwnerBusyForOthers)
{
    Handle mutex{QV_INVALID_HANDLE, QVMutexDestroy};
    ASSERT_EQ(QVMutexCreate(nullptr, 0, &mutex.value), QV_S_OK);
    ASSERT_EQ(QVMutexAcquire(mutex.value), QV_S_OK);
    ASSERT_EQ(QVMutexTryAcquire(mutex.value), QV_S_OK);
    QVRESULT other = QV_S_OK;
    std::thread([&] { other = QVMutexTryAcquire(mutex.value); }).join();
    EXPECT_EQ(other, QV_E_BUSY);
    std::thread([&] { other = QVMutexRelease(mutex.value); }).join();
    EXPECT_EQ(other, kNotOwner);
    EXPECT_EQ(QVMutexRelease(mutex.value), QV_S_OK);
    EXPECT_EQ(QVMutexRelease(mutex.value), QV_S_OK);
    EXPECT_EQ(QVMutexRelease(mutex.value), kNotOwner);
    std::thread([&] {
        other = QVMutexTryAcquire(mutex.value);
        QVMutexRelease(mutex.value);
    }).join();
    EXPECT_EQ(other, QV_S_OK);
}

TEST(RWLockThread, WritersExcludeEveryone)
{
    Handle lock{QV_INVALID_HANDLE, QVRWLockDestroy};
    ASSERT_EQ(QVRWLockCreate("rw", 0, &lock.value), QV_S_OK);
    std::atomic<int> readers{0};
    std::atomic<int> writers{0};
    std::atomic<int> violations{0};
    auto reader = [&] {
        for (int i = 0; i < 3000; ++i) {
            ASSERT_EQ(QVRWLockAcquireRead(lock.value), QV_S_OK);
            ++readers;
            if (writers.load() != 0) {
                ++violations;
            }
            std::this_thread::yield();
            --readers;
            ASSERT_EQ(QVRWLockReleaseRead(lock.value), QV_S_OK);
        }
    };
    auto writer = [&] {
        for (int i = 0; i < 1000; ++i) {
            ASSERT_EQ(QVRWLockAcquireWrite(lock.value), QV_S_OK);
            if (++writers != 1 || readers.load() != 0) {
                ++violations;
            }
            std::this_thread::yield();
            --writers;
            ASSERT_EQ(QVRWLockReleaseWrite(lock.value), QV_S_OK);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back(reader);
    }
    threads.emplace_back(writer);
    threads.emplace_back(writer);
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(violations.load(), 0);
}

TEST(RWLockThread, EitherReleaseEndsEitherHold)
{
    Handle lock{QV_INVALID_HANDLE, QVRWLockDestroy};
    ASSERT_EQ(QVRWLockCreate(nullptr, 0, &lock.value), QV_S_OK);
    QVRESULT other = QV_S_OK;
    auto tryWriteElsewhere = [&] {
        std::thread([&] {
            other = QVRWLockTryAcquireWrite(lock.value);
            if (other == QV_S_OK) {
                QVRWLockReleaseWrite(lock.value);
            }
        }).join();
        return other;
    };

    ASSERT_EQ(QVRWLockAcquireRead(lock.value), QV_S_OK);
    ASSERT_EQ(QVRWLockTryAcquireRead(lock.value), QV_S_OK);
    EXPECT_EQ(tryWriteElsewhere(), QV_E_BUSY);
    EXPECT_EQ(QVRWLockReleaseWrite(lock.value), QV_S_OK); // ends a shared hold
    EXPECT_EQ(QVRWLockReleaseRead(lock.value), QV_S_OK);
    EXPECT_EQ(tryWriteElsewhere(), QV_S_OK);

    ASSERT_EQ(QVRWLockAcquireWrite(lock.value), QV_S_OK);
    EXPECT_EQ(QVRWLockTryAcquireWrite(lock.value), QV_E_BUSY);
    EXPECT_EQ(QVRWLockReleaseRead(lock.value), QV_S_OK); // ends the exclusive hold
    EXPECT_EQ(QVRWLockReleaseRead(lock.value), kNotOwner);
    EXPECT_EQ(QVRWLockReleaseWrite(lock.value), kNotOwner);
    EXPECT_EQ(tryWriteElsewhere(), QV_S_OK);
}

TEST(EventThread, AutoResetAndWakesWaiter)
{
    Handle event{QV_INVALID_HANDLE, QVEventDestroy};
    ASSERT_EQ(QVEventCreate("event", 0, &event.value), QV_S_OK);
    EXPECT_EQ(QVEventTimedWait(event.value, 0), QV_E_TIMEOUT);
    ASSERT_EQ(QVEventSignal(event.value), QV_S_OK);
    ASSERT_EQ(QVEventSignal(event.value), QV_S_OK);
    EXPECT_EQ(QVEventTimedWait(event.value, 0), QV_S_OK);
    EXPECT_EQ(QVEventTimedWait(event.value, 0), QV_E_TIMEOUT); // signals do not add up

    std::atomic<int> woken{0};
    std::thread waiter([&] {
        EXPECT_EQ(QVEventWait(event.value), QV_S_OK);
        ++woken;
    });
    QVThreadSleep(20);
    EXPECT_EQ(woken.load(), 0);
    ASSERT_EQ(QVEventSignal(event.value), QV_S_OK);
    waiter.join();
    EXPECT_EQ(woken.load(), 1);
    EXPECT_EQ(QVEventTimedWait(event.value, 0), QV_E_TIMEOUT);
}

TEST(SyncTimedWait, TimesOutWithinBound)
{
    Handle event{QV_INVALID_HANDLE, QVEventDestroy};
    Handle gate{QV_INVALID_HANDLE, QVGateDestroy};
    Handle condition{QV_INVALID_HANDLE, QVConditionDestroy};
    ASSERT_EQ(QVEventCreate(nullptr, 0, &event.value), QV_S_OK);
    ASSERT_EQ(QVGateCreate(nullptr, 0, &gate.value), QV_S_OK);
    ASSERT_EQ(QVConditionCreate(nullptr, 0, &condition.value), QV_S_OK);
    ASSERT_EQ(QVConditionAcquire(condition.value), QV_S_OK);
    const std::pair<const char*, std::function<QVRESULT()>> waits[] = {
        {"event", [&] { return QVEventTimedWait(event.value, 60); }},
        {"gate", [&] { return QVGateTimedWait(gate.value, 60); }},
        {"condition", [&] { return QVConditionTimedWait(condition.value, 60); }},
    };
    for (const auto& wait : waits) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(wait.second(), QV_E_TIMEOUT) << wait.first;
        const int64_t elapsed = qvtest::MillisecondsSince(start);
        EXPECT_GE(elapsed, 59) << wait.first;
        EXPECT_LT(elapsed, 3000) << wait.first;
    }
    // The condition's lock is held again after the time-out.
    EXPECT_EQ(QVConditionRelease(condition.value), QV_S_OK);
}

// Waiters blocked in a closed gate all pass when it opens, even if it closes
// again at once; an open gate stays open.
TEST(GateThread, OpeningLetsEveryWaiterThrough)
{
    Handle gate{QV_INVALID_HANDLE, QVGateDestroy};
    Handle started{QV_INVALID_HANDLE, QVSemaphoreDestroy};
    ASSERT_EQ(QVGateCreate("gate", 0, &gate.value), QV_S_OK);
    ASSERT_EQ(QVSemaphoreCreate(0, nullptr, 0, &started.value), QV_S_OK);
    EXPECT_EQ(QVGateTryWait(gate.value), QV_E_BUSY);
    for (bool closeAtOnce : {false, true}) {
        std::atomic<int> passed{0};
        std::vector<std::thread> waiters;
        for (int i = 0; i < 6; ++i) {
            waiters.emplace_back([&] {
                QVSemaphorePost(started.value);
                EXPECT_EQ(QVGateTimedWait(gate.value, 5000), QV_S_OK);
                ++passed;
            });
        }
        for (int i = 0; i < 6; ++i) {
            ASSERT_EQ(QVSemaphoreWait(started.value), QV_S_OK);
        }
        QVThreadSleep(30); // let them block in the gate
        EXPECT_EQ(passed.load(), 0);
        ASSERT_EQ(QVGateOpen(gate.value), QV_S_OK);
        if (closeAtOnce) {
            ASSERT_EQ(QVGateClose(gate.value), QV_S_OK);
        }
        for (auto& waiter : waiters) {
            waiter.join();
        }
        EXPECT_EQ(passed.load(), 6);
        EXPECT_EQ(QVGateTryWait(gate.value), closeAtOnce ? QV_E_BUSY : QV_S_OK);
        EXPECT_EQ(QVGateTimedWait(gate.value, 0), closeAtOnce ? QV_E_TIMEOUT : QV_S_OK);
        ASSERT_EQ(QVGateClose(gate.value), QV_S_OK);
    }
}

TEST(SemaphoreThread, CountsAndValue)
{
    Handle semaphore{QV_INVALID_HANDLE, QVSemaphoreDestroy};
    ASSERT_EQ(QVSemaphoreCreate(2, "sem", 0, &semaphore.value), QV_S_OK);
    int32_t value = -1;
    ASSERT_EQ(QVSemaphoreGetValue(semaphore.value, &value), QV_S_OK);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(QVSemaphoreTryWait(semaphore.value), QV_S_OK);
    EXPECT_EQ(QVSemaphoreWait(semaphore.value), QV_S_OK);
    EXPECT_EQ(QVSemaphoreTryWait(semaphore.value), QV_E_BUSY);
    ASSERT_EQ(QVSemaphoreGetValue(semaphore.value, &value), QV_S_OK);
    EXPECT_EQ(value, 0);

    constexpr int kItems = 500;
    std::thread consumer([&] {
        for (int i = 0; i < kItems; ++i) {
            ASSERT_EQ(QVSemaphoreWait(semaphore.value), QV_S_OK);
        }
    });
    for (int i = 0; i < kItems + 3; ++i) {
        ASSERT_EQ(QVSemaphorePost(semaphore.value), QV_S_OK);
    }
    consumer.join();
    ASSERT_EQ(QVSemaphoreGetValue(semaphore.value, &value), QV_S_OK);
    EXPECT_EQ(value, 3);

    QVHANDLE tooMany = QV_INVALID_HANDLE;
    EXPECT_EQ(QVSemaphoreCreate(0x80000000u, nullptr, 0, &tooMany), QV_E_INVALIDARG);
}

TEST(ConditionThread, PredicateHandOverAndMisuse)
{
    Handle condition{QV_INVALID_HANDLE, QVConditionDestroy};
    ASSERT_EQ(QVConditionCreate("condition", 0, &condition.value), QV_S_OK);
    EXPECT_EQ(QVConditionWait(condition.value), kNotOwner);
    EXPECT_EQ(QVConditionTimedWait(condition.value, 10), kNotOwner);
    EXPECT_EQ(QVConditionRelease(condition.value), kNotOwner);
    ASSERT_EQ(QVConditionAcquire(condition.value), QV_S_OK);
    EXPECT_EQ(QVConditionAcquire(condition.value), kDeadlock);
    ASSERT_EQ(QVConditionRelease(condition.value), QV_S_OK);

    int ready = 0; // guarded by the condition's lock
    int seen = 0;
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&] {
            ASSERT_EQ(QVConditionAcquire(condition.value), QV_S_OK);
            while (ready == 0) {
                ASSERT_EQ(QVConditionWait(condition.value), QV_S_OK);
            }
            ++seen;
            ASSERT_EQ(QVConditionRelease(condition.value), QV_S_OK);
        });
    }
    QVThreadSleep(20);
    ASSERT_EQ(QVConditionAcquire(condition.value), QV_S_OK);
    ready = 1;
    ASSERT_EQ(QVConditionBroadcast(condition.value), QV_S_OK);
    ASSERT_EQ(QVConditionRelease(condition.value), QV_S_OK);
    for (auto& waiter : waiters) {
        waiter.join();
    }
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(QVConditionSignal(condition.value), QV_S_OK); // nobody waiting: harmless
}

} // namespace
