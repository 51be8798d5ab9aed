#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServerSocket.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace qv::net;

// Two network namespaces of the test's own, joined by a veth pair with the
// private addresses 10.213.<n>.1 and .2: the server half runs in one, the
// client half in the other, each as this test program started again with
// one of the two half tests and an environment variable telling it where.

namespace {

std::string self()
{
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

int sh(const std::string& command)
{
    return std::system((command + " >/dev/null 2>&1").c_str());
}

} // namespace

TEST(NetNamespace, ServerHalf)
{
    const char* where = std::getenv("QV_NETNS_SERVER");
    if (where == nullptr)
        GTEST_SKIP() << "runs only inside the namespace test";
    TcpServerSocket server(InetSocketAddress::parse(qv::String(where, -1, u"UTF-8")));
    std::printf("READY\n");
    std::fflush(stdout);
    auto worker = server.accept(10000);
    worker->setReadTimeout(10000);
    char buffer[64];
    const int32_t n = worker->read(buffer, sizeof buffer);
    ASSERT_GT(n, 0);
    worker->write(buffer, n);
    worker->shutdownOutput();
    EXPECT_EQ(worker->read(buffer, sizeof buffer), -1);
}

TEST(NetNamespace, ClientHalf)
{
    const char* where = std::getenv("QV_NETNS_CLIENT");
    if (where == nullptr)
        GTEST_SKIP() << "runs only inside the namespace test";
    TcpClientSocket client(InetSocketAddress::parse(qv::String(where, -1, u"UTF-8")), 5000);
    client.setReadTimeout(10000);
    client.write("across namespaces", 17);
    char buffer[17];
    ASSERT_TRUE(client.readFully(buffer, 17));
    EXPECT_EQ(std::string(buffer, 17), "across namespaces");
    EXPECT_NE(client.getLocalAddress().getAddress().toStdString(), "127.0.0.1");
}

TEST(NetNamespace, ConnectsAcrossAVethPair)
{
    if (getuid() != 0 || sh("command -v ip") != 0)
        GTEST_SKIP() << "needs root and the ip command to create network namespaces";
    const std::string id = std::to_string(getpid() % 100000);
    const std::string a = "qvnsA" + id;
    const std::string b = "qvnsB" + id;
    const std::string subnet = "10.213." + std::to_string(getpid() % 250 + 1);
    if (sh("ip netns add " + a) != 0) {
        GTEST_SKIP() << "this machine does not allow ip netns";
    }
    const bool made =
        sh("ip netns add " + b) == 0 && sh("ip link add qvva" + id + " type veth peer name qvvb" + id) == 0 &&
        sh("ip link set qvva" + id + " netns " + a) == 0 && sh("ip link set qvvb" + id + " netns " + b) == 0 &&
        sh("ip -n " + a + " addr add " + subnet + ".1/24 dev qvva" + id) == 0 &&
        sh("ip -n " + b + " addr add " + subnet + ".2/24 dev qvvb" + id) == 0 &&
        sh("ip -n " + a + " link set qvva" + id + " up") == 0 && sh("ip -n " + b + " link set qvvb" + id + " up") == 0;
    if (made) {
        const std::string server = subnet + ".1:" + std::to_string(40000 + getpid() % 20000);
        const std::string serverCommand = "QV_NETNS_SERVER=" + server + " ip netns exec " + a + " " + self() +
                                          " --gtest_filter=NetNamespace.ServerHalf 2>&1";
        FILE* serverPipe = popen(serverCommand.c_str(), "r");
        ASSERT_NE(serverPipe, nullptr);
        char line[256];
        bool ready = false;
        while (!ready && std::fgets(line, sizeof line, serverPipe) != nullptr)
            ready = std::string(line).rfind("READY", 0) == 0;
        EXPECT_TRUE(ready);
        const int client = std::system(("QV_NETNS_CLIENT=" + server + " ip netns exec " + b + " " + self() +
                                        " --gtest_filter=NetNamespace.ClientHalf >/dev/null 2>&1")
                                           .c_str());
        EXPECT_EQ(client, 0);
        std::string rest;
        while (std::fgets(line, sizeof line, serverPipe) != nullptr)
            rest += line;
        EXPECT_EQ(pclose(serverPipe), 0) << rest;
    }
    sh("ip netns del " + a);
    sh("ip netns del " + b);
    EXPECT_TRUE(made) << "could not set up the veth pair";
}
