#ifndef QV_IO_BUFFEREDWRITER_H
#define QV_IO_BUFFEREDWRITER_H

#include <qv/core/Reference.h>
#include <qv/io/Writer.h>

namespace qv {
namespace io {

// Collects text in a buffer and hands it to another writer when the buffer
// is full, on flush() and on close(). A write at least as long as the buffer
// goes straight through. When the wrapped writer fails, the text stays in the
// buffer and the failure is thrown from the write or flush that met it.
//
// Destruction without close() passes held text on as flush() would, but can
// report nothing: callers that need to know call flush() or close().
class QV_EXPORT BufferedWriter : public Writer {
public:
    static constexpr int32_t DEFAULT_SIZE = 8192;

    // The buffer holds max(size, 16) units. A null writer throws
    // ResultException(0x80070057).
    explicit BufferedWriter(Writer* out, int32_t size = DEFAULT_SIZE);
    ~BufferedWriter() override;
    BufferedWriter(const BufferedWriter&) = delete;
    BufferedWriter& operator=(const BufferedWriter&) = delete;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    void write(char16_t unit) override;
    // The line separator, "\n".
    void newLine();
    // Writes the buffer out and flushes the wrapped writer.
    void flush() override;
    // Writes the buffer out and closes the wrapped writer, which is closed
    // even when writing out fails; that failure is then thrown.
    void close() override;

private:
    void ensureOpen() const;
    void flushBuffer();

    Reference<Writer> m_out;
    char16_t* m_buf = nullptr;
    int32_t m_size = 0;
    int32_t m_count = 0;
};

} // namespace io
} // namespace qv

#endif
