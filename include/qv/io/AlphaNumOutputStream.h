#ifndef QV_IO_ALPHANUMOUTPUTSTREAM_H
#define QV_IO_ALPHANUMOUTPUTSTREAM_H

#include <qv/core/TextSpelling.h>
#include <qv/io/FilterOutputStream.h>

#include <cstddef>

namespace qv {
namespace io {

// Writes bytes as text over a 32-character alphabet, five bits per
// character, most significant bit first: five bytes make eight characters.
// The default alphabet "ABCDEFGHJKLMNPQRSTUVWXYZ23456789" leaves out I, O, 0
// and 1. No padding exists: n bytes give ceil(8n / 5) characters once
// flushed.
class QV_EXPORT AlphaNumOutputStream : public FilterOutputStream {
public:
    static const char16_t DEFAULT_ALPHABET[33];

    // A null alphabet selects the default one. Anything but 32 distinct
    // characters from U+0001 to U+00FF (each is written as one byte) throws
    // ResultException(0x80070057).
    explicit AlphaNumOutputStream(OutputStream* out, const char16_t* alphabet = nullptr);
    template <class T, IfUShortText<T> = 0>
    AlphaNumOutputStream(OutputStream* out, const T* alphabet)
        : AlphaNumOutputStream(out, reinterpret_cast<const char16_t*>(alphabet))
    {}
    ~AlphaNumOutputStream() override;

    using FilterOutputStream::write;
    // Nothing for count < 1.
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
    // Ends the open group with its last character (zero bits on the right)
    // and flushes the wrapped stream.
    void flush() override;
    // Flushes, then closes the wrapped stream.
    void close() override;

private:
    signed char m_alphabet[32];
    unsigned m_previous = 0;
    int m_groupPos = 0;
};

} // namespace io
} // namespace qv

#endif
