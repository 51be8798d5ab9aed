#ifndef QV_NET_TCPWORKERSOCKET_H
#define QV_NET_TCPWORKERSOCKET_H

#include <qv/net/TcpSocket.h>

namespace qv {
namespace net {

// The server end of an accepted connection, as TcpServerSocket::accept
// gives it and TcpServer hands it to a connection handler.
class QV_EXPORT TcpWorkerSocket : public TcpSocket {
public:
    // Not connected (for the class registry); accept makes the useful ones.
    TcpWorkerSocket() noexcept;
    // Takes ownership of an accepted descriptor.
    explicit TcpWorkerSocket(int fd) noexcept;
    ~TcpWorkerSocket() noexcept(false) override;
};

} // namespace net
} // namespace qv

#endif
