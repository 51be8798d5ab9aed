#include <qv/io/BufferedInputStream.h>

#include <qv/io/IoException.h>

#include "io/StreamChecks.h"
#include "io/StreamSupport.h"

#include <qvcore3/qvcore3.h>

#include <cstring>
#include <limits>

namespace qv {
namespace io {

BufferedInputStream::BufferedInputStream(InputStream* in, int32_t size)
    : FilterInputStream(in), m_bufSize(size > MIN_SIZE ? size : MIN_SIZE), m_buf(detail::allocateBlock(m_bufSize))
{}

BufferedInputStream::~BufferedInputStream()
{
    QVMemFree(m_buf);
}

void BufferedInputStream::ensureOpen() const
{
    if (!m_buf)
        detail::throwStreamClosed();
}

void BufferedInputStream::fillBuffer()
{
    int32_t keep = 0;
    if (m_markPos >= 0) {
        keep = m_pos - m_markPos;
        if (keep < m_markLimit) {
            if (m_markLimit > m_bufSize) {
                signed char* block = detail::allocateBlock(m_markLimit);
                std::memcpy(block, m_buf + m_markPos, static_cast<size_t>(keep));
                QVMemFree(m_buf);
                m_buf = block;
                m_bufSize = m_markLimit;
            } else {
                std::memmove(m_buf, m_buf + m_markPos, static_cast<size_t>(keep));
            }
            m_markPos = 0;
            m_pos = m_count = keep;
        } else {
            m_markPos = -2;
            keep = 0;
        }
    }
    const int32_t n = m_in->read(m_buf + keep, m_bufSize - keep);
    if (n > 0) {
        m_pos = keep;
        m_count = keep + n;
    }
}

int32_t BufferedInputStream::read(signed char* buffer, int32_t count)
{
    ensureOpen();
    if (!detail::wantsBytes(buffer, count))
        return 0;
    int32_t copied = 0;
    while (copied < count) {
        if (m_pos >= m_count) {
            if (copied > 0 && m_in->available() <= 0)
                return copied;
            const int32_t wanted = count - copied;
            if (wanted >= m_bufSize && m_markPos < 0) {
                const int32_t n = m_in->read(buffer + copied, wanted);
                if (n > 0)
                    return copied + n;
                return copied > 0 ? copied : n;
            }
            fillBuffer();
            if (m_pos >= m_count)
                return copied > 0 ? copied : -1;
        }
        const int32_t held = m_count - m_pos;
        const int32_t n = count - copied < held ? count - copied : held;
        std::memcpy(buffer + copied, m_buf + m_pos, static_cast<size_t>(n));
        m_pos += n;
        copied += n;
    }
    return copied;
}

int BufferedInputStream::read()
{
    ensureOpen();
    if (m_pos >= m_count) {
        fillBuffer();
        if (m_pos >= m_count)
            return -1;
    }
    return static_cast<unsigned char>(m_buf[m_pos++]);
}

int32_t BufferedInputStream::skip(int32_t count)
{
    ensureOpen();
    if (count <= 0)
        return 0;
    if (m_pos >= m_count) {
        // Without a mark nothing needs keeping: let the wrapped stream skip.
        if (m_markPos < 0)
            return m_in->skip(count);
        fillBuffer();
        if (m_pos >= m_count)
            return 0;
    }
    const int32_t held = m_count - m_pos;
    const int32_t n = count < held ? count : held;
    m_pos += n;
    return n;
}

int32_t BufferedInputStream::available()
{
    ensureOpen();
    const int64_t total = static_cast<int64_t>(m_count - m_pos) + m_in->available();
    return total > std::numeric_limits<int32_t>::max() ? std::numeric_limits<int32_t>::max()
                                                       : static_cast<int32_t>(total);
}

void BufferedInputStream::close()
{
    if (!m_buf)
        return;
    QVMemFree(m_buf);
    m_buf = nullptr;
    m_pos = m_count = 0;
    m_markPos = -1;
    m_in->close();
}

bool BufferedInputStream::markSupported()
{
    return true;
}

void BufferedInputStream::mark(int32_t readLimit)
{
    ensureOpen();
    m_markLimit = readLimit;
    m_markPos = m_pos;
}

void BufferedInputStream::reset()
{
    ensureOpen();
    // More than the limit read past the mark drops it even when no refill
    // came in between: reading five bytes past mark(4) must not depend on
    // how much one fill happened to bring in.
    if (m_markPos >= 0 && m_pos - m_markPos > m_markLimit)
        m_markPos = -2;
    if (m_markPos < 0)
        detail::throwNoMark(m_markPos);
    m_pos = m_markPos;
}

} // namespace io
} // namespace qv
