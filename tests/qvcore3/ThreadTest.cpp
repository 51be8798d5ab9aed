#include "TestSupport.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

namespace {

struct Probe {
    std::atomic<uint32_t> id{0};
    std::atomic<size_t> stackSize{0};
    std::atomic<QVHANDLE> self{QV_INVALID_HANDLE};
    QVRESULT selfJoin = QV_S_OK;
};

void* RecordAndReturn(void* argument)
{
    Probe* probe = static_cast<Probe*>(argument);
    probe->id = QVThreadGetCurrentId();
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        size_t size = 0;
        pthread_attr_getstacksize(&attributes, &size);
        probe->stackSize = size;
        pthread_attr_destroy(&attributes);
    }
    return reinterpret_cast<void*>(static_cast<uintptr_t>(0xC0FFEE));
}

TEST(Thread, JoinReturnsResultAndIdIsTheThreads)
{
    Probe probe;
    QVHANDLE thread = QV_INVALID_HANDLE;
    uint32_t id = 0;
    ASSERT_EQ(QVThreadCreate(RecordAndReturn, &probe, 0, 0, &thread, &id), QV_S_OK);
    void* result = nullptr;
    ASSERT_EQ(QVThreadJoin(thread, &result), QV_S_OK);
    EXPECT_EQ(result, reinterpret_cast<void*>(static_cast<uintptr_t>(0xC0FFEE)));
    EXPECT_EQ(id, probe.id.load());
    EXPECT_NE(id, QVThreadGetCurrentId());
    EXPECT_NE(id, 0u);
    EXPECT_EQ(QVThreadJoin(thread, &result), QV_E_INVALIDARG);
    EXPECT_EQ(QVThreadDetach(thread), QV_E_INVALIDARG);
}

TEST(Thread, CurrentIdIsTheKernelsAlsoInAForkedChild)
{
    const uint32_t parent = QVThreadGetCurrentId();
    EXPECT_EQ(parent, static_cast<uint32_t>(gettid()));
    EXPECT_EQ(QVThreadGetCurrentId(), parent);
    // The child's only thread is the one that forked, under a new id: an id
    // kept from before the fork would be the parent's.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        _exit(QVThreadGetCurrentId() == static_cast<uint32_t>(getpid()) ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the forked child got its parent's thread id";
}

TEST(Thread, StackSizeIsHonoured)
{
    // glibc hands out a cached stack of any size up to four times the one
    // asked for, so only the lower bound holds; the larger size is above the
    // usual 8 MiB default, so an ignored size shows.
    for (uint32_t requested : {1u << 20, (16u << 20) + 100u}) {
        Probe probe;
        QVHANDLE thread = QV_INVALID_HANDLE;
        ASSERT_EQ(QVThreadCreate(RecordAndReturn, &probe, 0, requested, &thread, nullptr), QV_S_OK);
        ASSERT_EQ(QVThreadJoin(thread, nullptr), QV_S_OK);
        EXPECT_GE(probe.stackSize.load(), requested);
    }
}

TEST(Thread, BadArgumentsAndSelfJoin)
{
    QVHANDLE thread = QV_INVALID_HANDLE;
    EXPECT_EQ(QVThreadCreate(nullptr, nullptr, 0, 0, &thread, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVThreadCreate(RecordAndReturn, nullptr, 1, 0, &thread, nullptr), QV_E_INVALIDARG);

    Probe probe;
    auto joinSelf = [](void* argument) -> void* {
        Probe* p = static_cast<Probe*>(argument);
        while (p->self.load() == QV_INVALID_HANDLE) {
            QVThreadSleep(1);
        }
        p->selfJoin = QVThreadJoin(p->self.load(), nullptr);
        return nullptr;
    };
    ASSERT_EQ(QVThreadCreate(joinSelf, &probe, 0, 0, &thread, nullptr), QV_S_OK);
    probe.self = thread;
    ASSERT_EQ(QVThreadJoin(thread, nullptr), QV_S_OK);
    EXPECT_EQ(probe.selfJoin, static_cast<QVRESULT>(0x80070023));
}

TEST(Thread, DetachedThreadRunsToTheEnd)
{
    QVHANDLE done = QV_INVALID_HANDLE;
    ASSERT_EQ(QVEventCreate(nullptr, 0, &done), QV_S_OK);
    auto signal = [](void* argument) -> void* {
        QVThreadSleep(10);
        QVEventSignal(*static_cast<QVHANDLE*>(argument));
        return nullptr;
    };
    QVHANDLE thread = QV_INVALID_HANDLE;
    ASSERT_EQ(QVThreadCreate(signal, &done, 0, 0, &thread, nullptr), QV_S_OK);
    ASSERT_EQ(QVThreadDetach(thread), QV_S_OK);
    EXPECT_EQ(QVThreadJoin(thread, nullptr), QV_E_INVALIDARG);
    EXPECT_EQ(QVEventTimedWait(done, 5000), QV_S_OK);
    EXPECT_EQ(QVEventDestroy(done), QV_S_OK);
}

TEST(Thread, SleepLastsAtLeastItsTime)
{
    const auto start = std::chrono::steady_clock::now();
    QVThreadSleep(30);
    const int64_t elapsed = qvtest::MillisecondsSince(start);
    EXPECT_GE(elapsed, 30);
    EXPECT_LT(elapsed, 3000);
}

} // namespace
