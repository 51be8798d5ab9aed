#ifndef QVCL3_TESTS_MODULES_TEMPREGISTRY_H
#define QVCL3_TESTS_MODULES_TEMPREGISTRY_H

// A fresh key store for one test: QV_REGISTRY_DIR points at a folder made
// here and removed afterwards, so no test touches the user's own store.

#include <gtest/gtest.h>

#include "ChildProcess.h"

#include <spawn.h>
#include <stdlib.h>

#include <memory>
#include <string>
#include <vector>

extern char** environ;

namespace qvtest {

class TempRegistry : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_store = std::make_unique<TempDir>("qvcl3-registry");
        m_dir = m_store->path();
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
        m_store.reset();
    }

    // A file or folder below the store, for tests that look at the disk.
    std::string onDisk(const std::string& relative) const { return m_dir + "/" + relative; }

    std::string m_dir;

private:
    std::unique_ptr<TempDir> m_store;
    std::string m_previous;
    bool m_hadPrevious = false;
};

// Starts program with arguments (the environment is inherited); returns the
// child's pid.
inline pid_t spawn(const std::vector<std::string>& arguments)
{
    std::vector<char*> argv = argvOf(arguments);
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

} // namespace qvtest

#endif
