#include <qv/io/ByteArrayOutputStream.h>

#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

#include <cstring>
#include <limits>

namespace qv {
namespace io {

ByteArrayOutputStream::ByteArrayOutputStream(int32_t initialCapacity)
{
    if (initialCapacity < 0)
        throw ResultException(results::INVALIDARG);
    if (initialCapacity > 0) {
        m_buf = detail::allocateBlock(initialCapacity);
        m_capacity = initialCapacity;
    }
}

ByteArrayOutputStream::~ByteArrayOutputStream()
{
    QVMemFree(m_buf);
}

// A new block of needed * 5 / 4 bytes; the old one stays in place until the
// new one exists, so a failed allocation leaves the stream as it was.
void ByteArrayOutputStream::grow(int64_t needed)
{
    constexpr int64_t limit = std::numeric_limits<int32_t>::max();
    if (needed > limit)
        throw OutOfMemoryException();
    int64_t capacity = needed * 5 / 4;
    if (capacity > limit)
        capacity = limit;
    signed char* block = detail::allocateBlock(capacity);
    if (m_count > 0)
        std::memcpy(block, m_buf, static_cast<size_t>(m_count));
    QVMemFree(m_buf);
    m_buf = block;
    m_capacity = static_cast<int32_t>(capacity);
}

void ByteArrayOutputStream::write(const signed char* buffer, int32_t count)
{
    if (!detail::hasBytes(buffer, count))
        return;
    const int64_t needed = static_cast<int64_t>(m_count) + count;
    if (needed > m_capacity)
        grow(needed);
    std::memcpy(m_buf + m_count, buffer, static_cast<size_t>(count));
    m_count += count;
}

void ByteArrayOutputStream::write(signed char byte)
{
    if (m_count >= m_capacity)
        grow(static_cast<int64_t>(m_count) + 1);
    m_buf[m_count++] = byte;
}

void ByteArrayOutputStream::ensureCapacity(int32_t capacity)
{
    if (m_capacity < capacity)
        grow(capacity);
}

int32_t ByteArrayOutputStream::getBytes(signed char* dest, int32_t max) const
{
    if (max < 0 || (max > 0 && !dest))
        throw ResultException(results::INVALIDARG);
    const int32_t n = max < m_count ? max : m_count;
    if (n > 0)
        std::memcpy(dest, m_buf, static_cast<size_t>(n));
    return n;
}

void ByteArrayOutputStream::writeTo(OutputStream* out) const
{
    if (!out)
        throw ResultException(results::INVALIDARG);
    if (m_count > 0)
        out->write(m_buf, m_count);
}

String ByteArrayOutputStream::toString()
{
    return toString(static_cast<const char16_t*>(nullptr));
}

String ByteArrayOutputStream::toString(const char16_t* encoding) const
{
    static const signed char empty[1] = {0};
    return String(m_count > 0 ? m_buf : empty, m_count, encoding);
}

} // namespace io
} // namespace qv
