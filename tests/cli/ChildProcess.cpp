#include "ChildProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace clitest {

TempDir::TempDir()
{
    char pattern[] = "/tmp/qvcl-cli.XXXXXX";
    if (!mkdtemp(pattern))
        throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir()
{
    std::system(("rm -rf '" + m_path + "'").c_str());
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

namespace {

// The child's peak resident set read from /proc while it runs. The kernel's
// own figure (wait4) would include the parent's pages the child had between
// fork and exec.
long waitWatchingMemory(pid_t child, int& status)
{
    const std::string file = "/proc/" + std::to_string(child) + "/status";
    std::string self;
    std::getline(std::ifstream("/proc/self/comm"), self);
    long peak = 0;
    for (;;) {
        // Until the exec the child is a copy of this process, with its pages.
        std::ifstream in(file);
        bool execed = false;
        for (std::string line; std::getline(in, line);) {
            if (line.compare(0, 5, "Name:") == 0)
                execed = line.find(self) == std::string::npos;
            if (execed && line.compare(0, 6, "VmHWM:") == 0)
                peak = std::max(peak, std::atol(line.c_str() + 6));
        }
        const pid_t done = waitpid(child, &status, WNOHANG);
        if (done == child || done < 0)
            return peak;
        usleep(2000);
    }
}

} // namespace

std::vector<char*> argvOf(const std::vector<std::string>& words)
{
    std::vector<char*> argv;
    for (const std::string& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    return argv;
}

Result run(const std::vector<std::string>& argv, const std::string& stdinFile, const std::string& stdoutFile)
{
    TempDir streams;
    const std::string out = stdoutFile.empty() ? streams.file("out") : stdoutFile;
    const std::string err = streams.file("err");
    const pid_t child = fork();
    if (child == 0) {
        const int in = open(stdinFile.empty() ? "/dev/null" : stdinFile.c_str(), O_RDONLY);
        const int o = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int e = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (in < 0 || o < 0 || e < 0)
            _exit(126);
        dup2(in, 0);
        dup2(o, 1);
        dup2(e, 2);
        std::vector<char*> args = argvOf(argv);
        execvp(args[0], args.data());
        _exit(127);
    }
    Result result;
    int status = 0;
    if (child > 0)
        result.maxResidentKiB = waitWatchingMemory(child, status);
    if (child > 0)
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (stdoutFile.empty())
        result.out = readFile(out);
    result.err = readFile(err);
    return result;
}

Result qvcl(std::vector<std::string> arguments, const std::string& stdinFile, const std::string& stdoutFile)
{
    arguments.insert(arguments.begin(), QVTEST_QVCL);
    return run(arguments, stdinFile, stdoutFile);
}

std::string randomUnicodeText(uint32_t seed, size_t characters)
{
    // Ranges of assigned characters; glibc and the library agree on them.
    static const uint32_t ranges[][2] = {{0x20, 0x7E},     {0x0A, 0x0A},      {0xA0, 0xFF},     {0x100, 0x17F},
                                         {0x391, 0x3C9},   {0x410, 0x44F},    {0x5D0, 0x5EA},   {0x621, 0x64A},
                                         {0x2010, 0x2027}, {0x20AC, 0x20AC},  {0x3041, 0x3096}, {0x4E00, 0x9FA5},
                                         {0xAC00, 0xD7A3}, {0x1F600, 0x1F64F}};
    std::mt19937 random(seed);
    std::string text;
    for (size_t i = 0; i < characters; ++i) {
        // ASCII half of the time, as in real text.
        const auto& range = random() % 2 ? ranges[0] : ranges[random() % (sizeof ranges / sizeof ranges[0])];
        const uint32_t c = range[0] + random() % (range[1] - range[0] + 1);
        if (c < 0x80) {
            text += static_cast<char>(c);
        } else if (c < 0x800) {
            text += static_cast<char>(0xC0 | (c >> 6));
            text += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            text += static_cast<char>(0xE0 | (c >> 12));
            text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            text += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            text += static_cast<char>(0xF0 | (c >> 18));
            text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            text += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return text;
}

} // namespace clitest
