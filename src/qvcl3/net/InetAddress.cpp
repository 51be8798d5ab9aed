#include <qv/net/InetAddress.h>

#include <qv/net/SocketException.h>

#include "net/AddressText.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace qv {
namespace net {

namespace {

const uint8_t kMappedPrefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

struct AddrInfoDeleter {
    void operator()(addrinfo* list) const noexcept { freeaddrinfo(list); }
};

} // namespace

InetAddress::InetAddress() noexcept : m_family(IPV4), m_scopeId(0), m_bytes{} {}

InetAddress::InetAddress(const uint8_t* bytes, size_t length, uint32_t scopeId)
    : m_family(IPV4), m_scopeId(0), m_bytes{}
{
    if (bytes == nullptr || (length != 4 && length != 16))
        throw SocketException(QV_E_SOCKET_EINVAL);
    m_family = length == 4 ? IPV4 : IPV6;
    m_scopeId = length == 16 ? scopeId : 0;
    std::memcpy(m_bytes, bytes, length);
}

InetAddress::InetAddress(const InetAddress& other) noexcept = default;
InetAddress& InetAddress::operator=(const InetAddress& other) noexcept = default;
InetAddress::~InetAddress() noexcept(false) = default;

bool InetAddress::tryParse(const char* text, size_t length, InetAddress& result)
{
    if (text == nullptr)
        return false;
    InetAddress parsed;
    if (detail::parseIPv4(text, length, parsed.m_bytes)) {
        result = parsed;
        return true;
    }
    if (detail::parseIPv6(text, length, parsed.m_bytes, &parsed.m_scopeId)) {
        parsed.m_family = IPV6;
        result = parsed;
        return true;
    }
    return false;
}

InetAddress InetAddress::parse(const char* text)
{
    InetAddress result;
    if (!tryParse(text, text == nullptr ? 0 : std::strlen(text), result))
        throw SocketException(QV_E_SOCKET_EINVAL);
    return result;
}

InetAddress InetAddress::parse(const String& text)
{
    const std::string utf8 = text.toUtf8();
    InetAddress result;
    if (!tryParse(utf8.data(), utf8.size(), result))
        throw SocketException(QV_E_SOCKET_EINVAL);
    return result;
}

std::vector<InetAddress> InetAddress::getAllByName(const String& host)
{
    const std::string name = host.toUtf8();
    std::vector<InetAddress> result;
    InetAddress literal;
    if (name.empty()) {
        result.push_back(getLoopback(IPV4));
        return result;
    }
    if (tryParse(name.data(), name.size(), literal)) {
        result.push_back(literal);
        return result;
    }
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int rc = getaddrinfo(name.c_str(), nullptr, &hints, &list);
    if (rc != 0)
        throw SocketException::fromResolverError(rc);
    std::unique_ptr<addrinfo, AddrInfoDeleter> owner(list);
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_family != AF_INET && entry->ai_family != AF_INET6)
            continue;
        const InetAddress address = fromSockAddr(entry->ai_addr);
        if (std::find(result.begin(), result.end(), address) == result.end())
            result.push_back(address);
    }
    if (result.empty())
        throw SocketException::fromResolverError(EAI_NODATA);
    return result;
}

InetAddress InetAddress::getByName(const String& host)
{
    return getAllByName(host).front();
}

InetAddress InetAddress::getLocalHost()
{
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) == 0 && name[0] != '\0') {
        try {
            return getByName(String(name, -1, u"UTF-8"));
        } catch (const SocketException&) {
            // A machine whose own name does not resolve still has itself.
        }
    }
    return getLoopback(IPV4);
}

InetAddress InetAddress::getLoopback(Family family)
{
    InetAddress result;
    if (family == IPV6) {
        result.m_family = IPV6;
        result.m_bytes[15] = 1;
    } else {
        result.m_bytes[0] = 127;
        result.m_bytes[3] = 1;
    }
    return result;
}

InetAddress InetAddress::getAnyLocal(Family family)
{
    InetAddress result;
    result.m_family = family == IPV6 ? IPV6 : IPV4;
    return result;
}

std::vector<uint8_t> InetAddress::getAddress() const
{
    return std::vector<uint8_t>(m_bytes, m_bytes + getLength());
}

bool InetAddress::isLoopbackAddress() const noexcept
{
    if (isIPv4())
        return m_bytes[0] == 127;
    static const uint8_t loopback[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    return std::memcmp(m_bytes, loopback, 16) == 0;
}

bool InetAddress::isAnyLocalAddress() const noexcept
{
    return std::all_of(m_bytes, m_bytes + getLength(), [](uint8_t b) { return b == 0; });
}

bool InetAddress::isMulticastAddress() const noexcept
{
    return isIPv4() ? (m_bytes[0] & 0xF0) == 0xE0 : m_bytes[0] == 0xFF;
}

bool InetAddress::isLinkLocalAddress() const noexcept
{
    return isIPv4() ? m_bytes[0] == 169 && m_bytes[1] == 254 : m_bytes[0] == 0xFE && (m_bytes[1] & 0xC0) == 0x80;
}

bool InetAddress::isSiteLocalAddress() const noexcept
{
    if (isIPv6())
        return (m_bytes[0] & 0xFE) == 0xFC;
    return m_bytes[0] == 10 || (m_bytes[0] == 172 && (m_bytes[1] & 0xF0) == 16) ||
           (m_bytes[0] == 192 && m_bytes[1] == 168);
}

bool InetAddress::isIPv4Mapped() const noexcept
{
    return isIPv6() && std::memcmp(m_bytes, kMappedPrefix, 12) == 0;
}

std::string InetAddress::toStdString() const
{
    char text[detail::kMaxAddressText];
    const size_t length = isIPv4() ? detail::formatIPv4(m_bytes, text) : detail::formatIPv6(m_bytes, m_scopeId, text);
    return std::string(text, length);
}

String InetAddress::getHostAddress() const
{
    char text[detail::kMaxAddressText];
    const size_t length = isIPv4() ? detail::formatIPv4(m_bytes, text) : detail::formatIPv6(m_bytes, m_scopeId, text);
    char16_t wide[detail::kMaxAddressText];
    for (size_t i = 0; i < length; ++i)
        wide[i] = static_cast<unsigned char>(text[i]);
    return String(wide, static_cast<int32_t>(length));
}

String InetAddress::getHostName() const
{
    sockaddr_storage address{};
    const socklen_t length = toSockAddr(0, &address);
    char name[NI_MAXHOST] = {};
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, name, sizeof name, nullptr, 0, NI_NAMEREQD) ==
        0)
        return String(name, -1, u"UTF-8");
    return getHostAddress();
}

String InetAddress::toString()
{
    return getHostAddress();
}

int InetAddress::compare(const InetAddress& other) const noexcept
{
    if (m_family != other.m_family)
        return m_family < other.m_family ? -1 : 1;
    const int bytes = std::memcmp(m_bytes, other.m_bytes, getLength());
    if (bytes != 0)
        return bytes < 0 ? -1 : 1;
    if (m_scopeId != other.m_scopeId)
        return m_scopeId < other.m_scopeId ? -1 : 1;
    return 0;
}

bool InetAddress::operator==(const InetAddress& other) const noexcept
{
    return compare(other) == 0;
}

bool InetAddress::equals(const Object& other) const
{
    const auto* address = dynamic_cast<const InetAddress*>(&other);
    return address != nullptr && *this == *address;
}

int InetAddress::compareTo(const Object& other) const
{
    const auto* address = dynamic_cast<const InetAddress*>(&other);
    if (address == nullptr)
        return Object::compareTo(other);
    return compare(*address);
}

uint32_t InetAddress::hashCode() const
{
    uint32_t hash = 2166136261u ^ static_cast<uint32_t>(m_family);
    for (size_t i = 0; i < getLength(); ++i)
        hash = (hash ^ m_bytes[i]) * 16777619u;
    return hash ^ m_scopeId;
}

Object* InetAddress::clone() const
{
    return new InetAddress(*this);
}

uint32_t InetAddress::toSockAddr(uint16_t port, sockaddr_storage* out) const noexcept
{
    std::memset(out, 0, sizeof *out);
    if (isIPv4()) {
        auto* in4 = reinterpret_cast<sockaddr_in*>(out);
        in4->sin_family = AF_INET;
        in4->sin_port = htons(port);
        std::memcpy(&in4->sin_addr, m_bytes, 4);
        return sizeof(sockaddr_in);
    }
    auto* in6 = reinterpret_cast<sockaddr_in6*>(out);
    in6->sin6_family = AF_INET6;
    in6->sin6_port = htons(port);
    in6->sin6_scope_id = m_scopeId;
    std::memcpy(&in6->sin6_addr, m_bytes, 16);
    return sizeof(sockaddr_in6);
}

InetAddress InetAddress::fromSockAddr(const sockaddr* address, uint16_t* port)
{
    if (address != nullptr && address->sa_family == AF_INET) {
        sockaddr_in in4;
        std::memcpy(&in4, address, sizeof in4);
        if (port != nullptr)
            *port = ntohs(in4.sin_port);
        return InetAddress(reinterpret_cast<const uint8_t*>(&in4.sin_addr), 4);
    }
    if (address != nullptr && address->sa_family == AF_INET6) {
        sockaddr_in6 in6;
        std::memcpy(&in6, address, sizeof in6);
        if (port != nullptr)
            *port = ntohs(in6.sin6_port);
        return InetAddress(reinterpret_cast<const uint8_t*>(&in6.sin6_addr), 16, in6.sin6_scope_id);
    }
    throw SocketException(QV_E_SOCKET_EAFNOSUPPORT);
}

} // namespace net
} // namespace qv
