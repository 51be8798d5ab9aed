#ifndef QVCL3_EXEC_PIPESTREAMS_H
#define QVCL3_EXEC_PIPESTREAMS_H

#include <qv/io/InputStream.h>
#include <qv/io/OutputStream.h>

#include <cstdint>

namespace qv {
namespace exec {

// The parent's end of a child's standard output or error. Owns the
// descriptor and closes it on close() or with its last reference. Made
// without a descriptor (the child's stream was not piped) it is an empty
// stream: reads give -1. Reads after close() throw "stream closed".
class PipeInputStream : public io::InputStream {
public:
    explicit PipeInputStream(int32_t fd) noexcept : m_fd(fd) {}
    ~PipeInputStream() override;
    // Takes over a descriptor (-1: none) in place of none.
    void adopt(int32_t fd) noexcept { m_fd = fd; }

    using io::InputStream::read;
    // Blocks until some bytes are there and returns them (at most count),
    // or -1 once the child has closed its end.
    int32_t read(signed char* buffer, int32_t count) override;
    int32_t available() override;
    void close() override;

private:
    void checkOpen() const;

    int32_t m_fd;
    bool m_closed = false;
};

// The parent's end of a child's standard input: unbuffered, every write goes
// to the pipe at once. close() lets the child see the end of its input.
// Without a descriptor, or after close(), writes throw "stream closed"; a
// child that no longer reads makes writes throw "stream write error".
class PipeOutputStream : public io::OutputStream {
public:
    explicit PipeOutputStream(int32_t fd) noexcept : m_fd(fd) {}
    ~PipeOutputStream() override;
    void adopt(int32_t fd) noexcept { m_fd = fd; }

    using io::OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void close() override;

private:
    int32_t m_fd;
};

} // namespace exec
} // namespace qv

#endif
