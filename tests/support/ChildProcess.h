// Child processes and scratch files for tests: the test child program's
// path, running a program with files for its standard streams, a private
// temporary directory, and names no other test run uses.
#ifndef QVTEST_SUPPORT_CHILDPROCESS_H
#define QVTEST_SUPPORT_CHILDPROCESS_H

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace qvtest {

// ASCII only.
inline std::u16string utf16(const std::string& text)
{
    return std::u16string(text.begin(), text.end());
}

#ifdef QVTEST_CHILD
// The program tests start as a child: argv[1] picks what it does (see
// support/child/TestChild.cpp).
inline const std::u16string& childProgram()
{
    static const std::u16string path = utf16(QVTEST_CHILD);
    return path;
}
#endif

// A name no other test run on this machine uses at the same time.
inline std::string uniqueName(const char* stem)
{
    static int counter = 0;
    return std::string("qvcl3-test-") + stem + "-" + std::to_string(getpid()) + "-" + std::to_string(++counter);
}

// Entries of /proc/self/fd, "." and ".." included: compare two counts.
inline int countOpenDescriptors()
{
    int count = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (dir && readdir(dir))
        ++count;
    if (dir)
        closedir(dir);
    return count;
}

// Children of this process in any state, zombies included.
inline int countChildren()
{
    int children = 0;
    DIR* dir = opendir("/proc");
    while (dirent* entry = dir ? readdir(dir) : nullptr) {
        const std::string path = std::string("/proc/") + entry->d_name + "/stat";
        FILE* file = std::fopen(path.c_str(), "r");
        if (!file)
            continue;
        char line[512] = {};
        const bool read = std::fgets(line, sizeof line, file) != nullptr;
        std::fclose(file);
        const char* close = read ? std::strrchr(line, ')') : nullptr;
        char state = 0;
        int parent = 0;
        if (close && std::sscanf(close + 1, " %c %d", &state, &parent) == 2 && parent == static_cast<int>(getpid()))
            ++children;
    }
    if (dir)
        closedir(dir);
    return children;
}

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

// A directory under $TMPDIR (else /tmp), removed with everything in it.
class TempDir {
public:
    explicit TempDir(const char* stem = "qvcl3-test")
    {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/" + stem + ".XXXXXX";
        if (!mkdtemp(&pattern[0]))
            throw std::runtime_error("mkdtemp failed for " + pattern);
        m_path = pattern;
    }
    ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }
    void write(const std::string& name, const std::string& bytes) const { writeFile(file(name), bytes); }

private:
    std::string m_path;
};

// argv for execv: pointers into words, null-terminated.
inline std::vector<char*> argvOf(const std::vector<std::string>& words)
{
    std::vector<char*> argv;
    for (const std::string& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    return argv;
}

struct RunResult {
    // The exit code, or 128 + the signal that ended the child.
    int status = -1;
    std::string out;
    std::string err;
    // The child's peak resident set, in KiB.
    long maxResidentKiB = 0;
};

// The child's peak resident set read from /proc while it runs. The kernel's
// own figure (wait4) would include the parent's pages the child had between
// fork and exec.
inline long waitWatchingMemory(pid_t child, int& status)
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

// Runs argv[0] (searched on PATH when it has no slash) with standard input
// from stdinFile ("" for /dev/null); standard output goes to stdoutFile
// when given, else it is captured, as standard error always is.
inline RunResult run(const std::vector<std::string>& argv, const std::string& stdinFile = "",
                     const std::string& stdoutFile = "")
{
    TempDir streams("qvcl3-run");
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
    RunResult result;
    int status = 0;
    if (child > 0) {
        result.maxResidentKiB = waitWatchingMemory(child, status);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    if (stdoutFile.empty())
        result.out = readFile(out);
    result.err = readFile(err);
    return result;
}

// Runs a shell command and gives its standard output; status receives the
// exit status (-1 when it could not run).
inline std::string runCommand(const std::string& command, int* status = nullptr)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        if (status)
            *status = -1;
        return output;
    }
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, n);
    }
    const int result = pclose(pipe);
    if (status)
        *status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
    return output;
}

} // namespace qvtest

#endif
