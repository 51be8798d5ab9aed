#ifndef QV_NET_MEMORYTRANSPORT_H
#define QV_NET_MEMORYTRANSPORT_H

#include <qv/core/Reference.h>
#include <qv/net/ITransport.h>

#include <memory>
#include <utility>

namespace qv {
namespace net {

// One end of an in-memory transport pair: what one end writes, the other
// reads, with the blocking, end-of-stream and time-out behaviour of a socket.
// Each direction holds at most a capacity of bytes; a writer waits for room.
// Writing after the peer closed throws SocketException(QV_E_SOCKET_ECONNRESET).
// The two ends may be used from different threads.
class QV_EXPORT MemoryTransport : public ITransport {
public:
    using Pair = std::pair<Reference<MemoryTransport>, Reference<MemoryTransport>>;
    static Pair createPair(int32_t capacity = 65536);

    // An end with no peer (for the class registry): reads give -1, writes fail.
    MemoryTransport();
    ~MemoryTransport() noexcept(false) override;

    int32_t read(void* buffer, int32_t count) override;
    void write(const void* data, int32_t count) override;
    void flush() override;
    void close() override;
    bool isOpen() const override;
    // "memory:0" or "memory:1": the peer's end of the pair.
    String getPeerDescription() const override;
    void setReadTimeout(int32_t milliseconds) override;

    struct Channel;

private:
    MemoryTransport(std::shared_ptr<Channel> channel, int side);

    std::shared_ptr<Channel> m_channel;
    int m_side;
    int32_t m_readTimeout;
};

} // namespace net
} // namespace qv

#endif
