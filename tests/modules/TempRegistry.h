#ifndef QVCL3_TESTS_MODULES_TEMPREGISTRY_H
#define QVCL3_TESTS_MODULES_TEMPREGISTRY_H

// A fresh key store for one test: QV_REGISTRY_DIR points at a folder made
// here and removed afterwards, so no test touches the user's own store.

#include <gtest/gtest.h>

#include <ftw.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

extern char** environ;

namespace qvtest {

class TempRegistry : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/qvcl3-registry-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
        const char* previous = getenv("QV_REGISTRY_DIR");
        m_hadPrevious = previous != nullptr;
        if (previous)
            m_previous = previous;
        setenv("QV_REGISTRY_DIR", m_dir.c_str(), 1);
    }

    void TearDown() override
    {
        if (m_hadPrevious)
            setenv("QV_REGISTRY_DIR", m_previous.c_str(), 1);
        else
            unsetenv("QV_REGISTRY_DIR");
        nftw(
            m_dir.c_str(), [](const char* path, const struct stat*, int, struct FTW*) { return remove(path); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }

    // A file or folder below the store, for tests that look at the disk.
    std::string onDisk(const std::string& relative) const { return m_dir + "/" + relative; }

    std::string m_dir;

private:
    std::string m_previous;
    bool m_hadPrevious = false;
};

// Starts program with arguments (the environment is inherited); returns the
// child's pid.
inline pid_t spawn(const std::vector<std::string>& arguments)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
        return -1;
    return pid;
}

// The exit status of a finished child, or -1 if it did not exit normally.
inline int waitExit(pid_t pid)
{
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

inline int run(const std::vector<std::string>& arguments)
{
    const pid_t pid = spawn(arguments);
    return pid < 0 ? -1 : waitExit(pid);
}

} // namespace qvtest

#endif
