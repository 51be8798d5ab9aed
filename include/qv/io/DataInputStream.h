#ifndef QV_IO_DATAINPUTSTREAM_H
#define QV_IO_DATAINPUTSTREAM_H

#include <qv/io/FilterInputStream.h>
#include <qv/lang/String.h>

namespace qv {
namespace io {

// Reads typed values written by DataOutputStream: multi-byte values are
// big-endian. A value cut short by the end of the stream throws
// UnexpectedEOFException after the bytes that were there have been consumed.
class QV_EXPORT DataInputStream : public FilterInputStream {
public:
    explicit DataInputStream(InputStream* in);
    ~DataInputStream() override;

    bool readBool();
    signed char readByte();
    unsigned char readUnsignedByte();
    int16_t readInt16();
    int16_t readShort() { return readInt16(); }
    uint16_t readUnsignedInt16();
    uint16_t readUnsignedShort() { return readUnsignedInt16(); }
    char16_t readChar16();
    char16_t readChar() { return readChar16(); }
    int32_t readInt32();
    int32_t readInt() { return readInt32(); }
    uint32_t readUnsignedInt32();
    uint32_t readUnsignedInt() { return readUnsignedInt32(); }
    // 32 bits, as the library's long always was.
    int32_t readLong() { return static_cast<int32_t>(readUnsignedInt32()); }
    uint32_t readUnsignedLong() { return readUnsignedInt32(); }
    char32_t readChar32();
    int64_t readInt64();
    uint64_t readUnsignedInt64();
    float readFloat();
    double readDouble();
    // Reads until count bytes are in hand; a negative count or a null buffer
    // throws ResultException(0x80070057).
    void readFully(signed char* buffer, int32_t count);
    void readFully(char* buffer, int32_t count);
    void readFully(unsigned char* buffer, int32_t count);
    // Strings have no wire form in data streams: an empty String, and
    // nothing is read.
    String readString();

private:
    // n bytes (at most 8): one bulk read, then single-byte reads for what
    // it did not give; true when none of those reached the end.
    bool readValueBytes(unsigned char* bytes, int n);
};

} // namespace io
} // namespace qv

#endif
