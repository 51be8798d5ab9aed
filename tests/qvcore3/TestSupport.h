#ifndef QVCORE3_TESTS_TESTSUPPORT_H
#define QVCORE3_TESTS_TESTSUPPORT_H

#include <qvcore3/qvcore3.h>

#include <dirent.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace qvtest {

inline int64_t MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

// A name no other test run on this machine uses at the same time.
inline std::string UniqueName(const char* stem)
{
    static int counter = 0;
    return std::string("qvcore3-test-") + stem + "-" + std::to_string(QVProcessGetCurrentId()) + "-" +
           std::to_string(++counter);
}

// ASCII only.
inline std::u16string Utf16(const std::string& text)
{
    return std::u16string(text.begin(), text.end());
}

inline int CountOpenDescriptors()
{
    int count = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (dir && readdir(dir)) {
        ++count;
    }
    if (dir) {
        closedir(dir);
    }
    return count;
}

// Reads a descriptor to its end.
inline std::string ReadAll(int32_t fd)
{
    std::string text;
    char buffer[256];
    uint32_t done = 0;
    while (QVFileRead(fd, buffer, sizeof buffer, &done) == QV_S_OK && done > 0) {
        text.append(buffer, done);
    }
    return text;
}

inline QVRESULT RunChild(const std::u16string& arguments, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes,
                         QVHANDLE* handle, const char16_t* const* environment = nullptr,
                         const char16_t* directory = nullptr)
{
    const std::u16string program = Utf16(QVCORE3_TEST_CHILD);
    return QVProcessCreate(program.c_str(), arguments.c_str(), directory, environment, flags, pipes, handle);
}

inline QVRESULT RunChild(const std::string& arguments, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes, QVHANDLE* handle,
                         const char16_t* const* environment = nullptr, const char16_t* directory = nullptr)
{
    return RunChild(Utf16(arguments), flags, pipes, handle, environment, directory);
}

inline QVRESULT RunChild(const char* arguments, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes, QVHANDLE* handle,
                         const char16_t* const* environment = nullptr, const char16_t* directory = nullptr)
{
    return RunChild(std::string(arguments), flags, pipes, handle, environment, directory);
}

} // namespace qvtest

#endif
