#include <qv/net/SocketStreams.h>

namespace qv {
namespace net {

SocketInputStream::SocketInputStream(TcpSocket& socket) noexcept : m_socket(&socket) {}
SocketInputStream::~SocketInputStream() = default;

int32_t SocketInputStream::read(signed char* buffer, int32_t count)
{
    return m_socket->read(buffer, count);
}

int32_t SocketInputStream::available()
{
    return m_socket->available();
}

void SocketInputStream::close()
{
    if (!m_socket->isClosed())
        m_socket->shutdownInput();
}

SocketOutputStream::SocketOutputStream(TcpSocket& socket) noexcept : m_socket(&socket) {}
SocketOutputStream::~SocketOutputStream() = default;

void SocketOutputStream::write(const signed char* buffer, int32_t count)
{
    m_socket->write(buffer, count);
}

void SocketOutputStream::close()
{
    if (!m_socket->isClosed())
        m_socket->shutdownOutput();
}

} // namespace net
} // namespace qv
