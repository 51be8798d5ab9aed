// Runs programs as child processes with files for their standard streams,
// and a private temporary directory, for the tool's tests.
#ifndef QVTEST_CLI_CHILDPROCESS_H
#define QVTEST_CLI_CHILDPROCESS_H

#include <cstdint>
#include <string>
#include <vector>

namespace clitest {

struct Result {
    int status = -1;
    std::string out;
    std::string err;
    // The child's peak resident set, in KiB.
    long maxResidentKiB = 0;
};

// A directory under /tmp, removed with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Runs argv[0] (searched on PATH when it has no slash) with standard input
// from stdinFile ("" for /dev/null); standard output goes to stdoutFile
// when given, else it is captured.
Result run(const std::vector<std::string>& argv, const std::string& stdinFile = "", const std::string& stdoutFile = "");

// argv for execv: pointers into words, null-terminated.
std::vector<char*> argvOf(const std::vector<std::string>& words);

// The tool with its arguments.
Result qvcl(std::vector<std::string> arguments, const std::string& stdinFile = "", const std::string& stdoutFile = "");

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

// Deterministic random UTF-8 text from every kind of character: ASCII,
// Latin-1, other alphabets, CJK, characters beyond the first plane.
std::string randomUnicodeText(uint32_t seed, size_t characters);

} // namespace clitest

#endif
