#include <qv/io/ByteBufferOutputStream.h>

#include <qv/core/Exception.h>

namespace qv {
namespace io {

ByteBufferOutputStream::ByteBufferOutputStream() : m_buffer(makeReference<ByteBuffer>()) {}

ByteBufferOutputStream::ByteBufferOutputStream(ByteBuffer* buffer) : m_buffer(buffer)
{
    if (!buffer)
        throw ResultException(results::INVALIDARG);
}

ByteBufferOutputStream::~ByteBufferOutputStream() = default;

void ByteBufferOutputStream::write(const signed char* buffer, int32_t count)
{
    m_buffer->write(buffer, count);
}

} // namespace io
} // namespace qv
