#ifndef QVCL3_TESTS_IO_TEXTIOSUPPORT_H
#define QVCL3_TESTS_IO_TEXTIOSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStream.h>
#include <qv/io/Reader.h>
#include <qv/lang/String.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qvtest {

// Hands out the text of another reader in short runs of random length, as
// a pipe or a socket would, so that line ends and characters fall across
// reads.
class TrickleReader : public qv::io::Reader {
public:
    TrickleReader(qv::io::Reader* in, uint32_t seed, int32_t maxRun) : m_in(in), m_random(seed), m_maxRun(maxRun) {}
    using qv::io::Reader::read;
    int32_t read(char16_t* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        int32_t run = std::uniform_int_distribution<int32_t>(1, m_maxRun)(m_random);
        return m_in->read(buffer, run < count ? run : count);
    }
    void close() override { m_in->close(); }

private:
    qv::Reference<qv::io::Reader> m_in;
    std::mt19937 m_random;
    int32_t m_maxRun;
};

// Hands out the bytes of another stream in runs of random length.
class TrickleInputStream : public qv::io::InputStream {
public:
    TrickleInputStream(qv::io::InputStream* in, uint32_t seed, int32_t maxRun)
        : m_in(in), m_random(seed), m_maxRun(maxRun)
    {}
    using qv::io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        int32_t run = std::uniform_int_distribution<int32_t>(1, m_maxRun)(m_random);
        return m_in->read(buffer, run < count ? run : count);
    }
    void close() override { m_in->close(); }

private:
    qv::Reference<qv::io::InputStream> m_in;
    std::mt19937 m_random;
    int32_t m_maxRun;
};

// A device that fills up: takes `room` bytes, then throws IoException
// "device full" for every write that does not fit.
class FillingOutputStream : public qv::io::OutputStream {
public:
    explicit FillingOutputStream(size_t room) : m_room(room) {}
    using qv::io::OutputStream::write;
    void write(const signed char* buffer, int32_t count) override
    {
        if (bytes.size() + static_cast<size_t>(count) > m_room)
            throw qv::io::IoException(QV_STR(u"device full"));
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    void close() override { ++closes; }

    std::vector<signed char> bytes;
    int closes = 0;

private:
    size_t m_room;
};

inline std::u16string u16(const qv::String& text)
{
    return text.toU16String();
}

// The message of the IoException that operation throws ("" when it throws
// none, which the caller's expectation then reports).
template <class Operation>
std::string ioFailure(Operation&& operation)
{
    try {
        operation();
    } catch (const qv::io::IoException& e) {
        return e.getDescription().toUtf8();
    }
    return "";
}

template <class Operation>
qv::Result resultOf(Operation&& operation)
{
    try {
        operation();
    } catch (const qv::Exception& e) {
        return e.getResult();
    }
    return 0;
}

} // namespace qvtest

#endif
