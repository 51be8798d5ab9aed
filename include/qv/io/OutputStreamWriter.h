#ifndef QV_IO_OUTPUTSTREAMWRITER_H
#define QV_IO_OUTPUTSTREAMWRITER_H

#include <qv/core/Reference.h>
#include <qv/io/OutputStream.h>
#include <qv/io/Writer.h>
#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace io {

// Encodes UTF-16 text into the bytes of an output stream through the
// encoder of an encoding. Bytes collect in an 8 KiB buffer and reach the
// stream when it is full, on flush() and on close(); a stream failure is
// thrown from that write or flush, and the bytes stay held. A high surrogate
// at the end of a write waits for its low half in the next one; close()
// flushes the encoder, so a surrogate still waiting then is malformed.
// Unencodable text follows the encoder's rules: the text before the
// offending unit is encoded, then the write throws the encoder's exception
// with " at character offset <n>" appended (n counts the UTF-16 units this
// writer was given).
//
// Destruction without close() passes held bytes on as close() would but
// leaves the stream open, and can report nothing.
class QV_EXPORT OutputStreamWriter : public Writer {
public:
    static constexpr int32_t BYTE_BUFFER_SIZE = 8192;

    // As InputStreamReader's constructor.
    explicit OutputStreamWriter(OutputStream* out, const char16_t* encoding = nullptr);
    ~OutputStreamWriter() override;
    OutputStreamWriter(const OutputStreamWriter&) = delete;
    OutputStreamWriter& operator=(const OutputStreamWriter&) = delete;

    // The encoder, for its substitution settings.
    Reference<text::charset::CharToByteConverter> getEncoder() const;
    const char16_t* getEncoding() const;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    // Writes the held bytes out and flushes the stream. The encoder keeps a
    // waiting high surrogate.
    void flush() override;
    // Flushes the encoder, writes the held bytes out and closes the stream,
    // which is closed even when that fails; the failure is then thrown.
    void close() override;

private:
    void ensureOpen() const;
    void writeBytes();
    void finish();
    // Copies the ASCII units from text[pos] on straight into the byte
    // buffer while the encoder is UTF-8 and holds nothing; returns the
    // position of the first unit left for the encoder.
    int32_t writeAsciiDirectly(const char16_t* text, int32_t pos, int32_t count);

    Reference<OutputStream> m_out;
    Reference<text::charset::CharToByteConverter> m_encoder;
    signed char* m_bytes = nullptr;
    int32_t m_count = 0;
    int64_t m_unitsWritten = 0;
    // ASCII is its own UTF-8: such units skip the encoder as long as it is
    // known to hold no high surrogate (never again once it has been handed
    // out by getEncoder(), whose caller may drive it directly).
    mutable bool m_asciiDirect = false;
    bool m_encoderMayHold = false;
};

} // namespace io
} // namespace qv

#endif
