#include <qv/io/BufferedWriter.h>

#include <qv/core/Exception.h>

#include <cstring>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

namespace {
constexpr int32_t kMinSize = 16;
}

BufferedWriter::BufferedWriter(Writer* out, int32_t size) : m_out(out)
{
    detail::requireArgument(out != nullptr);
    m_size = size < kMinSize ? kMinSize : size;
    m_buf = static_cast<char16_t*>(QVMemAlloc(static_cast<size_t>(m_size) * sizeof(char16_t)));
    if (!m_buf)
        throw OutOfMemoryException();
}

BufferedWriter::~BufferedWriter()
{
    if (m_out) {
        try {
            flushBuffer();
        } catch (...) {
            // Nobody is left to tell; flush() and close() report.
        }
    }
    QVMemFree(m_buf);
}

void BufferedWriter::ensureOpen() const
{
    if (!m_out)
        detail::throwStreamClosed();
}

// The held text stays until the wrapped writer has taken it.
void BufferedWriter::flushBuffer()
{
    if (m_count == 0)
        return;
    m_out->write(m_buf, m_count);
    m_count = 0;
}

void BufferedWriter::write(const char16_t* text, int32_t count)
{
    ensureOpen();
    count = measure(text, count);
    if (count >= m_size) {
        flushBuffer();
        m_out->write(text, count);
        return;
    }
    if (count > m_size - m_count)
        flushBuffer();
    std::memcpy(m_buf + m_count, text, static_cast<size_t>(count) * sizeof(char16_t));
    m_count += count;
}

void BufferedWriter::write(char16_t unit)
{
    ensureOpen();
    if (m_count == m_size)
        flushBuffer();
    m_buf[m_count++] = unit;
}

void BufferedWriter::newLine()
{
    write(u'\n');
}

void BufferedWriter::flush()
{
    ensureOpen();
    flushBuffer();
    m_out->flush();
}

void BufferedWriter::close()
{
    detail::closeWrapped(m_out, [this] { flushBuffer(); });
}

} // namespace io
} // namespace qv
