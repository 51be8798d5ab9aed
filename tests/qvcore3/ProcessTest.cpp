#include "TestSupport.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <thread>

namespace {

using qvtest::ReadAll;
using qvtest::RunChild;

constexpr uint32_t kAllPipes = 0;
constexpr uint32_t kNoPipes = QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR;

using qvtest::countChildren;

void CloseAll(const STRUCT_QV_PROCESS_PIPES& pipes)
{
    for (int32_t fd : {pipes.stdinWrite, pipes.stdoutRead, pipes.stderrRead}) {
        if (fd >= 0) {
            EXPECT_EQ(QVFileClose(fd), QV_S_OK);
        }
    }
}

TEST(Process, OutputIsReadBackAndExitCodeReported)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("exit 7", QV_PROCESS_INHERIT_STDIN, &pipes, &child), QV_S_OK);
    EXPECT_EQ(pipes.stdinWrite, -1);
    EXPECT_EQ(ReadAll(pipes.stdoutRead), "out\n");
    EXPECT_EQ(ReadAll(pipes.stderrRead), "err\n");
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK);
    EXPECT_EQ(code, 7);
    EXPECT_EQ(QVProcessJoin(child, &code), QV_E_INVALIDARG);
    CloseAll(pipes);
}

TEST(Process, MergedErrorArrivesInTheOutputPipe)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("exit 3", QV_PROCESS_INHERIT_STDIN | QV_PROCESS_MERGE_STDERR, &pipes, &child), QV_S_OK);
    EXPECT_EQ(pipes.stderrRead, -1);
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK); // 8 bytes fit in the pipe
    EXPECT_EQ(code, 3);
    int64_t available = 0;
    EXPECT_EQ(QVFileAvailable(pipes.stdoutRead, &available), QV_S_OK);
    EXPECT_EQ(available, 8);
    EXPECT_EQ(ReadAll(pipes.stdoutRead), "out\nerr\n");
    EXPECT_EQ(QVFileAvailable(pipes.stdoutRead, &available), QV_S_OK);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(QVFileAvailable(-1, &available), QV_E_INVALIDARG);
    EXPECT_EQ(QVFileAvailable(pipes.stdoutRead, nullptr), QV_E_POINTER);
    CloseAll(pipes);
    EXPECT_EQ(RunChild("exit 0", QV_PROCESS_INHERIT_STDERR | QV_PROCESS_MERGE_STDERR, &pipes, &child), QV_E_INVALIDARG);
}

TEST(Process, StdinIsPipedToTheChild)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("echo-upper", kAllPipes, &pipes, &child), QV_S_OK);
    const std::string text(100000, 'q'); // more than a pipe buffer holds
    std::string echoed;
    std::thread reader([&] { echoed = ReadAll(pipes.stdoutRead); });
    uint32_t done = 0;
    EXPECT_EQ(QVFileWrite(pipes.stdinWrite, text.data(), static_cast<uint32_t>(text.size()), &done), QV_S_OK);
    EXPECT_EQ(done, text.size());
    EXPECT_EQ(QVFileClose(pipes.stdinWrite), QV_S_OK);
    pipes.stdinWrite = -1;
    reader.join();
    EXPECT_EQ(echoed, std::string(100000, 'Q'));
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK);
    EXPECT_EQ(code, 0);
    CloseAll(pipes);
}

// What a child run with these arguments writes to its standard output.
std::string OutputOf(const std::u16string& arguments, const char16_t* const* environment = nullptr,
                     const char16_t* directory = nullptr)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    EXPECT_EQ(RunChild(arguments, QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDERR, &pipes, &child, environment,
                       directory),
              QV_S_OK);
    const std::string output = ReadAll(pipes.stdoutRead);
    EXPECT_EQ(QVProcessJoin(child, nullptr), QV_S_OK);
    CloseAll(pipes);
    return output;
}

TEST(Process, ArgumentsEnvironmentAndDirectoryReachTheChild)
{
    EXPECT_EQ(OutputOf(uR"(args plain "two words" a\"b c:\dir\ "" "x""y" )"
                       u"\u00fc"),
              "[plain]\n[two words]\n[a\"b]\n[c:\\dir\\]\n[]\n[x\"y]\n[\xC3\xBC]\n");
    const char16_t* environment[] = {u"QV_PROBE=v\u00e9rt", u"OTHER=1", nullptr};
    EXPECT_EQ(OutputOf(u"env QV_PROBE", environment), "v\xC3\xA9rt\n");
    EXPECT_EQ(OutputOf(u"cwd", nullptr, u"/proc"), "/proc\n");
}

// A second child must not inherit the first one's pipe ends.
TEST(Process, NoDescriptorLeaksIntoChildren)
{
    STRUCT_QV_PROCESS_PIPES first{};
    QVHANDLE sleeper = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("echo-upper", kAllPipes, &first, &sleeper), QV_S_OK);
    STRUCT_QV_PROCESS_PIPES second{};
    QVHANDLE lister = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("pipes", kAllPipes, &second, &lister), QV_S_OK);
    std::set<unsigned long> ours;
    for (int32_t fd : {first.stdinWrite, first.stdoutRead, first.stderrRead, second.stdinWrite, second.stdoutRead,
                       second.stderrRead}) {
        struct stat status;
        ASSERT_EQ(fstat(fd, &status), 0);
        ours.insert(static_cast<unsigned long>(status.st_ino));
    }
    std::istringstream listed(ReadAll(second.stdoutRead));
    unsigned long inode = 0;
    while (listed >> inode) {
        EXPECT_EQ(ours.count(inode), 0u) << "pipe " << inode << " leaked into the child";
    }
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(lister, &code), QV_S_OK);
    EXPECT_EQ(code, 0);
    CloseAll(first);
    ASSERT_EQ(QVProcessJoin(sleeper, &code), QV_S_OK);
    CloseAll(second);
}

TEST(Process, ExitCodePollingThenJoin)
{
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("sleep 150", kNoPipes, nullptr, &child), QV_S_OK);
    int32_t code = -1;
    EXPECT_EQ(QVProcessGetExitCode(child, &code), QV_S_FALSE);
    EXPECT_EQ(QVProcessGetExitCode(child, nullptr), QV_E_POINTER);
    const auto start = std::chrono::steady_clock::now();
    QVRESULT polled = QV_S_FALSE;
    while ((polled = QVProcessGetExitCode(child, &code)) == QV_S_FALSE && qvtest::MillisecondsSince(start) < 10000) {
        QVThreadSleep(10);
    }
    ASSERT_EQ(polled, QV_S_OK);
    EXPECT_EQ(code, 5);
    EXPECT_EQ(QVProcessGetExitCode(child, &code), QV_S_OK);
    code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK);
    EXPECT_EQ(code, 5);
}

TEST(Process, SignalledChildReports128PlusSignal)
{
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("signal", kNoPipes, nullptr, &child), QV_S_OK);
    int32_t code = -1;
    ASSERT_EQ(QVProcessJoin(child, &code), QV_S_OK);
    EXPECT_EQ(code, 128 + 15);
}

TEST(Process, DetachedChildrenAreReaped)
{
    for (int i = 0; i < 3; ++i) {
        QVHANDLE child = QV_INVALID_HANDLE;
        ASSERT_EQ(RunChild(i == 0 ? "exit 0" : "sleep 50", kNoPipes, nullptr, &child), QV_S_OK);
        ASSERT_EQ(QVProcessDetach(child), QV_S_OK);
        EXPECT_EQ(QVProcessJoin(child, nullptr), QV_E_INVALIDARG);
    }
    const auto start = std::chrono::steady_clock::now();
    while (countChildren() != 0 && qvtest::MillisecondsSince(start) < 5000) {
        QVThreadSleep(20);
    }
    EXPECT_EQ(countChildren(), 0);
}

TEST(Process, FailuresLeaveNothingBehind)
{
    const int descriptors = qvtest::countOpenDescriptors();
    const uint32_t handles = QVHandleCountOpen();
    STRUCT_QV_PROCESS_PIPES pipes{1, 2, 3};
    QVHANDLE child = QV_INVALID_HANDLE;
    EXPECT_EQ(QVProcessCreate(u"/nonexistent/program", nullptr, nullptr, nullptr, kAllPipes, &pipes, &child),
              QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(pipes.stdinWrite, -1);
    EXPECT_EQ(pipes.stdoutRead, -1);
    EXPECT_EQ(pipes.stderrRead, -1);
    EXPECT_EQ(QVProcessCreate(u"no-such-program-on-path", nullptr, nullptr, nullptr, kNoPipes, nullptr, &child),
              QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(RunChild("exit 0", kAllPipes, &pipes, &child, nullptr, u"/nonexistent-dir"), QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(qvtest::countOpenDescriptors(), descriptors);
    EXPECT_EQ(QVHandleCountOpen(), handles);

    EXPECT_EQ(QVProcessCreate(nullptr, nullptr, nullptr, nullptr, 0, nullptr, &child), QV_E_POINTER);
    EXPECT_EQ(RunChild("exit 0", QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDERR, nullptr, &child), QV_E_POINTER);
    EXPECT_EQ(RunChild("exit 0", 0x10, &pipes, &child), QV_E_INVALIDARG);
    EXPECT_EQ(QVProcessCreate(u"", nullptr, nullptr, nullptr, kNoPipes, nullptr, &child), QV_E_INVALIDARG);
    const char16_t* badEnvironment[] = {u"NOEQUALS", nullptr};
    EXPECT_EQ(RunChild("exit 0", kNoPipes, nullptr, &child, badEnvironment), QV_E_INVALIDARG);
}

TEST(Process, WritingToAGoneReaderGivesACode)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("exit 0", QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR, &pipes, &child), QV_S_OK);
    ASSERT_EQ(QVProcessJoin(child, nullptr), QV_S_OK);
    const char data[] = "nobody reads this";
    uint32_t done = 99;
    EXPECT_EQ(QVFileWrite(pipes.stdinWrite, data, sizeof data, &done), static_cast<QVRESULT>(0x80070020));
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(QVFileClose(pipes.stdinWrite), QV_S_OK);
    EXPECT_EQ(QVFileClose(pipes.stdinWrite), QV_E_INVALIDARG);
    EXPECT_EQ(QVFileRead(-1, nullptr, 0, &done), QV_E_INVALIDARG);
    EXPECT_EQ(QVFileRead(0, nullptr, 4, &done), QV_E_POINTER);
}

TEST(Process, PipesAndSocketsAreToldFromFiles)
{
    STRUCT_QV_PROCESS_PIPES pipes{};
    QVHANDLE child = QV_INVALID_HANDLE;
    ASSERT_EQ(RunChild("exit 0", QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR, &pipes, &child), QV_S_OK);
    ASSERT_EQ(QVProcessJoin(child, nullptr), QV_S_OK);
    int32_t kind = -1;
    EXPECT_EQ(QVFileIsPipeOrSocket(pipes.stdinWrite, &kind), QV_S_OK);
    EXPECT_EQ(kind, 1);
    EXPECT_EQ(QVFileClose(pipes.stdinWrite), QV_S_OK);
    int sockets[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
    EXPECT_EQ(QVFileIsPipeOrSocket(sockets[0], &kind), QV_S_OK);
    EXPECT_EQ(kind, 1);
    close(sockets[0]);
    close(sockets[1]);

    char path[] = "/tmp/qvcore3-kind-XXXXXX";
    const int file = mkstemp(path);
    ASSERT_GE(file, 0);
    EXPECT_EQ(QVFileIsPipeOrSocket(file, &kind), QV_S_OK);
    EXPECT_EQ(kind, 0);
    const char data[] = "unguarded";
    uint32_t done = 0;
    EXPECT_EQ(QVFileWriteUnguarded(file, data, 9, &done), QV_S_OK);
    EXPECT_EQ(done, 9u);
    char back[16] = {};
    EXPECT_EQ(pread(file, back, sizeof back, 0), 9);
    EXPECT_STREQ(back, "unguarded");
    close(file);
    unlink(path);

    EXPECT_EQ(QVFileIsPipeOrSocket(file, &kind), QV_E_INVALIDARG) << "closed";
    EXPECT_EQ(QVFileIsPipeOrSocket(-1, &kind), QV_E_INVALIDARG);
    EXPECT_EQ(QVFileIsPipeOrSocket(0, nullptr), QV_E_POINTER);
    EXPECT_EQ(QVFileWriteUnguarded(-1, data, 1, &done), QV_E_INVALIDARG);
    EXPECT_EQ(QVFileWriteUnguarded(file, nullptr, 1, &done), QV_E_POINTER);
    EXPECT_EQ(QVFileWriteUnguarded(file, data, 1, &done), QV_E_INVALIDARG) << "closed";
}

} // namespace
