#ifndef QV_NET_TCPSERVERSOCKET_H
#define QV_NET_TCPSERVERSOCKET_H

#include <qv/core/Reference.h>
#include <qv/net/TcpWorkerSocket.h>

#include <atomic>

namespace qv {
namespace net {

// A listening TCP socket, IPv4 or IPv6 by the address it is bound to.
class QV_EXPORT TcpServerSocket : public Object {
public:
    static constexpr int32_t DEFAULT_BACKLOG = 128;

    TcpServerSocket() noexcept;
    // Bound and listening (see bind).
    explicit TcpServerSocket(const InetSocketAddress& address, int32_t backlog = DEFAULT_BACKLOG,
                             bool reuseAddress = true);
    TcpServerSocket(const TcpServerSocket&) = delete;
    TcpServerSocket& operator=(const TcpServerSocket&) = delete;
    ~TcpServerSocket() noexcept(false) override;

    // Binds (port 0: one the system picks) and listens. reuseAddress lets a
    // restarted server bind while old connections linger in TIME_WAIT.
    void bind(const InetSocketAddress& address, int32_t backlog = DEFAULT_BACKLOG, bool reuseAddress = true);
    // The next connection; timeout in milliseconds (0: without end) ends in
    // io::TimeoutException. Closing the socket from another thread makes a
    // waiting accept throw SocketException.
    Reference<TcpWorkerSocket> accept(int32_t timeout = 0);
    void close();
    bool isBound() const noexcept { return m_fd.load(std::memory_order_relaxed) >= 0; }

    InetSocketAddress getLocalAddress() const;
    uint16_t getLocalPort() const { return getLocalAddress().getPort(); }
    int getDescriptor() const noexcept { return m_fd.load(std::memory_order_relaxed); }

private:
    std::atomic<int> m_fd;
};

} // namespace net
} // namespace qv

#endif
