#ifndef QV_NET_SOCKETSTREAMS_H
#define QV_NET_SOCKETSTREAMS_H

#include <qv/io/InputStream.h>
#include <qv/io/OutputStream.h>
#include <qv/net/TcpSocket.h>

namespace qv {
namespace net {

// The byte streams of a connected socket (TcpSocket::getInputStream and
// getOutputStream). They do not own the socket, which must outlive them:
// sockets live on the stack as often as on the heap. Closing a stream ends
// its direction only (shutdownInput / shutdownOutput), so a protocol can
// half-close and still read the answer.
class QV_EXPORT SocketInputStream : public io::InputStream {
public:
    explicit SocketInputStream(TcpSocket& socket) noexcept;
    ~SocketInputStream() override;

    using io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int32_t available() override;
    void close() override;

private:
    TcpSocket* m_socket;
};

class QV_EXPORT SocketOutputStream : public io::OutputStream {
public:
    explicit SocketOutputStream(TcpSocket& socket) noexcept;
    ~SocketOutputStream() override;

    using io::OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void close() override;

private:
    TcpSocket* m_socket;
};

} // namespace net
} // namespace qv

#endif
