#include <qv/io/BufferedOutputStream.h>

#include <qv/io/IoException.h>

#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

#include <cstring>

namespace qv {
namespace io {

BufferedOutputStream::BufferedOutputStream(OutputStream* out, int32_t size)
    : FilterOutputStream(out), m_bufSize(size > MIN_SIZE ? size : MIN_SIZE), m_buf(detail::allocateBlock(m_bufSize))
{}

BufferedOutputStream::~BufferedOutputStream()
{
    if (!m_buf)
        return;
    try {
        flushBuffer();
    } catch (...) {
        // Nowhere to report it from here; flush() and close() do report.
    }
    QVMemFree(m_buf);
}

void BufferedOutputStream::ensureOpen() const
{
    if (!m_buf)
        throw IoException(u"stream closed");
}

// The held bytes stay held when the wrapped stream refuses them, so a failed
// flush can be retried and nothing is dropped without a report.
void BufferedOutputStream::flushBuffer()
{
    if (m_count > 0) {
        m_out->write(m_buf, m_count);
        m_count = 0;
    }
}

void BufferedOutputStream::write(const signed char* buffer, int32_t count)
{
    ensureOpen();
    if (!detail::hasBytes(buffer, count))
        return;
    if (count >= m_bufSize) {
        flushBuffer();
        m_out->write(buffer, count);
        return;
    }
    if (count > m_bufSize - m_count)
        flushBuffer();
    std::memcpy(m_buf + m_count, buffer, static_cast<size_t>(count));
    m_count += count;
}

void BufferedOutputStream::write(signed char byte)
{
    ensureOpen();
    if (m_count >= m_bufSize)
        flushBuffer();
    m_buf[m_count++] = byte;
}

void BufferedOutputStream::flush()
{
    ensureOpen();
    flushBuffer();
    m_out->flush();
}

void BufferedOutputStream::close()
{
    if (!m_buf)
        return;
    detail::finishThenClose(
        [this] {
            flushBuffer();
            m_out->flush();
        },
        [this] {
            QVMemFree(m_buf);
            m_buf = nullptr;
            m_count = 0;
            m_out->close();
        });
}

} // namespace io
} // namespace qv
