#ifndef QV_NET_INETADDRESS_H
#define QV_NET_INETADDRESS_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct sockaddr;
struct sockaddr_storage;

namespace qv {
namespace net {

// An IPv4 or IPv6 address (with the scope of a link-local IPv6 address), a
// value that copies freely. Text forms: dotted decimal for IPv4, RFC 5952's
// canonical form for IPv6 ("2001:db8::1", "::ffff:192.0.2.1", "fe80::1%2").
class QV_EXPORT InetAddress : public Object {
public:
    enum Family { IPV4 = 4, IPV6 = 6 };

    // 0.0.0.0.
    InetAddress() noexcept;
    // From 4 or 16 bytes in network order; any other length throws
    // SocketException(QV_E_SOCKET_EINVAL).
    InetAddress(const uint8_t* bytes, size_t length, uint32_t scopeId = 0);
    InetAddress(const InetAddress& other) noexcept;
    InetAddress& operator=(const InetAddress& other) noexcept;
    ~InetAddress() noexcept(false) override;

    // A numeric address: dotted decimal IPv4 (exactly four parts, no leading
    // zeros) or IPv6 with an optional "%scope" (a number or an interface
    // name), without brackets. Anything else throws
    // SocketException(QV_E_SOCKET_EINVAL).
    static InetAddress parse(const String& text);
    static InetAddress parse(const char* text);
    // The same without throwing: false, and result untouched, for bad text.
    static bool tryParse(const char* text, size_t length, InetAddress& result);

    // A numeric address as parse reads it, otherwise the first address the
    // resolver gives for the name. Resolver failures throw SocketException
    // with the EAI member (QV_E_SOCKET_EAI_NONAME for an unknown host).
    static InetAddress getByName(const String& host);
    // Every address of the name, in the resolver's order, without repeats.
    static std::vector<InetAddress> getAllByName(const String& host);
    // The first address of this machine's host name, or the IPv4 loopback
    // address when the name does not resolve.
    static InetAddress getLocalHost();
    static InetAddress getLoopback(Family family = IPV4);
    static InetAddress getAnyLocal(Family family = IPV4);

    Family getFamily() const noexcept { return m_family; }
    bool isIPv4() const noexcept { return m_family == IPV4; }
    bool isIPv6() const noexcept { return m_family == IPV6; }
    // 4 or 16.
    size_t getLength() const noexcept { return m_family == IPV4 ? 4 : 16; }
    // The bytes in network order (getLength() of them).
    const uint8_t* getBytes() const noexcept { return m_bytes; }
    std::vector<uint8_t> getAddress() const;
    uint32_t getScopeId() const noexcept { return m_scopeId; }

    // 127.0.0.0/8 and ::1.
    bool isLoopbackAddress() const noexcept;
    // 0.0.0.0 and ::.
    bool isAnyLocalAddress() const noexcept;
    // 224.0.0.0/4 and ff00::/8.
    bool isMulticastAddress() const noexcept;
    // 169.254.0.0/16 and fe80::/10.
    bool isLinkLocalAddress() const noexcept;
    // 10/8, 172.16/12, 192.168/16 and fc00::/7.
    bool isSiteLocalAddress() const noexcept;
    // ::ffff:0:0/96.
    bool isIPv4Mapped() const noexcept;

    // The numeric text form.
    String getHostAddress() const;
    std::string toStdString() const;
    // The name the resolver gives for the address (getnameinfo); the numeric
    // form when there is none.
    String getHostName() const;

    using Object::toString;
    String toString() override;
    bool equals(const Object& other) const override;
    // IPv4 before IPv6, then by bytes, then by scope.
    int compareTo(const Object& other) const override;
    uint32_t hashCode() const override;
    Object* clone() const override;
    bool operator==(const InetAddress& other) const noexcept;
    bool operator!=(const InetAddress& other) const noexcept { return !(*this == other); }
    bool operator<(const InetAddress& other) const noexcept { return compare(other) < 0; }

    // Fills a sockaddr_in or sockaddr_in6 with this address and port;
    // returns its length.
    uint32_t toSockAddr(uint16_t port, sockaddr_storage* out) const noexcept;
    // From a sockaddr_in or sockaddr_in6; port, when given, receives the port.
    // Other families throw SocketException(QV_E_SOCKET_EAFNOSUPPORT).
    static InetAddress fromSockAddr(const sockaddr* address, uint16_t* port = nullptr);

private:
    int compare(const InetAddress& other) const noexcept;

    Family m_family;
    uint32_t m_scopeId;
    uint8_t m_bytes[16];
};

} // namespace net
} // namespace qv

#endif
