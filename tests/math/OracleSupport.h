#ifndef QVCL3_TESTS_MATH_ORACLESUPPORT_H
#define QVCL3_TESTS_MATH_ORACLESUPPORT_H

#include <ChildProcess.h>
#include <gtest/gtest.h>

#include <string>

namespace oracle {

// The standard output of one of the Python scripts next to this file, or
// an empty string when it could not be run.
inline std::string run(const char* script, const char* seed, const char* scale, const char* more)
{
    int status = -1;
    const std::string data = qvtest::runCommand(std::string(QVCL3_PYTHON) + " " + QVCL3_MATH_TEST_DIR + "/" + script +
                                                    " " + seed + " " + scale + " " + more,
                                                &status);
    return status == 0 ? data : std::string();
}

// Counts disagreements, reporting the first few in full.
struct Checker {
    size_t lines = 0;
    size_t failures = 0;

    void operator()(const std::string& line, const std::string& expected, const std::string& actual)
    {
        if (expected == actual)
            return;
        if (++failures <= 5)
            ADD_FAILURE() << "case: " << line.substr(0, 300) << "\n expected: " << expected.substr(0, 200)
                          << "\n actual:   " << actual.substr(0, 200);
    }
};

} // namespace oracle

#endif
