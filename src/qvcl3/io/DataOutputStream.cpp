#include <qv/io/DataOutputStream.h>

#include <cstring>

namespace qv {
namespace io {

DataOutputStream::DataOutputStream(OutputStream* out) : FilterOutputStream(out) {}

DataOutputStream::~DataOutputStream() = default;

void DataOutputStream::writeBool(bool value)
{
    m_out->write(static_cast<signed char>(value ? 1 : 0));
}

void DataOutputStream::writeByte(signed char value)
{
    m_out->write(value);
}

// Each value goes out in one write of its bytes rather than one call per
// byte; the bytes are the same.
void DataOutputStream::writeInt16(int16_t value)
{
    const uint16_t v = static_cast<uint16_t>(value);
    const signed char b[2] = {static_cast<signed char>(v >> 8), static_cast<signed char>(v)};
    m_out->write(b, 2);
}

void DataOutputStream::writeInt32(int32_t value)
{
    const uint32_t v = static_cast<uint32_t>(value);
    const signed char b[4] = {static_cast<signed char>(v >> 24), static_cast<signed char>(v >> 16),
                              static_cast<signed char>(v >> 8), static_cast<signed char>(v)};
    m_out->write(b, 4);
}

void DataOutputStream::writeInt64(int64_t value)
{
    const uint64_t v = static_cast<uint64_t>(value);
    signed char b[8];
    for (int i = 0; i < 8; ++i)
        b[i] = static_cast<signed char>(v >> (56 - 8 * i));
    m_out->write(b, 8);
}

void DataOutputStream::writeFloat(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    writeUnsignedInt32(bits);
}

void DataOutputStream::writeDouble(double value)
{
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    writeUnsignedInt64(bits);
}

void DataOutputStream::writeString(const util::AbstractCharBuffer&) {}

} // namespace io
} // namespace qv
