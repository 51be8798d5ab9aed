#include <qv/net/TcpServerSocket.h>

#include <qv/net/SocketException.h>

#include "net/SocketCalls.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

namespace qv {
namespace net {

TcpServerSocket::TcpServerSocket() noexcept : m_fd(-1) {}

TcpServerSocket::TcpServerSocket(const InetSocketAddress& address, int32_t backlog, bool reuseAddress) : m_fd(-1)
{
    bind(address, backlog, reuseAddress);
}

TcpServerSocket::~TcpServerSocket() noexcept(false)
{
    close();
}

void TcpServerSocket::bind(const InetSocketAddress& address, int32_t backlog, bool reuseAddress)
{
    close();
    int fd = detail::openStreamSocket(address.getAddress());
    try {
        if (reuseAddress)
            detail::setIntOption(fd, SOL_SOCKET, SO_REUSEADDR, 1);
        sockaddr_storage raw;
        const socklen_t length = address.toSockAddr(&raw);
        if (::bind(fd, reinterpret_cast<const sockaddr*>(&raw), length) != 0 ||
            ::listen(fd, backlog > 0 ? backlog : DEFAULT_BACKLOG) != 0)
            detail::throwLastError();
    } catch (...) {
        detail::closeQuietly(fd);
        throw;
    }
    m_fd.store(fd);
}

Reference<TcpWorkerSocket> TcpServerSocket::accept(int32_t timeout)
{
    for (;;) {
        const int fd = m_fd.load(std::memory_order_relaxed);
        if (fd < 0)
            detail::throwClosed();
        if (timeout > 0 && !detail::waitFor(fd, POLLIN, timeout))
            detail::throwTimeout();
        int connection = ::accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0) {
            try {
                return Reference<TcpWorkerSocket>(new TcpWorkerSocket(connection));
            } catch (...) {
                detail::closeQuietly(connection);
                throw;
            }
        }
        // A connection that was reset while queued is not this server's
        // failure: wait for the next one.
        if (errno == EINTR || errno == ECONNABORTED)
            continue;
        detail::throwLastError();
    }
}

void TcpServerSocket::close()
{
    int fd = m_fd.exchange(-1);
    if (fd >= 0)
        ::shutdown(fd, SHUT_RDWR); // wakes an accept waiting in another thread
    detail::closeQuietly(fd);
}

InetSocketAddress TcpServerSocket::getLocalAddress() const
{
    const int fd = m_fd.load(std::memory_order_relaxed);
    if (fd < 0)
        detail::throwClosed();
    return detail::localAddressOf(fd);
}

} // namespace net
} // namespace qv
