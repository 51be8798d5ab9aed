#ifndef QVCL3_TESTS_IO_TEXTIOSUPPORT_H
#define QVCL3_TESTS_IO_TEXTIOSUPPORT_H

#include <qv/core/Exception.h>
#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStream.h>
#include <qv/io/Reader.h>
#include <qv/lang/String.h>

#include <gtest/gtest.h>

#include "StreamTestSupport.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qvtest {

// Hands out what another reader or stream gives in runs of random length,
// as a pipe or a socket would, so that line ends, characters and byte
// sequences fall across reads.
template <class Source, class Unit>
class Trickle : public Source {
public:
    Trickle(Source* in, uint32_t seed, int32_t maxRun) : m_in(in), m_random(seed), m_maxRun(maxRun) {}
    using Source::read;
    int32_t read(Unit* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        int32_t run = std::uniform_int_distribution<int32_t>(1, m_maxRun)(m_random);
        return m_in->read(buffer, run < count ? run : count);
    }
    void close() override { m_in->close(); }

private:
    qv::Reference<Source> m_in;
    std::mt19937 m_random;
    int32_t m_maxRun;
};

typedef Trickle<qv::io::Reader, char16_t> TrickleReader;
typedef Trickle<qv::io::InputStream, signed char> TrickleInputStream;

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

// The message of the IoException that operation throws.
template <class Operation>
std::string ioFailure(Operation&& operation)
{
    return iotest::messageOf<qv::io::IoException>(operation);
}

} // namespace qvtest

#endif
