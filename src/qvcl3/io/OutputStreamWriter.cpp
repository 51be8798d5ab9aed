#include <qv/io/OutputStreamWriter.h>

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qv/text/charset/CTBUTF8.h>

#include <cstdint>
#include <cstring>
#include <typeinfo>

#include "UtfArithmetic.h"
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
    const text::charset::CharToByteConverter& encoder = *m_encoder;
    m_asciiDirect = typeid(encoder) == typeid(text::charset::CTBUTF8);
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
    m_asciiDirect = false;
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
        if (m_asciiDirect && !m_encoderMayHold) {
            pos = writeAsciiDirectly(text, pos, count);
            if (pos == count)
                break;
            if (m_count == BYTE_BUFFER_SIZE)
                continue;
        }
        int32_t before = pos;
        int32_t bytesBefore = m_count;
        try {
            // Stays so if the encoder throws: what it holds then is unknown.
            m_encoderMayHold = true;
            detail::convertLocating(*m_encoder, text, &pos, count, m_bytes, &m_count, BYTE_BUFFER_SIZE, callBase,
                                    u"character", false);
        } catch (...) {
            // The text before the rejected unit was taken.
            m_unitsWritten += pos - before;
            throw;
        }
        // A character is never split, so only a high surrogate that ends the
        // text can be waiting in the encoder.
        m_encoderMayHold = pos == count && qvutf::isHighSurrogate(text[count - 1]);
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

namespace {

// Narrows `Units` units into bytes when all of them are ASCII. Through
// local copies, since the bytes could otherwise alias the text, which would
// keep the compiler from doing a block at a time.
template <int Units>
bool narrowAscii(const char16_t* text, signed char* out)
{
    static_assert(Units % 4 == 0, "whole 64-bit words");
    // Four units per word: the test of every unit's high nine bits holds
    // in either byte order.
    uint64_t words[Units / 4];
    std::memcpy(words, text, sizeof words);
    uint64_t any = 0;
    for (const uint64_t word : words)
        any |= word;
    if ((any & 0xFF80FF80FF80FF80u) != 0)
        return false;
    char16_t units[Units];
    std::memcpy(units, words, sizeof units);
    signed char bytes[Units];
    for (int k = 0; k < Units; ++k)
        bytes[k] = static_cast<signed char>(units[k]);
    std::memcpy(out, bytes, sizeof bytes);
    return true;
}

} // namespace

int32_t OutputStreamWriter::writeAsciiDirectly(const char16_t* text, int32_t pos, int32_t count)
{
    const int32_t room = BYTE_BUFFER_SIZE - m_count;
    const int32_t end = count - pos < room ? count : pos + room;
    signed char* const out = m_bytes + m_count - pos;
    int32_t at = pos;
    while (end - at >= 16 && narrowAscii<16>(text + at, out + at))
        at += 16;
    while (end - at >= 4 && narrowAscii<4>(text + at, out + at))
        at += 4;
    while (at < end && text[at] < 0x80) {
        out[at] = static_cast<signed char>(text[at]);
        ++at;
    }
    m_count += at - pos;
    m_unitsWritten += at - pos;
    return at;
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
