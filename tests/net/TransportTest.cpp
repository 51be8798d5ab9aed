#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStream.h>
#include <qv/legacy/CQVAbstractConnector.h>
#include <qv/net/MemoryTransport.h>
#include <qv/net/QvNet.h>
#include <qv/net/SocketException.h>
#include <qv/net/SocketTransport.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServerSocket.h>

#include "AllocationSweep.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include "Thrown.h"

#include <string>
#include <thread>

using namespace qv::net;
using nettest::loopback;

namespace {

// A line protocol written once against ITransport: sends a request line and
// reads the answer line.
std::string ask(ITransport& transport, const std::string& question)
{
    const std::string line = question + "\n";
    transport.write(line.data(), static_cast<int32_t>(line.size()));
    transport.flush();
    std::string answer;
    char c;
    while (transport.read(&c, 1) == 1 && c != '\n')
        answer += c;
    return answer;
}

void answer(ITransport& transport)
{
    std::string question;
    char c;
    while (transport.read(&c, 1) == 1 && c != '\n')
        question += c;
    const std::string line = "re: " + question + "\n";
    transport.write(line.data(), static_cast<int32_t>(line.size()));
}

std::u16string text(const char16_t* buffer, int32_t length)
{
    return std::u16string(buffer, static_cast<size_t>(length));
}

} // namespace

TEST(SocketStreams, CarryBytesAndHalfClose)
{
    TcpServerSocket server(loopback());
    TcpClientSocket client(loopback(server.getLocalPort()));
    auto worker = server.accept(2000);
    qv::Reference<qv::io::OutputStream> out = client.getOutputStream();
    qv::Reference<qv::io::InputStream> in = worker->getInputStream();
    out->write("stream", 6);
    out->write(static_cast<signed char>('!'));
    out->close(); // ends the client's sending side only
    char buffer[16] = {};
    int32_t total = 0;
    for (int32_t n; (n = in->read(buffer + total, 16 - total)) > 0;)
        total += n;
    EXPECT_EQ(std::string(buffer, static_cast<size_t>(total)), "stream!");
    EXPECT_EQ(in->read(), -1);
    worker->getOutputStream()->write("back", 4);
    qv::Reference<qv::io::InputStream> clientIn = client.getInputStream();
    EXPECT_EQ(clientIn->read(), 'b');
    EXPECT_EQ(clientIn->skip(2), 2);
    EXPECT_EQ(clientIn->read(), 'k');
    client.close();
    EXPECT_THROW(TcpClientSocket().getInputStream(), SocketException);
}

TEST(Transport, OneProtocolRunsOverMemoryAndSocketsThread)
{
    MemoryTransport::Pair pair = MemoryTransport::createPair(4);
    std::thread peer([&] { answer(*pair.second); });
    EXPECT_EQ(ask(*pair.first, "over memory, through a 4-byte pipe"), "re: over memory, through a 4-byte pipe");
    peer.join();
    EXPECT_EQ(pair.first->getPeerDescription().toUtf8(), "memory:1");

    TcpServerSocket server(loopback());
    qv::Reference<TcpSocket> clientSocket = qv::makeReference<TcpClientSocket>(loopback(server.getLocalPort()));
    SocketTransport client(clientSocket);
    SocketTransport serverSide(qv::Reference<TcpSocket>(server.accept(2000)));
    std::thread socketPeer([&] { answer(serverSide); });
    EXPECT_EQ(ask(client, "over a socket"), "re: over a socket");
    socketPeer.join();
    EXPECT_EQ(client.getPeerDescription(), loopback(server.getLocalPort()).toString());
    EXPECT_TRUE(client.isOpen());
    client.close();
    EXPECT_FALSE(client.isOpen());
}

TEST(Transport, MemoryPairBehavesLikeASocketThread)
{
    MemoryTransport::Pair pair = MemoryTransport::createPair();
    char buffer[8];
    pair.first->setReadTimeout(50);
    EXPECT_THROW(pair.first->read(buffer, 8), qv::io::TimeoutException);
    EXPECT_EQ(pair.first->read(buffer, 0), 0);
    pair.second->write("xy", 2);
    pair.second->close();
    EXPECT_EQ(pair.first->read(buffer, 8), 2);
    EXPECT_EQ(pair.first->read(buffer, 8), -1);
    EXPECT_EQ(qvtest::resultOf<SocketException>([&] { pair.first->write("z", 1); }), QV_E_SOCKET_ECONNRESET)
        << "wrote to a closed peer";
    // A writer blocked on a full pipe is released when the reader goes.
    MemoryTransport::Pair small = MemoryTransport::createPair(2);
    std::thread closer([&] {
        QVThreadSleep(50);
        small.second->close();
    });
    EXPECT_THROW(small.first->write("12345", 5), SocketException);
    closer.join();
    MemoryTransport lone;
    EXPECT_EQ(lone.read(buffer, 1), -1);
    EXPECT_THROW(lone.write("a", 1), SocketException);
}

TEST(QvNet, FunctionsReturnCodesAndNeverThrow)
{
    const int before = qvtest::countOpenDescriptors();
    QVNETSOCKET server = nullptr;
    ASSERT_EQ(QvNetTcpServerSocketCreate(u"127.0.0.1", 0, 0, &server), 0);
    uint16_t port = 0;
    ASSERT_EQ(QvNetTcpServerSocketGetPort(server, &port), 0);
    EXPECT_NE(port, 0);
    QVNETSOCKET client = nullptr;
    ASSERT_EQ(QvNetTcpClientSocketConnect(u"localhost", port, 2000, &client), 0);
    QVNETSOCKET connection = nullptr;
    ASSERT_EQ(QvNetTcpServerSocketAccept(server, 2000, &connection), 0);
    EXPECT_EQ(QvNetSocketSend(client, "ping", 4), 0);
    char buffer[8];
    int32_t received = 0;
    EXPECT_EQ(QvNetSocketReceive(connection, buffer, sizeof buffer, &received), 0);
    EXPECT_EQ(std::string(buffer, static_cast<size_t>(received)), "ping");

    char16_t address[64];
    int32_t length = 0;
    EXPECT_EQ(QvNetSocketGetPeerAddressStr(client, address, 64, &length), 0);
    EXPECT_EQ(text(address, length), u"127.0.0.1:" + qv::String::valueOf(static_cast<int>(port)).toU16String());
    EXPECT_EQ(QvNetSocketGetPeerAddressStr(client, address, 4, &length), static_cast<int32_t>(0x80004009u));
    EXPECT_EQ(length, static_cast<int32_t>(10 + std::to_string(port).size()));
    EXPECT_EQ(QvNetSocketGetLocalAddressStr(server, address, 64, &length), 0);

    EXPECT_EQ(QvNetSocketSetTimeouts(connection, 50, 0), 0);
    EXPECT_EQ(QvNetSocketReceive(connection, buffer, sizeof buffer, &received), QV_E_SOCKET_ETIMEDOUT);
    EXPECT_EQ(QvNetSocketShutdown(client, 1), 0);
    EXPECT_EQ(QvNetSocketReceive(connection, buffer, sizeof buffer, &received), 0);
    EXPECT_EQ(received, 0);
    EXPECT_EQ(QvNetSocketShutdown(client, 3), static_cast<int32_t>(0x80070057u));

    EXPECT_EQ(QvNetSocketClose(connection), 0);
    EXPECT_EQ(QvNetTcpServerSocketAccept(server, 30, &connection), QV_E_SOCKET_ETIMEDOUT);
    EXPECT_EQ(connection, nullptr);
    EXPECT_EQ(QvNetSocketSend(server, "x", 1), QV_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(QvNetSocketSend(nullptr, "x", 1), QV_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(QvNetTcpServerSocketGetPort(server, nullptr), static_cast<int32_t>(0x80004003u));
    EXPECT_EQ(QvNetSocketClose(client), 0);
    EXPECT_EQ(QvNetSocketClose(server), 0);
    EXPECT_EQ(QvNetSocketClose(nullptr), 0);

    EXPECT_EQ(QvNetTcpClientSocketConnect(u"127.0.0.1", port, 1000, &client), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(client, nullptr);
    EXPECT_EQ(QvNetTcpServerSocketCreate(u"not an address", 0, 0, &server), QV_E_SOCKET_EINVAL);

    uint8_t bytes[16];
    EXPECT_EQ(QvNetInetAddressParse(u"2001:DB8::1", bytes, &length), 0);
    EXPECT_EQ(length, 16);
    EXPECT_EQ(QvNetInetAddressGetAddressStr(bytes, 16, address, 64, &length), 0);
    EXPECT_EQ(text(address, length), u"2001:db8::1");
    EXPECT_EQ(QvNetInetAddressGetAddressStr(bytes, 5, address, 64, &length), static_cast<int32_t>(0x80070057u));
    EXPECT_EQ(QvNetInetAddressResolve(u"localhost", bytes, &length), 0);
    EXPECT_TRUE(length == 4 || length == 16);
    const int32_t unknown = QvNetInetAddressResolve(u"no-such-host.invalid", bytes, &length);
    EXPECT_TRUE(unknown == QV_E_SOCKET_EAI_NONAME || unknown == QV_E_SOCKET_EAI_AGAIN ||
                unknown == QV_E_SOCKET_EAI_NODATA);
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}

namespace {

class RecordingConnector : public qv::CQVAbstractConnector {
public:
    using CQVAbstractConnector::CQVAbstractConnector;
    std::string greeting;
    std::vector<qv::Result> failures;
    bool giveUpAfterFirst = false;

protected:
    void onConnect(const qv::Reference<ITransport>& transport) override
    {
        char buffer[16];
        const int32_t n = transport->read(buffer, sizeof buffer);
        greeting.assign(buffer, static_cast<size_t>(n > 0 ? n : 0));
    }
    bool onConnectFailed(qv::Result code, int32_t) override
    {
        failures.push_back(code);
        return !giveUpAfterFirst;
    }
};

} // namespace

TEST(CQVAbstractConnector, RetriesUntilTheServerAppearsThread)
{
    const uint16_t port = nettest::closedPort();
    RecordingConnector connector(qv::String(u"127.0.0.1"), port);
    connector.setRetryPolicy(20, 20, 40);
    connector.setConnectTimeout(1000);
    std::thread late([port] {
        QVThreadSleep(100);
        TcpServerSocket server(loopback(port));
        auto worker = server.accept(5000);
        worker->write("hello", 5);
        QVThreadSleep(50);
    });
    EXPECT_EQ(connector.Connect(), 0);
    late.join();
    EXPECT_EQ(connector.greeting, "hello");
    EXPECT_GE(connector.getAttempts(), 2);
    ASSERT_FALSE(connector.failures.empty());
    EXPECT_EQ(connector.failures.front(), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(static_cast<int32_t>(connector.failures.size()), connector.getAttempts() - 1);
}

TEST(CQVAbstractConnector, GivesUpCancelsAndStopsOnPermanentFailuresThread)
{
    const uint16_t port = nettest::closedPort();
    RecordingConnector limited(qv::String(u"127.0.0.1"), port);
    limited.setRetryPolicy(3, 1, 1);
    EXPECT_EQ(limited.Connect(), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(limited.getAttempts(), 3);
    EXPECT_EQ(limited.failures.size(), 2u); // the last failure ends the attempts without asking

    RecordingConnector vetoed(qv::String(u"127.0.0.1"), port);
    vetoed.giveUpAfterFirst = true;
    EXPECT_EQ(vetoed.Connect(), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(vetoed.getAttempts(), 1);

    RecordingConnector unknown(qv::String(u"no-such-host.invalid"), 80);
    unknown.setRetryPolicy(5, 1, 1);
    const qv::Result code = unknown.Connect();
    EXPECT_NE(code, 0);
    if (code == QV_E_SOCKET_EAI_NONAME) {
        EXPECT_EQ(unknown.getAttempts(), 1);
    }

    RecordingConnector cancelled(qv::String(u"127.0.0.1"), port);
    cancelled.setRetryPolicy(1000, 10000, 10000);
    std::thread canceller([&] {
        QVThreadSleep(100);
        cancelled.cancel();
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(cancelled.Connect(), static_cast<qv::Result>(0x80004004u));
    EXPECT_LT(nettest::millisecondsSince(start), 5000);
    canceller.join();
}

TEST(QvNet, OutOfMemoryIsAResultAndLeaksNothing)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    const int before = qvtest::countOpenDescriptors();
    QVNETSOCKET server = nullptr;
    ASSERT_EQ(QvNetTcpServerSocketCreate(u"127.0.0.1", 0, 0, &server), 0);
    uint16_t port = 0;
    ASSERT_EQ(QvNetTcpServerSocketGetPort(server, &port), 0);
    int accepted = 0;
    const auto throwIfOutOfMemory = [](int32_t code) {
        if (code == static_cast<int32_t>(0x8007000Eu))
            throw qv::OutOfMemoryException();
        ASSERT_EQ(code, 0);
    };
    EXPECT_GT(qvtest::sweepAllocations([&] {
                  QVNETSOCKET client = nullptr;
                  throwIfOutOfMemory(QvNetTcpClientSocketConnect(u"127.0.0.1", port, 2000, &client));
                  QVNETSOCKET connection = nullptr;
                  const int32_t rc = QvNetTcpServerSocketAccept(server, 2000, &connection);
                  QvNetSocketClose(client);
                  throwIfOutOfMemory(rc);
                  ++accepted;
                  QvNetSocketClose(connection);
              }),
              0);
    EXPECT_GE(accepted, 1);
    EXPECT_EQ(QvNetSocketClose(server), 0);
    EXPECT_EQ(qvtest::countOpenDescriptors(), before);
}
