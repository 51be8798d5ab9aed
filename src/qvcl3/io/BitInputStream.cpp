#include <qv/io/BitInputStream.h>

#include "io/StreamSupport.h"

namespace qv {
namespace io {

BitInputStream::BitInputStream(InputStream* in) : FilterInputStream(in) {}

BitInputStream::~BitInputStream() = default;

int BitInputStream::readBit()
{
    if (m_bitsLeft == 0) {
        const int byte = m_in->read();
        if (byte < 0)
            return -1;
        m_byte = byte;
        m_bitsLeft = 8;
    }
    --m_bitsLeft;
    return (m_byte >> m_bitsLeft) & 1;
}

int BitInputStream::read(int bits)
{
    if (bits < 1)
        return 0;
    uint32_t result = 0;
    for (int i = 0; i < bits; ++i)
        result = static_cast<uint32_t>(readBit()) | (result << 1);
    return static_cast<int>(result);
}

int32_t BitInputStream::read(signed char* buffer, int32_t count)
{
    if (!detail::wantsBytes(buffer, count))
        return 0;
    // On a byte boundary eight bits are just the next byte.
    if (m_bitsLeft == 0)
        return m_in->read(buffer, count);
    int32_t n = 0;
    while (n < count) {
        const int byte = read(8);
        if (byte == -1)
            break;
        buffer[n++] = static_cast<signed char>(byte);
    }
    return n > 0 ? n : -1;
}

int BitInputStream::read()
{
    if (m_bitsLeft == 0)
        return m_in->read();
    return read(8);
}

int32_t BitInputStream::skip(int32_t count)
{
    return InputStream::skip(count);
}

// Leftover bits never make up a whole byte, so the wrapped stream's count is
// also the count of whole bytes here.
int32_t BitInputStream::available()
{
    return m_in->available();
}

bool BitInputStream::markSupported()
{
    return false;
}

void BitInputStream::mark(int32_t) {}

void BitInputStream::reset()
{
    InputStream::reset();
}

} // namespace io
} // namespace qv
