// Started by the process and IPC tests: argv[1] picks what it does.
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

// Copies stdin to stdout upper-cased.
int EchoUpper()
{
    int c = 0;
    while ((c = std::getchar()) != EOF) {
        std::putchar(std::toupper(c));
    }
    return 0;
}

// Prints the inode of every pipe open beyond the standard descriptors.
int ListPipes()
{
    DIR* dir = opendir("/proc/self/fd");
    if (!dir) {
        return 2;
    }
    while (dirent* entry = readdir(dir)) {
        const int fd = std::atoi(entry->d_name);
        struct stat status;
        if (fd > 2 && fd != dirfd(dir) && fstat(fd, &status) == 0 && S_ISFIFO(status.st_mode)) {
            std::printf("%lu\n", static_cast<unsigned long>(status.st_ino));
        }
    }
    closedir(dir);
    return 0;
}

// Waits for the parent's number in the shared region, answers with the
// number plus one and a text, then posts the named semaphore.
int Ipc(const char* semaphoreName, const char* memoryName)
{
    QVHANDLE memory = QV_INVALID_HANDLE;
    QVHANDLE semaphore = QV_INVALID_HANDLE;
    void* address = nullptr;
    if (QVSharedMemOpen(memoryName, 0, 0, &memory) != 0 || QVSharedMemMap(memory, &address) != 0 ||
        QVNamedSemOpen(semaphoreName, 0, &semaphore) != 0) {
        return 3;
    }
    uint32_t* words = static_cast<uint32_t*>(address);
    words[1] = words[0] + 1;
    std::strcpy(reinterpret_cast<char*>(words + 2), "from child");
    const bool ok = QVSemaphorePost(semaphore) == 0 && QVNamedSemClose(semaphore) == 0 && QVSharedMemClose(memory) == 0;
    return ok ? 0 : 4;
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
    if (mode == "echo-upper") {
        return EchoUpper();
    }
    if (mode == "args") {
        for (int i = 2; i < argc; ++i) {
            std::printf("[%s]\n", argv[i]);
        }
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
    if (mode == "pipes") {
        return ListPipes();
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
    if (mode == "ipc" && argc > 3) {
        return Ipc(argv[2], argv[3]);
    }
    return 100;
}
