#include <qv/io/ByteBufferInputStream.h>

#include "io/StreamSupport.h"

namespace qv {
namespace io {

ByteBufferInputStream::ByteBufferInputStream() : m_buffer(makeReference<ByteBuffer>()) {}

ByteBufferInputStream::ByteBufferInputStream(ByteBuffer* buffer) : m_buffer(buffer)
{
    if (!buffer)
        throw ResultException(results::INVALIDARG);
}

ByteBufferInputStream::~ByteBufferInputStream() = default;

int32_t ByteBufferInputStream::read(signed char* buffer, int32_t count)
{
    if (!detail::wantsBytes(buffer, count))
        return 0;
    const int32_t n = m_buffer->read(buffer, count);
    return n > 0 ? n : -1;
}

int ByteBufferInputStream::read()
{
    signed char byte;
    return m_buffer->read(&byte, 1) > 0 ? static_cast<unsigned char>(byte) : -1;
}

int32_t ByteBufferInputStream::skip(int32_t count)
{
    return m_buffer->skip(count);
}

int32_t ByteBufferInputStream::available()
{
    return m_buffer->getLength();
}

} // namespace io
} // namespace qv
