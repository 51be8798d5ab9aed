#include <qv/net/InetSocketAddress.h>

#include <qv/net/SocketException.h>

namespace qv {
namespace net {

InetSocketAddress::InetSocketAddress() noexcept : m_port(0) {}

InetSocketAddress::InetSocketAddress(const InetAddress& address, uint16_t port) noexcept
    : m_address(address), m_port(port)
{}

InetSocketAddress::InetSocketAddress(uint16_t port) noexcept : m_port(port) {}

InetSocketAddress::InetSocketAddress(const String& host, uint16_t port)
    : m_address(InetAddress::getByName(host)), m_port(port)
{}

InetSocketAddress::InetSocketAddress(const InetSocketAddress& other) noexcept = default;
InetSocketAddress& InetSocketAddress::operator=(const InetSocketAddress& other) noexcept = default;
InetSocketAddress::~InetSocketAddress() noexcept(false) = default;

InetSocketAddress InetSocketAddress::parse(const String& text)
{
    const std::string utf8 = text.toUtf8();
    std::string host;
    size_t portStart;
    if (!utf8.empty() && utf8[0] == '[') {
        const size_t close = utf8.find(']');
        if (close == std::string::npos || close + 1 >= utf8.size() || utf8[close + 1] != ':')
            throw SocketException(QV_E_SOCKET_EINVAL);
        host = utf8.substr(1, close - 1);
        InetAddress v6;
        if (!InetAddress::tryParse(host.data(), host.size(), v6) || !v6.isIPv6())
            throw SocketException(QV_E_SOCKET_EINVAL);
        portStart = close + 2;
    } else {
        const size_t colon = utf8.rfind(':');
        if (colon == std::string::npos || utf8.find(':') != colon)
            throw SocketException(QV_E_SOCKET_EINVAL);
        host = utf8.substr(0, colon);
        portStart = colon + 1;
    }
    if (portStart >= utf8.size() || utf8.size() - portStart > 5)
        throw SocketException(QV_E_SOCKET_EINVAL);
    uint32_t port = 0;
    for (size_t i = portStart; i < utf8.size(); ++i) {
        if (utf8[i] < '0' || utf8[i] > '9')
            throw SocketException(QV_E_SOCKET_EINVAL);
        port = port * 10 + static_cast<uint32_t>(utf8[i] - '0');
    }
    if (port > 65535)
        throw SocketException(QV_E_SOCKET_EINVAL);
    return InetSocketAddress(InetAddress::getByName(String(host.c_str(), -1, u"UTF-8")), static_cast<uint16_t>(port));
}

std::string InetSocketAddress::toStdString() const
{
    std::string text = m_address.toStdString();
    if (m_address.isIPv6())
        text = "[" + text + "]";
    return text + ":" + std::to_string(m_port);
}

String InetSocketAddress::toString()
{
    const std::string text = toStdString();
    return String(text.c_str(), static_cast<int32_t>(text.size()), u"UTF-8");
}

bool InetSocketAddress::equals(const Object& other) const
{
    const auto* address = dynamic_cast<const InetSocketAddress*>(&other);
    return address != nullptr && *this == *address;
}

int InetSocketAddress::compareTo(const Object& other) const
{
    const auto* address = dynamic_cast<const InetSocketAddress*>(&other);
    if (address == nullptr)
        return Object::compareTo(other);
    const int byAddress = m_address.compareTo(address->m_address);
    if (byAddress != 0)
        return byAddress;
    return m_port == address->m_port ? 0 : (m_port < address->m_port ? -1 : 1);
}

uint32_t InetSocketAddress::hashCode() const
{
    return m_address.hashCode() * 31u + m_port;
}

Object* InetSocketAddress::clone() const
{
    return new InetSocketAddress(*this);
}

InetSocketAddress InetSocketAddress::fromSockAddr(const sockaddr* address)
{
    uint16_t port = 0;
    const InetAddress host = InetAddress::fromSockAddr(address, &port);
    return InetSocketAddress(host, port);
}

} // namespace net
} // namespace qv
