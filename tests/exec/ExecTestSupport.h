#ifndef QVCL3_TESTS_EXECTESTSUPPORT_H
#define QVCL3_TESTS_EXECTESTSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

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

inline std::u16string utf16(const std::string& text)
{
    return std::u16string(text.begin(), text.end());
}

inline const std::u16string& childProgram()
{
    static const std::u16string path = utf16(QVCL3_TEST_EXEC_CHILD);
    return path;
}

// A name no other test run on this machine uses at the same time.
inline std::string uniqueName(const char* stem)
{
    static int counter = 0;
    return std::string("qvcl3-test-") + stem + "-" + std::to_string(getpid()) + "-" + std::to_string(++counter);
}

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

} // namespace exectest

#endif
