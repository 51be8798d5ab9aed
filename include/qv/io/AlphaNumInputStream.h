#ifndef QV_IO_ALPHANUMINPUTSTREAM_H
#define QV_IO_ALPHANUMINPUTSTREAM_H

#include <qv/core/TextSpelling.h>
#include <qv/io/FilterInputStream.h>

#include <cstddef>

namespace qv {
namespace io {

// Reads the text AlphaNumOutputStream writes and gives back the bytes. A
// character outside the alphabet (white space and line ends included)
// throws text::charset::InvalidCharacterException "Invalid AlphaNum
// character". Kept as the library always had it: when the text ends inside a
// group, the byte being assembled is produced too, so the text of n bytes
// (n not a multiple of 5) decodes to the n bytes and one extra zero byte.
class QV_EXPORT AlphaNumInputStream : public FilterInputStream {
public:
    // A null alphabet selects the default one; the alphabet rules are those
    // of AlphaNumOutputStream.
    explicit AlphaNumInputStream(InputStream* in, const char16_t* alphabet = nullptr);
    template <class T, IfUShortText<T> = 0>
    AlphaNumInputStream(InputStream* in, const T* alphabet)
        : AlphaNumInputStream(in, reinterpret_cast<const char16_t*>(alphabet))
    {}
    ~AlphaNumInputStream() override;

    using FilterInputStream::read;
    // -1 for count < 1, and -1 when no byte could be produced.
    int32_t read(signed char* buffer, int32_t count) override;
    // These three work through read(signed char*, int32_t), as the base
    // stream's do; available() is 0.
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;
    bool markSupported() override;
    void mark(int32_t readLimit) override;
    void reset() override;

    // The index of a character in the alphabet, or -1.
    int getValue(int character) const noexcept { return m_values[character & 0xFF]; }

private:
    bool nextCharacter(unsigned char& character);

    signed char m_values[256];
    unsigned m_assembled = 0;
    int m_groupPos = 0;
    // Characters read from the wrapped stream but not yet decoded. A request
    // asks the wrapped stream for no more characters than it needs, so the
    // wrapped stream gives no more than a character-at-a-time reader would
    // take; only the characters behind an invalid one wait here for the next
    // read.
    unsigned char m_pending[4096];
    int32_t m_pendingPos = 0;
    int32_t m_pendingCount = 0;
    int32_t m_wantedChars = 0;
};

} // namespace io
} // namespace qv

#endif
