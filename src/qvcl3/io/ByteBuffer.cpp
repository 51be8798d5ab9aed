#include <qv/io/ByteBuffer.h>

#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

#include <cstring>
#include <limits>

namespace qv {
namespace io {

ByteBuffer::ByteBuffer(int32_t initialCapacity)
{
    if (initialCapacity < 0)
        throw ResultException(results::INVALIDARG);
    ensureWritable(initialCapacity);
}

ByteBuffer::ByteBuffer(const signed char* data, int32_t length)
{
    write(data, length);
}

ByteBuffer::~ByteBuffer()
{
    QVMemFree(m_data);
}

void ByteBuffer::ensureWritable(int32_t count)
{
    if (count < 0)
        throw ResultException(results::INVALIDARG);
    if (count <= m_capacity - m_write)
        return;
    const int32_t unread = m_write - m_read;
    if (count <= m_capacity - unread) {
        std::memmove(m_data, m_data + m_read, static_cast<size_t>(unread));
        m_read = 0;
        m_write = unread;
        return;
    }
    const int64_t needed = static_cast<int64_t>(unread) + count;
    constexpr int64_t limit = std::numeric_limits<int32_t>::max() & ~15;
    if (needed > limit)
        throw OutOfMemoryException();
    int64_t capacity = static_cast<int64_t>(m_capacity) + m_capacity / 2;
    if (capacity < needed)
        capacity = needed;
    capacity = (capacity + 15) & ~int64_t(15);
    if (capacity > limit)
        capacity = limit;
    signed char* block = detail::allocateBlock(capacity);
    if (unread > 0)
        std::memcpy(block, m_data + m_read, static_cast<size_t>(unread));
    QVMemFree(m_data);
    m_data = block;
    m_capacity = static_cast<int32_t>(capacity);
    m_read = 0;
    m_write = unread;
}

void ByteBuffer::write(const signed char* data, int32_t count)
{
    if (!detail::hasBytes(data, count))
        return;
    ensureWritable(count);
    std::memcpy(m_data + m_write, data, static_cast<size_t>(count));
    m_write += count;
}

int32_t ByteBuffer::read(signed char* data, int32_t count)
{
    if (!detail::wantsBytes(data, count))
        return 0;
    const int32_t n = count < m_write - m_read ? count : m_write - m_read;
    if (n > 0)
        std::memcpy(data, m_data + m_read, static_cast<size_t>(n));
    skip(n);
    return n;
}

int32_t ByteBuffer::skip(int32_t count)
{
    if (count <= 0)
        return 0;
    const int32_t n = count < m_write - m_read ? count : m_write - m_read;
    m_read += n;
    if (m_read == m_write)
        m_read = m_write = 0;
    return n;
}

} // namespace io
} // namespace qv
