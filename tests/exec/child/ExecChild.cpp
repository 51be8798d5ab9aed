// Started by the process and IPC tests: argv[1] picks what it does.
#include <qv/ipc/Semaphore.h>
#include <qv/ipc/SharedMemory.h>

#include <dirent.h>
#include <signal.h>
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

// Descriptors open beyond the standard three.
int countDescriptors()
{
    int open = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (dirent* entry = dir ? readdir(dir) : nullptr) {
        const int fd = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && fd > 2 && fd != dirfd(dir))
            ++open;
    }
    if (dir)
        closedir(dir);
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
        usleep(static_cast<useconds_t>(std::atoi(argv[2])) * 1000);
        return 5;
    }
    if (mode == "signal") {
        raise(SIGTERM);
        return 1;
    }
    if (mode == "flood" && argc > 2)
        return flood(std::atol(argv[2]));
    if (mode == "count" && argc > 4)
        return count(argv[2], argv[3], std::atol(argv[4]));
    if (mode == "descriptors")
        return countDescriptors();
    return 100;
}
