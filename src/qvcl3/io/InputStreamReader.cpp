#include <qv/io/InputStreamReader.h>

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>

#include "io/ConversionSteps.h"
#include "io/StreamChecks.h"

namespace qv {
namespace io {

using text::charset::ByteToCharConverter;

InputStreamReader::InputStreamReader(InputStream* in, const char16_t* encoding) : m_in(in)
{
    detail::requireArgument(in != nullptr);
    m_decoder = ByteToCharConverter::getConverter(encoding);
    m_bytes = static_cast<signed char*>(QVMemAlloc(BYTE_BUFFER_SIZE));
    if (!m_bytes)
        throw OutOfMemoryException();
}

InputStreamReader::~InputStreamReader()
{
    QVMemFree(m_bytes);
}

Reference<ByteToCharConverter> InputStreamReader::getDecoder() const
{
    return m_decoder;
}

const char16_t* InputStreamReader::getEncoding() const
{
    return m_decoder->getEncodingName();
}

void InputStreamReader::ensureOpen() const
{
    if (!m_in)
        detail::throwStreamClosed();
}

int32_t InputStreamReader::read(char16_t* buffer, int32_t count)
{
    ensureOpen();
    if (count < 1)
        return 0;
    detail::requireArgument(buffer != nullptr);
    int32_t written = 0;
    if (m_pendingLow != 0) {
        buffer[0] = m_pendingLow;
        m_pendingLow = 0;
        return 1;
    }
    for (;;) {
        if (m_bytePos < m_byteEnd) {
            detail::convertLocating(*m_decoder, m_bytes, &m_bytePos, m_byteEnd, buffer, &written, count, m_base,
                                    u"byte", true);
            if (written > 0)
                return written;
            if (m_bytePos < m_byteEnd && count == 1) {
                // The decoder never splits a pair: decode it aside and hand
                // out its high half now, its low half on the next read.
                char16_t pair[2];
                int32_t units = 0;
                detail::convertLocating(*m_decoder, m_bytes, &m_bytePos, m_byteEnd, pair, &units, 2, m_base, u"byte",
                                        true);
                if (units > 0) {
                    buffer[0] = pair[0];
                    if (units == 2)
                        m_pendingLow = pair[1];
                    return 1;
                }
            }
            if (m_bytePos < m_byteEnd)
                throw IoException(QV_STR(u"decoder made no progress"));
        }
        if (m_endOfStream) {
            // What the decoder still holds: a split character's remainder,
            // or a truncated sequence, which it rejects.
            detail::flushLocating(*m_decoder, buffer, &written, count, m_base + m_byteEnd, u"byte");
            return written > 0 ? written : -1;
        }
        int32_t n = detail::readSomething([&] { return m_in->read(m_bytes, BYTE_BUFFER_SIZE); });
        m_base += m_byteEnd;
        m_bytePos = m_byteEnd = 0;
        if (n < 0)
            m_endOfStream = true;
        else
            m_byteEnd = n;
    }
}

int32_t InputStreamReader::skip(int32_t count)
{
    ensureOpen();
    return Reader::skip(count);
}

bool InputStreamReader::ready()
{
    ensureOpen();
    return m_pendingLow != 0 || m_bytePos < m_byteEnd || m_in->available() > 0;
}

void InputStreamReader::close()
{
    detail::closeWrapped(m_in, [this] {
        QVMemFree(m_bytes);
        m_bytes = nullptr;
        m_bytePos = m_byteEnd = 0;
    });
}

} // namespace io
} // namespace qv
