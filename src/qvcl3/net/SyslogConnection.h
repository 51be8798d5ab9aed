#ifndef QVCL3_NET_SYSLOGCONNECTION_H
#define QVCL3_NET_SYSLOGCONNECTION_H

#include <qv/lang/String.h>

#include <cstdint>
#include <string>

namespace qv {
namespace net {
namespace detail {

// The socket under a syslog sender: a unix datagram socket (the local
// syslog socket), a UDP socket or a TCP connection, each connected to one
// peer. Failures throw SocketException; nothing here retries or queues.
class SyslogConnection {
public:
    enum Kind { LOCAL, UDP, TCP };

    // target: the socket path for LOCAL, the host otherwise.
    SyslogConnection(Kind kind, const String& target, uint16_t port);
    ~SyslogConnection();
    SyslogConnection(const SyslogConnection&) = delete;
    SyslogConnection& operator=(const SyslogConnection&) = delete;

    Kind getKind() const noexcept { return m_kind; }
    bool isOpen() const noexcept { return m_fd >= 0; }
    // Resolves the peer and connects (TCP within timeoutMs).
    void open(int32_t timeoutMs);
    void close() noexcept;
    // One datagram, or the bytes on the stream (all of them, waiting at
    // most timeoutMs for room). A stream that fails part way has sent an
    // unknown part.
    void send(const char* data, size_t size, int32_t timeoutMs);
    // TCP: true when the peer has closed or reset the connection; whatever
    // the peer sent is read and dropped.
    bool isBroken();
    // TCP: bytes written that the peer has not yet acknowledged.
    int64_t unacknowledged() const;
    // This machine's name, or "-" when it has none.
    static std::string hostName();

private:
    Kind m_kind;
    String m_target;
    uint16_t m_port;
    int m_fd = -1;
};

} // namespace detail
} // namespace net
} // namespace qv

#endif
