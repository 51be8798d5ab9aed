#include <qv/io/BitOutputStream.h>

#include "io/StreamSupport.h"

namespace qv {
namespace io {

BitOutputStream::BitOutputStream(OutputStream* out) : FilterOutputStream(out) {}

BitOutputStream::~BitOutputStream() = default;

void BitOutputStream::writeBit(bool bit)
{
    m_accumulator = ((m_accumulator << 1) | (bit ? 1u : 0u)) & 0xFFu;
    if (++m_bitCount == 8) {
        const signed char byte = static_cast<signed char>(m_accumulator);
        m_accumulator = 0;
        m_bitCount = 0;
        m_out->write(byte);
    }
}

void BitOutputStream::writeField(uint64_t value, int bits)
{
    if (static_cast<unsigned>(bits - 1) > 31u)
        throw ResultException(results::INVALIDARG);
    // The shift is taken modulo 32, so for 32 bits the mask is 0.
    const uint32_t mask = ~(0xFFFFFFFFu << (bits % 32));
    if (value > mask)
        throw RangeErrorException(u"Number out of range");
    for (int i = bits - 1; i >= 0; --i)
        writeBit(((value >> i) & 1u) != 0);
}

void BitOutputStream::write(uint32_t value, int bits)
{
    writeField(value, bits);
}

void BitOutputStream::write(int value, int bits)
{
    writeField(static_cast<uint64_t>(static_cast<int64_t>(value)), bits);
}

void BitOutputStream::write(unsigned long value, int bits)
{
    writeField(value, bits);
}

void BitOutputStream::write(long value, int bits)
{
    writeField(static_cast<uint64_t>(static_cast<int64_t>(value)), bits);
}

void BitOutputStream::write(unsigned long long value, int bits)
{
    writeField(value, bits);
}

void BitOutputStream::write(long long value, int bits)
{
    writeField(static_cast<uint64_t>(value), bits);
}

void BitOutputStream::write(const signed char* buffer, int32_t count)
{
    if (!detail::hasBytes(buffer, count))
        return;
    if (m_bitCount == 0) {
        m_out->write(buffer, count);
        return;
    }
    // Off a byte boundary every byte straddles two output bytes: shift a
    // block at a time rather than a bit at a time.
    const int shift = 8 - m_bitCount;
    signed char block[4096];
    int32_t done = 0;
    while (done < count) {
        const int32_t n = count - done < 4096 ? count - done : 4096;
        for (int32_t i = 0; i < n; ++i) {
            const unsigned b = static_cast<unsigned char>(buffer[done + i]);
            block[i] = static_cast<signed char>((m_accumulator << shift) | (b >> m_bitCount));
            m_accumulator = b & ((1u << m_bitCount) - 1u);
        }
        m_out->write(block, n);
        done += n;
    }
}

void BitOutputStream::write(signed char byte)
{
    writeField(static_cast<unsigned char>(byte), 8);
}

void BitOutputStream::flush()
{
    if (m_bitCount > 0) {
        const signed char byte = static_cast<signed char>(m_accumulator << (8 - m_bitCount));
        m_accumulator = 0;
        m_bitCount = 0;
        m_out->write(byte);
    }
    m_out->flush();
}

void BitOutputStream::close()
{
    detail::finishThenClose([this] { flush(); }, [this] { m_out->close(); });
}

} // namespace io
} // namespace qv
