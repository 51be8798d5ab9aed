#ifndef QV_IO_BUFFEREDREADER_H
#define QV_IO_BUFFEREDREADER_H

#include <qv/core/Reference.h>
#include <qv/io/Reader.h>

namespace qv {

class String;

namespace io {

// Reads another reader through a buffer and splits its text into lines.
//
// Line ends are "\n", "\r\n" and "\r"; a "\r\n" split between two reads of
// the wrapped reader is still one line end. mark/reset follow the buffered
// byte stream: reset() throws "stream not marked" without a mark and
// "mark invalid" once more than readLimit units were read past it.
class QV_EXPORT BufferedReader : public Reader {
public:
    static constexpr int32_t DEFAULT_SIZE = 8192;

    // The buffer holds max(size, 16) units. A null reader throws
    // ResultException(0x80070057).
    explicit BufferedReader(Reader* in, int32_t size = DEFAULT_SIZE);
    ~BufferedReader() override;
    BufferedReader(const BufferedReader&) = delete;
    BufferedReader& operator=(const BufferedReader&) = delete;

    // The next line, without its line end, into line. At the end of the text
    // returns false and leaves line empty; a last line without a line end is
    // still a line. line's buffer is reused when line holds it alone.
    bool readLine(String& line);

    using Reader::read;
    int32_t read(char16_t* buffer, int32_t count) override;
    int32_t read() override;
    int32_t skip(int32_t count) override;
    bool ready() override;
    // Closes the wrapped reader.
    void close() override;
    bool markSupported() const override;
    // A negative readLimit throws ResultException(0x80070057).
    void mark(int32_t readLimit) override;
    void reset() override;

private:
    void ensureOpen() const;
    bool fill();
    bool available();
    int32_t readOnce(char16_t* buffer, int32_t count);

    Reference<Reader> m_in;
    char16_t* m_buf = nullptr;
    int32_t m_size = 0;
    int32_t m_pos = 0;
    int32_t m_count = 0;
    // -1: no mark; -2: the mark was dropped; >= 0: its index in m_buf.
    int32_t m_markPos = -1;
    int32_t m_markLimit = 0;
    // The last line ended with "\r": a "\n" that follows belongs to it.
    bool m_skipLF = false;
    bool m_markedSkipLF = false;
};

} // namespace io
} // namespace qv

#endif
