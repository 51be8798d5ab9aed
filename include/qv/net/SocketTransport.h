#ifndef QV_NET_SOCKETTRANSPORT_H
#define QV_NET_SOCKETTRANSPORT_H

#include <qv/core/Reference.h>
#include <qv/net/ITransport.h>
#include <qv/net/TcpSocket.h>

namespace qv {
namespace net {

// A transport over a connected TCP socket, which it keeps alive and closes.
class QV_EXPORT SocketTransport : public ITransport {
public:
    // The socket must be a heap object (the transport holds a reference).
    explicit SocketTransport(const Reference<TcpSocket>& socket);
    ~SocketTransport() noexcept(false) override;

    int32_t read(void* buffer, int32_t count) override;
    void write(const void* data, int32_t count) override;
    void flush() override;
    void close() override;
    bool isOpen() const override;
    String getPeerDescription() const override;
    void setReadTimeout(int32_t milliseconds) override;

    TcpSocket& getSocket() const noexcept { return *m_socket; }

private:
    Reference<TcpSocket> m_socket;
    String m_peer;
};

} // namespace net
} // namespace qv

#endif
