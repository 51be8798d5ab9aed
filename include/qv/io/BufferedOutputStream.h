#ifndef QV_IO_BUFFEREDOUTPUTSTREAM_H
#define QV_IO_BUFFEREDOUTPUTSTREAM_H

#include <qv/io/FilterOutputStream.h>

namespace qv {
namespace io {

// Collects small writes into a block and passes it on when it is full, on
// flush and on close; a write of at least a buffer's worth goes straight
// through. Every operation after close throws IoException "stream closed".
class QV_EXPORT BufferedOutputStream : public FilterOutputStream {
public:
    static constexpr int32_t DEFAULT_SIZE = 8192;
    static constexpr int32_t MIN_SIZE = 16;

    explicit BufferedOutputStream(OutputStream* out, int32_t size = DEFAULT_SIZE);
    // Passes on what is held; a failure there cannot be reported, so call
    // flush() or close() to see it.
    ~BufferedOutputStream() override;

    using FilterOutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
    void flush() override;
    // Flushes and closes the wrapped stream (also when the flush fails, which
    // is then reported); a second close does nothing.
    void close() override;

    int32_t getBufferSize() const noexcept { return m_bufSize; }

private:
    void ensureOpen() const;
    void flushBuffer();

    int32_t m_bufSize;
    signed char* m_buf;
    int32_t m_count = 0;
};

} // namespace io
} // namespace qv

#endif
