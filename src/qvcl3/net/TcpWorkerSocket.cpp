#include <qv/net/TcpWorkerSocket.h>

namespace qv {
namespace net {

TcpWorkerSocket::TcpWorkerSocket() noexcept = default;
TcpWorkerSocket::TcpWorkerSocket(int fd) noexcept : TcpSocket(fd) {}
TcpWorkerSocket::~TcpWorkerSocket() noexcept(false) = default;

} // namespace net
} // namespace qv
