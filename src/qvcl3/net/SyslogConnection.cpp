#include "net/SyslogConnection.h"

#include "net/SocketCalls.h"

#include <qv/net/InetSocketAddress.h>
#include <qv/net/SocketError.h>
#include <qv/net/SocketException.h>

#include <qv/util/FilePath.h>

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace qv {
namespace net {
namespace detail {

SyslogConnection::SyslogConnection(Kind kind, const String& target, uint16_t port)
    : m_kind(kind), m_target(target), m_port(port)
{}

SyslogConnection::~SyslogConnection()
{
    close();
}

void SyslogConnection::open(int32_t timeoutMs)
{
    close();
    if (m_kind == LOCAL) {
        const std::string path = util::FilePath(m_target).toNarrow();
        sockaddr_un address{};
        if (path.empty() || path.size() >= sizeof address.sun_path)
            throw SocketException(QV_E_SOCKET_EINVAL);
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (fd < 0)
            throwLastError();
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            const int error = errno;
            closeQuietly(fd);
            errno = error;
            throwLastError();
        }
        m_fd = fd;
        return;
    }
    const InetSocketAddress peer(m_target, m_port);
    int fd = -1;
    try {
        if (m_kind == TCP) {
            fd = openStreamSocket(peer.getAddress());
            connectSocket(fd, peer, timeoutMs);
            setIntOption(fd, IPPROTO_TCP, TCP_NODELAY, 1);
        } else {
            fd = ::socket(peer.getAddress().isIPv4() ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
            if (fd < 0)
                throwLastError();
            sockaddr_storage raw;
            const socklen_t length = peer.toSockAddr(&raw);
            if (::connect(fd, reinterpret_cast<const sockaddr*>(&raw), length) != 0)
                throwLastError();
        }
    } catch (...) {
        closeQuietly(fd);
        throw;
    }
    m_fd = fd;
}

void SyslogConnection::close() noexcept
{
    closeQuietly(m_fd);
}

void SyslogConnection::send(const char* data, size_t size, int32_t timeoutMs)
{
    if (m_fd < 0)
        throwClosed();
    do {
        const ssize_t sent = ::send(m_fd, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            if (m_kind != TCP)
                return;
            data += sent;
            size -= static_cast<size_t>(sent);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!waitFor(m_fd, POLLOUT, timeoutMs))
                throwTimeout();
        } else if (errno != EINTR) {
            throwLastError();
        }
    } while (size > 0);
}

bool SyslogConnection::isBroken()
{
    if (m_fd < 0 || m_kind != TCP)
        return m_fd < 0;
    for (;;) {
        pollfd entry{m_fd, POLLIN | POLLRDHUP, 0};
        if (::poll(&entry, 1, 0) <= 0)
            return false;
        if (entry.revents & (POLLERR | POLLHUP | POLLRDHUP | POLLNVAL))
            return true;
        char scratch[512];
        const ssize_t got = ::recv(m_fd, scratch, sizeof scratch, MSG_DONTWAIT);
        if (got == 0)
            return true;
        if (got < 0)
            return errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR;
    }
}

int64_t SyslogConnection::unacknowledged() const
{
    int queued = 0;
    if (m_fd < 0 || ::ioctl(m_fd, SIOCOUTQ, &queued) != 0)
        return -1;
    return queued;
}

std::string SyslogConnection::hostName()
{
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0')
        return "-";
    return name;
}

} // namespace detail
} // namespace net
} // namespace qv
