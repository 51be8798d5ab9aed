#include <qv/io/OutputStreamWriter.h>

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>

#include "io/ConversionSteps.h"
#include "io/StreamChecks.h"

namespace qv {
namespace io {

using text::charset::CharToByteConverter;

OutputStreamWriter::OutputStreamWriter(OutputStream* out, const char16_t* encoding) : m_out(out)
{
    detail::requireArgument(out != nullptr);
    m_encoder = CharToByteConverter::getConverter(encoding);
    m_bytes = static_cast<signed char*>(QVMemAlloc(BYTE_BUFFER_SIZE));
    if (!m_bytes)
        throw OutOfMemoryException();
}

OutputStreamWriter::~OutputStreamWriter()
{
    if (m_out) {
        try {
            finish();
        } catch (...) {
            // Nobody is left to tell; flush() and close() report.
        }
    }
    QVMemFree(m_bytes);
}

Reference<CharToByteConverter> OutputStreamWriter::getEncoder() const
{
    return m_encoder;
}

const char16_t* OutputStreamWriter::getEncoding() const
{
    return m_encoder->getEncodingName();
}

void OutputStreamWriter::ensureOpen() const
{
    if (!m_out)
        detail::throwStreamClosed();
}

// The held bytes stay until the stream has taken them.
void OutputStreamWriter::writeBytes()
{
    if (m_count == 0)
        return;
    m_out->write(m_bytes, m_count);
    m_count = 0;
}

void OutputStreamWriter::write(const char16_t* text, int32_t count)
{
    ensureOpen();
    count = measure(text, count);
    const int64_t callBase = m_unitsWritten;
    int32_t pos = 0;
    while (pos < count) {
        if (m_count == BYTE_BUFFER_SIZE)
            writeBytes();
        int32_t before = pos;
        int32_t bytesBefore = m_count;
        try {
            detail::convertLocating(*m_encoder, text, &pos, count, m_bytes, &m_count, BYTE_BUFFER_SIZE, callBase,
                                    u"character", false);
        } catch (...) {
            // The text before the rejected unit was taken.
            m_unitsWritten += pos - before;
            throw;
        }
        m_unitsWritten += pos - before;
        if (pos == before && m_count == bytesBefore) {
            // The encoder never splits a character: when the next one does
            // not fit into what is left of the buffer, empty it first.
            if (m_count == 0)
                throw IoException(QV_STR(u"encoder made no progress"));
            writeBytes();
        }
    }
}

void OutputStreamWriter::flush()
{
    ensureOpen();
    writeBytes();
    m_out->flush();
}

// What the encoder holds, then every held byte, to the stream.
void OutputStreamWriter::finish()
{
    for (;;) {
        if (m_count == BYTE_BUFFER_SIZE)
            writeBytes();
        int32_t before = m_count;
        detail::flushLocating(*m_encoder, m_bytes, &m_count, BYTE_BUFFER_SIZE, m_unitsWritten, u"character");
        if (m_count < BYTE_BUFFER_SIZE || m_count == before)
            break;
    }
    writeBytes();
}

void OutputStreamWriter::close()
{
    detail::closeWrapped(m_out, [this] { finish(); });
}

} // namespace io
} // namespace qv
