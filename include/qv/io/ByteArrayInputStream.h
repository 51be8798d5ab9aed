#ifndef QV_IO_BYTEARRAYINPUTSTREAM_H
#define QV_IO_BYTEARRAYINPUTSTREAM_H

#include <qv/io/InputStream.h>

namespace qv {
namespace io {

// Reads a run of bytes in memory. The bytes are not copied: they must stay
// alive and unchanged while the stream reads them.
class QV_EXPORT ByteArrayInputStream : public InputStream {
public:
    // A negative length, or a null pointer with a positive length, throws
    // ResultException(0x80070057).
    ByteArrayInputStream(const signed char* data, int32_t length);
    ByteArrayInputStream(const char* data, int32_t length);
    ByteArrayInputStream(const unsigned char* data, int32_t length);
    ~ByteArrayInputStream() override;

    using InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;

private:
    const signed char* m_data;
    int32_t m_length;
    int32_t m_pos = 0;
};

} // namespace io
} // namespace qv

#endif
