#include <qv/io/ByteArrayInputStream.h>

#include "io/StreamSupport.h"

#include <cstring>

namespace qv {
namespace io {

ByteArrayInputStream::ByteArrayInputStream(const signed char* data, int32_t length) : m_data(data), m_length(length)
{
    if (length < 0 || (length > 0 && !data))
        throw ResultException(results::INVALIDARG);
}

ByteArrayInputStream::ByteArrayInputStream(const char* data, int32_t length)
    : ByteArrayInputStream(reinterpret_cast<const signed char*>(data), length)
{}

ByteArrayInputStream::ByteArrayInputStream(const unsigned char* data, int32_t length)
    : ByteArrayInputStream(reinterpret_cast<const signed char*>(data), length)
{}

ByteArrayInputStream::~ByteArrayInputStream() = default;

int32_t ByteArrayInputStream::read(signed char* buffer, int32_t count)
{
    if (m_pos >= m_length)
        return -1;
    if (!detail::wantsBytes(buffer, count))
        return 0;
    const int32_t n = count < m_length - m_pos ? count : m_length - m_pos;
    std::memcpy(buffer, m_data + m_pos, static_cast<size_t>(n));
    m_pos += n;
    return n;
}

int ByteArrayInputStream::read()
{
    if (m_pos >= m_length)
        return -1;
    return static_cast<unsigned char>(m_data[m_pos++]);
}

int32_t ByteArrayInputStream::skip(int32_t count)
{
    if (count <= 0)
        return 0;
    const int32_t n = count < m_length - m_pos ? count : m_length - m_pos;
    m_pos += n;
    return n;
}

int32_t ByteArrayInputStream::available()
{
    return m_length - m_pos;
}

} // namespace io
} // namespace qv
