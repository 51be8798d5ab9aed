#ifndef QV_IO_STDIOOUTPUTSTREAM_H
#define QV_IO_STDIOOUTPUTSTREAM_H

#include <qv/core/Reference.h>
#include <qv/io/OutputStream.h>

namespace qv {
namespace io {

// Writes to the process's standard output or standard error through the C
// library's stream (and its buffer). Closing does not close the standard
// stream.
class QV_EXPORT StdioOutputStream : public OutputStream {
public:
    // Standard output, or standard error when standardError is true.
    explicit StdioOutputStream(bool standardError = false) noexcept;
    ~StdioOutputStream() override;

    static Reference<StdioOutputStream> getStdOutputStream();
    static Reference<StdioOutputStream> getStdErrorStream();

    using OutputStream::write;
    // IoException "stream write error" when the write fails.
    void write(const signed char* buffer, int32_t count) override;
    // IoException "stream flush error" when the flush fails.
    void flush() override;

    bool isStandardError() const noexcept { return m_stream == 2; }

private:
    int32_t m_stream;
};

} // namespace io
} // namespace qv

#endif
