#include "AllocationSweep.h"
#include "ExecTestSupport.h"

#include <qv/exec/Runnable.h>
#include <qv/exec/Thread.h>
#include <qv/ipc/Semaphore.h>
#include <qv/ipc/SemaphoreR.h>
#include <qv/sync/Event.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using exectest::code;
using exectest::thrownBy;
using exectest::uniqueName;
using qv::ipc::Semaphore;
using qv::ipc::SemaphoreR;

struct NameGuard : exectest::NameGuard {
    explicit NameGuard(const char* stem) : exectest::NameGuard(stem, QVNamedSemUnlink) {}
};

TEST(IpcSemaphore, CountsAndIsSharedByName)
{
    NameGuard name("count");
    Semaphore first(name.c_str(), 2);
    EXPECT_EQ(first.getValue(), 2);
    // Opened by name: the same semaphore, the initial count is not applied.
    Semaphore second(name.c_str(), 7);
    EXPECT_EQ(second.getValue(), 2);
    EXPECT_TRUE(first.tryWait());
    first.wait();
    EXPECT_FALSE(second.tryWait());
    EXPECT_EQ(second.getValue(), 0);
    second.signal();
    EXPECT_EQ(first.getValue(), 1);
    EXPECT_TRUE(first.tryWait());
}

TEST(IpcSemaphore, NamesAreCheckedAndUnlinkRemovesThem)
{
    const uint32_t handles = QVHandleCountOpen();
    EXPECT_EQ(thrownBy([] { Semaphore s("has/slash", 0); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([] { Semaphore s("", 0); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([] { Semaphore s(std::string(300, 'x').c_str(), 0); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([] { Semaphore s(nullptr, 0); }).code, code(0x80004003));
    EXPECT_EQ(thrownBy([] { Semaphore s("too-many", 0x100000000ul); }).code, code(0x80070057));
    EXPECT_EQ(QVHandleCountOpen(), handles);

    const std::string name = uniqueName("unlink");
    {
        Semaphore semaphore(name.c_str(), 1);
        Semaphore::unlink(name.c_str());
        // Still usable by those that have it open.
        EXPECT_TRUE(semaphore.tryWait());
    }
    auto again = thrownBy([&] { Semaphore::unlink(name.c_str()); });
    EXPECT_EQ(again.type, "ResultException");
    EXPECT_EQ(again.code, code(0x80070002));
    // A leading slash names the same semaphore.
    {
        Semaphore plain(name.c_str(), 3);
        Semaphore slashed(("/" + name).c_str(), 0);
        EXPECT_EQ(slashed.getValue(), 3);
    }
    Semaphore::unlink(name.c_str());
}

TEST(IpcSemaphore, OpenFailureLeavesNoHandle)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    NameGuard name("fault");
    const uint32_t handles = QVHandleCountOpen();
    ASSERT_EQ(QVFaultArm("QVNamedSemOpen", 1, code(0x80070005)), 0);
    auto denied = thrownBy([&] { Semaphore s(name.c_str(), 0); });
    QVFaultDisarmAll();
    EXPECT_EQ(denied.type, "ResultException");
    EXPECT_EQ(denied.code, code(0x80070005));
    EXPECT_EQ(QVHandleCountOpen(), handles);

    Semaphore semaphore(name.c_str(), 0);
    ASSERT_EQ(QVFaultArm("QVSemaphorePost", 1, code(0x80004005)), 0);
    EXPECT_EQ(thrownBy([&] { semaphore.signal(); }).code, code(0x80004005));
    QVFaultDisarmAll();
    EXPECT_EQ(semaphore.getValue(), 0);
}

TEST(IpcSemaphore, ConcurrentWaitersEachGetOneSignal)
{
    NameGuard name("threads");
    Semaphore semaphore(name.c_str(), 0);
    std::atomic<int> passed{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&] {
            for (int n = 0; n < 250; ++n) {
                semaphore.wait();
                passed.fetch_add(1);
            }
        });
    }
    for (int i = 0; i < 1000; ++i)
        semaphore.signal();
    for (auto& waiter : waiters)
        waiter.join();
    EXPECT_EQ(passed.load(), 1000);
    EXPECT_EQ(semaphore.getValue(), 0);
}

TEST(IpcSemaphore, SemaphoreRThreadHoldingItTakesItAgainOthersWait)
{
    NameGuard name("recursive");
    SemaphoreR lock(name.c_str(), 1);
    lock.wait();
    EXPECT_TRUE(lock.tryWait()); // the holder again: no count taken
    lock.wait();
    EXPECT_EQ(lock.getOwner(), qv::exec::Thread::getCurrentID());
    EXPECT_EQ(lock.getDepth(), 3u);
    EXPECT_EQ(lock.getValue(), 0);

    std::atomic<bool> triedWhileHeld{true};
    std::atomic<bool> acquired{false};
    std::atomic<uint32_t> depthSeenByOther{99};
    qv::sync::Event tried;
    std::thread other([&] {
        triedWhileHeld = lock.tryWait();
        depthSeenByOther = lock.getDepth();
        tried.signal();
        lock.wait();
        acquired = true;
        lock.signal();
    });
    tried.wait();
    EXPECT_FALSE(triedWhileHeld.load());
    EXPECT_EQ(depthSeenByOther.load(), 0u);
    lock.signal();
    lock.signal();
    qv::exec::Thread::sleep(20);
    EXPECT_FALSE(acquired.load()); // still held once
    EXPECT_EQ(lock.getValue(), 0);
    lock.signal();
    other.join();
    EXPECT_TRUE(acquired.load());
    EXPECT_EQ(lock.getOwner(), 0u);
    EXPECT_EQ(lock.getValue(), 1);
}

TEST(IpcSemaphore, SemaphoreRThreadsOfOneProcessQueueOnTheMutexWhateverTheCount)
{
    NameGuard name("recursive-count");
    qv::sync::Mutex shared;
    SemaphoreR lock(name.c_str(), 2, &shared);
    lock.wait();
    // A second count is free, but not for another thread of this process.
    std::atomic<bool> got{true};
    std::thread other([&] { got = lock.tryWait(); });
    other.join();
    EXPECT_FALSE(got.load());
    EXPECT_EQ(lock.getValue(), 1);
    // Another process (here: another object of the same name on its own
    // mutex) can take the free count.
    SemaphoreR elsewhere(name.c_str(), 0);
    std::thread third([&] {
        got = elsewhere.tryWait();
        if (got.load())
            elsewhere.signal();
    });
    third.join();
    EXPECT_TRUE(got.load());
    lock.signal();
    EXPECT_EQ(lock.getValue(), 2);
}

TEST(IpcSemaphore, SemaphoreRSignalByANonHolderPostsAndLeavesTheHolder)
{
    NameGuard name("recursive-post");
    SemaphoreR lock(name.c_str(), 0);
    std::thread poster([&] { lock.signal(); });
    poster.join();
    EXPECT_EQ(lock.getOwner(), 0u);
    EXPECT_EQ(lock.getValue(), 1);
    lock.wait();
    EXPECT_EQ(lock.getValue(), 0);
    lock.signal();
    EXPECT_EQ(lock.getValue(), 1);
}

TEST(IpcSemaphore, SemaphoreRFailedPostKeepsTheHolder)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    NameGuard name("recursive-fault");
    SemaphoreR lock(name.c_str(), 1);
    lock.wait();
    ASSERT_EQ(QVFaultArm("QVSemaphorePost", 1, code(0x80004005)), 0);
    EXPECT_EQ(thrownBy([&] { lock.signal(); }).code, code(0x80004005));
    QVFaultDisarmAll();
    EXPECT_EQ(lock.getOwner(), qv::exec::Thread::getCurrentID());
    EXPECT_EQ(lock.getDepth(), 1u);
    ASSERT_EQ(QVFaultArm("QVSemaphoreWait", 1, code(0x80004005)), 0);
    std::thread other([&] { EXPECT_EQ(thrownBy([&] { lock.wait(); }).code, code(0x80004005)); });
    lock.signal(); // lets the other thread reach the (failing) semaphore wait
    other.join();
    QVFaultDisarmAll();
    // The failed wait gave the mutex back: this thread can take it again.
    EXPECT_TRUE(lock.tryWait());
    lock.signal();
}

TEST(IpcSemaphore, ConstructionSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    NameGuard name("sweep");
    const uint32_t handles = QVHandleCountOpen();
    int32_t value = -1;
    const int failures = qvtest::sweepAllocations(
        [&] {
            SemaphoreR lock(name.c_str(), 1);
            lock.wait();
            value = lock.getValue();
            lock.signal();
        },
        [&] { EXPECT_EQ(QVHandleCountOpen(), handles); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(value, 0);
}

} // namespace
