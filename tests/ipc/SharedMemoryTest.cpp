#include "AllocationSweep.h"
#include "ExecTestSupport.h"

#include <qv/exec/Process.h>
#include <qv/ipc/Semaphore.h>
#include <qv/ipc/SharedMemory.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using exectest::childProgram;
using exectest::code;
using exectest::thrownBy;
using exectest::uniqueName;
using exectest::utf16;
using qv::ipc::SharedMemory;

struct RegionGuard : exectest::NameGuard {
    explicit RegionGuard(const char* stem) : exectest::NameGuard(stem, QVSharedMemUnlink) {}
};

TEST(SharedMemory, TwoMappingsOfOneNameSeeTheSameBytes)
{
    RegionGuard name("region");
    SharedMemory created(name.c_str(), 4096);
    ASSERT_NE(created.getAddress(), nullptr);
    EXPECT_EQ(created.getSize(), 4096u);
    const unsigned char* bytes = static_cast<const unsigned char*>(created.getAddress());
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[4095], 0);
    std::strcpy(static_cast<char*>(created.getAddress()), "shared");

    SharedMemory opened(name.c_str(), 0, SharedMemory::OPEN);
    EXPECT_EQ(opened.getSize(), 4096u);
    EXPECT_NE(opened.getAddress(), created.getAddress());
    EXPECT_STREQ(static_cast<const char*>(opened.getAddress()), "shared");

    // Asking for more grows the region; asking for less keeps its size.
    SharedMemory larger(name.c_str(), 10000, SharedMemory::OPEN);
    EXPECT_EQ(larger.getSize(), 10000u);
    EXPECT_STREQ(static_cast<const char*>(larger.getAddress()), "shared");
    SharedMemory smaller(name.c_str(), 10, SharedMemory::CREATE);
    EXPECT_EQ(smaller.getSize(), 10000u);
}

TEST(SharedMemory, BadRequestsThrowThePlatformCodeAndLeaveNoHandle)
{
    const uint32_t handles = QVHandleCountOpen();
    const std::string absent = uniqueName("absent");
    auto missing = thrownBy([&] { SharedMemory m(absent.c_str(), 16, SharedMemory::OPEN); });
    EXPECT_EQ(missing.type, "ResultException");
    EXPECT_EQ(missing.code, code(0x80070002));
    EXPECT_EQ(thrownBy([&] { SharedMemory m(absent.c_str(), 0, SharedMemory::CREATE); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([] { SharedMemory m("a/b", 16); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([] { SharedMemory m(nullptr, 16); }).code, code(0x80004003));
    EXPECT_EQ(thrownBy([&] { SharedMemory m(absent.c_str(), 16, 0x80); }).code, code(0x80070057));
    EXPECT_EQ(thrownBy([&] { SharedMemory::unlink(absent.c_str()); }).code, code(0x80070002));
    EXPECT_EQ(QVHandleCountOpen(), handles);
}

TEST(SharedMemory, MapFailureClosesTheRegionAgain)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    RegionGuard name("map-fault");
    const uint32_t handles = QVHandleCountOpen();
    ASSERT_EQ(QVFaultArm("QVSharedMemMap", 1, code(0x80070008)), 0);
    EXPECT_EQ(thrownBy([&] { SharedMemory m(name.c_str(), 64); }).code, code(0x80070008));
    QVFaultDisarmAll();
    EXPECT_EQ(QVHandleCountOpen(), handles);
}

TEST(SharedMemory, ParentAndChildCountUnderTheSemaphoreWithoutLosingAnIncrement)
{
    RegionGuard memoryName("counter");
    const std::string semaphoreName = uniqueName("counter-lock");
    SharedMemory memory(memoryName.c_str(), sizeof(long));
    qv::ipc::Semaphore lock(semaphoreName.c_str(), 1);
    volatile long* counter = static_cast<volatile long*>(memory.getAddress());
    const long times = 100000;

    qv::exec::Process child(
        childProgram().c_str(),
        utf16("count " + semaphoreName + " " + memoryName.name + " " + std::to_string(times)).c_str(), nullptr, nullptr,
        0);
    for (long i = 0; i < times; ++i) {
        lock.wait();
        *counter = *counter + 1;
        lock.signal();
    }
    EXPECT_EQ(child.join(), 0);
    EXPECT_EQ(*counter, 2 * times);
    qv::ipc::Semaphore::unlink(semaphoreName.c_str());
}

TEST(SharedMemory, OpenSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    RegionGuard name("sweep");
    const uint32_t handles = QVHandleCountOpen();
    size_t size = 0;
    const int failures = qvtest::sweepAllocations(
        [&] {
            SharedMemory memory(name.c_str(), 256);
            size = memory.getSize();
        },
        [&] { EXPECT_EQ(QVHandleCountOpen(), handles); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(size, 256u);
}

} // namespace
