#include "AllocationSweep.h"
#include "LogTestSupport.h"
#include "Thrown.h"

#include <qv/io/RotatingFileWriter.h>
#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>

#include <string>
#include <vector>

using namespace qv;
using namespace qv::log;
using logtest::readFile;

namespace {

bool exists(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

// The sequence numbers of the entries of a BasicLogWriter file, each checked
// whole: "level=", "text=" and "sequence=" lines, then the hyphens.
std::vector<int> sequencesIn(const std::string& text)
{
    std::vector<int> result;
    for (auto& entry : logtest::basicEntries(text)) {
        EXPECT_EQ(entry.size(), 3u);
        EXPECT_EQ(entry["level"], "3");
        EXPECT_EQ(entry["text"].rfind("entry number ", 0), 0u) << entry["text"];
        result.push_back(std::stoi(entry["sequence"]));
    }
    return result;
}

Reference<Logger> loggerTo(io::Writer* writer)
{
    Reference<Logger> logger = Logger::create();
    logger->enableField(u"sequence", true);
    logger->addProcessor(BasicLogWriter::create(writer).get());
    return logger;
}

} // namespace

TEST(RotatingFileWriterTest, RollsOverBetweenEntriesAndKeepsBackups)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("app.log");
    const int64_t maxBytes = 200;
    {
        Reference<io::RotatingFileWriter> file(new io::RotatingFileWriter(String(path.c_str()), maxBytes, 2));
        Reference<Logger> logger = loggerTo(file.get());
        for (int i = 0; i < 40; ++i)
            logger->log(3, String(u"entry number ").append(String::valueOf(i)));
        EXPECT_EQ(file->getSize(), static_cast<int64_t>(readFile(path).size()));
    }
    EXPECT_FALSE(exists(path + ".3"));
    // Oldest first: the backups and the current file hold a run of whole
    // entries that ends with the last one logged.
    std::vector<int> all;
    for (const std::string& name : {path + ".2", path + ".1", path}) {
        const std::string text = readFile(name);
        EXPECT_LE(text.size(), static_cast<size_t>(maxBytes)) << name;
        EXPECT_GT(text.size(), static_cast<size_t>(maxBytes) / 2) << name;
        const std::vector<int> part = sequencesIn(text);
        all.insert(all.end(), part.begin(), part.end());
    }
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all.back(), 39);
    for (size_t i = 1; i < all.size(); ++i)
        EXPECT_EQ(all[i], all[i - 1] + 1);

    // Opening again appends and counts what is there; an entry longer than
    // the limit goes whole into a file of its own.
    const size_t before = readFile(path).size();
    Reference<io::RotatingFileWriter> again(new io::RotatingFileWriter(String(path.c_str()), maxBytes, 2));
    EXPECT_EQ(again->getSize(), static_cast<int64_t>(before));
    const String big(u'\u00e9', 150); // 300 bytes of UTF-8
    again->write(big);
    again->flush();
    EXPECT_EQ(again->getSize(), 300);
    EXPECT_EQ(readFile(path).size(), 300u);
    EXPECT_EQ(readFile(path + ".1").size(), before);
    again->write(String(u"\U0001F600")); // four bytes, past the limit: a new file
    again->close();
    EXPECT_EQ(readFile(path), "\xF0\x9F\x98\x80");
    EXPECT_THROW(again->write(String(u"x")), io::IoException);
}

TEST(RotatingFileWriterTest, FailedRenameOrOpenThrowsAndLosesNothingWritten)
{
    logtest::TempDirectory dir;
    const std::string path = dir.file("app.log");
    EXPECT_THROW(io::RotatingFileWriter(String(path.c_str()), 0, 1), ResultException);
    EXPECT_THROW(io::RotatingFileWriter(String(path.c_str()), 10, -1), ResultException);
    EXPECT_THROW(io::RotatingFileWriter(String((dir.file("none") + "/app.log").c_str()), 10, 1), io::IoException);

    Reference<io::RotatingFileWriter> file(new io::RotatingFileWriter(String(path.c_str()), 10, 1));
    file->write(String(u"first....\n"));
    file->flush();
    // A non-empty directory where the backup must go makes the rename fail.
    ASSERT_EQ(mkdir((path + ".1").c_str(), 0700), 0);
    ASSERT_EQ(mkdir((path + ".1/keep").c_str(), 0700), 0);
    const std::string renameFailure = qvtest::messageOf<io::IoException>([&] { file->write(String(u"second...\n")); });
    EXPECT_EQ(renameFailure.rfind("cannot rename file: " + path + ": ", 0), 0u) << renameFailure;
    EXPECT_EQ(readFile(path), "first....\n");
    std::system(("rm -rf '" + path + ".1'").c_str());
    file->write(String(u"third....\n"));
    file->flush();
    EXPECT_EQ(readFile(path + ".1"), "first....\n");
    EXPECT_EQ(readFile(path), "third....\n");

    if (QVFaultInjectionAvailable()) {
        QVFaultArm("QVFileOpen", 1, static_cast<Result>(0x80070005));
        EXPECT_THROW(file->write(String(u"fourth...\n")), io::IoException);
        QVFaultDisarmAll();
        file->write(String(u"fifth....\n"));
        file->flush();
        EXPECT_EQ(readFile(path + ".1"), "third....\n");
        EXPECT_EQ(readFile(path), "fifth....\n");
    }
}

// A log file on a full file system: the writer's failure comes out of
// process() as the IoException of the file stream. A 16 KiB tmpfs when the
// test may mount one, /dev/full otherwise.
TEST(LogWriterTest, FullDiskSurfacesFromProcess)
{
    logtest::TempDirectory dir;
    const bool mounted = mount("tmpfs", dir.path().c_str(), "tmpfs", 0, "size=16k") == 0;
    const std::string path = mounted ? dir.file("app.log") : "/dev/full";
    std::printf("full disk through %s\n", mounted ? "a 16 KiB tmpfs" : "/dev/full (mount refused)");
    {
        Reference<io::FileWriter> file(new io::FileWriter(String(path.c_str()), false, u"UTF-8"));
        Reference<Logger> logger = loggerTo(file.get());
        std::string message;
        int logged = 0;
        try {
            for (; logged < 10000; ++logged)
                logger->log(3, String(u"entry number ").append(String::valueOf(logged)));
        } catch (const io::IoException& e) {
            message = e.getDescription().toUtf8();
        }
        EXPECT_LT(logged, 10000);
        EXPECT_NE(message.find("No space left on device"), std::string::npos) << message;
        if (mounted) {
            // Every entry process() accepted is in the file, whole.
            const std::string text = readFile(path);
            const std::vector<int> sequences =
                sequencesIn(text.substr(0, text.rfind(logtest::kRule) + logtest::kRule.size()));
            ASSERT_EQ(sequences.size(), static_cast<size_t>(logged));
        }
    }
    if (mounted) {
        EXPECT_EQ(umount(dir.path().c_str()), 0);
    }
}

TEST(RotatingFileWriterTest, AllocationSweepOnARollover)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    logtest::TempDirectory dir;
    const std::string path = dir.file("app.log");
    Reference<io::RotatingFileWriter> file(new io::RotatingFileWriter(String(path.c_str()), 16, 2));
    file->write(String(u"0123456789\n"));
    file->flush();
    // Each failed attempt may stop anywhere in the rollover; the next one
    // takes up from there, and no text already written is lost.
    EXPECT_GT(qvtest::sweepAllocations([&] {
                  file->write(String(u"abcdefghij\n"));
                  file->flush();
              }),
              0);
    EXPECT_EQ(readFile(path), "abcdefghij\n");
    EXPECT_EQ(readFile(path + ".1") + readFile(path + ".2"), "0123456789\n");
}
