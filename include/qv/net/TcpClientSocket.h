#ifndef QV_NET_TCPCLIENTSOCKET_H
#define QV_NET_TCPCLIENTSOCKET_H

#include <qv/net/TcpSocket.h>

namespace qv {
namespace net {

// The client end of a TCP connection.
class QV_EXPORT TcpClientSocket : public TcpSocket {
public:
    // Not connected yet: set time-outs, then connect.
    TcpClientSocket() noexcept;
    // Connected to address (see connect).
    explicit TcpClientSocket(const InetSocketAddress& address, int32_t connectTimeout = 0);
    // Connected to host and port (see connect).
    TcpClientSocket(const String& host, uint16_t port, int32_t connectTimeout = 0);
    ~TcpClientSocket() noexcept(false) override;

    // connectTimeout in milliseconds, 0 for the system's own limit; when it
    // passes, io::TimeoutException. A socket already connected is closed
    // first.
    void connect(const InetSocketAddress& address, int32_t connectTimeout = 0);
    // Tries every address of host in the resolver's order, each with the
    // full time-out, and throws the last failure when none answers.
    void connect(const String& host, uint16_t port, int32_t connectTimeout = 0);
};

} // namespace net
} // namespace qv

#endif
