#ifndef QVCL3_NET_SOCKETCALLS_H
#define QVCL3_NET_SOCKETCALLS_H

#include <qv/net/InetSocketAddress.h>

#include <cstdint>

namespace qv {
namespace net {
namespace detail {

// The descriptor-level calls shared by the socket classes. Each throws
// SocketException (from the thread's last sockets error) or, where a
// time-out can end it, io::TimeoutException.

// A close-on-exec TCP socket of the address's family.
int openStreamSocket(const InetAddress& address);
// Connects fd; timeoutMs <= 0 waits as long as the system does.
void connectSocket(int fd, const InetSocketAddress& address, int32_t timeoutMs);
// Waits for events (POLLIN/POLLOUT) on fd; false when timeoutMs passed.
// A negative timeout waits without end.
bool waitFor(int fd, short events, int32_t timeoutMs);
void setIntOption(int fd, int level, int name, int value);
int getIntOption(int fd, int level, int name);
// SO_RCVTIMEO / SO_SNDTIMEO; 0 or less: none.
void setTimeoutOption(int fd, int name, int32_t timeoutMs);
InetSocketAddress localAddressOf(int fd);
InetSocketAddress remoteAddressOf(int fd);
// Closes and forgets; never throws (a failed close of a socket loses nothing
// the caller could recover).
void closeQuietly(int& fd) noexcept;
[[noreturn]] void throwLastError();
[[noreturn]] void throwTimeout();
[[noreturn]] void throwClosed();

} // namespace detail
} // namespace net
} // namespace qv

#endif
