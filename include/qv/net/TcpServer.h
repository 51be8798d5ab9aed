#ifndef QV_NET_TCPSERVER_H
#define QV_NET_TCPSERVER_H

#include <qv/core/Reference.h>
#include <qv/net/ITcpConnectionHandler.h>
#include <qv/net/TcpServerSocket.h>

#include <cstdint>
#include <memory>

namespace qv {
namespace net {

// How a TcpServer runs.
struct TcpServerParams {
    // Worker threads, started as connections need them and kept afterwards.
    int32_t maxThreads = 16;
    // Accepted connections waiting for a free worker; beyond that a new
    // connection is closed at once and counted as refused.
    int32_t maxQueued = 64;
    // Read time-out given to every worker socket (milliseconds, 0: none), so
    // that a client that goes silent frees its worker.
    int32_t readTimeout = 0;
    // TCP_NODELAY on worker sockets.
    bool noDelay = true;
    // Stack of each worker thread in bytes; 0: the platform default.
    uint32_t threadStackSize = 0;
};

// A TCP server: one thread accepts, a bounded pool of worker threads hands
// each connection, as a TcpWorkerSocket, to the handler.
class QV_EXPORT TcpServer : public Object {
public:
    // Binds at once, so getPort() is known before start(). Throws
    // SocketException when the address cannot be bound.
    TcpServer(const Reference<ITcpConnectionHandler>& handler, const InetSocketAddress& address,
              const TcpServerParams& params = TcpServerParams());
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;
    // Stops with a zero deadline.
    ~TcpServer() noexcept(false) override;

    // Starts accepting. A second start throws IllegalStateException.
    void start();
    // Stops accepting, closes connections still waiting in the queue, lets
    // running handlers finish for up to deadline milliseconds, then shuts
    // their sockets down (their reads end, their writes fail) and waits for
    // them. Returns true when every handler finished by itself in time.
    bool stop(int32_t deadline);
    bool isRunning() const noexcept;

    uint16_t getPort() const;
    InetSocketAddress getAddress() const;
    const TcpServerParams& getParams() const noexcept;

    // Connections accepted so far (refused ones included).
    uint64_t getAcceptedCount() const noexcept;
    // Connections a handler is working on now.
    int32_t getActiveCount() const noexcept;
    // Connections closed unserved: the queue was full, or the server stopped.
    uint64_t getRefusedCount() const noexcept;
    int32_t getQueuedCount() const noexcept;
    int32_t getThreadCount() const noexcept;
    // Handlers that ended by throwing.
    uint64_t getFailedCount() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace net
} // namespace qv

#endif
