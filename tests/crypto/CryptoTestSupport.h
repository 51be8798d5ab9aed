#ifndef QVCL3_TESTS_CRYPTO_CRYPTOTESTSUPPORT_H
#define QVCL3_TESTS_CRYPTO_CRYPTOTESTSUPPORT_H

// Hexadecimal helpers and the OpenSSL command line, which the differential
// tests run as a child process (the library itself never uses OpenSSL).

#include <qv/lang/String.h>

#include "ChildProcess.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

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

// A scratch file in a directory of its own, both removed with the object.
class TempFile {
public:
    const std::string& path() const { return m_path; }
    void write(const std::vector<uint8_t>& bytes) const { writeFile(m_path, std::string(bytes.begin(), bytes.end())); }
    std::vector<uint8_t> read() const
    {
        const std::string bytes = readFile(m_path);
        return std::vector<uint8_t>(bytes.begin(), bytes.end());
    }

private:
    TempDir m_dir{"qvcl3-crypto"};
    std::string m_path = m_dir.file("data");
};

} // namespace qvtest

#endif
