#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServer.h>

#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

using namespace qv::net;
using nettest::loopback;

namespace {

// Echoes until the client closes; a time-out or reset ends the connection.
class EchoHandler : public ITcpConnectionHandler {
public:
    std::atomic<int> served{0};
    void handleConnection(TcpWorkerSocket& socket) override
    {
        char buffer[4096];
        for (;;) {
            int32_t n;
            try {
                n = socket.read(buffer, sizeof buffer);
            } catch (const qv::io::IoException&) {
                break;
            }
            if (n < 0)
                break;
            socket.write(buffer, n);
        }
        ++served;
    }
};

// Holds its connection until released (or its socket is shut down).
class GateHandler : public ITcpConnectionHandler {
public:
    std::atomic<bool> release{false};
    std::atomic<int> entered{0};
    bool ignoreShutdown = false;
    void handleConnection(TcpWorkerSocket& socket) override
    {
        ++entered;
        char byte;
        while (!release) {
            try {
                socket.setReadTimeout(20);
                if (socket.read(&byte, 1) < 0 && !ignoreShutdown)
                    return;
            } catch (const qv::io::TimeoutException&) {
            }
        }
    }
};

class ThrowingHandler : public ITcpConnectionHandler {
public:
    void handleConnection(TcpWorkerSocket&) override { throw SocketException(QV_E_SOCKET_EINVAL); }
};

std::string echo(uint16_t port, const std::string& message)
{
    TcpClientSocket client(loopback(port), 2000);
    client.setReadTimeout(5000);
    client.write(message.data(), static_cast<int32_t>(message.size()));
    std::string reply(message.size(), '\0');
    if (!client.readFully(&reply[0], static_cast<int32_t>(reply.size())))
        return "<short>";
    return reply;
}

template <class Predicate>
bool eventually(Predicate predicate, int milliseconds = 5000)
{
    for (int waited = 0; waited < milliseconds; waited += 5) {
        if (predicate())
            return true;
        QVThreadSleep(5);
    }
    return predicate();
}

} // namespace

TEST(TcpServer, ConcurrentClientsAreEchoedAndCounted)
{
    const int before = qvtest::countOpenDescriptors();
    {
        qv::Reference<EchoHandler> handler = qv::makeReference<EchoHandler>();
        TcpServerParams params;
        params.maxThreads = 4;
        params.readTimeout = 5000;
        TcpServer server(handler, loopback(), params);
        EXPECT_FALSE(server.isRunning());
        server.start();
        EXPECT_TRUE(server.isRunning());
        EXPECT_THROW(server.start(), qv::IllegalStateException);

        std::vector<std::thread> clients;
        std::atomic<int> good{0};
        for (int c = 0; c < 8; ++c) {
            clients.emplace_back([&, c] {
                for (int round = 0; round < 20; ++round) {
                    const std::string message = "client " + std::to_string(c) + " round " + std::to_string(round);
                    if (echo(server.getPort(), message) == message)
                        ++good;
                }
            });
        }
        for (std::thread& t : clients)
            t.join();
        EXPECT_EQ(good.load(), 160);
        EXPECT_TRUE(eventually([&] { return handler->served.load() == 160; }));
        EXPECT_EQ(server.getAcceptedCount(), 160u);
        EXPECT_EQ(server.getRefusedCount(), 0u);
        EXPECT_LE(server.getThreadCount(), 4);
        EXPECT_GE(server.getThreadCount(), 1);
        EXPECT_TRUE(server.stop(1000));
        EXPECT_FALSE(server.isRunning());
        EXPECT_THROW(TcpClientSocket(loopback(server.getPort()), 500), SocketException);
    }
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}

TEST(TcpServer, SilentClientDoesNotBlockOthersThread)
{
    qv::Reference<EchoHandler> handler = qv::makeReference<EchoHandler>();
    TcpServerParams params;
    params.maxThreads = 1; // one worker: the silent client holds it
    params.readTimeout = 200;
    TcpServer server(handler, loopback(), params);
    server.start();
    TcpClientSocket silent(loopback(server.getPort()));
    ASSERT_TRUE(eventually([&] { return server.getActiveCount() == 1; }));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(echo(server.getPort(), "after the silent one"), "after the silent one");
    EXPECT_LT(nettest::millisecondsSince(start), 3000);
    EXPECT_GE(nettest::millisecondsSince(start), 150);
    // The silent client's connection was ended by the server.
    char byte;
    silent.setReadTimeout(2000);
    EXPECT_EQ(silent.read(&byte, 1), -1);
    server.stop(1000);
}

TEST(TcpServer, FullQueueRefusesAndStopShutsHandlersDownThread)
{
    qv::Reference<GateHandler> handler = qv::makeReference<GateHandler>();
    TcpServerParams params;
    params.maxThreads = 2;
    params.maxQueued = 1;
    TcpServer server(handler, loopback(), params);
    server.start();
    std::vector<std::unique_ptr<TcpClientSocket>> clients;
    for (int i = 0; i < 5; ++i)
        clients.push_back(std::make_unique<TcpClientSocket>(loopback(server.getPort())));
    ASSERT_TRUE(eventually([&] { return server.getAcceptedCount() == 5; }));
    EXPECT_TRUE(eventually([&] { return server.getActiveCount() == 2; }));
    EXPECT_EQ(server.getQueuedCount(), 1);
    EXPECT_EQ(server.getRefusedCount(), 2u);
    // A refused client reads the end of the stream.
    int ended = 0;
    for (auto& client : clients) {
        char byte;
        client->setReadTimeout(100);
        try {
            if (client->read(&byte, 1) < 0)
                ++ended;
        } catch (const qv::io::IoException&) {
        }
    }
    EXPECT_EQ(ended, 2);

    // The handlers ignore the deadline; stop shuts their sockets down.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(server.stop(100));
    EXPECT_LT(nettest::millisecondsSince(start), 3000);
    EXPECT_EQ(server.getActiveCount(), 0);
    EXPECT_EQ(server.getRefusedCount(), 3u); // the queued one as well
}

TEST(TcpServer, GracefulStopWaitsForHandlersThread)
{
    qv::Reference<GateHandler> handler = qv::makeReference<GateHandler>();
    TcpServer server(handler, loopback());
    server.start();
    TcpClientSocket client(loopback(server.getPort()));
    ASSERT_TRUE(eventually([&] { return handler->entered.load() == 1; }));
    std::thread releaser([&] {
        QVThreadSleep(100);
        handler->release = true;
    });
    EXPECT_TRUE(server.stop(5000));
    releaser.join();
}

TEST(TcpServer, HandlerFailuresAreCountedThread)
{
    TcpServer server(qv::makeReference<ThrowingHandler>(), loopback());
    server.start();
    for (int i = 0; i < 3; ++i) {
        TcpClientSocket client(loopback(server.getPort()));
        char byte;
        client.setReadTimeout(2000);
        EXPECT_EQ(client.read(&byte, 1), -1);
    }
    EXPECT_TRUE(eventually([&] { return server.getFailedCount() == 3; }));
    server.stop(1000);
    EXPECT_THROW(TcpServer(qv::Reference<ITcpConnectionHandler>(), loopback()), SocketException);
}

namespace {

// Answers one HTTP request with a fixed page.
class HttpHandler : public ITcpConnectionHandler {
public:
    void handleConnection(TcpWorkerSocket& socket) override
    {
        std::string request;
        char buffer[1024];
        while (request.find("\r\n\r\n") == std::string::npos) {
            const int32_t n = socket.read(buffer, sizeof buffer);
            if (n < 0)
                return;
            request.append(buffer, static_cast<size_t>(n));
        }
        const std::string body = "hello from qvcl3\n";
        const std::string response =
            "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\nConnection: close\r\n\r\n" + body;
        socket.write(response.data(), static_cast<int32_t>(response.size()));
        socket.shutdownOutput();
    }
};

using qvtest::runCommand;

} // namespace

TEST(TcpServer, CurlFetchesFromTheServerThread)
{
    if (runCommand("command -v curl").empty())
        GTEST_SKIP() << "curl is not installed";
    TcpServer server(qv::makeReference<HttpHandler>(), loopback());
    server.start();
    const std::string url = "http://127.0.0.1:" + std::to_string(server.getPort()) + "/";
    EXPECT_EQ(runCommand("curl -s --max-time 10 --noproxy '*' " + url), "hello from qvcl3\n");
    EXPECT_EQ(runCommand("curl -s --max-time 10 --noproxy '*' -o /dev/null -w '%{http_code}' " + url), "200");
    server.stop(1000);
}

TEST(TcpClientSocket, TalksToAPythonEchoServerThread)
{
    if (runCommand("command -v python3").empty())
        GTEST_SKIP() << "python3 is not installed";
    // The server puts its port in a file, serves for at most 30 s, and stops
    // when its standard input closes.
    const qvtest::TempDir dir("qvcl3-echo");
    dir.write("server.py", "import os, socketserver, sys, threading\n"
                           "class H(socketserver.StreamRequestHandler):\n"
                           "    def handle(self):\n"
                           "        for line in self.rfile:\n"
                           "            self.wfile.write(line.upper())\n"
                           "s = socketserver.ThreadingTCPServer(('127.0.0.1', 0), H)\n"
                           "s.daemon_threads = True\n"
                           "with open(sys.argv[1] + '.new', 'w') as f:\n"
                           "    f.write(str(s.server_address[1]))\n"
                           "os.replace(sys.argv[1] + '.new', sys.argv[1])\n"
                           "threading.Thread(target=s.serve_forever, daemon=True).start()\n"
                           "t = threading.Timer(30, s.shutdown)\n"
                           "t.daemon = True\n"
                           "t.start()\n"
                           "sys.stdin.read()\n");
    FILE* server = popen(("exec python3 " + dir.file("server.py") + " " + dir.file("port")).c_str(), "w");
    ASSERT_NE(server, nullptr);
    int port = 0;
    for (int waited = 0; waited < 10000 && port == 0; waited += 10) {
        QVThreadSleep(10);
        port = std::atoi(qvtest::readFile(dir.file("port")).c_str());
    }
    if (port > 0) {
        TcpClientSocket client(qv::String(u"127.0.0.1"), static_cast<uint16_t>(port), 5000);
        client.setReadTimeout(5000);
        for (const std::string line : {"first line\n", "second\n"}) {
            client.write(line.data(), static_cast<int32_t>(line.size()));
            std::string reply(line.size(), '\0');
            ASSERT_TRUE(client.readFully(&reply[0], static_cast<int32_t>(reply.size())));
            EXPECT_EQ(reply, line == "second\n" ? "SECOND\n" : "FIRST LINE\n");
        }
    }
    EXPECT_GT(port, 0) << "the server never told its port";
    const int status = pclose(server);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}
