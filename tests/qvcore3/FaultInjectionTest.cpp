#include "TestSupport.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace {

class FaultInjection : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!QVFaultInjectionAvailable()) {
            GTEST_SKIP() << "built without fault injection";
        }
    }
    void TearDown() override { QVFaultDisarmAll(); }
};

TEST_F(FaultInjection, CreateFailsOnTheNthCallOnly)
{
    const uint32_t before = QVHandleCountOpen();
    ASSERT_EQ(QVFaultArm("QVMutexCreate", 3, QV_E_FAIL), QV_S_OK);
    QVHANDLE handles[4] = {QV_INVALID_HANDLE, QV_INVALID_HANDLE, QV_INVALID_HANDLE, QV_INVALID_HANDLE};
    EXPECT_EQ(QVMutexCreate(nullptr, 0, nullptr), QV_E_POINTER); // rejected calls are not counted
    EXPECT_EQ(QVMutexCreate(nullptr, 0, &handles[0]), QV_S_OK);
    EXPECT_EQ(QVMutexCreate(nullptr, 0, &handles[1]), QV_S_OK);
    EXPECT_EQ(QVMutexCreate(nullptr, 0, &handles[2]), QV_E_FAIL);
    EXPECT_EQ(handles[2], QV_INVALID_HANDLE);
    EXPECT_EQ(QVHandleCountOpen(), before + 2);
    EXPECT_EQ(QVMutexCreate(nullptr, 0, &handles[3]), QV_S_OK);
    for (QVHANDLE handle : {handles[0], handles[1], handles[3]}) {
        EXPECT_EQ(QVMutexDestroy(handle), QV_S_OK);
    }
    EXPECT_EQ(QVHandleCountOpen(), before);
}

TEST_F(FaultInjection, WaitsAndDestroysFail)
{
    QVHANDLE mutex = QV_INVALID_HANDLE;
    QVHANDLE event = QV_INVALID_HANDLE;
    ASSERT_EQ(QVMutexCreate(nullptr, 0, &mutex), QV_S_OK);
    ASSERT_EQ(QVEventCreate(nullptr, 0, &event), QV_S_OK);
    ASSERT_EQ(QVFaultArm("QVMutexAcquire", 1, QV_E_OUTOFMEMORY), QV_S_OK);
    ASSERT_EQ(QVFaultArm("QVEventTimedWait", 2, QV_E_ACCESSDENIED), QV_S_OK);
    EXPECT_EQ(QVMutexAcquire(mutex), QV_E_OUTOFMEMORY);
    EXPECT_EQ(QVMutexRelease(mutex), static_cast<QVRESULT>(0x80070001)); // the failed acquire took nothing
    EXPECT_EQ(QVEventTimedWait(event, 0), QV_E_TIMEOUT);
    EXPECT_EQ(QVEventTimedWait(event, 0), QV_E_ACCESSDENIED);
    EXPECT_EQ(QVEventTimedWait(event, 0), QV_E_TIMEOUT);

    ASSERT_EQ(QVFaultArm("QVMutexDestroy", 1, QV_E_FAIL), QV_S_OK);
    EXPECT_EQ(QVMutexDestroy(mutex), QV_E_FAIL);
    EXPECT_EQ(QVMutexAcquire(mutex), QV_E_INVALIDARG); // gone all the same
    ASSERT_EQ(QVFaultArm("QVEventDestroy", 1, QV_E_FAIL), QV_S_OK);
    QVFaultDisarmAll();
    EXPECT_EQ(QVEventDestroy(event), QV_S_OK);
}

TEST_F(FaultInjection, ArmRejectsBadRequests)
{
    EXPECT_EQ(QVFaultArm("QVNoSuchFunction", 1, QV_E_FAIL), QV_E_INVALIDARG);
    EXPECT_EQ(QVFaultArm("QVMutexCreate", 0, QV_E_FAIL), QV_E_INVALIDARG);
    EXPECT_EQ(QVFaultArm("QVMutexCreate", 1, QV_S_OK), QV_E_INVALIDARG);
    EXPECT_EQ(QVFaultArm(nullptr, 1, QV_E_FAIL), QV_E_POINTER);
    EXPECT_EQ(QVFaultArmAllocation(0), QV_E_INVALIDARG);
}

TEST_F(FaultInjection, AllocationCountsAllocatorAndHook)
{
    ASSERT_EQ(QVFaultArmAllocation(3), QV_S_OK);
    void* first = QVMemAlloc(16);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(QVFaultAllocationFires(), 0);
    EXPECT_EQ(QVMemAlloc(16), nullptr);
    void* after = QVMemAlloc(16);
    EXPECT_NE(after, nullptr);
    EXPECT_EQ(QVFaultAllocationFires(), 0);

    std::memcpy(first, "keep", 5);
    ASSERT_EQ(QVFaultArmAllocation(1), QV_S_OK);
    EXPECT_EQ(QVMemRealloc(first, 4096), nullptr);
    EXPECT_STREQ(static_cast<const char*>(first), "keep"); // untouched by the failed realloc
    void* grown = QVMemRealloc(first, 4096);
    ASSERT_NE(grown, nullptr);
    EXPECT_STREQ(static_cast<const char*>(grown), "keep");
    ASSERT_EQ(QVFaultArmAllocation(1), QV_S_OK);
    EXPECT_EQ(QVFaultAllocationFires(), 1);
    QVMemFree(grown);
    QVMemFree(after);
}

// Failing each allocation of a call in turn: every failure is reported as out
// of memory and leaves no handle and no descriptor behind.
TEST_F(FaultInjection, EveryAllocationFailureIsCleanInProcessCreate)
{
    const uint32_t handles = QVHandleCountOpen();
    const int descriptors = qvtest::countOpenDescriptors();
    const char16_t* environment[] = {u"A=1", nullptr};
    bool succeeded = false;
    for (int nth = 1; nth < 20 && !succeeded; ++nth) {
        ASSERT_EQ(QVFaultArmAllocation(nth), QV_S_OK);
        STRUCT_QV_PROCESS_PIPES pipes{};
        QVHANDLE child = QV_INVALID_HANDLE;
        const QVRESULT result = qvtest::RunChild("exit 3", QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDERR, &pipes,
                                                 &child, environment);
        QVFaultDisarmAll();
        if (result == QV_S_OK) {
            succeeded = true;
            int32_t code = -1;
            EXPECT_EQ(QVProcessJoin(child, &code), QV_S_OK);
            EXPECT_EQ(code, 3);
            EXPECT_EQ(QVFileClose(pipes.stdoutRead), QV_S_OK);
        } else {
            EXPECT_EQ(result, QV_E_OUTOFMEMORY) << nth;
            EXPECT_EQ(pipes.stdoutRead, -1);
        }
        EXPECT_EQ(QVHandleCountOpen(), handles) << nth;
        EXPECT_EQ(qvtest::countOpenDescriptors(), descriptors) << nth;
    }
    EXPECT_TRUE(succeeded);
}

TEST_F(FaultInjection, AllocationFailureInSplitAndLibOpen)
{
    ASSERT_EQ(QVFaultArmAllocation(1), QV_S_OK);
    char16_t** argv = reinterpret_cast<char16_t**>(1);
    int32_t argc = 5;
    EXPECT_EQ(QVCommandLineSplit(u"a b", &argv, &argc), QV_E_OUTOFMEMORY);
    EXPECT_EQ(argv, nullptr);
    EXPECT_EQ(argc, 0);
    ASSERT_EQ(QVFaultArmAllocation(1), QV_S_OK);
    QVHANDLE library = QV_INVALID_HANDLE;
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"libm.so.6", &library), QV_E_OUTOFMEMORY);
    EXPECT_EQ(library, QV_INVALID_HANDLE);
}

TEST(Memory, AllocatorBasics)
{
    void* empty = QVMemAlloc(0);
    EXPECT_NE(empty, nullptr);
    QVMemFree(empty);
    QVMemFree(nullptr);
    void* block = QVMemRealloc(nullptr, 8);
    ASSERT_NE(block, nullptr);
    QVMemFree(block);
    const QVNewHandler mine = [] { throw std::bad_alloc(); };
    const QVNewHandler previous = QVSetNewHandler(mine);
    EXPECT_EQ(std::get_new_handler(), mine);
    EXPECT_EQ(QVSetNewHandler(previous), mine);
    EXPECT_EQ(std::get_new_handler(), previous);
}

} // namespace
