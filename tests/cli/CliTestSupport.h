// The tool's tests run the built program and system tools beside it as
// child processes (support/ChildProcess.h).
#ifndef QVTEST_CLI_CLITESTSUPPORT_H
#define QVTEST_CLI_CLITESTSUPPORT_H

#include "ChildProcess.h"

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace clitest {

using qvtest::argvOf;
using qvtest::readFile;
using qvtest::writeFile;
using Result = qvtest::RunResult;

class TempDir : public qvtest::TempDir {
public:
    TempDir() : qvtest::TempDir("qvcl-cli") {}
};

inline Result run(const std::vector<std::string>& argv, const std::string& stdinFile = "",
                  const std::string& stdoutFile = "")
{
    return qvtest::run(argv, stdinFile, stdoutFile);
}

// The exit status and what went to standard error, compared as one.
using Failure = std::pair<int, std::string>;
inline Failure failureOf(const Result& result)
{
    return {result.status, result.err};
}

// The tool with its arguments.
inline Result qvcl(std::vector<std::string> arguments, const std::string& stdinFile = "",
                   const std::string& stdoutFile = "")
{
    arguments.insert(arguments.begin(), QVTEST_QVCL);
    return qvtest::run(arguments, stdinFile, stdoutFile);
}

// Deterministic random UTF-8 text from every kind of character: ASCII,
// Latin-1, other alphabets, CJK, characters beyond the first plane.
inline std::string randomUnicodeText(uint32_t seed, size_t characters)
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

#endif
