#include <qv/io/CharArrayWriter.h>

#include <qv/core/Exception.h>

#include <cstring>
#include <limits>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

CharArrayWriter::CharArrayWriter(int32_t initialCapacity)
{
    detail::requireArgument(initialCapacity >= 0);
    if (initialCapacity > 0) {
        m_data = static_cast<char16_t*>(QVMemAlloc(static_cast<size_t>(initialCapacity) * sizeof(char16_t)));
        if (!m_data)
            throw OutOfMemoryException();
        m_capacity = initialCapacity;
    }
}

CharArrayWriter::~CharArrayWriter()
{
    QVMemFree(m_data);
}

void CharArrayWriter::ensureOpen() const
{
    if (m_closed)
        detail::throwStreamClosed();
}

// Room for count more units; the block grows to a quarter more than needed.
char16_t* CharArrayWriter::room(int32_t count)
{
    int64_t needed = static_cast<int64_t>(m_count) + count;
    if (needed > m_capacity) {
        if (needed > std::numeric_limits<int32_t>::max())
            throw OutOfMemoryException();
        int64_t grown = needed * 5 / 4;
        if (grown > std::numeric_limits<int32_t>::max())
            grown = std::numeric_limits<int32_t>::max();
        void* block = QVMemRealloc(m_data, static_cast<size_t>(grown) * sizeof(char16_t));
        if (!block)
            throw OutOfMemoryException();
        m_data = static_cast<char16_t*>(block);
        m_capacity = static_cast<int32_t>(grown);
    }
    return m_data + m_count;
}

void CharArrayWriter::write(const char16_t* text, int32_t count)
{
    ensureOpen();
    count = measure(text, count);
    if (count == 0)
        return;
    std::memcpy(room(count), text, static_cast<size_t>(count) * sizeof(char16_t));
    m_count += count;
}

void CharArrayWriter::write(char16_t unit)
{
    ensureOpen();
    *room(1) = unit;
    ++m_count;
}

void CharArrayWriter::flush()
{
    ensureOpen();
}

void CharArrayWriter::close()
{
    m_closed = true;
}

int32_t CharArrayWriter::getChars(char16_t* destination, int32_t max) const
{
    int32_t n = max < m_count ? max : m_count;
    if (n <= 0)
        return 0;
    detail::requireArgument(destination != nullptr);
    std::memcpy(destination, m_data, static_cast<size_t>(n) * sizeof(char16_t));
    return n;
}

void CharArrayWriter::writeTo(Writer* out) const
{
    detail::requireArgument(out != nullptr);
    out->write(m_data, m_count);
}

String CharArrayWriter::toString()
{
    return String(m_data, m_count);
}

} // namespace io
} // namespace qv
