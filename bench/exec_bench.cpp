// Child processes, threads and a child's output stream, against the same work
// done with the system calls directly, with the standard library and with
// POCO (Debian's libpoco-dev), in one run.
#include <qv/exec/Process.h>
#include <qv/exec/Runnable.h>
#include <qv/exec/Thread.h>

#include <Poco/Pipe.h>
#include <Poco/Process.h>
#include <Poco/Runnable.h>
#include <Poco/Thread.h>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>
#include <vector>

extern char** environ;

namespace {

constexpr int64_t kGiB = int64_t(1) << 30;
constexpr int32_t kReadBlock = 64 * 1024;
constexpr unsigned kNoPipes =
    qv::exec::Process::INHERIT_STDIN | qv::exec::Process::INHERIT_STDOUT | qv::exec::Process::INHERIT_STDERR;

void ProcessTrueQv(benchmark::State& state)
{
    const unsigned flags = static_cast<unsigned>(state.range(0));
    for (auto _ : state) {
        qv::exec::Process child(u"/bin/true", nullptr, nullptr, nullptr, flags);
        benchmark::DoNotOptimize(child.join());
    }
}
BENCHMARK(ProcessTrueQv)->Arg(kNoPipes)->Arg(0)->ArgName("flags")->UseRealTime();

void ProcessTrueSpawnDirect(benchmark::State& state)
{
    char program[] = "/bin/true";
    char* argv[] = {program, nullptr};
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, program, nullptr, nullptr, argv, environ) != 0) {
            state.SkipWithError("posix_spawn failed");
            break;
        }
        int status = 0;
        waitpid(pid, &status, 0);
        benchmark::DoNotOptimize(status);
    }
}
BENCHMARK(ProcessTrueSpawnDirect)->UseRealTime();

void ProcessTrueStdSystem(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(std::system("/bin/true"));
}
BENCHMARK(ProcessTrueStdSystem)->UseRealTime();

void ProcessTruePoco(benchmark::State& state)
{
    const std::vector<std::string> noArguments;
    for (auto _ : state) {
        Poco::ProcessHandle child = Poco::Process::launch("/bin/true", noArguments);
        benchmark::DoNotOptimize(child.wait());
    }
}
BENCHMARK(ProcessTruePoco)->UseRealTime();

void ThreadEmptyQv(benchmark::State& state)
{
    qv::Reference<qv::exec::Runnable> empty = qv::makeReference<qv::exec::Runnable>();
    qv::exec::Thread thread(empty.get());
    for (auto _ : state) {
        thread.start();
        benchmark::DoNotOptimize(thread.join());
    }
}
BENCHMARK(ThreadEmptyQv)->UseRealTime();

void ThreadEmptyStd(benchmark::State& state)
{
    for (auto _ : state) {
        std::thread thread([] {});
        thread.join();
    }
}
BENCHMARK(ThreadEmptyStd)->UseRealTime();

class EmptyPocoRunnable : public Poco::Runnable {
public:
    void run() override {}
};

void ThreadEmptyPoco(benchmark::State& state)
{
    EmptyPocoRunnable empty;
    Poco::Thread thread;
    for (auto _ : state) {
        thread.start(empty);
        thread.join();
    }
}
BENCHMARK(ThreadEmptyPoco)->UseRealTime();

// head -c <bytes> /dev/zero, read to its end through the child's InputStream.
void ReadChildOutputQv(benchmark::State& state)
{
    const std::u16string arguments = u"-c " + [&] {
        std::string n = std::to_string(state.range(0));
        return std::u16string(n.begin(), n.end());
    }() + u" /dev/zero";
    std::vector<char> buffer(kReadBlock);
    int64_t total = 0;
    for (auto _ : state) {
        qv::exec::Process child(u"head", arguments.c_str(), nullptr, nullptr,
                                qv::exec::Process::INHERIT_STDIN | qv::exec::Process::INHERIT_STDERR);
        qv::Reference<qv::io::InputStream> output = child.getInputStream();
        int32_t n = 0;
        while ((n = output->read(buffer.data(), kReadBlock)) > 0)
            total += n;
        child.join();
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(ReadChildOutputQv)->Arg(kGiB)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same child started with posix_spawnp and its pipe read with read(2).
void ReadChildOutputDirect(benchmark::State& state)
{
    const std::string count = std::to_string(state.range(0));
    char program[] = "head";
    char flag[] = "-c";
    char source[] = "/dev/zero";
    char* argv[] = {program, flag, const_cast<char*>(count.c_str()), source, nullptr};
    std::vector<char> buffer(kReadBlock);
    int64_t total = 0;
    for (auto _ : state) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) {
            state.SkipWithError("pipe2 failed");
            break;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
        pid_t pid = 0;
        const int error = posix_spawnp(&pid, program, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        if (error != 0) {
            close(fds[0]);
            state.SkipWithError("posix_spawnp failed");
            break;
        }
        ssize_t n = 0;
        while ((n = read(fds[0], buffer.data(), buffer.size())) > 0)
            total += n;
        close(fds[0]);
        int status = 0;
        waitpid(pid, &status, 0);
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(ReadChildOutputDirect)->Arg(kGiB)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadChildOutputPoco(benchmark::State& state)
{
    const std::vector<std::string> arguments = {"-c", std::to_string(state.range(0)), "/dev/zero"};
    std::vector<char> buffer(kReadBlock);
    int64_t total = 0;
    for (auto _ : state) {
        Poco::Pipe output;
        Poco::ProcessHandle child = Poco::Process::launch("/usr/bin/head", arguments, nullptr, &output, nullptr);
        int n = 0;
        while ((n = output.readBytes(buffer.data(), kReadBlock)) > 0)
            total += n;
        output.close();
        child.wait();
    }
    state.SetBytesProcessed(total);
}
BENCHMARK(ReadChildOutputPoco)->Arg(kGiB)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
