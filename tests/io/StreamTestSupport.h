#ifndef QVCL3_TESTS_IO_STREAMTESTSUPPORT_H
#define QVCL3_TESTS_IO_STREAMTESTSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStream.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <functional>
#include <string>
#include <vector>

namespace iotest {

inline std::vector<signed char> bytes(const std::string& text)
{
    return std::vector<signed char>(text.begin(), text.end());
}

inline std::string text(const std::vector<signed char>& data)
{
    return std::string(data.begin(), data.end());
}

// What a ByteArrayOutputStream holds, as unsigned bytes.
inline std::vector<unsigned char> collected(const qv::io::ByteArrayOutputStream& out)
{
    const unsigned char* data = reinterpret_cast<const unsigned char*>(out.getData());
    return std::vector<unsigned char>(data, data + out.size());
}

using qvtest::messageOf;
using qvtest::resultOf;

// Every operation throws IoException with the same text; a failure names
// the operation by its place in the list.
inline void expectEachFails(const std::string& message, std::initializer_list<std::function<void()>> operations)
{
    int index = 0;
    for (const auto& operation : operations) {
        EXPECT_EQ(messageOf<qv::io::IoException>(operation), message) << "operation " << index;
        ++index;
    }
}

// A client-written source that overrides only the one abstract read. It
// hands out at most `chunk` bytes per call, may answer 0 every other call,
// and records the counts it was asked for.
class ScriptedInput : public qv::io::InputStream {
public:
    explicit ScriptedInput(std::vector<signed char> data, int32_t chunk = 1 << 30, bool stutter = false)
        : m_data(std::move(data)), m_chunk(chunk), m_stutter(stutter)
    {}
    using qv::io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        requests.push_back(count);
        if (count < 1)
            return 0;
        if (m_stutter && (m_calls++ % 2) == 0)
            return 0;
        if (m_pos >= m_data.size())
            return -1;
        size_t n = std::min<size_t>({static_cast<size_t>(count), static_cast<size_t>(m_chunk), m_data.size() - m_pos});
        std::copy(m_data.begin() + static_cast<long>(m_pos), m_data.begin() + static_cast<long>(m_pos + n), buffer);
        m_pos += n;
        return static_cast<int32_t>(n);
    }
    int32_t available() override
    {
        return availableAnswer >= 0 ? availableAnswer : static_cast<int32_t>(m_data.size() - m_pos);
    }
    void close() override { ++closes; }

    std::vector<int32_t> requests;
    int closes = 0;
    // -1: answer with the bytes left.
    int32_t availableAnswer = 0;
    size_t position() const { return m_pos; }

private:
    std::vector<signed char> m_data;
    size_t m_pos = 0;
    int32_t m_chunk;
    bool m_stutter;
    int m_calls = 0;
};

// A client-written sink that overrides only the one abstract write.
class RecordingOutput : public qv::io::OutputStream {
public:
    using qv::io::OutputStream::write;
    void write(const signed char* buffer, int32_t count) override
    {
        writes.push_back(count);
        data.insert(data.end(), buffer, buffer + count);
    }
    void flush() override { ++flushes; }
    void close() override { ++closes; }

    std::vector<signed char> data;
    std::vector<int32_t> writes;
    int flushes = 0;
    int closes = 0;
};

} // namespace iotest

#endif
