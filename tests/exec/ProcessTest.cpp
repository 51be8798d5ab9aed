#include "AllocationSweep.h"
#include "ExecTestSupport.h"

#include <qv/exec/Process.h>
#include <qv/exec/Thread.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using exectest::childProgram;
using exectest::code;
using exectest::countChildren;
using exectest::countOpenDescriptors;
using exectest::Thrown;
using exectest::thrownBy;
using exectest::utf16;
using qv::exec::Process;

std::unique_ptr<Process> startChild(const std::string& arguments, unsigned flags = 0)
{
    return std::make_unique<Process>(childProgram().c_str(), utf16(arguments).c_str(), nullptr, nullptr, flags);
}

// Waits until this process has no children left, zombies included.
bool childrenGone(int seconds)
{
    for (int i = 0; i < seconds * 100; ++i) {
        if (countChildren() == 0)
            return true;
        qv::exec::Thread::sleep(10);
    }
    return false;
}

TEST(Process, JoinGivesTheExitCodeOnceAndGetExitCodeOnlyAfterIt)
{
    auto child = startChild("exit 7");
    EXPECT_EQ(thrownBy([&] { child->getExitCode(); }).what(), "IllegalStateException: process has not been joined");
    EXPECT_EQ(child->join(), 7);
    EXPECT_EQ(child->getExitCode(), 7);
    EXPECT_EQ(thrownBy([&] { child->join(); }).what(), "IllegalStateException: process already joined");
    EXPECT_EQ(child->getExitCode(), 7);
}

TEST(Process, GetIdAlwaysThrowsNotInAUsableState)
{
    auto child = startChild("exit 0");
    auto running = thrownBy([&] { child->getID(); });
    EXPECT_EQ(running.type, "ResultException");
    EXPECT_EQ(running.code, code(0x80004007));
    child->join();
    EXPECT_EQ(thrownBy([&] { child->getID(); }).code, code(0x80004007));
    EXPECT_EQ(Process::getCurrentID(), static_cast<uint32_t>(getpid()));
}

TEST(Process, ChildEndedBySignalReports128PlusTheSignal)
{
    EXPECT_EQ(startChild("signal")->join(), 128 + 15);
}

TEST(Process, TryJoinNeverBlocksAndJoinsOnceEnded)
{
    auto child = startChild("sleep 300");
    EXPECT_FALSE(child->tryJoin());
    EXPECT_EQ(thrownBy([&] { child->getExitCode(); }).message, "process has not been joined");
    bool ended = false;
    for (int i = 0; i < 1000 && !ended; ++i) {
        ended = child->tryJoin();
        if (!ended)
            qv::exec::Thread::sleep(10);
    }
    ASSERT_TRUE(ended);
    EXPECT_EQ(child->getExitCode(), 5);
    EXPECT_EQ(thrownBy([&] { child->tryJoin(); }).message, "process already joined");
    EXPECT_EQ(thrownBy([&] { child->join(); }).message, "process already joined");
}

TEST(Process, CreationFailuresThrowThePlatformCodeAndLeaveNothingBehind)
{
    const int descriptors = countOpenDescriptors();
    const uint32_t handles = QVHandleCountOpen();
    const int children = countChildren();

    EXPECT_EQ(thrownBy([] { Process process(u"/nonexistent/program"); }),
              (Thrown{"ResultException", code(0x80070002), ""}));

    EXPECT_EQ(thrownBy([] { Process process(u"qvcl3-no-such-program-anywhere"); }).code, code(0x80070002));

    EXPECT_EQ(thrownBy([] { Process process(childProgram().c_str(), u"exit 0", u"/nonexistent/directory"); }),
              (Thrown{"ResultException", code(0x80070002), ""}));
    EXPECT_EQ(thrownBy([] { Process process(u""); }), (Thrown{"ResultException", code(0x80070057), ""}));

    const char16_t* badEnvironment[] = {u"NOEQUALSSIGN", nullptr};
    EXPECT_EQ(thrownBy([&] { Process process(childProgram().c_str(), u"exit 0", nullptr, badEnvironment); }).code,
              code(0x80070057));

    for (unsigned flags : {unsigned(Process::INHERIT_STDERR | Process::MERGE_STDERR), 0x100u}) {
        EXPECT_EQ(thrownBy([&] { Process process(childProgram().c_str(), u"exit 0", nullptr, nullptr, flags); }).code,
                  code(0x80070057))
            << flags;
    }

    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(QVHandleCountOpen(), handles);
    EXPECT_EQ(countChildren(), children);
}

TEST(Process, JoinFailureKeepsTheChildJoinable)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    auto child = startChild("exit 3");
    ASSERT_EQ(QVFaultArm("QVProcessJoin", 1, code(0x80004005)), 0);
    EXPECT_EQ(thrownBy([&] { child->join(); }), (Thrown{"ResultException", code(0x80004005), "process join failed"}));
    QVFaultDisarmAll();
    EXPECT_EQ(thrownBy([&] { child->getExitCode(); }).message, "process has not been joined");

    ASSERT_EQ(QVFaultArm("QVProcessGetExitCode", 1, code(0x80004005)), 0);
    EXPECT_EQ(thrownBy([&] { child->tryJoin(); }).message, "process join failed");
    QVFaultDisarmAll();
    EXPECT_EQ(child->join(), 3);

    ASSERT_EQ(QVFaultArm("QVProcessCreate", 1, code(0x8007000E)), 0);
    EXPECT_EQ(thrownBy([] { startChild("exit 0"); }).type, "OutOfMemoryException");
    QVFaultDisarmAll();
}

TEST(Process, DetachedChildrenAreReapedNoZombiesAfterAThousand)
{
    ASSERT_TRUE(childrenGone(10));
    const int descriptors = countOpenDescriptors();
    for (int i = 0; i < 1000; ++i) {
        // Destroyed while running (most of them) or already ended.
        Process child(u"/bin/true");
    }
    EXPECT_TRUE(childrenGone(30)) << countChildren() << " children left";
    EXPECT_EQ(countOpenDescriptors(), descriptors);
}

TEST(Process, ConcurrentStartAndJoinOf200ChildrenFromEightThreads)
{
    ASSERT_TRUE(childrenGone(10));
    const int descriptors = countOpenDescriptors();
    const uint32_t handles = QVHandleCountOpen();
    std::atomic<int> wrongCodes{0};
    std::vector<std::thread> drivers;
    for (int d = 0; d < 8; ++d) {
        drivers.emplace_back([&, d] {
            for (int i = 0; i < 25; ++i) {
                const int expected = (d * 25 + i) % 100;
                Process child(childProgram().c_str(), utf16("code " + std::to_string(expected)).c_str(), nullptr,
                              nullptr);
                if (child.join() != expected)
                    wrongCodes.fetch_add(1);
            }
        });
    }
    for (auto& driver : drivers)
        driver.join();
    EXPECT_EQ(wrongCodes.load(), 0);
    EXPECT_EQ(countChildren(), 0);
    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(QVHandleCountOpen(), handles);
}

TEST(Process, StartAndJoinSurviveEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const int descriptors = countOpenDescriptors();
    int exitCode = -1;
    const int failures = qvtest::sweepAllocations(
        [&] {
            Process child(childProgram().c_str(), u"code 9");
            exitCode = child.join();
        },
        [&] { EXPECT_EQ(countOpenDescriptors(), descriptors); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(exitCode, 9);
    EXPECT_TRUE(childrenGone(10));
}

} // namespace
