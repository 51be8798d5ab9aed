#ifndef QV_NET_QVNET_H
#define QV_NET_QVNET_H

#include <qv/core/Export.h>
#include <qv/net/SocketError.h>

#include <cstdint>

// Plain functions over the socket classes for callers outside C++. Each
// returns 0 or a failure code (a member of the socket error family for
// socket and resolver failures, QV_E_SOCKET_ETIMEDOUT for a time-out,
// 0x80070057 for a bad argument, 0x80004003 for a null output pointer,
// 0x80004009 when a text does not fit) and never throws. Text is UTF-16.

typedef struct QvNetSocketObject* QVNETSOCKET;

extern "C" {

// Connects to host (a name or a numeric address) and port; every address of
// the name is tried in turn. timeout in milliseconds, 0 for the system's.
QV_EXPORT int32_t QvNetTcpClientSocketConnect(const char16_t* host, uint16_t port, int32_t timeout,
                                              QVNETSOCKET* socket) noexcept;
// A listening socket on a numeric address (null: 0.0.0.0) and port (0: any);
// backlog 0 or less: the default.
QV_EXPORT int32_t QvNetTcpServerSocketCreate(const char16_t* address, uint16_t port, int32_t backlog,
                                             QVNETSOCKET* socket) noexcept;
// The next connection; timeout 0 waits without end.
QV_EXPORT int32_t QvNetTcpServerSocketAccept(QVNETSOCKET server, int32_t timeout, QVNETSOCKET* connection) noexcept;
QV_EXPORT int32_t QvNetTcpServerSocketGetPort(QVNETSOCKET server, uint16_t* port) noexcept;
// Sends all count bytes of a connection.
QV_EXPORT int32_t QvNetSocketSend(QVNETSOCKET socket, const void* data, int32_t count) noexcept;
// Receives up to capacity bytes; *received is 0 once the peer has closed.
QV_EXPORT int32_t QvNetSocketReceive(QVNETSOCKET socket, void* buffer, int32_t capacity, int32_t* received) noexcept;
// Milliseconds for reads and writes of a connection; 0: none.
QV_EXPORT int32_t QvNetSocketSetTimeouts(QVNETSOCKET socket, int32_t readTimeout, int32_t writeTimeout) noexcept;
// how: 0 no more receiving, 1 no more sending, 2 both.
QV_EXPORT int32_t QvNetSocketShutdown(QVNETSOCKET socket, int32_t how) noexcept;
// Closes a connection or listening socket and frees the handle; null is
// accepted and does nothing.
QV_EXPORT int32_t QvNetSocketClose(QVNETSOCKET socket) noexcept;
// "address:port" of either end of a connection ("[v6]:port" for IPv6), and
// a NUL. *length gets the length without the NUL; when capacity is too small
// the result is 0x80004009 and *length the length needed.
QV_EXPORT int32_t QvNetSocketGetPeerAddressStr(QVNETSOCKET socket, char16_t* buffer, int32_t capacity,
                                               int32_t* length) noexcept;
QV_EXPORT int32_t QvNetSocketGetLocalAddressStr(QVNETSOCKET socket, char16_t* buffer, int32_t capacity,
                                                int32_t* length) noexcept;
// The first address of host: 4 or 16 bytes into bytes (room for 16), the
// count into *length.
QV_EXPORT int32_t QvNetInetAddressResolve(const char16_t* host, uint8_t* bytes, int32_t* length) noexcept;
// A numeric address text to 4 or 16 bytes.
QV_EXPORT int32_t QvNetInetAddressParse(const char16_t* text, uint8_t* bytes, int32_t* length) noexcept;
// 4 or 16 bytes to their text (RFC 5952 for IPv6), with the buffer rules of
// QvNetSocketGetPeerAddressStr.
QV_EXPORT int32_t QvNetInetAddressGetAddressStr(const uint8_t* bytes, int32_t length, char16_t* buffer,
                                                int32_t capacity, int32_t* textLength) noexcept;
}

#endif
