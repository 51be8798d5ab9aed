#ifndef QV_IO_DATAOUTPUTSTREAM_H
#define QV_IO_DATAOUTPUTSTREAM_H

#include <qv/io/FilterOutputStream.h>
#include <qv/util/AbstractCharBuffer.h>

namespace qv {
namespace io {

// Writes typed values for DataInputStream: multi-byte values big-endian,
// most significant byte first; floating values as their IEEE bit patterns.
class QV_EXPORT DataOutputStream : public FilterOutputStream {
public:
    explicit DataOutputStream(OutputStream* out);
    ~DataOutputStream() override;

    // 1 or 0.
    void writeBool(bool value);
    void writeByte(signed char value);
    void writeUnsignedByte(unsigned char value) { writeByte(static_cast<signed char>(value)); }
    void writeInt16(int16_t value);
    void writeShort(int16_t value) { writeInt16(value); }
    void writeUnsignedInt16(uint16_t value) { writeInt16(static_cast<int16_t>(value)); }
    void writeUnsignedShort(uint16_t value) { writeUnsignedInt16(value); }
    void writeChar16(char16_t value) { writeInt16(static_cast<int16_t>(value)); }
    void writeChar(char16_t value) { writeChar16(value); }
    void writeInt32(int32_t value);
    void writeInt(int32_t value) { writeInt32(value); }
    void writeUnsignedInt32(uint32_t value) { writeInt32(static_cast<int32_t>(value)); }
    void writeUnsignedInt(uint32_t value) { writeUnsignedInt32(value); }
    // 32 bits, as the library's long always was.
    void writeLong(int32_t value) { writeInt32(value); }
    void writeUnsignedLong(uint32_t value) { writeUnsignedInt32(value); }
    void writeChar32(char32_t value) { writeInt32(static_cast<int32_t>(value)); }
    // The high 32 bits, then the low 32 bits.
    void writeInt64(int64_t value);
    void writeUnsignedInt64(uint64_t value) { writeInt64(static_cast<int64_t>(value)); }
    void writeFloat(float value);
    void writeDouble(double value);
    // Strings have no wire form in data streams: writes nothing.
    void writeString(const util::AbstractCharBuffer& text);
};

} // namespace io
} // namespace qv

#endif
