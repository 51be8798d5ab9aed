#include <qv/io/DataInputStream.h>

#include <qv/io/IoException.h>

#include "io/StreamSupport.h"

#include <cstring>

namespace qv {
namespace io {

DataInputStream::DataInputStream(InputStream* in) : FilterInputStream(in) {}

DataInputStream::~DataInputStream() = default;

// Every position of the value is read even after one has met the end, as a
// byte-by-byte reader would; the bulk read first only saves the per-byte
// calls when the bytes are there.
bool DataInputStream::readValueBytes(unsigned char* bytes, int n)
{
    int got = m_in->read(reinterpret_cast<signed char*>(bytes), n);
    if (got < 0)
        got = 0;
    bool complete = true;
    for (; got < n; ++got) {
        const int c = m_in->read();
        if (c < 0)
            complete = false;
        bytes[got] = static_cast<unsigned char>(c);
    }
    return complete;
}

bool DataInputStream::readBool()
{
    return readByte() != 0;
}

signed char DataInputStream::readByte()
{
    const int c = m_in->read();
    if (c < 0)
        throw UnexpectedEOFException();
    return static_cast<signed char>(c);
}

unsigned char DataInputStream::readUnsignedByte()
{
    return static_cast<unsigned char>(readByte());
}

int16_t DataInputStream::readInt16()
{
    return static_cast<int16_t>(readUnsignedInt16());
}

uint16_t DataInputStream::readUnsignedInt16()
{
    unsigned char b[2];
    if (!readValueBytes(b, 2))
        throw UnexpectedEOFException();
    return static_cast<uint16_t>((b[0] << 8) | b[1]);
}

char16_t DataInputStream::readChar16()
{
    return static_cast<char16_t>(readUnsignedInt16());
}

int32_t DataInputStream::readInt32()
{
    return static_cast<int32_t>(readUnsignedInt32());
}

uint32_t DataInputStream::readUnsignedInt32()
{
    unsigned char b[4];
    if (!readValueBytes(b, 4))
        throw UnexpectedEOFException();
    return (static_cast<uint32_t>(b[0]) << 24) | (static_cast<uint32_t>(b[1]) << 16) |
           (static_cast<uint32_t>(b[2]) << 8) | b[3];
}

char32_t DataInputStream::readChar32()
{
    return static_cast<char32_t>(readUnsignedInt32());
}

int64_t DataInputStream::readInt64()
{
    return static_cast<int64_t>(readUnsignedInt64());
}

uint64_t DataInputStream::readUnsignedInt64()
{
    const uint64_t high = readUnsignedInt32();
    return (high << 32) | readUnsignedInt32();
}

float DataInputStream::readFloat()
{
    const uint32_t bits = readUnsignedInt32();
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double DataInputStream::readDouble()
{
    const uint64_t bits = readUnsignedInt64();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void DataInputStream::readFully(signed char* buffer, int32_t count)
{
    if (!detail::hasBytes(buffer, count))
        return;
    int32_t got = 0;
    while (got < count) {
        const int32_t n = m_in->read(buffer + got, count - got);
        if (n > 0) {
            got += n;
            continue;
        }
        // A source that answers 0 gets one single-byte read, which treats
        // 0 as the end: waiting for it to change would spin.
        const int c = n < 0 ? -1 : m_in->read();
        if (c < 0)
            throw UnexpectedEOFException();
        buffer[got++] = static_cast<signed char>(c);
    }
}

void DataInputStream::readFully(char* buffer, int32_t count)
{
    readFully(reinterpret_cast<signed char*>(buffer), count);
}

void DataInputStream::readFully(unsigned char* buffer, int32_t count)
{
    readFully(reinterpret_cast<signed char*>(buffer), count);
}

String DataInputStream::readString()
{
    return String();
}

} // namespace io
} // namespace qv
