#ifndef QV_IO_BITINPUTSTREAM_H
#define QV_IO_BITINPUTSTREAM_H

#include <qv/io/FilterInputStream.h>

namespace qv {
namespace io {

// Reads single bits and bit fields, most significant bit first. Byte reads
// take eight bits per byte, so they work at any bit position. Mark and reset
// are not supported (the wrapped stream's would lose the bit position).
class QV_EXPORT BitInputStream : public FilterInputStream {
public:
    explicit BitInputStream(InputStream* in);
    ~BitInputStream() override;

    // 0 or 1, or -1 at the end.
    int readBit();
    // The next `bits` bits as a number, first bit highest; 0 for bits < 1.
    // The end inside the field makes the whole result -1.
    int read(int bits);

    using FilterInputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;
    bool markSupported() override;
    void mark(int32_t readLimit) override;
    void reset() override;

private:
    int m_byte = 0;
    int m_bitsLeft = 0;
};

} // namespace io
} // namespace qv

#endif
