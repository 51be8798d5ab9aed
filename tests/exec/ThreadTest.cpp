#include "AllocationSweep.h"
#include "ExecTestSupport.h"

#include <qv/exec/Runnable.h>
#include <qv/exec/Thread.h>
#include <qv/sync/Event.h>
#include <qv/sync/Gate.h>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

using exectest::code;
using exectest::Thrown;
using exectest::thrownBy;
using qv::Reference;
using qv::exec::Runnable;
using qv::exec::Thread;

// Tells when it is destroyed.
class WatchedRunnable : public Runnable {
public:
    WatchedRunnable(std::function<void()> body, std::atomic<bool>* destroyed)
        : Runnable(std::move(body)), m_destroyed(destroyed)
    {}
    ~WatchedRunnable() override { m_destroyed->store(true); }

private:
    std::atomic<bool>* m_destroyed;
};

TEST(Thread, ThreadRunsTheRunnableOnItsOwnThreadWithTheKernelId)
{
    std::atomic<uint32_t> seenId{0};
    Reference<Runnable> task = qv::makeReference<Runnable>([&] { seenId = Thread::getCurrentID(); });
    Thread thread(task.get(), u"worker");
    EXPECT_EQ(thread.getID(), 0u);
    thread.start();
    const uint32_t id = thread.getID();
    EXPECT_NE(id, 0u);
    EXPECT_NE(id, Thread::getCurrentID());
    EXPECT_EQ(thread.join(), nullptr);
    EXPECT_EQ(seenId.load(), id);
    EXPECT_EQ(thread.getID(), 0u);
    EXPECT_TRUE(thread.getName().equals(u"worker"));
    EXPECT_EQ(Thread::getCurrentID(), static_cast<uint32_t>(gettid()));

    Thread empty; // no runnable: starts and joins all the same
    empty.start();
    EXPECT_EQ(empty.join(), nullptr);
}

TEST(Thread, ThreadLifeCycleChecksThrowAndChangeNothing)
{
    std::atomic<int> runs{0};
    Reference<Runnable> task = qv::makeReference<Runnable>([&] { ++runs; });
    Thread thread(task.get());

    EXPECT_EQ(thrownBy([&] { thread.join(); }).what(), "IllegalStateException: thread not started");

    thread.start();
    const uint32_t id = thread.getID();
    EXPECT_EQ(thrownBy([&] { thread.start(); }).what(), "IllegalStateException: thread already started");
    EXPECT_EQ(thread.getID(), id);
    thread.join();

    // Joined: it can be started anew, and joined again.
    thread.start();
    thread.join();
    EXPECT_EQ(runs.load(), 2);
    EXPECT_EQ(thrownBy([&] { thread.join(); }).message, "thread not started");
}

// Runs body on a thread of its own; the code it joined with and what it
// wrote to standard error.
std::pair<qv::Result, std::string> joinedFailure(std::function<void()> body)
{
    Reference<Runnable> task = qv::makeReference<Runnable>(std::move(body));
    Thread thread(task.get());
    testing::internal::CaptureStderr();
    thread.start();
    void* result = thread.join();
    return {Thread::resultCode(result), testing::internal::GetCapturedStderr()};
}

TEST(Thread, ThreadExceptionLeavingRunIsReportedAndJoinedAsItsCode)
{
    auto library = joinedFailure([] { throw qv::ResultException(code(0x80070057), QV_STR(u"bad input here")); });
    EXPECT_EQ(library.first, code(0x80070057));
    EXPECT_NE(library.second.find("bad input here"), std::string::npos) << library.second;
    EXPECT_NE(library.second.find("0x80070057"), std::string::npos) << library.second;

    // Not a library exception: a general failure, with its what().
    auto foreign = joinedFailure([] { throw std::runtime_error("plain failure"); });
    EXPECT_EQ(foreign.first, code(0x80004005));
    EXPECT_NE(foreign.second.find("plain failure"), std::string::npos) << foreign.second;

    // Even a library exception with a success code joins as a failure.
    EXPECT_EQ(joinedFailure([] { throw qv::ResultException(0); }).first, code(0x80004005));
}

TEST(Thread, ThreadHoldsItsOwnReferenceUntilRunReturns)
{
    qv::sync::Event go;
    std::atomic<bool> destroyed{false};
    Reference<Runnable> task = qv::makeReference<WatchedRunnable>([&] { go.wait(); }, &destroyed);
    {
        Thread thread(task.get());
        EXPECT_EQ(task->GetRefCount(), 2);
        thread.start();
        EXPECT_EQ(task->GetRefCount(), 3);
        go.signal();
        thread.join();
        EXPECT_EQ(task->GetRefCount(), 2);
    }
    EXPECT_EQ(task->GetRefCount(), 1);
    EXPECT_FALSE(destroyed.load());
}

TEST(Thread, ThreadDestroyedWhileRunningIsDetachedAndReleasesTheRunnableAtTheEnd)
{
    qv::sync::Event go;
    std::atomic<bool> finished{false};
    std::atomic<bool> destroyed{false};
    const uint32_t handlesBefore = QVHandleCountOpen();
    {
        Reference<Runnable> task = qv::makeReference<WatchedRunnable>(
            [&] {
                go.wait();
                finished = true;
            },
            &destroyed);
        Thread thread(task.get());
        thread.start();
    }
    // Only the running thread holds the runnable now.
    EXPECT_FALSE(destroyed.load());
    EXPECT_EQ(QVHandleCountOpen(), handlesBefore);
    go.signal();
    for (int i = 0; i < 2000 && !destroyed.load(); ++i)
        Thread::sleep(1);
    EXPECT_TRUE(finished.load());
    EXPECT_TRUE(destroyed.load());
}

TEST(Thread, ThreadCopiesAndClonesAreNotStarted)
{
    qv::sync::Gate go; // stays open: lets both threads through
    std::atomic<int> runs{0};
    Reference<Runnable> task = qv::makeReference<Runnable>([&] {
        ++runs;
        go.wait();
    });
    Thread original(task.get(), u"original");
    original.setStackSize(256 * 1024);
    original.start();
    Thread copy(original);
    EXPECT_EQ(copy.getID(), 0u);
    EXPECT_EQ(copy.getStackSize(), 256u * 1024u);
    EXPECT_TRUE(copy.getName().equals(u"original"));
    EXPECT_EQ(thrownBy([&] { copy.join(); }).message, "thread not started");
    Reference<qv::Object> cloned(original.clone());
    Thread* clone = dynamic_cast<Thread*>(cloned.get());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->getID(), 0u);
    // The copy runs the same runnable on a thread of its own.
    copy.start();
    go.open();
    original.join();
    copy.join();
    EXPECT_EQ(runs.load(), 2);
}

// The stack the new thread really got, as the system reports it.
size_t stackSizeOfAThreadStartedWith(uint32_t requested)
{
    std::atomic<size_t> size{0};
    Reference<Runnable> probe = qv::makeReference<Runnable>([&] {
        pthread_attr_t attributes;
        size_t bytes = 0;
        if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
            pthread_attr_getstacksize(&attributes, &bytes);
            pthread_attr_destroy(&attributes);
        }
        size = bytes;
    });
    Thread thread(probe.get());
    thread.setStackSize(requested);
    thread.start();
    thread.join();
    return size.load();
}

TEST(Thread, ThreadStackSizeIsUsedAndRaisedToTheMinimum)
{
    // More than the usual 8 MiB default, so an ignored size shows. The system
    // may hand out a larger cached stack, never a smaller one.
    const size_t asked = 16 * 1024 * 1024 + 100;
    EXPECT_GE(stackSizeOfAThreadStartedWith(static_cast<uint32_t>(asked)), asked);
    EXPECT_GE(stackSizeOfAThreadStartedWith(1), static_cast<size_t>(sysconf(_SC_THREAD_STACK_MIN)));
}

TEST(Thread, SleepWaitsAtLeastTheTimeAsked)
{
    const auto start = std::chrono::steady_clock::now();
    Thread::sleep(30);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST(Thread, ThreadPlatformFailuresCarryTheirMessagesAndChangeNothing)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    Reference<Runnable> task = qv::makeReference<Runnable>([] {});
    Thread thread(task.get());

    ASSERT_EQ(QVFaultArm("QVThreadCreate", 1, code(0x80070008)), 0);
    EXPECT_EQ(thrownBy([&] { thread.start(); }),
              (Thrown{"ResultException", code(0x80070008), "thread creation failed"}));
    QVFaultDisarmAll();
    EXPECT_EQ(thread.getID(), 0u);
    EXPECT_EQ(task->GetRefCount(), 2); // the new thread's reference was given back

    ASSERT_EQ(QVFaultArm("QVThreadCreate", 1, code(0x8007000E)), 0);
    EXPECT_EQ(thrownBy([&] { thread.start(); }).type, "OutOfMemoryException");
    QVFaultDisarmAll();

    thread.start();
    const uint32_t id = thread.getID();
    ASSERT_EQ(QVFaultArm("QVThreadJoin", 1, code(0x80004005)), 0);
    EXPECT_EQ(thrownBy([&] { thread.join(); }), (Thrown{"ResultException", code(0x80004005), "thread join failed"}));
    QVFaultDisarmAll();
    EXPECT_EQ(thread.getID(), id);
    EXPECT_EQ(thread.join(), nullptr);
}

TEST(Thread, ThreadJoiningItselfFailsWithTheJoinMessage)
{
    qv::sync::Event ready;
    Thread* self = nullptr;
    std::string message;
    Reference<Runnable> task = qv::makeReference<Runnable>([&] {
        ready.wait();
        message = thrownBy([&] { self->join(); }).message;
    });
    Thread thread(task.get());
    self = &thread;
    thread.start();
    ready.signal();
    thread.join();
    EXPECT_EQ(message, "thread join failed");
}

TEST(Thread, ThreadHammerStartAndJoinFromEightThreads)
{
    std::atomic<int> runs{0};
    Reference<Runnable> task = qv::makeReference<Runnable>([&] { runs.fetch_add(1); });
    std::vector<std::thread> drivers;
    for (int d = 0; d < 8; ++d) {
        drivers.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                Thread thread(task.get());
                thread.start();
                thread.join();
            }
        });
    }
    for (auto& driver : drivers)
        driver.join();
    EXPECT_EQ(runs.load(), 400);
    EXPECT_EQ(task->GetRefCount(), 1);
}

TEST(Thread, ThreadStartSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    std::atomic<int> runs{0};
    Reference<Runnable> task = qv::makeReference<Runnable>([&] { runs.fetch_add(1); });
    Thread thread(task.get(), u"swept");
    const int failures = qvtest::sweepAllocations(
        [&] {
            Thread copy(thread);
            copy.start();
            copy.join();
        },
        [&] { EXPECT_EQ(task->GetRefCount(), 2); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(runs.load(), 1);
}

} // namespace
