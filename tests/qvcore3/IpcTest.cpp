#include "TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>

namespace {

TEST(Ipc, ChildAnswersThroughSharedMemoryAndNamedSemaphore)
{
    const std::string memoryName = qvtest::uniqueName("shm");
    const std::string semaphoreName = qvtest::uniqueName("sem");
    QVHANDLE memory = QV_INVALID_HANDLE;
    QVHANDLE semaphore = QV_INVALID_HANDLE;
    void* address = nullptr;
    ASSERT_EQ(QVSharedMemOpen(memoryName.c_str(), 4096, QV_SHAREDMEM_CREATE, &memory), QV_S_OK);
    ASSERT_EQ(QVSharedMemMap(memory, &address), QV_S_OK);
    ASSERT_EQ(QVNamedSemOpen(semaphoreName.c_str(), 0, &semaphore), QV_S_OK);
    uint32_t* words = static_cast<uint32_t*>(address);
    words[0] = 41;

    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(qvtest::RunChild("ipc " + semaphoreName + " " + memoryName,
                               QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR,
                               nullptr, &child),
              QV_S_OK);
    // Polled, so that a child that fails cannot hang the test.
    const auto start = std::chrono::steady_clock::now();
    QVRESULT taken = QV_E_BUSY;
    while ((taken = QVSemaphoreTryWait(semaphore)) == QV_E_BUSY && qvtest::MillisecondsSince(start) < 10000) {
        QVThreadSleep(5);
    }
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK);
    EXPECT_EQ(code, 0);
    ASSERT_EQ(taken, QV_S_OK);
    EXPECT_EQ(words[1], 42u);
    EXPECT_STREQ(reinterpret_cast<const char*>(words + 2), "from child");

    EXPECT_EQ(QVNamedSemClose(semaphore), QV_S_OK);
    EXPECT_EQ(QVSharedMemClose(memory), QV_S_OK);
    EXPECT_EQ(QVNamedSemUnlink(semaphoreName.c_str()), QV_S_OK);
    EXPECT_EQ(QVSharedMemUnlink(memoryName.c_str()), QV_S_OK);
}

TEST(Ipc, NamedSemaphoreHandlesShareOneCount)
{
    const std::string name = "/" + qvtest::uniqueName("pair");
    QVHANDLE first = QV_INVALID_HANDLE;
    QVHANDLE second = QV_INVALID_HANDLE;
    ASSERT_EQ(QVNamedSemOpen(name.c_str(), 1, &first), QV_S_OK);
    ASSERT_EQ(QVNamedSemOpen(name.c_str(), 5, &second), QV_S_OK); // exists: count stays
    int32_t value = -1;
    ASSERT_EQ(QVSemaphoreGetValue(second, &value), QV_S_OK);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(QVSemaphoreTryWait(first), QV_S_OK);
    EXPECT_EQ(QVSemaphoreTryWait(second), QV_E_BUSY);
    EXPECT_EQ(QVSemaphorePost(second), QV_S_OK);
    EXPECT_EQ(QVSemaphoreWait(first), QV_S_OK);
    EXPECT_EQ(QVSemaphoreDestroy(first), QV_E_INVALIDARG); // not an unnamed semaphore
    EXPECT_EQ(QVNamedSemClose(first), QV_S_OK);
    EXPECT_EQ(QVNamedSemClose(second), QV_S_OK);
    EXPECT_EQ(QVNamedSemUnlink(name.c_str()), QV_S_OK);
    EXPECT_EQ(QVNamedSemUnlink(name.c_str()), QV_E_FILE_NOT_FOUND);

    const std::string tooLong(300, 'n');
    for (const char* bad : {"", "/", "a/b", "..", tooLong.c_str()}) {
        EXPECT_EQ(QVNamedSemOpen(bad, 0, &first), QV_E_INVALIDARG) << bad;
        EXPECT_EQ(QVSharedMemOpen(bad, 8, QV_SHAREDMEM_CREATE, &first), QV_E_INVALIDARG) << bad;
    }
    EXPECT_EQ(QVNamedSemOpen(nullptr, 0, &first), QV_E_POINTER);
    EXPECT_EQ(QVNamedSemUnlink(nullptr), QV_E_POINTER);
}

TEST(Ipc, SharedMemoryOpenMapAndErrors)
{
    const std::string name = qvtest::uniqueName("region");
    QVHANDLE handle = QV_INVALID_HANDLE;
    EXPECT_EQ(QVSharedMemOpen(name.c_str(), 64, 0, &handle), QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(QVSharedMemOpen(name.c_str(), 0, QV_SHAREDMEM_CREATE, &handle), QV_E_INVALIDARG);
    EXPECT_EQ(QVSharedMemOpen(name.c_str(), 64, 0x2, &handle), QV_E_INVALIDARG);

    QVHANDLE writer = QV_INVALID_HANDLE;
    QVHANDLE reader = QV_INVALID_HANDLE;
    ASSERT_EQ(QVSharedMemOpen(name.c_str(), 100, QV_SHAREDMEM_CREATE, &writer), QV_S_OK);
    ASSERT_EQ(QVSharedMemOpen(name.c_str(), 8192, QV_SHAREDMEM_CREATE, &reader), QV_S_OK); // grows it
    EXPECT_EQ(QVSharedMemUnmap(writer), QV_E_ILLEGAL_METHOD_CALL);
    void* a = nullptr;
    void* again = nullptr;
    void* b = nullptr;
    ASSERT_EQ(QVSharedMemMap(writer, &a), QV_S_OK);
    ASSERT_EQ(QVSharedMemMap(writer, &again), QV_S_OK);
    EXPECT_EQ(a, again);
    ASSERT_EQ(QVSharedMemMap(reader, &b), QV_S_OK);
    EXPECT_NE(a, b);
    std::strcpy(static_cast<char*>(a), "shared");
    EXPECT_STREQ(static_cast<const char*>(b), "shared");
    static_cast<char*>(b)[8191] = 'z'; // the grown size is mapped
    size_t size = 0;
    EXPECT_EQ(QVSharedMemGetSize(reader, &size), QV_S_OK);
    EXPECT_EQ(size, 8192u);
    EXPECT_EQ(QVSharedMemGetSize(writer, &size), QV_S_OK);
    EXPECT_EQ(size, 100u); // sized when it was opened
    EXPECT_EQ(QVSharedMemGetSize(writer, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVSharedMemMap(reader, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVSharedMemUnmap(writer), QV_S_OK);
    EXPECT_EQ(QVSharedMemClose(writer), QV_S_OK);
    EXPECT_EQ(QVSharedMemClose(reader), QV_S_OK); // still mapped: closing unmaps
    EXPECT_EQ(QVSharedMemClose(reader), QV_E_INVALIDARG);
    EXPECT_EQ(QVSharedMemGetSize(reader, &size), QV_E_INVALIDARG);
    EXPECT_EQ(QVSharedMemUnlink(name.c_str()), QV_S_OK);
    EXPECT_EQ(QVSharedMemUnlink(name.c_str()), QV_E_FILE_NOT_FOUND);
}

} // namespace
