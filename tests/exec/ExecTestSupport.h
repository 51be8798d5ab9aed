#ifndef QVCL3_TESTS_EXECTESTSUPPORT_H
#define QVCL3_TESTS_EXECTESTSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

#include "ChildProcess.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace exectest {

// What an operation threw: the exception's type name, result code and message.
struct Thrown {
    std::string type;
    qv::Result code = 0;
    std::string message;
};

template <class Operation>
Thrown thrownBy(Operation&& operation)
{
    Thrown thrown;
    try {
        operation();
        thrown.type = "nothing";
    } catch (const qv::IllegalStateException& e) {
        thrown = {"IllegalStateException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::io::IoException& e) {
        thrown = {"IoException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::OutOfMemoryException& e) {
        thrown = {"OutOfMemoryException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::ResultException& e) {
        thrown = {"ResultException", e.getResult(), e.getDescription().toUtf8()};
    } catch (const qv::Exception& e) {
        thrown = {"Exception", e.getResult(), e.getDescription().toUtf8()};
    }
    return thrown;
}

inline qv::Result code(uint32_t value)
{
    return static_cast<qv::Result>(value);
}

using qvtest::childProgram;
using qvtest::countOpenDescriptors;
using qvtest::uniqueName;
using qvtest::utf16;

// A unique name for a named semaphore or shared memory region, removed with
// the given platform call at the end of the test, whatever happened.
class NameGuard {
public:
    typedef QVRESULT (*Unlink)(const char*);
    NameGuard(const char* stem, Unlink unlink) : name(uniqueName(stem)), m_unlink(unlink) {}
    ~NameGuard() { m_unlink(name.c_str()); }
    const char* c_str() const { return name.c_str(); }

    const std::string name;

private:
    Unlink m_unlink;
};

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

} // namespace exectest

#endif
