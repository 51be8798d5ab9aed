#ifndef QV_IO_BYTEBUFFEROUTPUTSTREAM_H
#define QV_IO_BYTEBUFFEROUTPUTSTREAM_H

#include <qv/core/Reference.h>
#include <qv/io/ByteBuffer.h>
#include <qv/io/OutputStream.h>

namespace qv {
namespace io {

// Appends to a ByteBuffer at its write cursor.
class QV_EXPORT ByteBufferOutputStream : public OutputStream {
public:
    // Over a new, empty buffer.
    ByteBufferOutputStream();
    // A null buffer throws ResultException(0x80070057).
    explicit ByteBufferOutputStream(ByteBuffer* buffer);
    ~ByteBufferOutputStream() override;

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;

    const Reference<ByteBuffer>& getByteBuffer() const noexcept { return m_buffer; }

private:
    Reference<ByteBuffer> m_buffer;
};

} // namespace io
} // namespace qv

#endif
