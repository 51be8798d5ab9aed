#ifndef QVCL3_TESTS_CRYPTO_CRYPTOTESTSUPPORT_H
#define QVCL3_TESTS_CRYPTO_CRYPTOTESTSUPPORT_H

// Hexadecimal helpers and the OpenSSL command line, which the differential
// tests run as a child process (the library itself never uses OpenSSL).

#include <qv/lang/String.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace qvtest {

inline std::vector<uint8_t> fromHex(const std::string& hex)
{
    std::vector<uint8_t> bytes(hex.size() / 2);
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<uint8_t>(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    }
    return bytes;
}

// Upper case, as the published cipher vectors are written.
inline std::string toHex(const uint8_t* bytes, size_t size)
{
    static const char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (size_t i = 0; i < size; ++i) {
        hex += kDigits[bytes[i] >> 4];
        hex += kDigits[bytes[i] & 15];
    }
    return hex;
}

inline std::string toHex(const std::vector<uint8_t>& bytes)
{
    return toHex(bytes.data(), bytes.size());
}

inline std::string narrow(const qv::String& text)
{
    return text.toUtf8();
}

inline std::vector<uint8_t> randomBytes(std::mt19937& random, size_t size)
{
    std::vector<uint8_t> bytes(size);
    for (uint8_t& b : bytes) {
        b = static_cast<uint8_t>(random());
    }
    return bytes;
}

// A scratch file that is removed with the object.
class TempFile {
public:
    TempFile()
    {
        char name[] = "/tmp/qvcl3-crypto-XXXXXX";
        const int fd = mkstemp(name);
        if (fd >= 0) {
            close(fd);
            m_path = name;
        }
    }
    ~TempFile()
    {
        if (!m_path.empty()) {
            std::remove(m_path.c_str());
        }
    }
    const std::string& path() const { return m_path; }
    void write(const std::vector<uint8_t>& bytes) const
    {
        std::ofstream(m_path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), long(bytes.size()));
    }
    std::vector<uint8_t> read() const
    {
        std::ifstream in(m_path, std::ios::binary);
        return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

private:
    std::string m_path;
};

// Runs a shell command and gives its standard output; status receives the
// exit status (-1 when it could not run).
inline std::string runCommand(const std::string& command, int* status)
{
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        *status = -1;
        return output;
    }
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, n);
    }
    const int result = pclose(pipe);
    *status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
    return output;
}

} // namespace qvtest

#endif
