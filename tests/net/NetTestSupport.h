#ifndef QVCL3_TESTS_NET_NETTESTSUPPORT_H
#define QVCL3_TESTS_NET_NETTESTSUPPORT_H

#include <qv/net/InetSocketAddress.h>

#include "ChildProcess.h"

#include <chrono>
#include <string>

namespace nettest {

inline qv::net::InetSocketAddress loopback(uint16_t port = 0, bool v6 = false)
{
    return qv::net::InetSocketAddress(
        qv::net::InetAddress::getLoopback(v6 ? qv::net::InetAddress::IPV6 : qv::net::InetAddress::IPV4), port);
}

inline int64_t millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

} // namespace nettest

#endif
