#include "StreamTestSupport.h"

#include <qv/core/Reference.h>
#include <qv/io/BufferedOutputStream.h>
#include <qv/io/FileInputStream.h>
#include <qv/io/FileOutputStream.h>
#include <qv/io/IoException.h>

#include "AllocationSweep.h"
#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>

using namespace qv;
using namespace qv::io;
using iotest::messageOf;
using qvtest::countOpenDescriptors;
using qvtest::readFile;

namespace {

String wide(const std::string& text)
{
    return String(text.c_str(), -1, u"UTF-8");
}

class FileStreams : public ::testing::Test {
protected:
    void SetUp() override { m_descriptors = countOpenDescriptors(); }
    void TearDown() override { EXPECT_EQ(countOpenDescriptors(), m_descriptors) << "a descriptor leaked"; }
    std::string path(const char* name) const { return m_files.file(name); }

    qvtest::TempDir m_files{"qvcl3-files"};
    const std::string& m_dir = m_files.path();
    int m_descriptors = 0;
};

} // namespace

TEST_F(FileStreams, WriteThenReadBack)
{
    {
        Reference<FileOutputStream> out = makeReference<FileOutputStream>(wide(path("data.bin")));
        out->write("hello ", 6);
        out->write(static_cast<signed char>('w'));
        out->write("orld", 4);
        out->flush();
        out->close();
        out->close();
    }
    EXPECT_EQ(readFile(path("data.bin")), "hello world");

    Reference<FileInputStream> in = makeReference<FileInputStream>(util::FilePath(wide(path("./data.bin"))));
    EXPECT_EQ(in->getName(), wide(path("data.bin"))) << "the name is normalised";
    EXPECT_EQ(in->getSize(), 11);
    EXPECT_EQ(in->available(), 11);
    signed char buf[16];
    EXPECT_EQ(in->read(buf, 0), 0);
    EXPECT_EQ(in->read(buf, 5), 5);
    EXPECT_EQ(in->getPosition(), 5);
    EXPECT_EQ(in->read(), ' ');
    EXPECT_EQ(in->skip(2), 2);
    EXPECT_EQ(in->read(buf, 16), 3);
    EXPECT_EQ(std::string(buf, buf + 3), "rld");
    EXPECT_EQ(in->read(buf, 16), -1);
    EXPECT_EQ(in->read(), -1);
    EXPECT_EQ(in->skip(5), 0) << "never past the end";
    EXPECT_EQ(in->available(), 0);
}

TEST_F(FileStreams, OpenFlagsDecideWhatHappensToTheContents)
{
    const String name = wide(path("log.txt"));
    makeReference<FileOutputStream>(name)->write("first", 5);
    makeReference<FileOutputStream>(name, true)->write("+append", 7);
    EXPECT_EQ(readFile(path("log.txt")), "first+append");
    makeReference<FileOutputStream>(name, FileOutputStream::APPEND)->write("+flag", 5);
    makeReference<FileOutputStream>(name, FileOutputStream::ATEND)->write("+atend", 6);
    EXPECT_EQ(readFile(path("log.txt")), "first+append+flag+atend");
    Reference<FileOutputStream> flags = makeReference<FileOutputStream>(name, 0);
    EXPECT_EQ(flags->getFlags(), 0u);
    EXPECT_EQ(readFile(path("log.txt")), "") << "no flags: emptied";
}

TEST_F(FileStreams, FailuresNameTheFileAndTheCause)
{
    EXPECT_EQ(messageOf<IoException>([] { FileInputStream in(String(u"/no/such")); }),
              "cannot open file: /no/such: No such file or directory");
    EXPECT_EQ(messageOf<IoException>([] { FileOutputStream out(String(u"/no/such/file")); }),
              "cannot open file: /no/such/file: No such file or directory");
    EXPECT_EQ(messageOf<IoException>([&] { FileInputStream in(wide(m_dir)); }),
              "cannot open file: " + m_dir + ": Is a directory");
    EXPECT_EQ(messageOf<IoException>([&] { FileOutputStream out(wide(m_dir)); }),
              "cannot open file: " + m_dir + ": Is a directory");
    EXPECT_THROW(FileInputStream(String(u"/../x")), InvalidPathException);
    EXPECT_EQ(iotest::resultOf([] { FileInputStream in(-1, true); }), results::INVALIDARG);
    EXPECT_EQ(iotest::resultOf([] { FileOutputStream out(-2, false); }), results::INVALIDARG);
}

TEST_F(FileStreams, AFullDiskIsReportedNotLost)
{
    Reference<FileOutputStream> full = makeReference<FileOutputStream>(String(u"/dev/full"));
    EXPECT_EQ(messageOf<IoException>([&] { full->write("x", 1); }),
              "cannot write file: /dev/full: No space left on device");

    Reference<BufferedOutputStream> buffered = makeReference<BufferedOutputStream>(full.get(), 64);
    buffered->write("held", 4);
    EXPECT_EQ(messageOf<IoException>([&] { buffered->close(); }),
              "cannot write file: /dev/full: No space left on device");
    EXPECT_EQ(full->getHandle(), -1) << "closed all the same";
}

// A pipe opened by its path, like one handed in, must give its writer a
// code, not SIGPIPE, once the reader has gone.
TEST_F(FileStreams, ANamedPipeWithoutReaderGivesACodeNotASignal)
{
    const std::string fifo = path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    Reference<FileOutputStream> out = makeReference<FileOutputStream>(wide(fifo));
    out->write("read", 4);
    char got[4];
    EXPECT_EQ(read(reader, got, sizeof got), 4);
    close(reader);
    EXPECT_EQ(messageOf<IoException>([&] { out->write("gone", 4); }), "cannot write file: " + fifo + ": Broken pipe");
    out->close();
}

TEST_F(FileStreams, ClosedStreamsSaySo)
{
    Reference<FileOutputStream> out = makeReference<FileOutputStream>(wide(path("c")));
    out->close();
    iotest::expectEachFails("stream closed", {[&] { out->write("x", 1); }, [&] { out->flush(); }});
    Reference<FileInputStream> in = makeReference<FileInputStream>(wide(path("c")));
    in->close();
    signed char b[1];
    iotest::expectEachFails("stream closed", {[&] { in->read(b, 1); }, [&] { in->read(); }, [&] { in->skip(1); },
                                              [&] { in->available(); }});
}

TEST_F(FileStreams, HandlesAreClosedOnlyWhenOwned)
{
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    {
        Reference<FileOutputStream> writer = makeReference<FileOutputStream>(fds[1], false);
        EXPECT_EQ(writer->getName().toUtf8(), "handle " + std::to_string(fds[1]));
        writer->write("piped data", 10);
        writer->close();
    }
    EXPECT_EQ(fcntl(fds[1], F_GETFD), 0) << "not owned: still open";
    close(fds[1]);
    Reference<FileInputStream> reader = makeReference<FileInputStream>(fds[0], true);
    EXPECT_EQ(reader->available(), 10);
    EXPECT_EQ(reader->skip(6), 6) << "a pipe cannot seek: the bytes are read instead";
    signed char buf[8];
    EXPECT_EQ(reader->read(buf, 8), 4);
    EXPECT_EQ(reader->read(buf, 8), -1);
    reader.reset();
    EXPECT_EQ(fcntl(fds[0], F_GETFD), -1) << "owned: closed with the stream";
}

TEST_F(FileStreams, InjectedPlatformFailuresBecomeIoExceptions)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    makeReference<FileOutputStream>(wide(path("f")))->write("abc", 3);
    Reference<FileInputStream> in = makeReference<FileInputStream>(wide(path("f")));
    const Result ioError = static_cast<Result>(0x80070000u | EROFS);
    QVFaultArm("QVFileRead", 1, ioError);
    errno = 0;
    signed char buf[4];
    EXPECT_EQ(messageOf<IoException>([&] { in->read(buf, 4); }),
              "cannot read file: " + path("f") + ": Read-only file system");
    Reference<FileOutputStream> out = makeReference<FileOutputStream>(wide(path("g")));
    QVFaultArm("QVFileWrite", 1, ioError);
    EXPECT_EQ(messageOf<IoException>([&] { out->write("abc", 3); }),
              "cannot write file: " + path("g") + ": Read-only file system");
    out->write("abc", 3);
    EXPECT_EQ(readFile(path("g")), "abc");
    QVFaultArm("QVFileClose", 1, ioError);
    EXPECT_EQ(messageOf<IoException>([&] { in->close(); }),
              "cannot close file: " + path("f") + ": Read-only file system");
    QVFaultArm("QVFileSeek", 1, ioError);
    EXPECT_EQ(messageOf<IoException>([&] { FileOutputStream out(wide(path("f")), FileOutputStream::ATEND); }),
              "cannot seek file: " + path("f") + ": Read-only file system");
    QVFaultArm("QVFileOpen", 1, results::FAIL);
    EXPECT_EQ(messageOf<IoException>([&] { FileInputStream again(wide(path("f"))); }),
              "cannot open file: " + path("f") + ": error 0x80004005");
    QVFaultDisarmAll();
}

TEST_F(FileStreams, AllocationFailuresLeakNoDescriptor)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const String name = wide(path("sweep.txt"));
    const int before = countOpenDescriptors();
    qvtest::sweepAllocations(
        [&] {
            Reference<FileOutputStream> out = makeReference<FileOutputStream>(name);
            Reference<BufferedOutputStream> buffered = makeReference<BufferedOutputStream>(out.get());
            buffered->write("swept", 5);
            buffered->close();
        },
        [&] { EXPECT_EQ(countOpenDescriptors(), before); });
    EXPECT_EQ(readFile(path("sweep.txt")), "swept");
    bool refused = false;
    qvtest::sweepAllocations(
        [&] {
            try {
                FileInputStream in(String(u"/no/such"));
            } catch (const IoException&) {
                refused = true;
            }
        },
        [&] { EXPECT_EQ(countOpenDescriptors(), before); });
    EXPECT_TRUE(refused);
}
