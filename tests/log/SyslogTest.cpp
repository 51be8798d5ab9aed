#include "AllocationSweep.h"
#include "LogTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

using namespace qv;
using namespace qv::log;
using logtest::readFile;

namespace {

std::string findRsyslogd()
{
    for (const char* path : {"/usr/sbin/rsyslogd", "/sbin/rsyslogd", "/usr/local/sbin/rsyslogd"})
        if (access(path, X_OK) == 0)
            return path;
    return "";
}

// A port the system has just handed out for type, free again now.
uint16_t freePort(int type)
{
    const int fd = socket(AF_INET, type, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    close(fd);
    return ntohs(address.sin_port);
}

// An rsyslogd of this test's own: UDP and TCP inputs on loopback ports, a
// unix socket input in a temporary directory, every message written to one
// file as "facility severity app-name structured-data message".
class Rsyslog {
public:
    explicit Rsyslog(const std::string& program) : m_program(program)
    {
        m_udpPort = freePort(SOCK_DGRAM);
        m_tcpPort = freePort(SOCK_STREAM);
        std::FILE* conf = std::fopen(m_dir.file("rsyslog.conf").c_str(), "w");
        std::fprintf(conf,
                     "global(workDirectory=\"%s\" maxMessageSize=\"64k\")\n"
                     "module(load=\"imuxsock\" SysSock.Use=\"off\")\n"
                     "module(load=\"imudp\")\n"
                     "module(load=\"imtcp\")\n"
                     "input(type=\"imuxsock\" Socket=\"%s\" UseSpecialParser=\"off\" ParseHostname=\"on\""
                     " RateLimit.Interval=\"0\")\n"
                     "input(type=\"imudp\" address=\"127.0.0.1\" port=\"%u\")\n"
                     "input(type=\"imtcp\" address=\"127.0.0.1\" port=\"%u\")\n"
                     "template(name=\"fields\" type=\"string\" string=\"%%syslogfacility%% %%syslogseverity%% "
                     "%%app-name%% %%structured-data%% %%msg%%\\n\")\n"
                     "*.* action(type=\"omfile\" file=\"%s\" template=\"fields\")\n",
                     m_dir.path().c_str(), socketPath().c_str(), m_udpPort, m_tcpPort, output().c_str());
        std::fclose(conf);
    }
    ~Rsyslog() { stop(); }

    std::string socketPath() const { return m_dir.file("log.sock"); }
    std::string output() const { return m_dir.file("out.log"); }
    uint16_t udpPort() const { return m_udpPort; }
    uint16_t tcpPort() const { return m_tcpPort; }

    // Starts rsyslogd and waits until the TCP input accepts and the unix
    // socket is there.
    bool start()
    {
        unlink(socketPath().c_str());
        const std::string conf = m_dir.file("rsyslog.conf"), pid = m_dir.file("rsyslogd.pid"),
                          errors = m_dir.file("rsyslogd.err");
        m_pid = fork();
        if (m_pid == 0) {
            std::freopen(errors.c_str(), "a", stderr);
            std::freopen(errors.c_str(), "a", stdout);
            execl(m_program.c_str(), m_program.c_str(), "-n", "-f", conf.c_str(), "-i", pid.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        return logtest::waitFor(
            [&] {
                struct stat status;
                return accepts() && stat(socketPath().c_str(), &status) == 0;
            },
            20);
    }
    void stop()
    {
        if (m_pid <= 0)
            return;
        kill(m_pid, SIGTERM);
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
    }
    std::string errors() const { return readFile(m_dir.file("rsyslogd.err")); }

    // The output lines holding marker, waiting up to 20 s for count of them.
    std::vector<std::string> linesWith(const std::string& marker, size_t count) const
    {
        std::vector<std::string> lines;
        logtest::waitFor(
            [&] {
                lines.clear();
                const std::string text = readFile(output());
                for (size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
                    if (text.substr(at, end - at).find(marker) != std::string::npos)
                        lines.push_back(text.substr(at, end - at));
                return lines.size() >= count;
            },
            20);
        return lines;
    }

private:
    bool accepts() const
    {
        const int fd = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(m_tcpPort);
        const bool ok = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        close(fd);
        return ok;
    }

    std::string m_program;
    logtest::TempDirectory m_dir;
    uint16_t m_udpPort = 0, m_tcpPort = 0;
    pid_t m_pid = -1;
};

const char* const kNote = "a \"q\" \\ b ] c";
const char* const kEscapedNote = "note=\"a \\\"q\\\" \\\\ b \\] c\"";

// An entry with a level, a sequence number, a value needing escapes, a name
// that is no valid parameter name, and a non-ASCII text.
Reference<LogEntry> entryNumber(const std::string& tag, int number, int level)
{
    Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"level", Reference<Integer32>(new Integer32(level)).get());
    entry->setField(u"sequence", Reference<Integer32>(new Integer32(number)).get());
    entry->setField(u"note", Reference<String>(new String(kNote, -1, u"UTF-8")).get());
    entry->setField(u"odd name=x", Reference<String>(new String(u"v")).get());
    const std::string text = tag + " message " + std::to_string(number) +
                             " gr\xC3\xBC\xC3\x9F"
                             "e";
    entry->setField(u"text", Reference<String>(new String(text.c_str(), -1, u"UTF-8")).get());
    return entry;
}

// Every line of tag's messages numbered first..last is there, with its
// fields intact; returns how many numbers came more than once.
int checkLines(const std::vector<std::string>& lines, const std::string& tag, int first, int last,
               const std::string& priority)
{
    std::map<int, int> seen;
    for (const std::string& line : lines) {
        const size_t at = line.find("sequence=\"");
        if (at == std::string::npos) {
            ADD_FAILURE() << line;
            continue;
        }
        const int number = std::stoi(line.substr(at + 10));
        ++seen[number];
        EXPECT_EQ(line.rfind(priority + " qvtest [fields@32473 ", 0), 0u) << line;
        EXPECT_NE(line.find(kEscapedNote), std::string::npos) << line;
        EXPECT_NE(line.find("odd_name_x=\"v\""), std::string::npos) << line;
        const std::string text = "] " + tag + " message " + std::to_string(number) +
                                 " gr\xC3\xBC\xC3\x9F"
                                 "e";
        EXPECT_EQ(line.substr(line.size() - text.size()), text) << line;
    }
    int repeated = 0;
    for (int n = first; n <= last; ++n) {
        EXPECT_GE(seen[n], 1) << tag << " message " << n << " missing";
        repeated += seen[n] > 1;
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(last - first + 1));
    return repeated;
}

class SyslogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const std::string program = findRsyslogd();
        if (program.empty())
            GTEST_SKIP() << "rsyslogd is not installed (Debian package rsyslog)";
        m_server.reset(new Rsyslog(program));
        ASSERT_TRUE(m_server->start()) << m_server->errors();
    }
    std::unique_ptr<Rsyslog> m_server;
};

} // namespace

TEST(SyslogFormatTest, MessageLayoutMappingAndBadSettings)
{
    Reference<SyslogLogProcessor> syslog = SyslogLogProcessor::createUdp(u"127.0.0.1", 9);
    syslog->setHostName(u"host one");
    syslog->setAppName(u"app");
    syslog->setProcId(u"42");
    Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"text", Reference<String>(new String(u"hello")).get());
    const std::string bare = syslog->format(entry.get());
    // "<13>1 2026-01-02T03:04:05.678Z host_one app 42 - - hello"
    ASSERT_EQ(bare.size(), std::string("<13>1 2026-01-02T03:04:05.678Z host_one app 42 - - hello").size()) << bare;
    EXPECT_EQ(bare.substr(0, 6), "<13>1 ");
    EXPECT_EQ(bare.substr(16, 1) + bare.substr(29, 2), "TZ ");
    EXPECT_EQ(bare.substr(31), "host_one app 42 - - hello");

    EXPECT_EQ(syslog->getPriority(-5), 15);
    EXPECT_EQ(syslog->getPriority(3), 12);
    EXPECT_EQ(syslog->getPriority(100), 8);
    syslog->clearLevelMapping();
    EXPECT_EQ(syslog->getPriority(3), 13);
    syslog->mapLevel(10, 16, 6);
    syslog->mapLevel(20, 16, 3);
    EXPECT_EQ(syslog->getPriority(0), 134);
    EXPECT_EQ(syslog->getPriority(25), 131);
    EXPECT_THROW(syslog->mapLevel(0, 24, 0), ResultException);
    EXPECT_THROW(syslog->mapLevel(0, 0, 8), ResultException);
    EXPECT_THROW(syslog->setStructuredDataId(u"no-at-sign"), ResultException);
    EXPECT_THROW(syslog->setStructuredDataId(u"a b@1"), ResultException);
    syslog->setStructuredDataId(u"x@1");
    entry->setField(u"n", Reference<String>(new String(u"]")).get());
    EXPECT_EQ(syslog->format(entry.get()).substr(31), "host_one app 42 - [x@1 n=\"\\]\"] hello");
    EXPECT_THROW(SyslogLogProcessor::createTcp(u"", 514), ResultException);

    // Nothing listens on the local socket: the failure comes out of process.
    Reference<SyslogLogProcessor> local = SyslogLogProcessor::createLocal(u"/nonexistent/log.sock");
    EXPECT_THROW(local->process(entry.get()), net::SocketException);
}

TEST_F(SyslogTest, LocalSocketAndUdpDeliverEveryMessageWithItsFields)
{
    const auto started = std::chrono::steady_clock::now();
    const int count = 200;
    Reference<SyslogLogProcessor> local = SyslogLogProcessor::createLocal(String(m_server->socketPath().c_str()));
    local->setAppName(u"qvtest");
    for (int i = 0; i < count; ++i)
        local->process(entryNumber("local", i, 4).get());
    EXPECT_EQ(checkLines(m_server->linesWith("local message", count), "local", 0, count - 1, "1 3"), 0);

    Reference<SyslogLogProcessor> udp = SyslogLogProcessor::createUdp(u"127.0.0.1", m_server->udpPort());
    udp->setAppName(u"qvtest");
    udp->mapLevel(4, 16, 2);
    // imudp may bind after imtcp listens: probe until a datagram arrives.
    int probes = 0;
    ASSERT_TRUE(logtest::waitFor(
        [&] {
            udp->process(entryNumber("probe", probes++, 0).get());
            return readFile(m_server->output()).find("probe message") != std::string::npos;
        },
        20));
    for (int i = 0; i < count; ++i)
        udp->process(entryNumber("udp", i, 4).get());
    EXPECT_EQ(checkLines(m_server->linesWith("udp message", count), "udp", 0, count - 1, "16 2"), 0);
    std::printf(
        "local socket and UDP: %d + %d messages sent, all received, %lld ms\n", count, count,
        static_cast<long long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started).count()));
}

TEST_F(SyslogTest, TcpSenderKeepsWhatWasNotSentAcrossAServerRestart)
{
    const auto started = std::chrono::steady_clock::now();
    const int batch = 500;
    Reference<SyslogLogProcessor> tcp = SyslogLogProcessor::createTcp(u"127.0.0.1", m_server->tcpPort());
    tcp->setAppName(u"qvtest");
    tcp->setReconnectInterval(20);
    for (int i = 0; i < batch; ++i)
        tcp->process(entryNumber("tcp", i, 4).get());
    EXPECT_TRUE(tcp->flush(10000));
    EXPECT_EQ(m_server->linesWith("tcp message", batch).size(), static_cast<size_t>(batch));

    // Down: the sender finds the connection closed, cannot connect again
    // and keeps the messages.
    m_server->stop();
    for (int i = batch; i < 2 * batch; ++i)
        tcp->process(entryNumber("tcp", i, 4).get());
    EXPECT_EQ(tcp->getPendingCount(), batch);
    EXPECT_FALSE(tcp->flush(50));

    ASSERT_TRUE(m_server->start()) << m_server->errors();
    for (int i = 2 * batch; i < 3 * batch; ++i)
        tcp->process(entryNumber("tcp", i, 4).get());
    EXPECT_TRUE(tcp->flush(10000));
    EXPECT_EQ(tcp->getPendingCount(), 0);
    EXPECT_EQ(tcp->getDroppedCount(), 0);
    const std::vector<std::string> lines = m_server->linesWith("tcp message", 3 * batch);
    const int repeated = checkLines(lines, "tcp", 0, 3 * batch - 1, "1 3");
    std::printf(
        "TCP with a restart: %d messages sent, %zu lines received (%d numbers twice), %lld ms\n", 3 * batch,
        lines.size(), repeated,
        static_cast<long long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started).count()));
}

// Formatting and queueing under allocation failures, against a port where
// nothing listens: each failed attempt leaves the queue as it was.
TEST(SyslogFormatTest, AllocationSweepOnQueueing)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "fault injection not built";
    Reference<SyslogLogProcessor> tcp = SyslogLogProcessor::createTcp(u"127.0.0.1", freePort(SOCK_STREAM));
    tcp->setReconnectInterval(3600000);
    tcp->process(entryNumber("sweep", 0, 4).get());
    ASSERT_EQ(tcp->getPendingCount(), 1);
    Reference<LogEntry> entry = entryNumber("sweep", 1, 4);
    EXPECT_GT(
        qvtest::sweepAllocations([&] { tcp->process(entry.get()); }, [&] { EXPECT_EQ(tcp->getPendingCount(), 1); }), 0);
    EXPECT_EQ(tcp->getPendingCount(), 2);
}
