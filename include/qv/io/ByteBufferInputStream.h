#ifndef QV_IO_BYTEBUFFERINPUTSTREAM_H
#define QV_IO_BYTEBUFFERINPUTSTREAM_H

#include <qv/core/Reference.h>
#include <qv/io/ByteBuffer.h>
#include <qv/io/InputStream.h>

namespace qv {
namespace io {

// Reads the unread bytes of a ByteBuffer, moving its read cursor. An empty
// buffer is the end of the stream (-1) until more is written to it: reading
// never blocks.
class QV_EXPORT ByteBufferInputStream : public InputStream {
public:
    // Over a new, empty buffer.
    ByteBufferInputStream();
    // A null buffer throws ResultException(0x80070057).
    explicit ByteBufferInputStream(ByteBuffer* buffer);
    ~ByteBufferInputStream() override;

    using InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;

    const Reference<ByteBuffer>& getByteBuffer() const noexcept { return m_buffer; }

private:
    Reference<ByteBuffer> m_buffer;
};

} // namespace io
} // namespace qv

#endif
