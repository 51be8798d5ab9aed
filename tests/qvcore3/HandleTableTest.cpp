#include "TestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

TEST(HandleTable, NeverIssuedValuesAreRejected)
{
    for (QVHANDLE bogus : {0, -1, 1, 12345, 0x7FFFFFFF, static_cast<QVHANDLE>(0x80000000u), 0x00100000 | 0xFFFFF}) {
        EXPECT_EQ(QVMutexAcquire(bogus), QV_E_INVALIDARG) << bogus;
        EXPECT_EQ(QVEventSignal(bogus), QV_E_INVALIDARG) << bogus;
        EXPECT_EQ(QVSemaphorePost(bogus), QV_E_INVALIDARG) << bogus;
        EXPECT_EQ(QVThreadJoin(bogus, nullptr), QV_E_INVALIDARG) << bogus;
        EXPECT_EQ(QVSharedMemUnmap(bogus), QV_E_INVALIDARG) << bogus;
        EXPECT_EQ(QVModuleIsInitialized(bogus), 0) << bogus;
    }
}

TEST(HandleTable, WrongKindIsRejectedAndLeavesObjectIntact)
{
    QVHANDLE mutex = QV_INVALID_HANDLE;
    QVHANDLE event = QV_INVALID_HANDLE;
    ASSERT_EQ(QVMutexCreate(nullptr, 0, &mutex), QV_S_OK);
    ASSERT_EQ(QVEventCreate(nullptr, 0, &event), QV_S_OK);
    int32_t value = 0;
    void* address = nullptr;
    EXPECT_EQ(QVEventWait(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVSemaphoreGetValue(mutex, &value), QV_E_INVALIDARG);
    EXPECT_EQ(QVGateOpen(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVRWLockAcquireRead(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVConditionSignal(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVProcessJoin(mutex, nullptr), QV_E_INVALIDARG);
    EXPECT_EQ(QVSharedMemMap(mutex, &address), QV_E_INVALIDARG);
    EXPECT_EQ(QVLibGetSymbol(mutex, u"x", &address), QV_E_INVALIDARG);
    EXPECT_EQ(QVNamedSemClose(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVMutexDestroy(event), QV_E_INVALIDARG);
    EXPECT_EQ(QVEventDestroy(mutex), QV_E_INVALIDARG);
    EXPECT_EQ(QVMutexAcquire(mutex), QV_S_OK);
    EXPECT_EQ(QVMutexRelease(mutex), QV_S_OK);
    EXPECT_EQ(QVEventSignal(event), QV_S_OK);
    EXPECT_EQ(QVEventTimedWait(event, 0), QV_S_OK);
    EXPECT_EQ(QVMutexDestroy(mutex), QV_S_OK);
    EXPECT_EQ(QVEventDestroy(event), QV_S_OK);
}

TEST(HandleTable, NullOutputsAreRejected)
{
    EXPECT_EQ(QVMutexCreate(nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVConditionCreate(nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVRWLockCreate(nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVGateCreate(nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVEventCreate(nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVSemaphoreCreate(0, nullptr, 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVNamedSemOpen("x", 0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVSharedMemOpen("x", 16, QV_SHAREDMEM_CREATE, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVThreadCreate([](void*) -> void* { return nullptr; }, nullptr, 0, 0, nullptr, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVModuleGetHandle(reinterpret_cast<const void*>(&QVMutexCreate), nullptr), QV_E_POINTER);
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"libm.so.6", nullptr), QV_E_POINTER);
    EXPECT_EQ(QVTimeGetLocal(nullptr), QV_E_POINTER);
    EXPECT_EQ(QVGetDefaultCharEncoding(nullptr, 10), QV_E_POINTER);

    QVHANDLE semaphore = QV_INVALID_HANDLE;
    ASSERT_EQ(QVSemaphoreCreate(1, nullptr, 0, &semaphore), QV_S_OK);
    EXPECT_EQ(QVSemaphoreGetValue(semaphore, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVSemaphoreDestroy(semaphore), QV_S_OK);
    EXPECT_EQ(QVMutexCreate(nullptr, 0x10, &semaphore), QV_E_INVALIDARG);
}

// White-box: the low 20 bits of a handle are its slot. Slots are recycled, so
// live objects are created until one sits in the slot of a closed handle.
TEST(HandleTable, ClosedHandleStaysInvalidAlsoOnceItsSlotIsReused)
{
    const uint32_t before = QVHandleCountOpen();
    QVHANDLE old = QV_INVALID_HANDLE;
    ASSERT_EQ(QVMutexCreate("closed", 0, &old), QV_S_OK);
    ASSERT_EQ(QVMutexDestroy(old), QV_S_OK);
    EXPECT_EQ(QVMutexAcquire(old), QV_E_INVALIDARG);
    EXPECT_EQ(QVMutexRelease(old), QV_E_INVALIDARG);
    EXPECT_EQ(QVMutexDestroy(old), QV_E_INVALIDARG);
    std::vector<QVHANDLE> live;
    QVHANDLE reuser = QV_INVALID_HANDLE;
    for (int i = 0; i < 5000 && reuser == QV_INVALID_HANDLE; ++i) {
        QVHANDLE handle = QV_INVALID_HANDLE;
        ASSERT_EQ(i % 2 == 0 ? QVMutexCreate(nullptr, 0, &handle) : QVEventCreate(nullptr, 0, &handle), QV_S_OK);
        ASSERT_GT(handle, 0);
        ASSERT_NE(handle, old);
        live.push_back(handle);
        if ((handle & 0xFFFFF) == (old & 0xFFFFF)) {
            reuser = handle;
        }
    }
    ASSERT_NE(reuser, QV_INVALID_HANDLE) << "no slot was reused";
    EXPECT_EQ(QVMutexAcquire(old), QV_E_INVALIDARG);
    EXPECT_EQ(QVEventSignal(old), QV_E_INVALIDARG);
    EXPECT_EQ(QVMutexDestroy(old), QV_E_INVALIDARG);
    EXPECT_EQ(QVEventDestroy(old), QV_E_INVALIDARG);
    for (size_t i = 0; i < live.size(); ++i) {
        EXPECT_EQ(i % 2 == 0 ? QVMutexDestroy(live[i]) : QVEventDestroy(live[i]), QV_S_OK);
    }
    EXPECT_EQ(QVHandleCountOpen(), before);
}

// Creators, users and a thread poking at closed handles run together; every
// call on a live handle must succeed and every stale one must be refused.
TEST(HandleTable, ConcurrentCreateUseDestroy)
{
    const uint32_t before = QVHandleCountOpen();
    std::atomic<QVHANDLE> lastClosed{QV_INVALID_HANDLE};
    std::atomic<bool> stop{false};
    std::atomic<int> failures{0};
    auto worker = [&] {
        for (int i = 0; i < 2000; ++i) {
            QVHANDLE mutex = QV_INVALID_HANDLE;
            if (QVMutexCreate(nullptr, 0, &mutex) != QV_S_OK || QVMutexAcquire(mutex) != QV_S_OK ||
                QVMutexRelease(mutex) != QV_S_OK || QVMutexDestroy(mutex) != QV_S_OK) {
                ++failures;
            }
            lastClosed.store(mutex);
        }
    };
    std::thread prober([&] {
        while (!stop.load()) {
            const QVHANDLE stale = lastClosed.load();
            if (stale != QV_INVALID_HANDLE && QVMutexAcquire(stale) == QV_S_OK) {
                QVMutexRelease(stale); // a reused slot never has the same value
                ++failures;
            }
        }
    });
    std::thread a(worker);
    std::thread b(worker);
    a.join();
    b.join();
    stop.store(true);
    prober.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(QVHandleCountOpen(), before);
}

// Threads keep calling in on a mutex while it is destroyed under them. They
// release a mutex they do not hold, so no thread owns it when it goes: each
// call gives the not-held code while the handle is open and the closed
// handle's code after, never anything else, and the object goes exactly once
// (no handle left open; the sanitizer builds see a use after free or a leak).
TEST(HandleTable, ConcurrentDestroyWhileOthersCallIn)
{
    const QVRESULT notHeld = static_cast<QVRESULT>(0x80070001u);
    const uint32_t before = QVHandleCountOpen();
    std::atomic<int> unexpected{0};
    for (int round = 0; round < 200; ++round) {
        QVHANDLE mutex = QV_INVALID_HANDLE;
        ASSERT_EQ(QVMutexCreate("doomed", 0, &mutex), QV_S_OK);
        std::atomic<int> started{0};
        auto caller = [&] {
            started.fetch_add(1);
            for (;;) {
                const QVRESULT released = QVMutexRelease(mutex);
                if (released == QV_E_INVALIDARG)
                    return;
                if (released != notHeld) {
                    ++unexpected;
                    return;
                }
            }
        };
        std::thread first(caller);
        std::thread second(caller);
        while (started.load() < 2)
            std::this_thread::yield();
        EXPECT_EQ(QVMutexDestroy(mutex), QV_S_OK);
        first.join();
        second.join();
        EXPECT_EQ(QVMutexDestroy(mutex), QV_E_INVALIDARG);
    }
    EXPECT_EQ(unexpected.load(), 0);
    EXPECT_EQ(QVHandleCountOpen(), before);
}

} // namespace
