#ifndef QV_NET_ITCPCONNECTIONHANDLER_H
#define QV_NET_ITCPCONNECTIONHANDLER_H

#include <qv/net/TcpWorkerSocket.h>

namespace qv {
namespace net {

// What a TcpServer does with each connection. One handler serves every
// connection, on several worker threads at once, so it must be safe to call
// concurrently. The server closes the socket after handleConnection returns;
// anything the handler throws is counted and otherwise ignored.
class QV_EXPORT ITcpConnectionHandler : public Object {
public:
    ~ITcpConnectionHandler() noexcept(false) override;
    virtual void handleConnection(TcpWorkerSocket& socket) = 0;
};

} // namespace net
} // namespace qv

#endif
