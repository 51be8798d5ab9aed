// Started by the process and IPC tests of the platform layer and of the
// library: argv[1] picks what it does; an unknown mode exits with 100.
#include <qv/ipc/Semaphore.h>
#include <qv/ipc/SharedMemory.h>
#include <qvcore3/qvcore3.h>

#include <dirent.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

int echoUpper()
{
    int c = 0;
    while ((c = std::getchar()) != EOF)
        std::putchar(std::toupper(c));
    return 0;
}

// Writes count bytes to standard output and to standard error, alternating
// in blocks larger than a pipe holds, so a parent reading only one of them
// would block the child.
int flood(long count)
{
    static char block[100000];
    std::memset(block, 'o', sizeof block);
    long left = count;
    while (left > 0) {
        const size_t n = left < static_cast<long>(sizeof block) ? static_cast<size_t>(left) : sizeof block;
        std::fwrite(block, 1, n, stdout);
        std::fflush(stdout);
        std::fwrite(block, 1, n, stderr);
        left -= static_cast<long>(n);
    }
    return 0;
}

// Counts an integer in shared memory up by one, times times, each under the
// named semaphore.
int count(const char* semaphoreName, const char* memoryName, long times)
{
    qv::ipc::Semaphore semaphore(semaphoreName, 1);
    qv::ipc::SharedMemory memory(memoryName, 0, qv::ipc::SharedMemory::OPEN);
    volatile long* counter = static_cast<volatile long*>(memory.getAddress());
    for (long i = 0; i < times; ++i) {
        semaphore.wait();
        *counter = *counter + 1;
        semaphore.signal();
    }
    return 0;
}

// Waits for the parent's number in the shared region, answers with the
// number plus one and a text, then posts the named semaphore; platform
// calls only.
int answerThroughPlatform(const char* semaphoreName, const char* memoryName)
{
    QVHANDLE memory = QV_INVALID_HANDLE;
    QVHANDLE semaphore = QV_INVALID_HANDLE;
    void* address = nullptr;
    if (QVSharedMemOpen(memoryName, 0, 0, &memory) != 0 || QVSharedMemMap(memory, &address) != 0 ||
        QVNamedSemOpen(semaphoreName, 0, &semaphore) != 0)
        return 3;
    uint32_t* words = static_cast<uint32_t*>(address);
    words[1] = words[0] + 1;
    std::strcpy(reinterpret_cast<char*>(words + 2), "from child");
    const bool ok = QVSemaphorePost(semaphore) == 0 && QVNamedSemClose(semaphore) == 0 && QVSharedMemClose(memory) == 0;
    return ok ? 0 : 4;
}

// Descriptors open beyond the standard three: with pipesOnly, prints the
// inode of each pipe among them; otherwise prints how many there are.
int listDescriptors(bool pipesOnly)
{
    DIR* dir = opendir("/proc/self/fd");
    if (!dir)
        return 2;
    int open = 0;
    while (dirent* entry = readdir(dir)) {
        const int fd = std::atoi(entry->d_name);
        if (entry->d_name[0] == '.' || fd <= 2 || fd == dirfd(dir))
            continue;
        struct stat status;
        if (!pipesOnly)
            ++open;
        else if (fstat(fd, &status) == 0 && S_ISFIFO(status.st_mode))
            std::printf("%lu\n", static_cast<unsigned long>(status.st_ino));
    }
    closedir(dir);
    if (!pipesOnly)
        std::printf("%d\n", open);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "exit" && argc > 2) {
        std::fputs("out\n", stdout);
        std::fflush(stdout);
        std::fputs("err\n", stderr);
        return std::atoi(argv[2]);
    }
    if (mode == "code" && argc > 2)
        return std::atoi(argv[2]);
    if (mode == "echo-upper")
        return echoUpper();
    if (mode == "args") {
        for (int i = 2; i < argc; ++i)
            std::printf("[%s]\n", argv[i]);
        return 0;
    }
    if (mode == "env" && argc > 2) {
        const char* value = std::getenv(argv[2]);
        std::printf("%s\n", value ? value : "<unset>");
        return 0;
    }
    if (mode == "cwd") {
        char buffer[4096];
        std::printf("%s\n", getcwd(buffer, sizeof buffer) ? buffer : "<error>");
        return 0;
    }
    if (mode == "sleep" && argc > 2) {
        QVThreadSleep(static_cast<uint32_t>(std::atoi(argv[2])));
        return 5;
    }
    if (mode == "signal") {
        std::fflush(stdout);
        raise(SIGTERM);
        return 1;
    }
    if (mode == "flood" && argc > 2)
        return flood(std::atol(argv[2]));
    if (mode == "count" && argc > 4)
        return count(argv[2], argv[3], std::atol(argv[4]));
    if (mode == "ipc" && argc > 3)
        return answerThroughPlatform(argv[2], argv[3]);
    if (mode == "descriptors" || mode == "pipes")
        return listDescriptors(mode == "pipes");
    return 100;
}
