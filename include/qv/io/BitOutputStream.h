#ifndef QV_IO_BITOUTPUTSTREAM_H
#define QV_IO_BITOUTPUTSTREAM_H

#include <qv/io/FilterOutputStream.h>

namespace qv {
namespace io {

// Writes single bits and bit fields, most significant bit first, packing
// them into bytes. Pending bits go out, zero-filled on the right, on flush
// and on close.
class QV_EXPORT BitOutputStream : public FilterOutputStream {
public:
    explicit BitOutputStream(OutputStream* out);
    ~BitOutputStream() override;

    void writeBit(bool bit);
    // The low `bits` bits of value, highest first. bits outside 1..32 throw
    // ResultException(0x80070057); a value that does not fit the field throws
    // RangeErrorException "Number out of range". Kept as the library always
    // had it: a 32-bit field accepts only 0. Negative values never fit.
    void write(uint32_t value, int bits);
    void write(int value, int bits);
    void write(unsigned long value, int bits);
    void write(long value, int bits);
    void write(unsigned long long value, int bits);
    void write(long long value, int bits);

    using FilterOutputStream::write;
    // Eight bits per byte.
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
    void flush() override;
    void close() override;

private:
    void writeField(uint64_t value, int bits);

    unsigned m_accumulator = 0;
    int m_bitCount = 0;
};

} // namespace io
} // namespace qv

#endif
