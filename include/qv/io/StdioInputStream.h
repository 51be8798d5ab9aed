#ifndef QV_IO_STDIOINPUTSTREAM_H
#define QV_IO_STDIOINPUTSTREAM_H

#include <qv/io/InputStream.h>

namespace qv {
namespace io {

// Reads the process's standard input a line at a time through the C
// library's stream, so it shares that stream's buffer with other readers of
// it.
class QV_EXPORT StdioInputStream : public InputStream {
public:
    StdioInputStream() noexcept;
    ~StdioInputStream() override;

    using InputStream::read;
    // One line of at most count - 1 bytes (with its line end, when it fits):
    // the length up to its first NUL byte, 0 for count < 1, -1 when nothing
    // was read. IoException "stream read error" when the stream reports an
    // error. Note that a count of 1 leaves room for no byte at all.
    int32_t read(signed char* buffer, int32_t count) override;
    // Seeks standard input forward by count bytes and returns count; where
    // it cannot seek (a terminal or a pipe), IoException "stream seek error".
    int32_t skip(int32_t count) override;
};

} // namespace io
} // namespace qv

#endif
