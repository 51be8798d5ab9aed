// Networking: addresses, URIs, and an echo server with a client in one
// process, on the loopback interface.
#include "Demo.h"

#include <chrono>
#include <cstdio>

namespace {

class EchoHandler : public qv::net::ITcpConnectionHandler {
public:
    void handleConnection(qv::net::TcpWorkerSocket& socket) override
    {
        char buffer[256];
        for (int32_t n; (n = socket.read(buffer, sizeof buffer)) > 0;)
            socket.write(buffer, n);
    }
};

} // namespace

void demoNet()
{
    using namespace qv::net;
    section("Addresses and URIs");
    std::printf("%s\n", InetAddress::parse("2001:0DB8:0:0:0:0:2:1").toStdString().c_str());
    std::printf("%s\n", InetSocketAddress::parse(qv::String(u"[::1]:8080")).toStdString().c_str());
    const URI base("http://a/b/c/d;p?q");
    std::printf("%s + ../g = %s\n", base.toStdString().c_str(), base.resolve(URI("../g")).toStdString().c_str());
    std::printf("%s\n", URI("HTTP://Example.COM/%7euser/./x/../y").normalize().toStdString().c_str());
    try {
        URI("http://bad host/");
    } catch (const URISyntaxException& e) {
        std::printf("URISyntaxException: %s\n", e.getDescription().toUtf8().c_str());
    }

    section("Echo server and client");
    TcpServer server(qv::makeReference<EchoHandler>(), InetSocketAddress(InetAddress::getLoopback(), 0));
    server.start();
    TcpClientSocket client(InetSocketAddress(InetAddress::getLoopback(), server.getPort()), 2000);
    client.setTcpNoDelay(true);
    client.setReadTimeout(2000);
    const char message[] = "ping over loopback";
    char reply[sizeof message] = {};
    // The first round trip also starts the server's worker thread.
    client.write(message, sizeof message);
    client.readFully(reply, sizeof reply);
    const auto start = std::chrono::steady_clock::now();
    client.write(message, sizeof message);
    client.readFully(reply, sizeof reply);
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start).count();
    std::printf("%s -> %s: \"%s\" back in %lld us\n", client.getLocalAddress().toStdString().c_str(),
                client.getRemoteAddress().toStdString().c_str(), reply, static_cast<long long>(micros));
    client.close();
    server.stop(1000);
    std::printf("server accepted %llu connection(s)\n", static_cast<unsigned long long>(server.getAcceptedCount()));
    try {
        TcpClientSocket refused(InetSocketAddress(InetAddress::getLoopback(), server.getPort()));
    } catch (const SocketException& e) {
        std::printf("after stop: SocketException 0x%08X \"%s\"\n", static_cast<unsigned>(e.getResult()),
                    e.getDescription().toUtf8().c_str());
    }
}
