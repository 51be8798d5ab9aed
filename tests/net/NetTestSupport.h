#ifndef QVCL3_TESTS_NET_NETTESTSUPPORT_H
#define QVCL3_TESTS_NET_NETTESTSUPPORT_H

#include <qv/net/InetSocketAddress.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace nettest {

// Descriptors open in this process: a test that counts them before and
// after proves it leaked none.
inline int openDescriptors()
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        (void)entry;
        ++count;
    }
    return count;
}

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
