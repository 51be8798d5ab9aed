#ifndef QV_NET_TCPSOCKET_H
#define QV_NET_TCPSOCKET_H

#include <qv/core/Reference.h>
#include <qv/net/InetSocketAddress.h>

#include <atomic>
#include <cstdint>

namespace qv {
namespace io {
class InputStream;
class OutputStream;
} // namespace io
namespace net {

// A connected TCP stream: what TcpClientSocket (which connects) and
// TcpWorkerSocket (which a server accepts) share. Failures throw
// SocketException with the socket error family's code; a read or write
// time-out throws io::TimeoutException. Writes never raise SIGPIPE: a peer
// that has gone gives QV_E_SOCKET_ECONNRESET (or EPIPE's stand-in) instead.
//
// One thread reads and one writes at a time; shutdownInput/shutdownOutput
// may be called from any thread to wake them.
class QV_EXPORT TcpSocket : public Object {
public:
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;
    // Closes the connection.
    ~TcpSocket() noexcept(false) override;

    // Up to count bytes: the number read, 0 when count < 1, -1 when the peer
    // has closed its side.
    int32_t read(void* buffer, int32_t count);
    // Reads exactly count bytes; false when the stream ends first (what did
    // arrive is in buffer, the number in *got when given).
    bool readFully(void* buffer, int32_t count, int32_t* got = nullptr);
    // All count bytes.
    void write(const void* data, int32_t count);
    // Bytes that can be read without blocking.
    int32_t available() const;
    // The socket as byte streams (a new SocketInputStream/SocketOutputStream
    // each time); the socket must outlive them.
    Reference<io::InputStream> getInputStream();
    Reference<io::OutputStream> getOutputStream();

    // Milliseconds; 0 (the default) waits without end.
    void setReadTimeout(int32_t milliseconds);
    int32_t getReadTimeout() const noexcept { return m_readTimeout; }
    void setWriteTimeout(int32_t milliseconds);
    int32_t getWriteTimeout() const noexcept { return m_writeTimeout; }
    void setTcpNoDelay(bool on);
    bool getTcpNoDelay() const;
    void setKeepAlive(bool on);
    bool getKeepAlive() const;
    void setReceiveBufferSize(int32_t bytes);
    void setSendBufferSize(int32_t bytes);
    // Lingering off with a zero time: close() then resets the connection.
    void setResetOnClose();

    // Half-close: no more reads (reads give -1) / no more writes (the peer
    // reads the end of the stream).
    void shutdownInput();
    void shutdownOutput();
    void close();
    bool isClosed() const noexcept { return m_fd.load(std::memory_order_relaxed) < 0; }

    InetSocketAddress getLocalAddress() const;
    InetSocketAddress getRemoteAddress() const;
    // The descriptor, -1 once closed.
    int getDescriptor() const noexcept { return m_fd.load(std::memory_order_relaxed); }

    using Object::toString;
    // "local -> remote", or the class's name once closed.
    String toString() override;

protected:
    TcpSocket() noexcept;
    // Takes ownership of a connected descriptor.
    explicit TcpSocket(int fd) noexcept;
    // For TcpClientSocket::connect: adopts a connected descriptor.
    void adopt(int fd);
    int checkedDescriptor() const;

private:
    std::atomic<int> m_fd;
    int32_t m_readTimeout;
    int32_t m_writeTimeout;
};

} // namespace net
} // namespace qv

#endif
