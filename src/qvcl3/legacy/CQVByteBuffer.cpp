#include <qv/legacy/CQVByteBuffer.h>

#include <qv/core/Boundary.h>

#include <cstdint>
#include <cstring>

namespace qv {

CQVByteBuffer::CQVByteBuffer() = default;

CQVByteBuffer::CQVByteBuffer(const void* data, int32_t length) : m_buffer(static_cast<const signed char*>(data), length)
{}

CQVByteBuffer::CQVByteBuffer(const CQVByteBuffer& other) : CQVAbstractByteBuffer(other), m_buffer(other.m_buffer) {}

CQVByteBuffer& CQVByteBuffer::operator=(const CQVByteBuffer& other)
{
    m_buffer = other.m_buffer;
    return *this;
}

CQVByteBuffer::~CQVByteBuffer() = default;

CQVAbstractByteBuffer::~CQVAbstractByteBuffer() = default;

int32_t CQVByteBuffer::GetLength() const
{
    return m_buffer.GetLength();
}

const signed char* CQVByteBuffer::GetData() const
{
    return m_buffer.GetData();
}

Result CQVByteBuffer::SetData(const void* data, int32_t length)
{
    if (length < 0 || (!data && length > 0))
        return results::INVALIDARG;
    return qvcom::guardBoundary([&] {
        signed char* target = m_buffer.getWriteLock(length);
        if (length > 0)
            std::memcpy(target, data, static_cast<size_t>(length));
        m_buffer.releaseWriteLock(length);
    });
}

Result CQVByteBuffer::Append(const void* data, int32_t length)
{
    if (length < 0 || (!data && length > 0))
        return results::INVALIDARG;
    const int32_t old = m_buffer.GetLength();
    if (length > INT32_MAX - old)
        return results::OUTOFMEMORY;
    return qvcom::guardBoundary([&] {
        // Grows by half again at least, so that appending byte by byte stays
        // linear; the buffer itself grows only to what it is asked.
        const int32_t capacity = m_buffer.getCapacity();
        const int32_t wanted = old + length;
        const int32_t grown = capacity > INT32_MAX / 3 * 2 ? INT32_MAX : capacity + capacity / 2;
        signed char* target = m_buffer.ensureCapacity(wanted > capacity && grown > wanted ? grown : wanted);
        if (length > 0)
            std::memcpy(target + old, data, static_cast<size_t>(length));
        m_buffer.releaseWriteLock(old + length);
    });
}

Result CQVByteBuffer::Reserve(int32_t capacity)
{
    if (capacity < 0)
        return results::INVALIDARG;
    return qvcom::guardBoundary([&] { m_buffer.ensureCapacity(capacity); });
}

void CQVByteBuffer::Clear()
{
    m_buffer.releaseWriteLock(0);
}

util::RWByteBuffer& CQVByteBuffer::GetBuffer()
{
    return m_buffer;
}

} // namespace qv
