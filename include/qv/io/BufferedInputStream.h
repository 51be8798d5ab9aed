#ifndef QV_IO_BUFFEREDINPUTSTREAM_H
#define QV_IO_BUFFEREDINPUTSTREAM_H

#include <qv/io/FilterInputStream.h>

namespace qv {
namespace io {

// Reads the wrapped stream a block at a time and supports mark/reset. Once
// some bytes of a request are in hand it never blocks for more; a request of
// at least a buffer's worth with no mark set goes straight to the wrapped
// stream. Every operation after close throws IoException "stream closed".
class QV_EXPORT BufferedInputStream : public FilterInputStream {
public:
    static constexpr int32_t DEFAULT_SIZE = 8192;
    // Buffers are never smaller than this.
    static constexpr int32_t MIN_SIZE = 16;

    explicit BufferedInputStream(InputStream* in, int32_t size = DEFAULT_SIZE);
    ~BufferedInputStream() override;

    using FilterInputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;
    // Closes the wrapped stream and frees the buffer; a second close does
    // nothing.
    void close() override;
    bool markSupported() override;
    // Keeps the bytes from here on until more than readLimit bytes have been
    // read past this point; then the mark is dropped ("mark invalid").
    void mark(int32_t readLimit) override;
    void reset() override;

    // The current size of the buffer (it grows to a mark's read limit).
    int32_t getBufferSize() const noexcept { return m_bufSize; }

private:
    void ensureOpen() const;
    void fillBuffer();

    int32_t m_bufSize;
    signed char* m_buf;
    int32_t m_pos = 0;
    int32_t m_count = 0;
    int32_t m_markLimit = 0;
    int32_t m_markPos = -1;
};

} // namespace io
} // namespace qv

#endif
