#ifndef QV_NET_SOCKETEXCEPTION_H
#define QV_NET_SOCKETEXCEPTION_H

#include <qv/io/IoException.h>
#include <qv/net/SocketError.h>

namespace qv {
namespace net {

// A failed socket or resolver operation. The result is a member of the
// socket error family and the message is that member's description, so a
// caller can switch on the code and a log shows the text.
class QV_EXPORT SocketException : public io::IoException {
public:
    // QV_E_SOCKET_FAIL with its description ("FAIL").
    SocketException();
    explicit SocketException(Result code);
    // A message of the caller's own; the code stays what it is.
    SocketException(Result code, const String& message);
    SocketException(const SocketException& other);
    SocketException& operator=(const SocketException& other);
    ~SocketException() override;

    Result getResult() const override;

    // The calling thread's last sockets error (QVLastNativeSocketError), as
    // a family member.
    static SocketException fromLastError();
    // A getaddrinfo/getnameinfo result (EAI_...), recorded as the thread's
    // last sockets error, as a family member.
    static SocketException fromResolverError(int eaiError);

private:
    Result m_code;
};

} // namespace net
} // namespace qv

#endif
