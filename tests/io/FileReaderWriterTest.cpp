#include <qv/io/FileReader.h>
#include <qv/io/FileWriter.h>
#include <qv/text/charset/CharsetExceptions.h>

#include "AllocationSweep.h"
#include "QvTextPrinting.h"
#include "TextIoSupport.h"

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <unistd.h>

using namespace qv;
using namespace qv::io;
using qvtest::ioFailure;
using qvtest::u16;

namespace {

String pathOf(const std::string& path)
{
    return String(path.c_str(), -1, u"UTF-8");
}

} // namespace

TEST(FileReaderWriterTest, WritesAppendsAndReadsLinesInAnEncoding)
{
    const qvtest::TempDir dir("qvtextio");
    const std::string path = dir.file("lines.txt");
    {
        auto writer = makeReference<FileWriter>(pathOf(path), false, u"UTF-16LE");
        writer->write(QV_STR(u"Grüße"));
        writer->newLine();
        writer->close();
    }
    {
        auto writer = makeReference<FileWriter>(pathOf(path), true, u"UTF-16LE");
        writer->write(u"\U0001F600 second\r\nthird", -1);
    } // destruction passes the text on
    EXPECT_EQ(std::string("G\0r\0\xfc\0\xdf\0e\0\n\0", 12), qvtest::readFile(path).substr(0, 12));

    auto reader = makeReference<FileReader>(pathOf(path), u"utf-16le");
    String line;
    ASSERT_TRUE(reader->readLine(line));
    EXPECT_EQ(u"Grüße", u16(line));
    ASSERT_TRUE(reader->readLine(line));
    EXPECT_EQ(u"\U0001F600 second", u16(line));
    ASSERT_TRUE(reader->readLine(line));
    EXPECT_EQ(u"third", u16(line));
    EXPECT_FALSE(reader->readLine(line));
    reader->close();
    EXPECT_EQ("stream closed", ioFailure([&] { reader->read(); }));

    // Without append the file starts again.
    FileWriter(pathOf(path), false, u"UTF-8").write(QV_STR(u"new"));
    EXPECT_EQ("new", qvtest::readFile(path));
}

TEST(FileReaderWriterTest, OpeningFailuresAndUnknownEncodings)
{
    const qvtest::TempDir dir("qvtextio");
    const std::string missing = dir.file("missing.txt");
    EXPECT_EQ("cannot open file: " + missing + ": No such file or directory",
              ioFailure([&] { FileReader reader(pathOf(missing)); }));

    dir.write("kept.txt", "precious");
    EXPECT_THROW(FileWriter(pathOf(dir.file("kept.txt")), false, u"NO-SUCH"), text::charset::UnknownEncodingException);
    EXPECT_EQ("precious", qvtest::readFile(dir.file("kept.txt"))) << "an unknown encoding must not empty the file";
}

TEST(FileReaderWriterTest, AFullDeviceIsReportedByTheFlushThatMeetsIt)
{
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "no /dev/full here";
    auto writer = makeReference<FileWriter>(QV_STR(u"/dev/full"));
    writer->write(QV_STR(u"lost"));
    std::string message = ioFailure([&] { writer->flush(); });
    EXPECT_NE(std::string::npos, message.find("/dev/full")) << message;
    EXPECT_EQ(message, ioFailure([&] { writer->close(); })) << "close reports it again and closes";
    EXPECT_EQ("stream closed", ioFailure([&] { writer->write(u'x'); }));
}
