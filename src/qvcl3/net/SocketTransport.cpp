#include <qv/net/SocketTransport.h>

#include <qv/net/SocketException.h>

namespace qv {
namespace net {

SocketTransport::SocketTransport(const Reference<TcpSocket>& socket) : m_socket(socket)
{
    if (!m_socket)
        throw SocketException(QV_E_SOCKET_EINVAL);
    m_peer = m_socket->getRemoteAddress().toString();
}

SocketTransport::~SocketTransport() noexcept(false) = default;

int32_t SocketTransport::read(void* buffer, int32_t count)
{
    return m_socket->read(buffer, count);
}

void SocketTransport::write(const void* data, int32_t count)
{
    m_socket->write(data, count);
}

void SocketTransport::flush() {}

void SocketTransport::close()
{
    m_socket->close();
}

bool SocketTransport::isOpen() const
{
    return !m_socket->isClosed();
}

String SocketTransport::getPeerDescription() const
{
    return m_peer;
}

void SocketTransport::setReadTimeout(int32_t milliseconds)
{
    m_socket->setReadTimeout(milliseconds);
}

} // namespace net
} // namespace qv
