#include "AllocationSweep.h"
#include "ExecTestSupport.h"

#include <qv/exec/Process.h>
#include <qv/exec/Runnable.h>
#include <qv/exec/Thread.h>
#include <qv/io/IoException.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using exectest::childProgram;
using exectest::code;
using exectest::countOpenDescriptors;
using exectest::Thrown;
using exectest::thrownBy;
using exectest::utf16;
using qv::Reference;
using qv::exec::Process;

std::unique_ptr<Process> startChild(const std::string& arguments, unsigned flags = 0,
                                    const char16_t* const* environment = nullptr, const char16_t* directory = nullptr)
{
    return std::make_unique<Process>(childProgram().c_str(), utf16(arguments).c_str(), directory, environment, flags);
}

std::string readAll(qv::io::InputStream* stream)
{
    std::string text;
    char buffer[4096];
    int32_t n = 0;
    while ((n = stream->read(buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<size_t>(n));
    EXPECT_EQ(n, -1);
    return text;
}

void writeAll(qv::io::OutputStream* stream, const std::string& text)
{
    stream->write(text.data(), static_cast<int32_t>(text.size()));
}

// Drains a stream on a thread of its own.
class Drain {
public:
    explicit Drain(Reference<qv::io::InputStream> stream)
        : m_task(qv::makeReference<qv::exec::Runnable>([this, stream] { m_text = readAll(stream.get()); })),
          m_thread(m_task.get())
    {
        m_thread.start();
    }
    std::string join()
    {
        m_thread.join();
        return m_text;
    }

private:
    std::string m_text;
    Reference<qv::exec::Runnable> m_task;
    qv::exec::Thread m_thread;
};

TEST(ProcessStreams, OutputAndErrorArriveOnTheirOwnStreams)
{
    // No flags: all three streams are piped to this process.
    auto child = startChild("exit 7", 0u);
    EXPECT_EQ(readAll(child->getInputStream().get()), "out\n");
    EXPECT_EQ(readAll(child->getErrorStream().get()), "err\n");
    EXPECT_EQ(child->join(), 7);
    // The same stream each time, at its end now.
    EXPECT_EQ(child->getInputStream().get(), child->getInputStream().get());
    EXPECT_EQ(child->getInputStream()->read(), -1);
}

TEST(ProcessStreams, ArgumentsEnvironmentAndDirectoryReachTheChild)
{
    auto args = startChild(R"(args one "two words" three\"quoted "" last)");
    EXPECT_EQ(readAll(args->getInputStream().get()), "[one]\n[two words]\n[three\"quoted]\n[]\n[last]\n");
    EXPECT_EQ(args->join(), 0);

    const char16_t* environment[] = {u"QV_CHILD_VALUE=forty two", u"OTHER=1", nullptr};
    auto env = startChild("env QV_CHILD_VALUE", 0, environment);
    EXPECT_EQ(readAll(env->getInputStream().get()), "forty two\n");
    env->join();
    auto inherited = startChild("env QV_CHILD_VALUE");
    EXPECT_EQ(readAll(inherited->getInputStream().get()), "<unset>\n");
    inherited->join();

    auto cwd = startChild("cwd", 0, nullptr, u"/tmp");
    EXPECT_EQ(readAll(cwd->getInputStream().get()), "/tmp\n");
    cwd->join();
}

TEST(ProcessStreams, ThreadWritesTheInputWhileTheOutputIsRead)
{
    auto child = startChild("echo-upper");
    const std::string text(1 << 20, 'q'); // far more than a pipe holds
    Reference<qv::io::OutputStream> input = child->getOutputStream();
    Reference<qv::exec::Runnable> writer = qv::makeReference<qv::exec::Runnable>([&] {
        writeAll(input.get(), text);
        input->close(); // the child sees the end of its input
    });
    qv::exec::Thread thread(writer.get());
    thread.start();
    const std::string echoed = readAll(child->getInputStream().get());
    EXPECT_EQ(thread.join(), nullptr);
    EXPECT_EQ(echoed, std::string(1 << 20, 'Q'));
    EXPECT_EQ(child->join(), 0);
}

TEST(ProcessStreams, ConcurrentReadsOfOutputAndErrorNeverDeadlock)
{
    auto child = startChild("flood 1000000");
    Drain error(child->getErrorStream());
    const std::string output = readAll(child->getInputStream().get());
    EXPECT_EQ(output.size(), 1000000u);
    EXPECT_EQ(error.join().size(), 1000000u);
    EXPECT_EQ(child->join(), 0);
}

TEST(ProcessStreams, MergedErrorComesInOrderOnTheOutput)
{
    auto child = startChild("exit 4", Process::MERGE_STDERR);
    EXPECT_EQ(readAll(child->getInputStream().get()), "out\nerr\n");
    // Not piped: an empty stream.
    EXPECT_EQ(child->getErrorStream()->read(), -1);
    EXPECT_EQ(child->getErrorStream()->available(), 0);
    EXPECT_EQ(child->join(), 4);

    auto flood = startChild("flood 300000", Process::INHERIT_STDIN | Process::MERGE_STDERR);
    EXPECT_EQ(readAll(flood->getInputStream().get()).size(), 600000u);
    EXPECT_EQ(flood->join(), 0);
    EXPECT_EQ(thrownBy([&] { writeAll(flood->getOutputStream().get(), "x"); }).what(), "IoException: stream closed");
}

TEST(ProcessStreams, ReadArgumentsAvailableAndClose)
{
    auto child = startChild("exit 0");
    EXPECT_EQ(child->join(), 0); // 8 bytes wait in the pipes
    Reference<qv::io::InputStream> output = child->getInputStream();
    EXPECT_EQ(output->available(), 4);
    EXPECT_EQ(output->read(static_cast<char*>(nullptr), 0), 0);
    EXPECT_EQ(thrownBy([&] { output->read(static_cast<char*>(nullptr), 4); }).code, code(0x80070057));
    EXPECT_EQ(output->read(), 'o');
    EXPECT_EQ(output->skip(2), 2);
    EXPECT_EQ(output->available(), 1);
    output->close();
    output->close(); // twice is harmless
    EXPECT_EQ(thrownBy([&] { output->read(); }).message, "stream closed");
    EXPECT_EQ(thrownBy([&] { output->available(); }).message, "stream closed");
    EXPECT_EQ(readAll(child->getErrorStream().get()), "err\n");
}

TEST(ProcessStreams, WritingToAChildThatEndedThrowsWriteError)
{
    auto child = startChild("code 0");
    EXPECT_EQ(child->join(), 0);
    EXPECT_EQ(thrownBy([&] { writeAll(child->getOutputStream().get(), std::string(100, 'x')); }).what(),
              "IoException: stream write error");
    child->getOutputStream()->close();
    EXPECT_EQ(thrownBy([&] { child->getOutputStream()->write(static_cast<signed char>(1)); }).message, "stream closed");
    EXPECT_EQ(thrownBy([&] { child->getOutputStream()->write("x", -1); }).code, code(0x80070057));
    child->getOutputStream()->write("", 0); // nothing to write: no error, even closed
}

TEST(ProcessStreams, StreamsCloseWithTheProcessAndNoDescriptorIsLeft)
{
    const int descriptors = countOpenDescriptors();
    Reference<qv::io::InputStream> kept;
    {
        auto child = startChild("exit 0");
        kept = child->getInputStream();
        child->join();
        EXPECT_EQ(countOpenDescriptors(), descriptors + 3);
    }
    EXPECT_EQ(countOpenDescriptors(), descriptors);
    EXPECT_EQ(thrownBy([&] { kept->read(); }).message, "stream closed");
    kept = nullptr;
    // Never joined: detached, its streams closed all the same.
    startChild("sleep 50");
    EXPECT_EQ(countOpenDescriptors(), descriptors);
}

TEST(ProcessStreams, ChildrenInheritNoPipeOfOtherChildren)
{
    auto baseline = startChild("descriptors");
    const std::string before = readAll(baseline->getInputStream().get());
    baseline->join();
    auto holder = startChild("sleep 100");
    auto other = startChild("sleep 100");
    auto probe = startChild("descriptors");
    EXPECT_EQ(readAll(probe->getInputStream().get()), before);
    probe->join();
    holder->join();
    other->join();
}

TEST(ProcessStreams, TalkingToAChildSurvivesEveryAllocationFailure)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const int descriptors = countOpenDescriptors();
    std::string echoed;
    const int failures = qvtest::sweepAllocations(
        [&] {
            Process child(childProgram().c_str(), u"echo-upper");
            writeAll(child.getOutputStream().get(), "abc");
            child.getOutputStream()->close();
            echoed = readAll(child.getInputStream().get());
            child.join();
        },
        [&] { EXPECT_EQ(countOpenDescriptors(), descriptors); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(echoed, "ABC");
}

} // namespace
