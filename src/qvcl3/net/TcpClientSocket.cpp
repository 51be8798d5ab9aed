#include <qv/net/TcpClientSocket.h>

#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>

#include "net/SocketCalls.h"

#include <vector>

namespace qv {
namespace net {

TcpClientSocket::TcpClientSocket() noexcept = default;

TcpClientSocket::TcpClientSocket(const InetSocketAddress& address, int32_t connectTimeout)
{
    connect(address, connectTimeout);
}

TcpClientSocket::TcpClientSocket(const String& host, uint16_t port, int32_t connectTimeout)
{
    connect(host, port, connectTimeout);
}

TcpClientSocket::~TcpClientSocket() noexcept(false) = default;

void TcpClientSocket::connect(const InetSocketAddress& address, int32_t connectTimeout)
{
    close();
    int fd = detail::openStreamSocket(address.getAddress());
    try {
        detail::connectSocket(fd, address, connectTimeout);
        adopt(fd);
    } catch (...) {
        detail::closeQuietly(fd);
        throw;
    }
}

void TcpClientSocket::connect(const String& host, uint16_t port, int32_t connectTimeout)
{
    const std::vector<InetAddress> addresses = InetAddress::getAllByName(host);
    for (size_t i = 0;; ++i) {
        try {
            connect(InetSocketAddress(addresses[i], port), connectTimeout);
            return;
        } catch (const io::IoException&) {
            if (i + 1 == addresses.size())
                throw;
        }
    }
}

} // namespace net
} // namespace qv
