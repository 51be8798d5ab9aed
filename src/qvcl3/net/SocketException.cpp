#include <qv/net/SocketException.h>

namespace qv {
namespace net {

SocketException::SocketException() : SocketException(QV_E_SOCKET_FAIL) {}

SocketException::SocketException(Result code)
    : io::IoException(String(QVGetDescriptionFromQV_E_SOCKET(code))), m_code(code)
{}

SocketException::SocketException(Result code, const String& message) : io::IoException(message), m_code(code) {}

SocketException::SocketException(const SocketException& other) = default;
SocketException& SocketException::operator=(const SocketException& other) = default;
SocketException::~SocketException() = default;

Result SocketException::getResult() const
{
    return m_code;
}

SocketException SocketException::fromLastError()
{
    return SocketException(QV_E_SOCKETFromNativeSocketError(QVLastNativeSocketError()));
}

SocketException SocketException::fromResolverError(int eaiError)
{
    return SocketException(QV_E_SOCKETFromNativeEaiSocketError(QVRecordResolverError(eaiError)));
}

} // namespace net
} // namespace qv
