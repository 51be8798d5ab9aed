#include <qv/net/InetAddress.h>
#include <qv/net/InetSocketAddress.h>
#include <qv/net/SocketException.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

#include "Thrown.h"

#include <netdb.h>

#include <cerrno>
#include <set>
#include <string>

using qv::String;
using qv::net::InetAddress;
using qv::net::InetSocketAddress;
using qv::net::SocketException;

namespace {

std::string format(const char* text)
{
    return InetAddress::parse(text).toStdString();
}

qv::Result parseFailure(const char* text)
{
    return qvtest::resultOf<SocketException>([&] { InetAddress::parse(text); });
}

} // namespace

TEST(SocketException, CarriesTheFamilyCodeAndItsDescription)
{
    const SocketException refused(QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(refused.getResult(), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(refused.getDescription().toUtf8(),
              "ECONNREFUSED No connection could be made because the target machine actively refused it. ");
    const qv::io::IoException& asIo = refused;
    EXPECT_EQ(asIo.getResult(), QV_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(SocketException().getDescription().toUtf8(), "FAIL");

    errno = ECONNRESET;
    EXPECT_EQ(SocketException::fromLastError().getResult(), QV_E_SOCKET_ECONNRESET);
}

TEST(SocketException, ResolverFailuresBecomeTheThreadsLastError)
{
    const SocketException unknown = SocketException::fromResolverError(EAI_NONAME);
    EXPECT_EQ(unknown.getResult(), QV_E_SOCKET_EAI_NONAME);
    EXPECT_EQ(unknown.getDescription().toUtf8(), "EAI_NONAME NAME or SERVICE is unknown.");
    EXPECT_EQ(QVLastNativeSocketError(), 13001);
    EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(QVLastNativeSocketError()), QV_E_SOCKET_EAI_NONAME);
    // A later failing system call replaces the recorded resolver error.
    errno = ETIMEDOUT;
    EXPECT_EQ(QVLastNativeSocketError(), 10060);
    QVSetLastNativeSocketError(10054);
    EXPECT_EQ(QVLastNativeSocketError(), 10054);
    QVSetLastNativeSocketError(0);
    EXPECT_EQ(QVLastNativeSocketError(), 0);
}

TEST(InetAddress, FormatsIPv6AsRfc5952Recommends)
{
    EXPECT_EQ(format("2001:db8:0:0:0:0:2:1"), "2001:db8::2:1");
    EXPECT_EQ(format("2001:0db8::0001"), "2001:db8::1");
    EXPECT_EQ(format("2001:db8:0:1:1:1:1:1"), "2001:db8:0:1:1:1:1:1");
    EXPECT_EQ(format("2001:db8::0:1"), "2001:db8::1");
    EXPECT_EQ(format("2001:db8:0:0:1:0:0:1"), "2001:db8::1:0:0:1");
    EXPECT_EQ(format("2001:0:0:1:0:0:0:1"), "2001:0:0:1::1");
    EXPECT_EQ(format("2001:DB8::ABCD"), "2001:db8::abcd");
    EXPECT_EQ(format("0:0:0:0:0:ffff:c000:0201"), "::ffff:192.0.2.1");
    EXPECT_EQ(format("::FFFF:192.0.2.1"), "::ffff:192.0.2.1");
    EXPECT_EQ(format("0:0:0:0:0:0:0:0"), "::");
    EXPECT_EQ(format("0:0:0:0:0:0:0:1"), "::1");
    EXPECT_EQ(format("1:0:0:0:0:0:0:0"), "1::");
    EXPECT_EQ(format("fe80::1%7"), "fe80::1%7");
    EXPECT_EQ(format("1:2:3:4:5:6:7:8"), "1:2:3:4:5:6:7:8");
    EXPECT_EQ(format("1:2:3:4:5:6::"), "1:2:3:4:5:6::");
    EXPECT_EQ(format("::2:3:4:5:6:7:8"), "0:2:3:4:5:6:7:8");
    EXPECT_EQ(format("64:ff9b::192.0.2.33"), "64:ff9b::c000:221");
    EXPECT_EQ(format("192.0.2.1"), "192.0.2.1");
    EXPECT_EQ(format("255.255.255.255"), "255.255.255.255");
}

TEST(InetAddress, RefusesMalformedText)
{
    for (const char* bad : {"",
                            "1.2.3",
                            "1.2.3.4.5",
                            "256.1.1.1",
                            "01.2.3.4",
                            "1..2.3",
                            "1.2.3.4 ",
                            " 1.2.3.4",
                            ":",
                            ":::",
                            "1:::2",
                            "1::2::3",
                            ":1:2:3:4:5:6:7",
                            "1:2:3:4:5:6:7:8:9",
                            "1:2:3:4:5:6:7",
                            "12345::",
                            "g::",
                            "1:2:3:4:5:6:7:1.2.3.4",
                            "::1.2.3",
                            "::1%",
                            "::1%no-such-interface-qv",
                            "1::2:",
                            "[::1]",
                            "example.com"}) {
        EXPECT_EQ(parseFailure(bad), QV_E_SOCKET_EINVAL) << bad;
    }
    InetAddress untouched = InetAddress::getLoopback();
    EXPECT_FALSE(InetAddress::tryParse("1.2.3.", 6, untouched));
    EXPECT_EQ(untouched, InetAddress::getLoopback());
    EXPECT_FALSE(InetAddress::tryParse(nullptr, 0, untouched));
    EXPECT_THROW(InetAddress(reinterpret_cast<const uint8_t*>("abc"), 3), SocketException);
}

TEST(InetAddress, ClassifiesAddresses)
{
    EXPECT_TRUE(InetAddress::parse("127.8.9.10").isLoopbackAddress());
    EXPECT_TRUE(InetAddress::parse("::1").isLoopbackAddress());
    EXPECT_FALSE(InetAddress::parse("::2").isLoopbackAddress());
    EXPECT_TRUE(InetAddress::parse("0.0.0.0").isAnyLocalAddress());
    EXPECT_TRUE(InetAddress::parse("::").isAnyLocalAddress());
    EXPECT_TRUE(InetAddress::parse("224.0.0.1").isMulticastAddress());
    EXPECT_TRUE(InetAddress::parse("239.255.255.255").isMulticastAddress());
    EXPECT_FALSE(InetAddress::parse("240.0.0.1").isMulticastAddress());
    EXPECT_TRUE(InetAddress::parse("ff02::1").isMulticastAddress());
    EXPECT_TRUE(InetAddress::parse("169.254.3.4").isLinkLocalAddress());
    EXPECT_TRUE(InetAddress::parse("fe80::1").isLinkLocalAddress());
    EXPECT_TRUE(InetAddress::parse("febf::1").isLinkLocalAddress());
    EXPECT_FALSE(InetAddress::parse("fec0::1").isLinkLocalAddress());
    EXPECT_TRUE(InetAddress::parse("172.31.0.1").isSiteLocalAddress());
    EXPECT_FALSE(InetAddress::parse("172.32.0.1").isSiteLocalAddress());
    EXPECT_TRUE(InetAddress::parse("fd00::1").isSiteLocalAddress());
    EXPECT_TRUE(InetAddress::parse("::ffff:1.2.3.4").isIPv4Mapped());
    EXPECT_EQ(InetAddress::getLoopback(InetAddress::IPV6).toStdString(), "::1");
    EXPECT_EQ(InetAddress::getAnyLocal(InetAddress::IPV6).toStdString(), "::");
    EXPECT_EQ(InetAddress::getLoopback().getAddress(), (std::vector<uint8_t>{127, 0, 0, 1}));
}

TEST(InetAddress, ComparesAndHashesByValue)
{
    const InetAddress a = InetAddress::parse("2001:db8::1");
    const InetAddress b = InetAddress::parse(String(u"2001:0DB8:0:0::0:1"));
    EXPECT_EQ(a, b);
    EXPECT_TRUE(a.equals(b));
    EXPECT_EQ(a.hashCode(), b.hashCode());
    EXPECT_EQ(a.compareTo(b), 0);
    EXPECT_NE(a, InetAddress::parse("2001:db8::1%3"));
    EXPECT_LT(InetAddress::parse("255.255.255.255"), InetAddress::parse("::"));
    EXPECT_LT(InetAddress::parse("10.0.0.1"), InetAddress::parse("10.0.0.2"));
    std::set<InetAddress> distinct{a, b, InetAddress::parse("::1"), InetAddress::parse("127.0.0.1")};
    EXPECT_EQ(distinct.size(), 3u);
    EXPECT_FALSE(a.equals(String(u"2001:db8::1")));
    EXPECT_EQ(a.toString().toUtf8(), "2001:db8::1");
}

TEST(InetAddress, ResolvesNamesThroughTheResolver)
{
    const std::vector<InetAddress> local = InetAddress::getAllByName(String(u"localhost"));
    ASSERT_FALSE(local.empty());
    for (const InetAddress& address : local)
        EXPECT_TRUE(address.isLoopbackAddress()) << address.toStdString();
    EXPECT_EQ(InetAddress::getByName(String(u"127.0.0.2")), InetAddress::parse("127.0.0.2"));
    EXPECT_TRUE(InetAddress::getByName(String()).isLoopbackAddress());
    // .invalid never resolves (RFC 2606), and no query leaves the machine
    // for a name with a bad label.
    try {
        InetAddress::getByName(String(u"no-such-host.invalid"));
        FAIL() << "resolved an .invalid name";
    } catch (const SocketException& e) {
        EXPECT_TRUE(e.getResult() == QV_E_SOCKET_EAI_NONAME || e.getResult() == QV_E_SOCKET_EAI_AGAIN ||
                    e.getResult() == QV_E_SOCKET_EAI_NODATA)
            << std::hex << e.getResult();
        EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(QVLastNativeSocketError()), e.getResult());
    }
    EXPECT_NO_THROW(InetAddress::getLocalHost());
    EXPECT_EQ(InetAddress::parse("127.0.0.1").getHostName().toUtf8().empty(), false);
}

TEST(InetSocketAddress, ParsesAndFormatsBothFamilies)
{
    const InetSocketAddress v6 = InetSocketAddress::parse(String(u"[2001:DB8::1]:8080"));
    EXPECT_TRUE(v6.getAddress().isIPv6());
    EXPECT_EQ(v6.getPort(), 8080);
    EXPECT_EQ(v6.toStdString(), "[2001:db8::1]:8080");
    const InetSocketAddress v4 = InetSocketAddress::parse(String(u"127.0.0.1:0"));
    EXPECT_EQ(v4.toString().toUtf8(), "127.0.0.1:0");
    EXPECT_EQ(InetSocketAddress::parse(String(u"localhost:65535")).getPort(), 65535);
    for (const char16_t* bad : {u"::1:80", u"[::1]", u"[::1]80", u"127.0.0.1:", u"127.0.0.1:65536", u"127.0.0.1:8x",
                                u"[1.2.3.4]:80", u"[::1:80", u"127.0.0.1"}) {
        EXPECT_THROW(InetSocketAddress::parse(String(bad)), SocketException) << String(bad).toUtf8();
    }
    EXPECT_EQ(v6, InetSocketAddress(InetAddress::parse("2001:db8::1"), 8080));
    EXPECT_NE(v6, InetSocketAddress(InetAddress::parse("2001:db8::1"), 8081));
    EXPECT_EQ(v6.hashCode(), InetSocketAddress(InetAddress::parse("2001:db8::1"), 8080).hashCode());

    sockaddr_storage raw;
    v6.toSockAddr(&raw);
    EXPECT_EQ(InetSocketAddress::fromSockAddr(reinterpret_cast<const sockaddr*>(&raw)), v6);
    raw.ss_family = AF_UNIX;
    EXPECT_THROW(InetSocketAddress::fromSockAddr(reinterpret_cast<const sockaddr*>(&raw)), SocketException);
}

TEST(InetAddress, AllocationFailuresLeaveNoTrace)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    InetAddress target = InetAddress::getLoopback();
    EXPECT_GT(qvtest::sweepAllocations([&] { target = InetAddress::parse(String(u"2001:db8::7")); },
                                       [&] {
                                           EXPECT_TRUE(target == InetAddress::getLoopback() ||
                                                       target == InetAddress::parse("2001:db8::7"));
                                       }),
              0);
    EXPECT_EQ(target.toStdString(), "2001:db8::7");
    String text;
    EXPECT_GT(qvtest::sweepAllocations([&] { text = InetSocketAddress::parse(String(u"[::1]:80")).toString(); },
                                       [&] { EXPECT_EQ(text.getLength(), 0); }),
              0);
    EXPECT_EQ(text.toUtf8(), "[::1]:80");
}
