#ifndef QV_IO_MASKEDCONSOLEINPUTSTREAM_H
#define QV_IO_MASKEDCONSOLEINPUTSTREAM_H

#include <qv/io/InputStream.h>

namespace qv {
namespace io {

// Reads a line typed at the terminal without showing it: for passwords.
// Echo is off only while a read waits for its line and is put back on every
// path: on return, on an exception, and when SIGINT, SIGTERM, SIGHUP or
// SIGQUIT ends the process meanwhile. Input that is not a terminal (a pipe,
// a file) is read the same way with nothing to switch.
class QV_EXPORT MaskedConsoleInputStream : public InputStream {
public:
    // Standard input.
    MaskedConsoleInputStream() noexcept;
    // Another terminal (or descriptor); not closed by the stream.
    explicit MaskedConsoleInputStream(int32_t handle);
    ~MaskedConsoleInputStream() override;

    using InputStream::read;
    // The rest of one line, at most count bytes, without its line end; 0 for
    // an empty line, -1 at the end of input. A line longer than count goes
    // on at the next read.
    int32_t read(signed char* buffer, int32_t count) override;

private:
    int32_t m_handle;
    // True while the line handed out last is not finished.
    bool m_inLine = false;
};

} // namespace io
} // namespace qv

#endif
