#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServerSocket.h>

#include "AllocationSweep.h"
#include "NetTestSupport.h"

#include "Thrown.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

using namespace qv::net;
using nettest::loopback;

namespace {

using nettest::closedPort;

using qvtest::resultOf;

} // namespace

TEST(TcpSocket, RoundTripOverBothFamilies)
{
    const int before = qvtest::countOpenDescriptors();
    for (const bool v6 : {false, true}) {
        TcpServerSocket server(loopback(0, v6));
        EXPECT_TRUE(server.isBound());
        TcpClientSocket client(loopback(server.getLocalPort(), v6), 2000);
        qv::Reference<TcpWorkerSocket> worker = server.accept(2000);
        ASSERT_TRUE(worker);
        EXPECT_EQ(worker->getRemoteAddress(), client.getLocalAddress());
        EXPECT_EQ(client.getRemoteAddress().getPort(), server.getLocalPort());
        EXPECT_EQ(client.getRemoteAddress().getAddress().isIPv6(), v6);

        client.write("hello", 5);
        char buffer[16] = {};
        ASSERT_TRUE(worker->readFully(buffer, 5));
        EXPECT_EQ(std::string(buffer, 5), "hello");
        EXPECT_EQ(worker->read(buffer, 0), 0);
        worker->write("world!", 6);
        int32_t got = 0;
        EXPECT_TRUE(client.readFully(buffer, 6, &got));
        EXPECT_EQ(std::string(buffer, 6), "world!");
        EXPECT_EQ(got, 6);
        EXPECT_NE(client.toString().toUtf8().find(" -> "), std::string::npos);
    }
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}

TEST(TcpSocket, HalfCloseEndsOneDirectionOnly)
{
    TcpServerSocket server(loopback());
    TcpClientSocket client(loopback(server.getLocalPort()));
    auto worker = server.accept(2000);
    client.write("req", 3);
    client.shutdownOutput();
    char buffer[8];
    int32_t got = 0;
    EXPECT_FALSE(worker->readFully(buffer, 8, &got)); // the request, then the end
    EXPECT_EQ(got, 3);
    EXPECT_EQ(worker->read(buffer, 8), -1);
    worker->write("reply", 5);
    worker->shutdownOutput();
    EXPECT_FALSE(client.readFully(buffer, 8, &got));
    EXPECT_EQ(std::string(buffer, static_cast<size_t>(got)), "reply");
}

TEST(TcpSocket, OptionsAndAvailable)
{
    TcpServerSocket server(loopback());
    TcpClientSocket client(loopback(server.getLocalPort()));
    auto worker = server.accept(2000);
    client.setTcpNoDelay(true);
    EXPECT_TRUE(client.getTcpNoDelay());
    client.setTcpNoDelay(false);
    EXPECT_FALSE(client.getTcpNoDelay());
    client.setKeepAlive(true);
    EXPECT_TRUE(client.getKeepAlive());
    client.setReceiveBufferSize(65536);
    client.setSendBufferSize(65536);
    client.write("abcd", 4);
    for (int i = 0; i < 200 && worker->available() < 4; ++i)
        QVThreadSleep(5);
    EXPECT_EQ(worker->available(), 4);
}

TEST(TcpSocket, FailuresCarryTheirSocketCodes)
{
    const int before = qvtest::countOpenDescriptors();
    EXPECT_EQ(resultOf([] { TcpClientSocket(loopback(closedPort())); }), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(resultOf([] { TcpClientSocket(loopback(closedPort(true), true), 1000); }), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(QVLastNativeSocketError(), 10061);
    const qv::Result unknown = resultOf([] { TcpClientSocket(qv::String(u"no-such-host.invalid"), 80, 1000); });
    EXPECT_TRUE(unknown == QV_E_SOCKET_EAI_NONAME || unknown == QV_E_SOCKET_EAI_AGAIN ||
                unknown == QV_E_SOCKET_EAI_NODATA)
        << std::hex << unknown;

    {
        TcpServerSocket busy(loopback());
        EXPECT_EQ(resultOf([&] { TcpServerSocket second(loopback(busy.getLocalPort()), 1, false); }),
                  QV_E_SOCKET_EADDRINUSE);
    }
    // An address this machine does not have.
    EXPECT_EQ(resultOf([] { TcpServerSocket(InetSocketAddress(InetAddress::parse("192.0.2.1"), 0)); }),
              QV_E_SOCKET_EADDRNOTAVAIL);

    TcpClientSocket unconnected;
    char byte;
    EXPECT_EQ(resultOf([&] { unconnected.read(&byte, 1); }), QV_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(resultOf([&] { unconnected.write("x", 1); }), QV_E_SOCKET_ENOTSOCK);
    TcpServerSocket unbound;
    EXPECT_EQ(resultOf([&] { unbound.accept(10); }), QV_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}

TEST(TcpSocket, SilentPeerAndSilentListenerTimeOut)
{
    TcpServerSocket server(loopback());
    auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(server.accept(100), qv::io::TimeoutException);
    EXPECT_GE(nettest::millisecondsSince(start), 90);

    TcpClientSocket client(loopback(server.getLocalPort()));
    auto worker = server.accept(2000);
    client.setReadTimeout(150);
    EXPECT_EQ(client.getReadTimeout(), 150);
    char buffer[4];
    start = std::chrono::steady_clock::now();
    try {
        client.read(buffer, 4);
        FAIL() << "a silent peer gave data";
    } catch (const qv::io::TimeoutException& e) {
        EXPECT_EQ(e.getDescription().toUtf8().rfind("ETIMEDOUT ", 0), 0u);
    }
    const int64_t waited = nettest::millisecondsSince(start);
    EXPECT_GE(waited, 140);
    EXPECT_LT(waited, 2000);
    // The connection survives a time-out.
    worker->write("late", 4);
    EXPECT_TRUE(client.readFully(buffer, 4));
}

TEST(TcpSocket, ResetPeerAndFloodingWriterNeverKillTheProcess)
{
    TcpServerSocket server(loopback());
    {
        TcpClientSocket client(loopback(server.getLocalPort()));
        auto worker = server.accept(2000);
        worker->setResetOnClose();
        worker->close();
        char buffer[8];
        EXPECT_EQ(resultOf([&] { client.read(buffer, 8); }), QV_E_SOCKET_ECONNRESET);
    }
    {
        // Writing to a peer that has gone: a code, never SIGPIPE.
        TcpClientSocket client(loopback(server.getLocalPort()));
        auto worker = server.accept(2000);
        worker->close();
        std::vector<char> block(65536, 'x');
        qv::Result failure = 0;
        for (int i = 0; i < 200 && failure == 0; ++i)
            failure = resultOf([&] { client.write(block.data(), static_cast<int32_t>(block.size())); });
        EXPECT_EQ(failure, QV_E_SOCKET_ECONNRESET);
    }
    {
        // A peer that never reads: the writer's time-out ends the flood.
        TcpClientSocket client(loopback(server.getLocalPort()));
        auto worker = server.accept(2000);
        client.setWriteTimeout(200);
        std::vector<char> block(1 << 20, 'x');
        bool timedOut = false;
        for (int i = 0; i < 512 && !timedOut; ++i) {
            try {
                client.write(block.data(), static_cast<int32_t>(block.size()));
            } catch (const qv::io::TimeoutException&) {
                timedOut = true;
            }
        }
        EXPECT_TRUE(timedOut);
    }
}

TEST(TcpSocket, ConnectByNameTriesEveryAddress)
{
    // "localhost" may give ::1 before 127.0.0.1; the server listens on one
    // family only, so the client must fall through to the other one.
    TcpServerSocket server(loopback());
    const std::vector<InetAddress> all = InetAddress::getAllByName(qv::String(u"localhost"));
    TcpClientSocket client(qv::String(u"localhost"), server.getLocalPort(), 2000);
    auto worker = server.accept(2000);
    EXPECT_TRUE(client.getRemoteAddress().getAddress().isIPv4());
    EXPECT_FALSE(all.empty());
    client.close();
    EXPECT_TRUE(client.isClosed());
    EXPECT_EQ(client.getDescriptor(), -1);
    client.close(); // twice is harmless
}

TEST(TcpSocket, AllocationFailuresLeakNoDescriptor)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const int before = qvtest::countOpenDescriptors();
    std::string received;
    EXPECT_GT(qvtest::sweepAllocations(
                  [&] {
                      TcpServerSocket server(loopback());
                      TcpClientSocket client(qv::String(u"127.0.0.1"), server.getLocalPort(), 2000);
                      qv::Reference<TcpWorkerSocket> worker = server.accept(2000);
                      client.write("sweep", 5);
                      char buffer[5];
                      worker->readFully(buffer, 5);
                      (void)worker->getRemoteAddress().toString();
                      received.assign(buffer, 5);
                  },
                  [&] {
                      EXPECT_EQ(qvtest::countOpenDescriptors(), before);
                      EXPECT_TRUE(received.empty());
                  }),
              0);
    EXPECT_EQ(received, "sweep");
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}
