#include <qv/net/QvNet.h>

#include <qv/core/Boundary.h>
#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServerSocket.h>

#include <cstring>

struct QvNetSocketObject {
    qv::Reference<qv::net::TcpSocket> stream;
    qv::Reference<qv::net::TcpServerSocket> server;
};

namespace {

using namespace qv;
using namespace qv::net;

// The boundary of every QvNet function. A time-out is an io::TimeoutException
// inside the library (whose code is the general failure); callers of these
// functions see the socket family's member for it.
template <class Body>
Result guard(Body&& body) noexcept
{
    return qvcom::guardBoundary([&body]() -> Result {
        try {
            body();
        } catch (const io::TimeoutException&) {
            return QV_E_SOCKET_ETIMEDOUT;
        }
        return results::OK;
    });
}

TcpSocket& streamOf(QVNETSOCKET socket)
{
    if (socket == nullptr || !socket->stream)
        throw SocketException(QV_E_SOCKET_ENOTSOCK);
    return *socket->stream;
}

TcpServerSocket& serverOf(QVNETSOCKET socket)
{
    if (socket == nullptr || !socket->server)
        throw SocketException(QV_E_SOCKET_ENOTSOCK);
    return *socket->server;
}

void requireOutput(const void* pointer)
{
    if (pointer == nullptr)
        throw ResultException(results::POINTER);
}

void requireArgument(bool valid)
{
    if (!valid)
        throw ResultException(results::INVALIDARG);
}

void copyText(const String& text, char16_t* buffer, int32_t capacity, int32_t* length)
{
    requireOutput(length);
    const int32_t needed = text.getLength();
    *length = needed;
    if (buffer == nullptr || capacity < needed + 1)
        throw ResultException(results::BUFFER_TOO_SMALL);
    std::memcpy(buffer, text.getData(), static_cast<size_t>(needed) * sizeof(char16_t));
    buffer[needed] = u'\0';
}

void copyAddress(const InetAddress& address, uint8_t* bytes, int32_t* length)
{
    std::memcpy(bytes, address.getBytes(), address.getLength());
    *length = static_cast<int32_t>(address.getLength());
}

} // namespace

extern "C" int32_t QvNetTcpClientSocketConnect(const char16_t* host, uint16_t port, int32_t timeout,
                                               QVNETSOCKET* socket) noexcept
{
    return guard([&] {
        requireOutput(socket);
        *socket = nullptr;
        requireArgument(host != nullptr);
        Reference<TcpClientSocket> client = makeReference<TcpClientSocket>();
        client->connect(String(host), port, timeout);
        *socket = new QvNetSocketObject{client, nullptr};
    });
}

extern "C" int32_t QvNetTcpServerSocketCreate(const char16_t* address, uint16_t port, int32_t backlog,
                                              QVNETSOCKET* socket) noexcept
{
    return guard([&] {
        requireOutput(socket);
        *socket = nullptr;
        const InetAddress host = address == nullptr ? InetAddress() : InetAddress::parse(String(address));
        Reference<TcpServerSocket> server = makeReference<TcpServerSocket>();
        server->bind(InetSocketAddress(host, port), backlog);
        *socket = new QvNetSocketObject{nullptr, server};
    });
}

extern "C" int32_t QvNetTcpServerSocketAccept(QVNETSOCKET server, int32_t timeout, QVNETSOCKET* connection) noexcept
{
    return guard([&] {
        requireOutput(connection);
        *connection = nullptr;
        Reference<TcpWorkerSocket> accepted = serverOf(server).accept(timeout);
        *connection = new QvNetSocketObject{accepted, nullptr};
    });
}

extern "C" int32_t QvNetTcpServerSocketGetPort(QVNETSOCKET server, uint16_t* port) noexcept
{
    return guard([&] {
        requireOutput(port);
        *port = serverOf(server).getLocalPort();
    });
}

extern "C" int32_t QvNetSocketSend(QVNETSOCKET socket, const void* data, int32_t count) noexcept
{
    return guard([&] {
        requireArgument(count >= 0 && (data != nullptr || count == 0));
        streamOf(socket).write(data, count);
    });
}

extern "C" int32_t QvNetSocketReceive(QVNETSOCKET socket, void* buffer, int32_t capacity, int32_t* received) noexcept
{
    return guard([&] {
        requireOutput(received);
        *received = 0;
        requireArgument(buffer != nullptr && capacity > 0);
        const int32_t n = streamOf(socket).read(buffer, capacity);
        *received = n < 0 ? 0 : n;
    });
}

extern "C" int32_t QvNetSocketSetTimeouts(QVNETSOCKET socket, int32_t readTimeout, int32_t writeTimeout) noexcept
{
    return guard([&] {
        TcpSocket& stream = streamOf(socket);
        stream.setReadTimeout(readTimeout);
        stream.setWriteTimeout(writeTimeout);
    });
}

extern "C" int32_t QvNetSocketShutdown(QVNETSOCKET socket, int32_t how) noexcept
{
    return guard([&] {
        requireArgument(how >= 0 && how <= 2);
        TcpSocket& stream = streamOf(socket);
        if (how != 1)
            stream.shutdownInput();
        if (how != 0)
            stream.shutdownOutput();
    });
}

extern "C" int32_t QvNetSocketClose(QVNETSOCKET socket) noexcept
{
    return guard([&] {
        if (socket == nullptr)
            return;
        if (socket->stream)
            socket->stream->close();
        if (socket->server)
            socket->server->close();
        delete socket;
    });
}

extern "C" int32_t QvNetSocketGetPeerAddressStr(QVNETSOCKET socket, char16_t* buffer, int32_t capacity,
                                                int32_t* length) noexcept
{
    return guard([&] { copyText(streamOf(socket).getRemoteAddress().toString(), buffer, capacity, length); });
}

extern "C" int32_t QvNetSocketGetLocalAddressStr(QVNETSOCKET socket, char16_t* buffer, int32_t capacity,
                                                 int32_t* length) noexcept
{
    return guard([&] {
        const InetSocketAddress local = socket != nullptr && socket->server ? socket->server->getLocalAddress()
                                                                            : streamOf(socket).getLocalAddress();
        copyText(local.toString(), buffer, capacity, length);
    });
}

extern "C" int32_t QvNetInetAddressResolve(const char16_t* host, uint8_t* bytes, int32_t* length) noexcept
{
    return guard([&] {
        requireOutput(bytes);
        requireOutput(length);
        requireArgument(host != nullptr);
        copyAddress(InetAddress::getByName(String(host)), bytes, length);
    });
}

extern "C" int32_t QvNetInetAddressParse(const char16_t* text, uint8_t* bytes, int32_t* length) noexcept
{
    return guard([&] {
        requireOutput(bytes);
        requireOutput(length);
        requireArgument(text != nullptr);
        copyAddress(InetAddress::parse(String(text)), bytes, length);
    });
}

extern "C" int32_t QvNetInetAddressGetAddressStr(const uint8_t* bytes, int32_t length, char16_t* buffer,
                                                 int32_t capacity, int32_t* textLength) noexcept
{
    return guard([&] {
        requireArgument(bytes != nullptr && (length == 4 || length == 16));
        copyText(InetAddress(bytes, static_cast<size_t>(length)).getHostAddress(), buffer, capacity, textLength);
    });
}
