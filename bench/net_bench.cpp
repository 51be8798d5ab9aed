// Networking against POCO and Boost.Asio, loopback only, in one run:
// - echo of 64-byte messages over 64 concurrent connections through
//   qv::net::TcpServer, Poco::Net::TCPServer and a Boost.Asio echo server;
// - one connection streaming a large volume through TcpClientSocket /
//   TcpWorkerSocket and through raw send/recv with the same buffer size;
// - memory per connection with 1000 connections held by one TcpServer;
// - URI parse + normalise of real-looking URLs, qv::net::URI and Poco::URI.
// Sizes: QVBENCH_STREAM_MIB (default 4096) and QVBENCH_ECHO_ROUNDS (default
// 2000 round trips per client).
#include <qv/net/SocketException.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServer.h>
#include <qv/net/TcpServerSocket.h>
#include <qv/net/URI.h>

#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/TCPServer.h>
#include <Poco/Net/TCPServerConnection.h>
#include <Poco/Net/TCPServerConnectionFactory.h>
#include <Poco/Net/TCPServerParams.h>
#include <Poco/URI.h>
#include <boost/asio.hpp>

#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kClients = 64;
constexpr int kMessage = 64;
constexpr size_t kStreamBuffer = 64 * 1024;

int64_t envOr(const char* name, int64_t fallback)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::atoll(value) : fallback;
}

// A blocking loopback client on plain sockets, the same for every server.
int connectLoopback(uint16_t port, bool noDelay = true)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    const int one = 1;
    if (noDelay)
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    return fd;
}

bool recvAll(int fd, char* buffer, size_t size)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::recv(fd, buffer + done, size - done, 0);
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

// 64 clients, each `rounds` round trips; returns round trips completed.
int64_t runEchoClients(uint16_t port, int rounds)
{
    std::atomic<int64_t> completed{0};
    std::vector<std::thread> clients;
    for (int c = 0; c < kClients; ++c) {
        clients.emplace_back([&] {
            const int fd = connectLoopback(port);
            if (fd < 0)
                return;
            char message[kMessage];
            std::memset(message, 'm', sizeof message);
            char reply[kMessage];
            int64_t mine = 0;
            for (int r = 0; r < rounds; ++r) {
                if (::send(fd, message, sizeof message, MSG_NOSIGNAL) != kMessage || !recvAll(fd, reply, sizeof reply))
                    break;
                ++mine;
            }
            ::close(fd);
            completed += mine;
        });
    }
    for (std::thread& t : clients)
        t.join();
    return completed.load();
}

class QvEchoHandler : public qv::net::ITcpConnectionHandler {
public:
    void handleConnection(qv::net::TcpWorkerSocket& socket) override
    {
        char buffer[4096];
        for (int32_t n; (n = socket.read(buffer, sizeof buffer)) > 0;)
            socket.write(buffer, n);
    }
};

class PocoEchoConnection : public Poco::Net::TCPServerConnection {
public:
    using Poco::Net::TCPServerConnection::TCPServerConnection;
    void run() override
    {
        char buffer[4096];
        for (int n; (n = socket().receiveBytes(buffer, sizeof buffer)) > 0;)
            socket().sendBytes(buffer, n);
    }
};

void reportEcho(benchmark::State& state, int64_t roundTrips, double seconds)
{
    state.counters["round_trips_per_s"] = benchmark::Counter(static_cast<double>(roundTrips) / seconds);
    state.SetItemsProcessed(roundTrips);
}

void BM_EchoQvTcpServer(benchmark::State& state)
{
    const int rounds = static_cast<int>(envOr("QVBENCH_ECHO_ROUNDS", 2000));
    qv::net::TcpServerParams params;
    params.maxThreads = kClients;
    qv::net::TcpServer server(qv::makeReference<QvEchoHandler>(),
                              qv::net::InetSocketAddress(qv::net::InetAddress::getLoopback(), 0), params);
    server.start();
    runEchoClients(server.getPort(), 10); // every server starts its threads before the clock runs
    int64_t total = 0;
    double seconds = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        total += runEchoClients(server.getPort(), rounds);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    server.stop(1000);
    reportEcho(state, total, seconds);
}

void BM_EchoPocoTCPServer(benchmark::State& state)
{
    const int rounds = static_cast<int>(envOr("QVBENCH_ECHO_ROUNDS", 2000));
    Poco::Net::ServerSocket socket(Poco::Net::SocketAddress("127.0.0.1", 0));
    auto* params = new Poco::Net::TCPServerParams;
    params->setMaxThreads(kClients);
    params->setMaxQueued(kClients);
    Poco::Net::TCPServer server(new Poco::Net::TCPServerConnectionFactoryImpl<PocoEchoConnection>(), socket, params);
    server.start();
    runEchoClients(socket.address().port(), 10);
    int64_t total = 0;
    double seconds = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        total += runEchoClients(socket.address().port(), rounds);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    server.stop();
    reportEcho(state, total, seconds);
}

// The usual asynchronous echo session of Boost.Asio, run by as many threads
// as the machine has cores.
class AsioSession : public std::enable_shared_from_this<AsioSession> {
public:
    explicit AsioSession(boost::asio::ip::tcp::socket socket) : m_socket(std::move(socket)) {}
    void start() { readSome(); }

private:
    void readSome()
    {
        auto self = shared_from_this();
        m_socket.async_read_some(boost::asio::buffer(m_data), [this, self](boost::system::error_code ec, size_t n) {
            if (!ec)
                writeBack(n);
        });
    }
    void writeBack(size_t n)
    {
        auto self = shared_from_this();
        boost::asio::async_write(m_socket, boost::asio::buffer(m_data, n),
                                 [this, self](boost::system::error_code ec, size_t) {
                                     if (!ec)
                                         readSome();
                                 });
    }
    boost::asio::ip::tcp::socket m_socket;
    char m_data[4096];
};

void BM_EchoBoostAsio(benchmark::State& state)
{
    const int rounds = static_cast<int>(envOr("QVBENCH_ECHO_ROUNDS", 2000));
    boost::asio::io_context context;
    boost::asio::ip::tcp::acceptor acceptor(context, {boost::asio::ip::make_address("127.0.0.1"), 0});
    std::function<void()> acceptNext = [&] {
        acceptor.async_accept([&](boost::system::error_code ec, boost::asio::ip::tcp::socket socket) {
            if (!ec) {
                socket.set_option(boost::asio::ip::tcp::no_delay(true));
                std::make_shared<AsioSession>(std::move(socket))->start();
                acceptNext();
            }
        });
    };
    acceptNext();
    auto work = boost::asio::make_work_guard(context);
    std::vector<std::thread> runners;
    const unsigned threads = std::max(2u, std::thread::hardware_concurrency());
    for (unsigned i = 0; i < threads; ++i)
        runners.emplace_back([&] { context.run(); });
    runEchoClients(acceptor.local_endpoint().port(), 10);
    int64_t total = 0;
    double seconds = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        total += runEchoClients(acceptor.local_endpoint().port(), rounds);
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    context.stop();
    for (std::thread& t : runners)
        t.join();
    reportEcho(state, total, seconds);
}

void reportStream(benchmark::State& state, int64_t bytes, double seconds)
{
    state.counters["MiB_per_s"] = benchmark::Counter(static_cast<double>(bytes) / seconds / (1024.0 * 1024.0));
    state.SetBytesProcessed(bytes);
}

void BM_StreamQvSockets(benchmark::State& state)
{
    const int64_t total = envOr("QVBENCH_STREAM_MIB", 4096) * 1024 * 1024;
    int64_t moved = 0;
    double seconds = 0;
    for (auto _ : state) {
        qv::net::TcpServerSocket server(qv::net::InetSocketAddress(qv::net::InetAddress::getLoopback(), 0));
        qv::net::TcpClientSocket client(
            qv::net::InetSocketAddress(qv::net::InetAddress::getLoopback(), server.getLocalPort()));
        qv::Reference<qv::net::TcpWorkerSocket> worker = server.accept(5000);
        const auto start = std::chrono::steady_clock::now();
        std::thread sender([&] {
            std::vector<char> block(kStreamBuffer, 's');
            for (int64_t sent = 0; sent < total; sent += static_cast<int64_t>(block.size()))
                client.write(block.data(), static_cast<int32_t>(block.size()));
            client.shutdownOutput();
        });
        std::vector<char> buffer(kStreamBuffer);
        for (int32_t n; (n = worker->read(buffer.data(), static_cast<int32_t>(buffer.size()))) > 0;)
            moved += n;
        sender.join();
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    reportStream(state, moved, seconds);
}

void BM_StreamRawSendRecv(benchmark::State& state)
{
    const int64_t total = envOr("QVBENCH_STREAM_MIB", 4096) * 1024 * 1024;
    int64_t moved = 0;
    double seconds = 0;
    for (auto _ : state) {
        const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
        ::listen(listener, 1);
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
        // Socket options as TcpClientSocket leaves them: Nagle on.
        const int client = connectLoopback(ntohs(address.sin_port), false);
        const int worker = ::accept(listener, nullptr, nullptr);
        const auto start = std::chrono::steady_clock::now();
        std::thread sender([&] {
            std::vector<char> block(kStreamBuffer, 's');
            for (int64_t sent = 0; sent < total;) {
                size_t done = 0;
                while (done < block.size()) {
                    const ssize_t n = ::send(client, block.data() + done, block.size() - done, MSG_NOSIGNAL);
                    if (n <= 0)
                        return;
                    done += static_cast<size_t>(n);
                }
                sent += static_cast<int64_t>(block.size());
            }
            ::shutdown(client, SHUT_WR);
        });
        std::vector<char> buffer(kStreamBuffer);
        for (ssize_t n; (n = ::recv(worker, buffer.data(), buffer.size(), 0)) > 0;)
            moved += n;
        sender.join();
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        ::close(worker);
        ::close(client);
        ::close(listener);
    }
    reportStream(state, moved, seconds);
}

long residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    long resident = 0;
    statm >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

class HoldHandler : public qv::net::ITcpConnectionHandler {
public:
    std::atomic<int> held{0};
    void handleConnection(qv::net::TcpWorkerSocket& socket) override
    {
        ++held;
        char byte;
        socket.read(&byte, 1); // until the client closes
        --held;
    }
};

// Server side only: threads, sockets and bookkeeping of one TcpServer; the
// client descriptors are plain sockets opened before the first reading.
void BM_HoldConnectionsQvTcpServer(benchmark::State& state)
{
    const int connections = static_cast<int>(state.range(0));
    for (auto _ : state) {
        qv::Reference<HoldHandler> handler = qv::makeReference<HoldHandler>();
        qv::net::TcpServerParams params;
        params.maxThreads = connections;
        params.threadStackSize = 64 * 1024;
        qv::net::TcpServer server(handler, qv::net::InetSocketAddress(qv::net::InetAddress::getLoopback(), 0), params);
        server.start();
        const long before = residentBytes();
        std::vector<int> clients;
        for (int i = 0; i < connections; ++i)
            clients.push_back(connectLoopback(server.getPort()));
        for (int waited = 0; handler->held.load() < connections && waited < 10000; waited += 10)
            QVThreadSleep(10);
        const long after = residentBytes();
        state.counters["held"] = handler->held.load();
        state.counters["bytes_per_connection"] = static_cast<double>(after - before) / connections;
        for (int fd : clients)
            ::close(fd);
        server.stop(5000);
    }
}

std::vector<std::string> makeUrls(size_t count)
{
    static const char* const hosts[] = {"www.example.com", "API.Example.org", "cdn.static.example.net:8443",
                                        "[2001:db8::1]:8080", "user:pw@intranet.example.local"};
    static const char* const paths[] = {"/",
                                        "/index.html",
                                        "/a/b/../c/./d.html",
                                        "/search",
                                        "/%7Euser/profile",
                                        "/shop/items/12345/reviews",
                                        "/api/v2/users/./me/../42/orders"};
    static const char* const queries[] = {"", "?q=qvcl3+net&lang=en", "?page=2&sort=desc", "?utm_source=news%2Fletter",
                                          "?id=%3a%2f"};
    static const char* const fragments[] = {"", "#top", "#section-2.1"};
    std::mt19937 random(7);
    std::vector<std::string> urls;
    urls.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        std::string url = (random() % 3 == 0) ? "HTTP://" : "https://";
        url += hosts[random() % 5];
        url += paths[random() % 7];
        url += queries[random() % 5];
        url += fragments[random() % 3];
        urls.push_back(url);
    }
    return urls;
}

void BM_UriParseNormalizeQv(benchmark::State& state)
{
    const std::vector<std::string> urls = makeUrls(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        size_t length = 0;
        for (const std::string& url : urls)
            length += qv::net::URI(url).normalize().toStdString().size();
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

void BM_UriParseNormalizePoco(benchmark::State& state)
{
    const std::vector<std::string> urls = makeUrls(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        size_t length = 0;
        for (const std::string& url : urls) {
            Poco::URI uri(url);
            uri.normalize();
            length += uri.toString().size();
        }
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

} // namespace

BENCHMARK(BM_EchoQvTcpServer)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EchoPocoTCPServer)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EchoBoostAsio)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamQvSockets)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamRawSendRecv)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HoldConnectionsQvTcpServer)->Arg(1000)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UriParseNormalizeQv)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UriParseNormalizePoco)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
