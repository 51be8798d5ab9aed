#include <qv/core/Exception.h>
#include <qv/io/BufferedReader.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/Channels.h>
#include <qv/io/FileChannel.h>
#include <qv/io/InputStreamReader.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStreamWriter.h>
#include <qv/util/BasicBuffer.h>
#include <qvcore3/qvcore3.h>

#include "AllocationSweep.h"
#include "ChildProcess.h"
#include "QvTextPrinting.h"
#include "TextIoSupport.h"

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace qv;
using namespace qv::io;
using qv::util::ROByteBuffer;
using qv::util::RWByteBuffer;

namespace {

const Result kNotOpen = static_cast<Result>(0x80004007);

using TempDirectory = qvtest::TempDir;

using qvtest::readFile;

Reference<ROByteBuffer> bytesOf(const std::string& text)
{
    static std::vector<std::string> keep;
    keep.push_back(text);
    return makeReference<ROByteBuffer>(reinterpret_cast<const signed char*>(keep.back().data()),
                                       static_cast<int32_t>(keep.back().size()));
}

std::string textOf(const RWByteBuffer& buffer)
{
    return std::string(buffer.getData(), buffer.getData() + buffer.getLength());
}

String pathOf(const std::string& path)
{
    return String(path.c_str(), -1, u"UTF-8");
}

} // namespace

TEST(FileChannelTest, ReadsAndWritesSequentiallyAndAtPositions)
{
    TempDirectory dir;
    std::string path = dir.file("data.bin");
    auto channel = FileChannel::open(pathOf(path), FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE);
    EXPECT_TRUE(channel->isOpen());
    EXPECT_EQ(0, channel->size());
    EXPECT_EQ(5, channel->write(bytesOf("hello").get()));
    EXPECT_EQ(6, channel->write(bytesOf(" world").get()));
    EXPECT_EQ(11, channel->position());
    EXPECT_EQ(5, channel->write(bytesOf("WORLD").get(), 6));
    EXPECT_EQ(11, channel->position()) << "a positioned write leaves the position alone";
    EXPECT_EQ("hello WORLD", readFile(path));

    auto buffer = makeReference<RWByteBuffer>();
    channel->position(0);
    EXPECT_EQ(4, channel->read(buffer.get(), 4));
    EXPECT_EQ(3, channel->read(buffer.get(), 3));
    EXPECT_EQ("hello W", textOf(*buffer)) << "reads append to the buffer";
    EXPECT_EQ(0, channel->read(buffer.get(), 0));
    EXPECT_EQ(4, channel->read(buffer.get(), 100));
    EXPECT_EQ(-1, channel->read(buffer.get(), 100));
    EXPECT_EQ(-1, channel->read(buffer.get(), 10, 11));
    EXPECT_EQ(-1, channel->read(buffer.get(), 10, 1000));
    buffer->releaseWriteLock(0);
    EXPECT_EQ(3, channel->read(buffer.get(), 3, 2));
    EXPECT_EQ("llo", textOf(*buffer));

    // Beyond the end: the gap fills with zeros.
    EXPECT_EQ(1, channel->write(bytesOf("!").get(), 14));
    EXPECT_EQ(15, channel->size());
    EXPECT_EQ(std::string("hello WORLD\0\0\0!", 15), readFile(path));

    channel->truncate(20);
    EXPECT_EQ(15, channel->size()) << "truncate never extends";
    channel->position(14);
    channel->truncate(5);
    EXPECT_EQ(5, channel->size());
    EXPECT_EQ(5, channel->position());
    channel->force(false);
    channel->force(true);
    EXPECT_EQ(pathOf(path), channel->getPath());
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { channel->position(-1); }));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { channel->read(nullptr, 1); }));
}

TEST(FileChannelTest, OpenModesAndTheirFailures)
{
    TempDirectory dir;
    std::string path = dir.file("modes.txt");
    std::string message = qvtest::ioFailure([&] { FileChannel::open(pathOf(path), FileChannel::READ); });
    EXPECT_EQ("cannot open file: " + path + ": No such file or directory", message);
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { FileChannel::open(pathOf(path), FileChannel::CREATE); }));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { FileChannel::open(pathOf(path), 0x100 | 1); }));

    auto writer = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::CREATE | FileChannel::EXCLUSIVE);
    writer->write(bytesOf("abc").get());
    EXPECT_EQ("cannot open file: " + path + ": File exists", qvtest::ioFailure([&] {
                  FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::CREATE | FileChannel::EXCLUSIVE);
              }));
    auto buffer = makeReference<RWByteBuffer>();
    EXPECT_EQ(kNotOpen, qvtest::resultOf([&] { writer->read(buffer.get(), 1); }));

    auto appender = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::APPEND);
    writer->write(bytesOf("XY").get(), 0);
    appender->write(bytesOf("def").get());
    EXPECT_EQ(6, appender->position());
    EXPECT_EQ("XYcdef", readFile(path));

    auto reader = FileChannel::open(pathOf(path), FileChannel::READ);
    EXPECT_EQ(kNotOpen, qvtest::resultOf([&] { reader->write(bytesOf("no").get()); }));
    EXPECT_EQ(kNotOpen, qvtest::resultOf([&] { reader->truncate(0); }));

    auto truncating = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::TRUNCATE);
    EXPECT_EQ(0, truncating->size());
}

TEST(FileChannelTest, EveryOperationOfAClosedChannelIsRefused)
{
    TempDirectory dir;
    auto channel =
        FileChannel::open(pathOf(dir.file("closed")), FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE);
    auto lock = channel->lock();
    EXPECT_TRUE(lock->isValid());
    channel->close();
    channel->close();
    EXPECT_FALSE(channel->isOpen());
    EXPECT_FALSE(lock->isValid()) << "closing the channel gives its locks up";
    lock->release();
    auto buffer = makeReference<RWByteBuffer>();
    int index = 0;
    for (const auto& operation : std::initializer_list<std::function<void()>>{
             [&] { channel->read(buffer.get(), 1); }, [&] { channel->read(buffer.get(), 1, 0); },
             [&] { channel->write(buffer.get()); }, [&] { channel->write(buffer.get(), 0); },
             [&] { channel->position(); }, [&] { channel->position(1); }, [&] { channel->size(); },
             [&] { channel->truncate(0); }, [&] { channel->force(true); }, [&] { channel->lock(); },
             [&] { channel->tryLock(); }}) {
        EXPECT_EQ("channel not open", qvtest::messageOf<ResultException>(operation, kNotOpen)) << "operation " << index;
        ++index;
    }
}

TEST(FileChannelTest, ChannelsAnswerForBothInterfaces)
{
    TempDirectory dir;
    auto channel =
        FileChannel::open(pathOf(dir.file("if")), FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE);
    Reference<WritableChannel> out = channel;
    out->write(bytesOf("xyz").get());
    Reference<ReadableChannel> in = channel.query<ReadableChannel>();
    ASSERT_TRUE(in);
    auto buffer = makeReference<RWByteBuffer>();
    EXPECT_EQ(-1, in->read(buffer.get(), 8)) << "the shared position is at the end";
    channel->position(0);
    EXPECT_EQ(3, in->read(buffer.get(), 8));
    EXPECT_TRUE(channel.query<WritableChannel>().get() == out.get());
    in->close();
    EXPECT_FALSE(out->isOpen());
}

TEST(FileChannelTest, LocksExcludeOtherChannelsByRangeAndKind)
{
    TempDirectory dir;
    std::string path = dir.file("locked");
    auto first = FileChannel::open(pathOf(path), FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE);
    auto second = FileChannel::open(pathOf(path), FileChannel::READ | FileChannel::WRITE);

    auto whole = first->lock();
    EXPECT_EQ(0, whole->position());
    EXPECT_EQ(0, whole->size());
    EXPECT_FALSE(whole->isShared());
    EXPECT_FALSE(second->tryLock()) << "one process, two channels: still excluded";
    EXPECT_FALSE(second->tryLock(1000000, 10)) << "the whole file covers every position";
    whole->release();
    whole->release();
    EXPECT_FALSE(whole->isValid());

    auto low = first->tryLock(0, 100);
    ASSERT_TRUE(low);
    auto high = second->tryLock(100, 100);
    ASSERT_TRUE(high) << "ranges side by side do not conflict";
    EXPECT_FALSE(second->tryLock(50, 10));
    low = nullptr;
    EXPECT_TRUE(second->tryLock(50, 10)) << "a lock whose last reference went is released";

    auto readerA = first->tryLock(500, 10, true);
    auto readerB = second->tryLock(500, 10, true);
    ASSERT_TRUE(readerA && readerB) << "shared locks coexist";
    EXPECT_TRUE(readerB->isShared());
    EXPECT_FALSE(second->tryLock(505, 1, false));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { first->tryLock(-1, 10); }));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([&] { first->tryLock(0, -10); }));
}

TEST(FileChannelTest, PlatformFailuresNameTheOperationAndTheFile)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    TempDirectory dir;
    std::string path = dir.file("full");
    auto channel = FileChannel::open(pathOf(path), FileChannel::READ | FileChannel::WRITE | FileChannel::CREATE);
    QVFaultArm("QVFileWriteAt", 1, static_cast<QVRESULT>(0x8007001C));
    EXPECT_EQ("cannot write file: " + path + ": No space left on device",
              qvtest::ioFailure([&] { channel->write(bytesOf("lost").get()); }));
    EXPECT_EQ(0, channel->position()) << "a failed write does not move the position";
    QVFaultArm("QVFileSync", 1, static_cast<QVRESULT>(0x80070005));
    EXPECT_EQ(0u, qvtest::ioFailure([&] { channel->force(true); }).find("cannot sync file: " + path + ": "));
    QVFaultArm("QVFileLock", 1, static_cast<QVRESULT>(0x80070005));
    EXPECT_EQ(0u, qvtest::ioFailure([&] { channel->lock(); }).find("cannot lock file: " + path + ": "));
    EXPECT_TRUE(channel->tryLock()) << "the failed lock left nothing behind";
    QVFaultDisarmAll();
}

TEST(FileChannelTest, OpeningAndLockingSurviveEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    TempDirectory dir;
    std::string path = dir.file("sweep");
    uint32_t handlesBefore = QVHandleCountOpen();
    int failures = qvtest::sweepAllocations([&] {
        auto channel = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::CREATE);
        auto lock = channel->lock(0, 10);
        channel->write(bytesOf("x").get());
    });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(handlesBefore, QVHandleCountOpen());
    auto other = FileChannel::open(pathOf(path), FileChannel::WRITE);
    EXPECT_TRUE(other->tryLock()) << "no lock outlived a failed attempt";
}

namespace {

// Appends 200 records to path under the channel's lock, each in three
// writes: without the lock another process's record could land between them.
void appendRecords(const char* path, const char* tag)
{
    auto channel = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::APPEND);
    for (int i = 0; i < 200; ++i) {
        auto lock = channel->lock();
        channel->write(bytesOf(std::string("<") + tag + ":" + std::to_string(i)).get());
        usleep(50);
        channel->write(bytesOf(std::string(100, tag[0])).get());
        channel->write(bytesOf(">\n").get());
        lock->release();
    }
}

} // namespace

// The child process of the test below.
TEST(FileChannelChild, AppendRecordsUnderLock)
{
    const char* path = std::getenv("QVTEST_CHANNEL_FILE");
    if (!path)
        GTEST_SKIP() << "only run as the child of TwoProcessesAppendingUnderALockNeverInterleave";
    appendRecords(path, "child");
}

TEST(FileChannelTest, TwoProcessesAppendingUnderALockNeverInterleave)
{
    TempDirectory dir;
    std::string path = dir.file("records");
    FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::CREATE);

    // The child inherits the variable that names the file.
    setenv("QVTEST_CHANNEL_FILE", path.c_str(), 1);
    QVHANDLE child = QV_INVALID_HANDLE;
    const QVRESULT created = QVProcessCreate(
        u"/proc/self/exe", u"--gtest_filter=FileChannelChild.AppendRecordsUnderLock", nullptr, nullptr,
        QV_PROCESS_INHERIT_STDIN | QV_PROCESS_INHERIT_STDOUT | QV_PROCESS_INHERIT_STDERR, nullptr, &child);
    unsetenv("QVTEST_CHANNEL_FILE");
    ASSERT_EQ(0, created);
    appendRecords(path.c_str(), "parent");
    int32_t exitCode = -1;
    ASSERT_EQ(0, QVProcessJoin(child, &exitCode));
    EXPECT_EQ(0, exitCode);

    std::istringstream records(readFile(path));
    std::string record;
    int parents = 0, children = 0;
    while (std::getline(records, record)) {
        char tag = record.size() > 1 ? record[1] : '?';
        std::string tail = std::string(100, tag) + ">";
        ASSERT_EQ('<', record[0]) << record;
        ASSERT_TRUE(record.size() > tail.size() && record.compare(record.size() - tail.size(), tail.size(), tail) == 0)
            << "interleaved record: " << record;
        (tag == 'p' ? parents : children)++;
    }
    EXPECT_EQ(200, parents);
    EXPECT_EQ(200, children);
}

TEST(ChannelAdapterTest, StreamsOverAFileChannelCarryTextBothWays)
{
    TempDirectory dir;
    std::string path = dir.file("adapted.txt");
    auto channel = FileChannel::open(pathOf(path), FileChannel::WRITE | FileChannel::CREATE);
    auto out = Channels::newOutputStream(channel.get());
    auto writer = makeReference<OutputStreamWriter>(out.get(), u"UTF-16LE");
    std::u16string text;
    for (int i = 0; i < 3000; ++i)
        text += u"line \u00e9 " + qvtest::u16(String::valueOf(i)) + u"\n";
    writer->write(text.data(), static_cast<int32_t>(text.size()));
    writer->close();
    EXPECT_FALSE(channel->isOpen()) << "closing the stream closes the channel";
    EXPECT_EQ(text.size() * 2, readFile(path).size());

    auto in = Channels::newInputStream(FileChannel::open(pathOf(path), FileChannel::READ).get());
    auto reader = makeReference<BufferedReader>(makeReference<InputStreamReader>(in.get(), u"UTF-16LE").get());
    String line;
    int lines = 0;
    while (reader->readLine(line))
        ASSERT_EQ(u"line \u00e9 " + qvtest::u16(String::valueOf(lines++)), qvtest::u16(line));
    EXPECT_EQ(3000, lines);
    reader->close();
    EXPECT_EQ("stream closed", qvtest::ioFailure([&] { in->read(); }));
}

TEST(ChannelAdapterTest, ChannelsOverStreams)
{
    const char data[] = "channel bytes";
    auto source = makeReference<ByteArrayInputStream>(data, 13);
    auto readable = Channels::newChannel(source.get());
    auto buffer = makeReference<RWByteBuffer>();
    EXPECT_EQ(0, readable->read(buffer.get(), 0));
    EXPECT_EQ(7, readable->read(buffer.get(), 7));
    EXPECT_EQ(6, readable->read(buffer.get(), 100));
    EXPECT_EQ(-1, readable->read(buffer.get(), 100));
    EXPECT_EQ("channel bytes", textOf(*buffer));

    auto sink = makeReference<ByteArrayOutputStream>();
    auto writable = Channels::newChannel(sink.get());
    EXPECT_EQ(13, writable->write(buffer.get()));
    EXPECT_EQ("channel bytes", std::string(sink->getData(), sink->getData() + sink->size()));

    readable->close();
    writable->close();
    EXPECT_FALSE(readable->isOpen());
    EXPECT_EQ(kNotOpen, qvtest::resultOf([&] { readable->read(buffer.get(), 1); }));
    EXPECT_EQ(kNotOpen, qvtest::resultOf([&] { writable->write(buffer.get()); }));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([] { Channels::newChannel(static_cast<InputStream*>(nullptr)); }));
    EXPECT_EQ(results::INVALIDARG, qvtest::resultOf([] { Channels::newInputStream(nullptr); }));
}
