#include "net/SocketCalls.h"

#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace qv {
namespace net {
namespace detail {

void throwLastError()
{
    throw SocketException::fromLastError();
}

void throwTimeout()
{
    QVSetLastNativeSocketError(10060);
    throw io::TimeoutException(String(QVGetDescriptionFromQV_E_SOCKET(QV_E_SOCKET_ETIMEDOUT)));
}

void throwClosed()
{
    throw SocketException(QV_E_SOCKET_ENOTSOCK);
}

int openStreamSocket(const InetAddress& address)
{
    const int fd = ::socket(address.isIPv4() ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throwLastError();
    return fd;
}

bool waitFor(int fd, short events, int32_t timeoutMs)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs < 0 ? 0 : timeoutMs);
    for (;;) {
        int32_t left = -1;
        if (timeoutMs >= 0) {
            const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            left = remaining.count() < 0 ? 0 : static_cast<int32_t>(remaining.count());
        }
        pollfd entry{fd, events, 0};
        const int rc = ::poll(&entry, 1, left);
        if (rc > 0)
            return true;
        if (rc == 0)
            return false;
        if (errno != EINTR)
            throwLastError();
    }
}

void connectSocket(int fd, const InetSocketAddress& address, int32_t timeoutMs)
{
    sockaddr_storage raw;
    const socklen_t length = address.toSockAddr(&raw);
    const int flags = ::fcntl(fd, F_GETFL);
    if (timeoutMs > 0 && ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0)
        throwLastError();
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&raw), length) != 0) {
        // A blocking connect interrupted by a signal goes on in the
        // background, just as a non-blocking one does.
        if (errno != EINPROGRESS && errno != EINTR)
            throwLastError();
        if (!waitFor(fd, POLLOUT, timeoutMs > 0 ? timeoutMs : -1))
            throwTimeout();
        const int error = getIntOption(fd, SOL_SOCKET, SO_ERROR);
        if (error != 0) {
            errno = error;
            throwLastError();
        }
    }
    if (timeoutMs > 0 && ::fcntl(fd, F_SETFL, flags) != 0)
        throwLastError();
}

void setIntOption(int fd, int level, int name, int value)
{
    if (::setsockopt(fd, level, name, &value, sizeof value) != 0)
        throwLastError();
}

int getIntOption(int fd, int level, int name)
{
    int value = 0;
    socklen_t length = sizeof value;
    if (::getsockopt(fd, level, name, &value, &length) != 0)
        throwLastError();
    return value;
}

void setTimeoutOption(int fd, int name, int32_t timeoutMs)
{
    timeval value{};
    if (timeoutMs > 0) {
        value.tv_sec = timeoutMs / 1000;
        value.tv_usec = (timeoutMs % 1000) * 1000;
    }
    if (::setsockopt(fd, SOL_SOCKET, name, &value, sizeof value) != 0)
        throwLastError();
}

InetSocketAddress localAddressOf(int fd)
{
    sockaddr_storage raw{};
    socklen_t length = sizeof raw;
    if (::getsockname(fd, reinterpret_cast<sockaddr*>(&raw), &length) != 0)
        throwLastError();
    return InetSocketAddress::fromSockAddr(reinterpret_cast<const sockaddr*>(&raw));
}

InetSocketAddress remoteAddressOf(int fd)
{
    sockaddr_storage raw{};
    socklen_t length = sizeof raw;
    if (::getpeername(fd, reinterpret_cast<sockaddr*>(&raw), &length) != 0)
        throwLastError();
    return InetSocketAddress::fromSockAddr(reinterpret_cast<const sockaddr*>(&raw));
}

void closeQuietly(int& fd) noexcept
{
    if (fd >= 0) {
        const int saved = errno;
        ::close(fd);
        errno = saved;
        fd = -1;
    }
}

} // namespace detail
} // namespace net
} // namespace qv
