#ifndef QV_IO_INPUTSTREAMREADER_H
#define QV_IO_INPUTSTREAMREADER_H

#include <qv/core/Reference.h>
#include <qv/io/InputStream.h>
#include <qv/io/Reader.h>
#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace io {

// Decodes the bytes of an input stream into UTF-16 text through the decoder
// of an encoding. A character whose bytes arrive in two reads of the stream
// comes out whole. Malformed input follows the decoder's rules: the text
// before the offending byte is handed out first, then the next read throws
// the decoder's exception (InvalidCharacterException, or
// UnmappableCharacterException with substitution off) with
// " at byte offset <n>" appended to its message, n counted from the first
// byte this reader took from the stream.
class QV_EXPORT InputStreamReader : public Reader {
public:
    static constexpr int32_t BYTE_BUFFER_SIZE = 8192;

    // encoding: looked up without regard to case; null: the default
    // encoding. An unknown name throws UnknownEncodingException, a null
    // stream ResultException(0x80070057).
    explicit InputStreamReader(InputStream* in, const char16_t* encoding = nullptr);
    ~InputStreamReader() override;
    InputStreamReader(const InputStreamReader&) = delete;
    InputStreamReader& operator=(const InputStreamReader&) = delete;

    // The decoder, for its substitution settings.
    Reference<text::charset::ByteToCharConverter> getDecoder() const;
    // The decoder's canonical encoding name.
    const char16_t* getEncoding() const;

    using Reader::read;
    int32_t read(char16_t* buffer, int32_t count) override;
    int32_t skip(int32_t count) override;
    // True when bytes are held or the stream has some available.
    bool ready() override;
    // Closes the stream.
    void close() override;

private:
    void ensureOpen() const;

    Reference<InputStream> m_in;
    Reference<text::charset::ByteToCharConverter> m_decoder;
    signed char* m_bytes = nullptr;
    int32_t m_bytePos = 0;
    int32_t m_byteEnd = 0;
    // Stream offset of m_bytes[0].
    int64_t m_base = 0;
    bool m_endOfStream = false;
    // The low half of a pair decoded for a read of a single unit.
    char16_t m_pendingLow = 0;
};

} // namespace io
} // namespace qv

#endif
