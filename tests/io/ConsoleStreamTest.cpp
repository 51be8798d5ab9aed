#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/IoException.h>
#include <qv/io/MaskedConsoleInputStream.h>
#include <qv/io/NullOutputStream.h>
#include <qv/io/StdioInputStream.h>
#include <qv/io/StdioOutputStream.h>

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

using namespace qv;
using namespace qv::io;
using iotest::messageOf;

namespace {

// Puts another descriptor behind a standard stream for the life of the
// object, and the original back afterwards.
class Redirect {
public:
    Redirect(FILE* stream, int fd) : m_stream(stream), m_fd(fileno(stream))
    {
        std::fflush(stream);
        m_saved = dup(m_fd);
        dup2(fd, m_fd);
        clearerr(stream);
    }
    ~Redirect()
    {
        std::fflush(m_stream);
        clearerr(m_stream);
        dup2(m_saved, m_fd);
        close(m_saved);
        clearerr(m_stream);
    }

private:
    FILE* m_stream;
    int m_fd;
    int m_saved;
};

// Standard input from a pipe that already holds `text` and is then closed.
int pipeWith(const std::string& text)
{
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    if (write(fds[1], text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        return -1;
    close(fds[1]);
    return fds[0];
}

} // namespace

TEST(StdioInputStream, ReadsALineAtATime)
{
    const int fd = pipeWith(std::string("first line\nsecond\0hidden\nlast", 29));
    ASSERT_GE(fd, 0);
    {
        Redirect redirect(stdin, fd);
        StdioInputStream in;
        signed char buf[64];
        EXPECT_EQ(in.read(buf, 0), 0);
        EXPECT_EQ(in.read(buf, 6), 5) << "at most count - 1 bytes";
        EXPECT_EQ(std::string(buf, buf + 5), "first");
        EXPECT_EQ(in.read(buf, 64), 6);
        EXPECT_EQ(std::string(buf, buf + 6), " line\n");
        EXPECT_EQ(in.read(buf, 64), 6) << "the length up to the first NUL";
        EXPECT_EQ(in.read(buf, 64), 4);
        EXPECT_EQ(std::string(buf, buf + 4), "last");
        EXPECT_EQ(in.read(buf, 64), -1);
        EXPECT_EQ(messageOf<IoException>([&] { in.skip(1); }), "stream seek error") << "a pipe cannot seek";
    }
    close(fd);
}

TEST(StdioInputStream, ReportsReadErrors)
{
    const int writeOnly = open("/dev/null", O_WRONLY);
    ASSERT_GE(writeOnly, 0);
    {
        Redirect redirect(stdin, writeOnly);
        StdioInputStream in;
        signed char buf[8];
        EXPECT_EQ(messageOf<IoException>([&] { in.read(buf, 8); }), "stream read error");
    }
    close(writeOnly);
}

TEST(StdioInputStream, SkipsBySeekingAFile)
{
    char path[] = "/tmp/qvcl3-stdin-XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_EQ(write(fd, "0123456789\n", 11), 11);
    lseek(fd, 0, SEEK_SET);
    {
        Redirect redirect(stdin, fd);
        StdioInputStream in;
        EXPECT_EQ(in.skip(4), 4);
        signed char buf[16];
        EXPECT_EQ(in.read(buf, 16), 7);
        EXPECT_EQ(std::string(buf, buf + 6), "456789");
    }
    close(fd);
    unlink(path);
}

TEST(StdioOutputStream, WritesThroughTheStandardStreams)
{
    char path[] = "/tmp/qvcl3-stdout-XXXXXX";
    const int fd = mkstemp(path);
    {
        Redirect out(stdout, fd);
        Reference<StdioOutputStream> stream = StdioOutputStream::getStdOutputStream();
        EXPECT_FALSE(stream->isStandardError());
        stream->write("to stdout\n", 10);
        stream->write(static_cast<signed char>('!'));
        stream->flush();
        stream->close();
    }
    EXPECT_EQ(qvtest::readFile(path), "to stdout\n!");
    ftruncate(fd, 0);
    lseek(fd, 0, SEEK_SET);
    {
        Redirect err(stderr, fd);
        Reference<StdioOutputStream> stream = StdioOutputStream::getStdErrorStream();
        EXPECT_TRUE(stream->isStandardError());
        stream->write("to stderr", 9);
        stream->flush();
    }
    EXPECT_EQ(qvtest::readFile(path), "to stderr");
    close(fd);
    unlink(path);
}

TEST(StdioOutputStream, ReportsWriteAndFlushErrors)
{
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    {
        Redirect out(stdout, full);
        StdioOutputStream stream;
        stream.write("x", 1);
        EXPECT_EQ(messageOf<IoException>([&] { stream.flush(); }), "stream flush error");
        const std::vector<signed char> big(1 << 20, 'y');
        EXPECT_EQ(messageOf<IoException>([&] { stream.write(big.data(), static_cast<int32_t>(big.size())); }),
                  "stream write error");
        std::fflush(stdout);
        clearerr(stdout);
    }
    close(full);
}

TEST(NullOutputStream, DiscardsButChecksItsArguments)
{
    Reference<NullOutputStream> out = makeReference<NullOutputStream>();
    out->write("anything", 8);
    out->write(static_cast<signed char>(1));
    out->write(static_cast<const char*>(nullptr), 0);
    out->flush();
    out->close();
    EXPECT_EQ(iotest::resultOf([&] { out->write(static_cast<const char*>(nullptr), 3); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([&] { out->write("x", -1); }), results::INVALIDARG);
}

namespace {

// A pseudo-terminal: the test types on the master side, the stream reads the
// slave side as a program reads its terminal.
class Terminal {
public:
    Terminal()
    {
        m_master = posix_openpt(O_RDWR | O_NOCTTY);
        if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            return;
        m_slave = open(ptsname(m_master), O_RDWR | O_NOCTTY);
    }
    ~Terminal()
    {
        if (m_slave >= 0)
            close(m_slave);
        if (m_master >= 0)
            close(m_master);
    }
    bool ok() const { return m_master >= 0 && m_slave >= 0; }
    int slave() const { return m_slave; }
    void type(const std::string& text)
    {
        ASSERT_EQ(write(m_master, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool echoing() const
    {
        termios mode;
        tcgetattr(m_slave, &mode);
        return (mode.c_lflag & ECHO) != 0;
    }
    // What the terminal showed (its echo), waiting briefly for it.
    std::string shown()
    {
        std::string text;
        pollfd p{m_master, POLLIN, 0};
        while (poll(&p, 1, 100) > 0) {
            char buf[256];
            const ssize_t n = read(m_master, buf, sizeof buf);
            if (n <= 0)
                break;
            text.append(buf, static_cast<size_t>(n));
        }
        return text;
    }

private:
    int m_master = -1;
    int m_slave = -1;
};

// Reads on another thread and types only once echo is off, as a person
// typing at a prompt would; the terminal would echo anything typed earlier.
int32_t readWhileTyping(Terminal& terminal, MaskedConsoleInputStream& in, const std::string& text, signed char* buf,
                        int32_t count)
{
    int32_t result = -2;
    std::thread reader([&] { result = in.read(buf, count); });
    for (int i = 0; i < 500 && terminal.echoing(); ++i)
        usleep(10000);
    EXPECT_FALSE(terminal.echoing()) << "echo is off while the read waits";
    terminal.type(text);
    reader.join();
    return result;
}

} // namespace

TEST(MaskedConsoleInputStream, ReadsALineWithoutEchoOnAnotherThread)
{
    Terminal terminal;
    ASSERT_TRUE(terminal.ok());
    ASSERT_TRUE(terminal.echoing());
    Reference<MaskedConsoleInputStream> in = makeReference<MaskedConsoleInputStream>(terminal.slave());
    signed char buf[64];
    EXPECT_EQ(readWhileTyping(terminal, *in, "s3cret\n", buf, 64), 6);
    EXPECT_EQ(std::string(buf, buf + 6), "s3cret");
    EXPECT_TRUE(terminal.echoing()) << "the mode is back after the read";
    EXPECT_EQ(terminal.shown().find("s3cret"), std::string::npos) << "the text was not echoed";

    EXPECT_EQ(readWhileTyping(terminal, *in, "longer line\n\n", buf, 6), 6);
    EXPECT_EQ(in->read(buf, 64), 5) << "the rest of the line";
    EXPECT_EQ(std::string(buf, buf + 5), " line");
    EXPECT_EQ(in->read(buf, 64), 0) << "an empty line";
    EXPECT_TRUE(terminal.echoing());
}

TEST(MaskedConsoleInputStream, AnInterruptedReadLeavesEchoOn)
{
    Terminal terminal;
    ASSERT_TRUE(terminal.ok());
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        MaskedConsoleInputStream in(terminal.slave());
        signed char buf[16];
        in.read(buf, 16);
        _exit(3);
    }
    for (int i = 0; i < 500 && terminal.echoing(); ++i)
        usleep(10000);
    ASSERT_FALSE(terminal.echoing()) << "the child turned echo off while waiting";
    kill(child, SIGINT);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << "the signal still ends the process";
    EXPECT_TRUE(terminal.echoing()) << "and the terminal's mode was put back first";
}

TEST(MaskedConsoleInputStream, ReadsPlainInputToo)
{
    const int fd = pipeWith("piped secret\nnext");
    Reference<MaskedConsoleInputStream> in = makeReference<MaskedConsoleInputStream>(fd);
    signed char buf[64];
    EXPECT_EQ(in->read(buf, 64), 12);
    EXPECT_EQ(in->read(buf, 64), 4);
    EXPECT_EQ(in->read(buf, 64), -1);
    close(fd);
    EXPECT_EQ(iotest::resultOf([] { MaskedConsoleInputStream bad(-1); }), results::INVALIDARG);
}
