#ifndef QVCORE3_TESTS_TESTSUPPORT_H
#define QVCORE3_TESTS_TESTSUPPORT_H

#include <qvcore3/qvcore3.h>

#include "ChildProcess.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace qvtest {

inline int64_t MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
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
    return QVProcessCreate(childProgram().c_str(), arguments.c_str(), directory, environment, flags, pipes, handle);
}

inline QVRESULT RunChild(const std::string& arguments, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes, QVHANDLE* handle,
                         const char16_t* const* environment = nullptr, const char16_t* directory = nullptr)
{
    return RunChild(utf16(arguments), flags, pipes, handle, environment, directory);
}

inline QVRESULT RunChild(const char* arguments, uint32_t flags, STRUCT_QV_PROCESS_PIPES* pipes, QVHANDLE* handle,
                         const char16_t* const* environment = nullptr, const char16_t* directory = nullptr)
{
    return RunChild(std::string(arguments), flags, pipes, handle, environment, directory);
}

} // namespace qvtest

#endif
