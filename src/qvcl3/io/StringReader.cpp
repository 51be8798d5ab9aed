#include <qv/io/StringReader.h>

#include <cstring>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

StringReader::StringReader(const String& text) : m_text(text) {}

StringReader::~StringReader() = default;

void StringReader::ensureOpen() const
{
    if (m_closed)
        detail::throwStreamClosed();
}

int32_t StringReader::read(char16_t* buffer, int32_t count)
{
    ensureOpen();
    if (count < 1)
        return 0;
    detail::requireArgument(buffer != nullptr);
    int32_t left = m_text.getLength() - m_pos;
    if (left <= 0)
        return -1;
    int32_t n = count < left ? count : left;
    std::memcpy(buffer, m_text.getData() + m_pos, static_cast<size_t>(n) * sizeof(char16_t));
    m_pos += n;
    return n;
}

int32_t StringReader::read()
{
    ensureOpen();
    if (m_pos >= m_text.getLength())
        return -1;
    return m_text.getData()[m_pos++];
}

int32_t StringReader::skip(int32_t count)
{
    ensureOpen();
    int32_t left = m_text.getLength() - m_pos;
    int32_t n = count < left ? count : left;
    if (n <= 0)
        return 0;
    m_pos += n;
    return n;
}

bool StringReader::ready()
{
    ensureOpen();
    return true;
}

void StringReader::close()
{
    m_closed = true;
}

bool StringReader::markSupported() const
{
    return true;
}

void StringReader::mark(int32_t readLimit)
{
    ensureOpen();
    detail::requireArgument(readLimit >= 0);
    m_mark = m_pos;
}

void StringReader::reset()
{
    ensureOpen();
    m_pos = m_mark;
}

} // namespace io
} // namespace qv
