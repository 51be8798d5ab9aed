#include <qv/io/BufferedReader.h>

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <cstring>
#include <limits>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

namespace {

constexpr int32_t kMinSize = 16;

char16_t* allocateUnits(int32_t count)
{
    void* block = QVMemAlloc(static_cast<size_t>(count) * sizeof(char16_t));
    if (!block)
        throw OutOfMemoryException();
    return static_cast<char16_t*>(block);
}

// Appends run to line. Growing by doubling keeps a line that spans many
// buffer fills linear in its length.
void appendToLine(String& line, int32_t& length, const char16_t* run, int32_t count)
{
    if (count == 0)
        return;
    int64_t needed = static_cast<int64_t>(length) + count;
    if (needed > std::numeric_limits<int32_t>::max() - 16)
        throw OutOfMemoryException();
    int64_t room = needed;
    if (length > 0 && room < 2 * static_cast<int64_t>(length))
        room = 2 * static_cast<int64_t>(length) < std::numeric_limits<int32_t>::max() - 16
                   ? 2 * static_cast<int64_t>(length)
                   : needed;
    char16_t* data = line.getWriteLock(static_cast<int32_t>(room));
    std::memcpy(data + length, run, static_cast<size_t>(count) * sizeof(char16_t));
    length = static_cast<int32_t>(needed);
    data[length] = 0;
    line.releaseWriteLock(length);
}

// The first "\n" or "\r" in [p, end), or end. Four units at a time: a block
// with no unit below 0x0E (no control character at all, as in most text)
// cannot hold a line end.
const char16_t* findLineEnd(const char16_t* p, const char16_t* end)
{
    constexpr uint64_t kOnes = 0x0001000100010001u;
    constexpr uint64_t kHighs = 0x8000800080008000u;
    while (end - p >= 4) {
        uint64_t units;
        std::memcpy(&units, p, sizeof(units));
        // Non-zero when some unit is below 0x0E (the usual test for a lane
        // below n, exact as to whether there is one).
        if (((units - kOnes * 0x0E) & ~units & kHighs) != 0) {
            for (int i = 0; i < 4; ++i)
                if (p[i] == u'\n' || p[i] == u'\r')
                    return p + i;
        }
        p += 4;
    }
    while (p < end && *p != u'\n' && *p != u'\r')
        ++p;
    return p;
}

} // namespace

BufferedReader::BufferedReader(Reader* in, int32_t size) : m_in(in)
{
    detail::requireArgument(in != nullptr);
    m_size = size < kMinSize ? kMinSize : size;
    m_buf = allocateUnits(m_size);
}

BufferedReader::~BufferedReader()
{
    QVMemFree(m_buf);
}

void BufferedReader::ensureOpen() const
{
    if (!m_in)
        detail::throwStreamClosed();
}

// Refills the empty buffer, keeping the marked run while the mark is valid.
// False when the wrapped reader is at its end.
bool BufferedReader::fill()
{
    int32_t keep = 0;
    if (m_markPos >= 0) {
        int32_t delta = m_pos - m_markPos;
        if (delta >= m_markLimit) {
            m_markPos = -2;
            m_markLimit = 0;
        } else {
            if (m_markLimit > m_size) {
                char16_t* grown = allocateUnits(m_markLimit);
                std::memcpy(grown, m_buf + m_markPos, static_cast<size_t>(delta) * sizeof(char16_t));
                QVMemFree(m_buf);
                m_buf = grown;
                m_size = m_markLimit;
            } else {
                std::memmove(m_buf, m_buf + m_markPos, static_cast<size_t>(delta) * sizeof(char16_t));
            }
            m_markPos = 0;
            m_pos = m_count = keep = delta;
        }
    }
    int32_t n = detail::readSomething([&] { return m_in->read(m_buf + keep, m_size - keep); });
    if (n < 0)
        return false;
    m_pos = keep;
    m_count = keep + n;
    return true;
}

// Units in the buffer, after dropping the "\n" that completes a "\r" line
// end. Fills the buffer when it is empty; false at the end.
bool BufferedReader::available()
{
    for (;;) {
        if (m_pos >= m_count && !fill())
            return false;
        if (!m_skipLF)
            return true;
        m_skipLF = false;
        if (m_buf[m_pos] == u'\n')
            ++m_pos;
    }
}

bool BufferedReader::readLine(String& line)
{
    ensureOpen();
    int32_t length = -1;
    for (;;) {
        if (!available()) {
            if (length < 0) {
                line.clear();
                return false;
            }
            return true;
        }
        const char16_t* start = m_buf + m_pos;
        const char16_t* end = m_buf + m_count;
        const char16_t* p = findLineEnd(start, end);
        int32_t run = static_cast<int32_t>(p - start);
        if (length < 0) {
            line.setTo(start, run);
            length = run;
        } else {
            appendToLine(line, length, start, run);
        }
        m_pos += run;
        if (p < end) {
            m_skipLF = *p == u'\r';
            ++m_pos;
            return true;
        }
    }
}

int32_t BufferedReader::readOnce(char16_t* buffer, int32_t count)
{
    // A request at least as large as the buffer, with no mark to keep, goes
    // straight to the wrapped reader.
    if (m_pos >= m_count && count >= m_size && m_markPos < 0 && !m_skipLF)
        return m_in->read(buffer, count);
    if (!available())
        return -1;
    int32_t n = m_count - m_pos;
    if (n > count)
        n = count;
    std::memcpy(buffer, m_buf + m_pos, static_cast<size_t>(n) * sizeof(char16_t));
    m_pos += n;
    return n;
}

int32_t BufferedReader::read(char16_t* buffer, int32_t count)
{
    ensureOpen();
    if (count < 1)
        return 0;
    detail::requireArgument(buffer != nullptr);
    int32_t total = readOnce(buffer, count);
    if (total <= 0)
        return total;
    // Never block for more once some text is in hand.
    while (total < count && m_in->ready()) {
        int32_t n = readOnce(buffer + total, count - total);
        if (n <= 0)
            break;
        total += n;
    }
    return total;
}

int32_t BufferedReader::read()
{
    ensureOpen();
    if (!available())
        return -1;
    return m_buf[m_pos++];
}

int32_t BufferedReader::skip(int32_t count)
{
    ensureOpen();
    int32_t skipped = 0;
    while (skipped < count && available()) {
        int32_t n = m_count - m_pos;
        if (n > count - skipped)
            n = count - skipped;
        m_pos += n;
        skipped += n;
    }
    return skipped;
}

bool BufferedReader::ready()
{
    ensureOpen();
    if (m_skipLF) {
        // Whether the next unit is the "\n" of a "\r\n" decides what is left;
        // look only when that does not block.
        if (m_pos >= m_count && !m_in->ready())
            return false;
        if (!available())
            return false;
    }
    return m_pos < m_count || m_in->ready();
}

void BufferedReader::close()
{
    detail::closeWrapped(m_in, [this] {
        QVMemFree(m_buf);
        m_buf = nullptr;
        m_pos = m_count = 0;
    });
}

bool BufferedReader::markSupported() const
{
    return true;
}

void BufferedReader::mark(int32_t readLimit)
{
    ensureOpen();
    detail::requireArgument(readLimit >= 0);
    m_markLimit = readLimit;
    m_markPos = m_pos;
    m_markedSkipLF = m_skipLF;
}

void BufferedReader::reset()
{
    ensureOpen();
    if (m_markPos < 0)
        detail::throwNoMark(m_markPos);
    m_pos = m_markPos;
    m_skipLF = m_markedSkipLF;
}

} // namespace io
} // namespace qv
