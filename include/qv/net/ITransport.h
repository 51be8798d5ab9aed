#ifndef QV_NET_ITRANSPORT_H
#define QV_NET_ITRANSPORT_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace net {

// A connected, bidirectional byte channel. Protocol code is written once
// against this interface and runs over a socket (SocketTransport) or, in
// tests, over an in-memory pair (MemoryTransport). Failures throw
// SocketException, time-outs io::TimeoutException.
class QV_EXPORT ITransport : public Object {
public:
    ~ITransport() noexcept(false) override;

    // Up to count bytes: the number read, 0 when count < 1, -1 once the
    // peer has closed.
    virtual int32_t read(void* buffer, int32_t count) = 0;
    // All count bytes.
    virtual void write(const void* data, int32_t count) = 0;
    // Sends whatever the transport holds back.
    virtual void flush() = 0;
    // Ends the channel in both directions; the peer reads the end.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    // Who is at the other end, for messages and logs ("127.0.0.1:8080").
    virtual String getPeerDescription() const = 0;
    // Milliseconds a read may wait (0: without end).
    virtual void setReadTimeout(int32_t milliseconds) = 0;
};

} // namespace net
} // namespace qv

#endif
