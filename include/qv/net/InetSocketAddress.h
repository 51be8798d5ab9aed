#ifndef QV_NET_INETSOCKETADDRESS_H
#define QV_NET_INETSOCKETADDRESS_H

#include <qv/net/InetAddress.h>

namespace qv {
namespace net {

// An address and a port. Text form "192.0.2.1:80" and "[2001:db8::1]:80".
class QV_EXPORT InetSocketAddress : public Object {
public:
    // 0.0.0.0:0.
    InetSocketAddress() noexcept;
    InetSocketAddress(const InetAddress& address, uint16_t port) noexcept;
    // The any-local IPv4 address and port.
    explicit InetSocketAddress(uint16_t port) noexcept;
    // Resolves host through InetAddress::getByName (which may throw).
    InetSocketAddress(const String& host, uint16_t port);
    InetSocketAddress(const InetSocketAddress& other) noexcept;
    InetSocketAddress& operator=(const InetSocketAddress& other) noexcept;
    ~InetSocketAddress() noexcept(false) override;

    // "host:port", "a.b.c.d:port" or "[v6]:port"; a name is resolved. A
    // missing or bad port, or a bare IPv6 address without brackets, throws
    // SocketException(QV_E_SOCKET_EINVAL).
    static InetSocketAddress parse(const String& text);

    const InetAddress& getAddress() const noexcept { return m_address; }
    uint16_t getPort() const noexcept { return m_port; }
    InetAddress::Family getFamily() const noexcept { return m_address.getFamily(); }

    using Object::toString;
    String toString() override;
    std::string toStdString() const;
    bool equals(const Object& other) const override;
    int compareTo(const Object& other) const override;
    uint32_t hashCode() const override;
    Object* clone() const override;
    bool operator==(const InetSocketAddress& other) const noexcept
    {
        return m_port == other.m_port && m_address == other.m_address;
    }
    bool operator!=(const InetSocketAddress& other) const noexcept { return !(*this == other); }

    uint32_t toSockAddr(sockaddr_storage* out) const noexcept { return m_address.toSockAddr(m_port, out); }
    static InetSocketAddress fromSockAddr(const sockaddr* address);

private:
    InetAddress m_address;
    uint16_t m_port;
};

} // namespace net
} // namespace qv

#endif
