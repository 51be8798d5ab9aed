#ifndef QVCL3_TESTS_NET_NETTESTSUPPORT_H
#define QVCL3_TESTS_NET_NETTESTSUPPORT_H

#include <qv/net/InetSocketAddress.h>
#include <qv/net/TcpServerSocket.h>

#include "ChildProcess.h"

#include <chrono>
#include <string>

namespace nettest {

inline qv::net::InetSocketAddress loopback(uint16_t port = 0, bool v6 = false)
{
    return qv::net::InetSocketAddress(
        qv::net::InetAddress::getLoopback(v6 ? qv::net::InetAddress::IPV6 : qv::net::InetAddress::IPV4), port);
}

// A port nothing listens on: bound once, then released.
inline uint16_t closedPort(bool v6 = false)
{
    qv::net::TcpServerSocket probe(loopback(0, v6));
    return probe.getLocalPort();
}

inline int64_t millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

} // namespace nettest

#endif
