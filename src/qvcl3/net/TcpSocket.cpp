#include <qv/net/TcpSocket.h>

#include <qv/net/SocketException.h>
#include <qv/net/SocketStreams.h>

#include "net/SocketCalls.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>

namespace qv {
namespace net {

TcpSocket::TcpSocket() noexcept : m_fd(-1), m_readTimeout(0), m_writeTimeout(0) {}

TcpSocket::TcpSocket(int fd) noexcept : m_fd(fd), m_readTimeout(0), m_writeTimeout(0) {}

TcpSocket::~TcpSocket() noexcept(false)
{
    int fd = m_fd.exchange(-1);
    detail::closeQuietly(fd);
}

void TcpSocket::adopt(int fd)
{
    int old = m_fd.exchange(fd);
    detail::closeQuietly(old);
    if (m_readTimeout > 0)
        detail::setTimeoutOption(fd, SO_RCVTIMEO, m_readTimeout);
    if (m_writeTimeout > 0)
        detail::setTimeoutOption(fd, SO_SNDTIMEO, m_writeTimeout);
}

int TcpSocket::checkedDescriptor() const
{
    const int fd = m_fd.load(std::memory_order_relaxed);
    if (fd < 0)
        detail::throwClosed();
    return fd;
}

int32_t TcpSocket::read(void* buffer, int32_t count)
{
    const int fd = checkedDescriptor();
    if (count < 1)
        return 0;
    for (;;) {
        const ssize_t n = ::recv(fd, buffer, static_cast<size_t>(count), 0);
        if (n > 0)
            return static_cast<int32_t>(n);
        if (n == 0)
            return -1;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN || errno == EWOULDBLOCK)
            detail::throwTimeout();
        detail::throwLastError();
    }
}

bool TcpSocket::readFully(void* buffer, int32_t count, int32_t* got)
{
    int32_t done = 0;
    while (done < count) {
        const int32_t n = read(static_cast<char*>(buffer) + done, count - done);
        if (n < 0)
            break;
        done += n;
    }
    if (got != nullptr)
        *got = done;
    return done == count || count < 0;
}

void TcpSocket::write(const void* data, int32_t count)
{
    const int fd = checkedDescriptor();
    const char* bytes = static_cast<const char*>(data);
    int32_t done = 0;
    while (done < count) {
        const ssize_t n = ::send(fd, bytes + done, static_cast<size_t>(count - done), MSG_NOSIGNAL);
        if (n >= 0) {
            done += static_cast<int32_t>(n);
            continue;
        }
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN || errno == EWOULDBLOCK)
            detail::throwTimeout();
        if (errno == EPIPE)
            errno = ECONNRESET; // the peer has gone: the family has no EPIPE
        detail::throwLastError();
    }
}

int32_t TcpSocket::available() const
{
    int bytes = 0;
    if (::ioctl(checkedDescriptor(), FIONREAD, &bytes) != 0)
        detail::throwLastError();
    return bytes;
}

Reference<io::InputStream> TcpSocket::getInputStream()
{
    checkedDescriptor();
    return Reference<io::InputStream>(new SocketInputStream(*this));
}

Reference<io::OutputStream> TcpSocket::getOutputStream()
{
    checkedDescriptor();
    return Reference<io::OutputStream>(new SocketOutputStream(*this));
}

void TcpSocket::setReadTimeout(int32_t milliseconds)
{
    const int fd = m_fd.load(std::memory_order_relaxed);
    if (fd >= 0)
        detail::setTimeoutOption(fd, SO_RCVTIMEO, milliseconds);
    m_readTimeout = milliseconds > 0 ? milliseconds : 0;
}

void TcpSocket::setWriteTimeout(int32_t milliseconds)
{
    const int fd = m_fd.load(std::memory_order_relaxed);
    if (fd >= 0)
        detail::setTimeoutOption(fd, SO_SNDTIMEO, milliseconds);
    m_writeTimeout = milliseconds > 0 ? milliseconds : 0;
}

void TcpSocket::setTcpNoDelay(bool on)
{
    detail::setIntOption(checkedDescriptor(), IPPROTO_TCP, TCP_NODELAY, on ? 1 : 0);
}

bool TcpSocket::getTcpNoDelay() const
{
    return detail::getIntOption(checkedDescriptor(), IPPROTO_TCP, TCP_NODELAY) != 0;
}

void TcpSocket::setKeepAlive(bool on)
{
    detail::setIntOption(checkedDescriptor(), SOL_SOCKET, SO_KEEPALIVE, on ? 1 : 0);
}

bool TcpSocket::getKeepAlive() const
{
    return detail::getIntOption(checkedDescriptor(), SOL_SOCKET, SO_KEEPALIVE) != 0;
}

void TcpSocket::setReceiveBufferSize(int32_t bytes)
{
    detail::setIntOption(checkedDescriptor(), SOL_SOCKET, SO_RCVBUF, bytes);
}

void TcpSocket::setSendBufferSize(int32_t bytes)
{
    detail::setIntOption(checkedDescriptor(), SOL_SOCKET, SO_SNDBUF, bytes);
}

void TcpSocket::setResetOnClose()
{
    const linger value{1, 0};
    if (::setsockopt(checkedDescriptor(), SOL_SOCKET, SO_LINGER, &value, sizeof value) != 0)
        detail::throwLastError();
}

void TcpSocket::shutdownInput()
{
    if (::shutdown(checkedDescriptor(), SHUT_RD) != 0 && errno != ENOTCONN)
        detail::throwLastError();
}

void TcpSocket::shutdownOutput()
{
    if (::shutdown(checkedDescriptor(), SHUT_WR) != 0 && errno != ENOTCONN)
        detail::throwLastError();
}

void TcpSocket::close()
{
    int fd = m_fd.exchange(-1);
    detail::closeQuietly(fd);
}

InetSocketAddress TcpSocket::getLocalAddress() const
{
    return detail::localAddressOf(checkedDescriptor());
}

InetSocketAddress TcpSocket::getRemoteAddress() const
{
    return detail::remoteAddressOf(checkedDescriptor());
}

String TcpSocket::toString()
{
    if (isClosed())
        return Object::toString();
    try {
        return String(getLocalAddress().toString()).append(u" -> ").append(getRemoteAddress().toString());
    } catch (const SocketException&) {
        return Object::toString();
    }
}

} // namespace net
} // namespace qv
