#ifndef QV_EXEC_PROCESS_H
#define QV_EXEC_PROCESS_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>
#include <qv/io/InputStream.h>
#include <qv/io/OutputStream.h>

#include <cstdint>

namespace qv {
namespace exec {

// A child process, started by the constructor with posix_spawn (never through
// a shell). Running -> joined (join or a successful tryJoin; the exit code is
// then valid), or detached by the destructor, after which the child runs on
// and is still reaped when it ends. Driven by one controlling thread.
//
// Exit codes: what the child passed to exit(), or 128 + the signal number
// for a child ended by a signal (as shells report it).
//
// The child's streams are pipes: a child that fills one pipe while this
// process waits on another blocks for good. To write to a child and read
// both of its outputs, read the error stream on a Thread of its own while
// this thread reads the output (or give MERGE_STDERR and read one stream),
// and close the output stream once everything is written. A stream without a
// pipe (inherited or merged) is empty: reads give -1, writes throw
// "stream closed".
class QV_EXPORT Process : public Object {
public:
    // Flags 0 pipe all three standard streams of the child back to this
    // process; each INHERIT flag leaves one to the child as this process's
    // own. The flags reach the platform unchanged.
    static const unsigned INHERIT_STDIN = 0x1u;
    static const unsigned INHERIT_STDOUT = 0x2u;
    static const unsigned INHERIT_STDERR = 0x4u;
    // The child's standard error goes wherever its standard output goes (the
    // output pipe unless INHERIT_STDOUT), so one reader sees both in order.
    // Not together with INHERIT_STDERR.
    static const unsigned MERGE_STDERR = 0x8u;

    // program: a path, or a bare name searched on PATH. arguments: one string
    // split into argv[1..] by the Windows command-line rules (null: none).
    // directory: the child's working directory (null: this one's).
    // environment: null-terminated array of "NAME=value" (null: inherit).
    // Failure (no such program or directory, an empty name) is
    // ResultException with the platform's code and no message; nothing is
    // left behind.
    Process(const char16_t* program, const char16_t* arguments = nullptr, const char16_t* directory = nullptr,
            const char16_t* const* environment = nullptr, unsigned flags = 0);
    template <class T, IfUShortText<T> = 0>
    Process(const T* program, const T* arguments = nullptr, const T* directory = nullptr,
            const T* const* environment = nullptr, unsigned flags = 0)
        : Process(reinterpret_cast<const char16_t*>(program), reinterpret_cast<const char16_t*>(arguments),
                  reinterpret_cast<const char16_t*>(directory), reinterpret_cast<const char16_t* const*>(environment),
                  flags)
    {}
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    // Closes the child's three streams (also those the caller still holds)
    // and detaches a child not yet joined.
    ~Process() noexcept(false) override;

    // Waits for the child and returns its exit code. IllegalStateException
    // "process already joined"; ResultException "process join failed".
    int32_t join();
    // Never blocks: false while the child runs; true once it has ended, and
    // then the child is joined as by join(). Throws as join() does.
    bool tryJoin();
    // IllegalStateException "process has not been joined" before a join.
    int32_t getExitCode() const;
    // Always ResultException 0x80004007: a child's id is not offered.
    uint32_t getID() const;

    // The child's standard output, standard input and standard error. The
    // same stream each time; closing it early (the input, to end the child's
    // input) is allowed.
    Reference<io::InputStream> getInputStream() const { return m_stdout; }
    Reference<io::OutputStream> getOutputStream() const { return m_stdin; }
    Reference<io::InputStream> getErrorStream() const { return m_stderr; }

    static uint32_t getCurrentID() noexcept;

private:
    void checkJoinable() const;
    void finishJoin(int32_t exitCode) noexcept;

    int32_t m_handle = -1;
    int32_t m_exitCode = 0;
    Reference<io::OutputStream> m_stdin;
    Reference<io::InputStream> m_stdout;
    Reference<io::InputStream> m_stderr;
};

} // namespace exec
} // namespace qv

#endif
