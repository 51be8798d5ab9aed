#include "CliTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace clitest;

namespace {

TEST(IniCommandTest, GetsSetsListsAndDeletesKeepingTheLayoutWhenAsked)
{
    TempDir dir;
    const std::string ini = dir.file("app.ini");
    const std::string original = "# settings\n[server]\nport = 80   ; web\nhost=example.org\n\n[client]\nretries=3\n";
    writeFile(ini, original);
    EXPECT_EQ(qvcl({"ini", "get", ini, "server", "host"}).out, "example.org\n");
    EXPECT_EQ(qvcl({"ini", "list", ini}).out, "client\nserver\n");
    EXPECT_EQ(qvcl({"ini", "list", ini, "server"}).out, "host=example.org\nport=80   ; web\n");

    const clitest::Result set =
        qvcl({"ini", "set", ini, "server", "port", "8080", "--keep-layout", "--lock", "qvcl-cli-test"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(readFile(ini), "# settings\n[server]\nport = 8080\nhost=example.org\n\n[client]\nretries=3\n");
    EXPECT_EQ(qvcl({"ini", "del", ini, "client", "retries", "--keep-layout"}).status, 0);
    EXPECT_EQ(readFile(ini), "# settings\n[server]\nport = 8080\nhost=example.org\n\n[client]\n");
    // Without the flag the file is written in the plain sorted form.
    EXPECT_EQ(qvcl({"ini", "del", ini, "client"}).status, 0);
    EXPECT_EQ(qvcl({"ini", "list", ini}).out, "server\n");
    EXPECT_EQ(readFile(ini).find("# settings"), std::string::npos);
    EXPECT_EQ(qvcl({"ini", "set", dir.file("new.ini"), "s", "k", "v"}).status, 0);
    EXPECT_EQ(qvcl({"ini", "get", dir.file("new.ini"), "s", "k"}).out, "v\n");

    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    } cases[] = {
        {{"ini", "get", ini, "server", "nothing"}, 1, "qvcl ini: " + ini + ": no key 'nothing' in set 'server'\n"},
        {{"ini", "del", ini, "server", "nothing"}, 1, "qvcl ini: " + ini + ": no key 'nothing' in set 'server'\n"},
        {{"ini", "list", ini, "nothing"}, 1, "qvcl ini: " + ini + ": no set 'nothing'\n"},
        {{"ini", "get", dir.file("missing"), "s", "k"},
         1,
         "qvcl ini: " + dir.file("missing") + ": No such file or directory\n"},
        {{"ini", "set", dir.path(), "s", "k", "v"}, 1, "qvcl ini: " + dir.path() + ": Is a directory\n"},
        {{"ini", "get", ini, "server"}, 2, "qvcl ini: wrong number of arguments for 'get' (see 'qvcl ini --help')\n"},
        {{"ini", "frob", ini}, 2, "qvcl ini: unknown operation 'frob' (see 'qvcl ini --help')\n"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(failureOf(qvcl(c.arguments)), (Failure{c.status, c.message}));
    }
}

TEST(SockerrCommandTest, NamesCodesGivenEitherWay)
{
    const std::string refused = "QV_E_SOCKET_ECONNREFUSED (0x8BE3274D, 10061): No connection could be made because "
                                "the target machine actively refused it.\n";
    EXPECT_EQ(qvcl({"sockerr", "10061"}).out, refused);
    EXPECT_EQ(qvcl({"sockerr", "0x8be3274d"}).out, refused);
    EXPECT_EQ(qvcl({"sockerr", "11001"}).out,
              "QV_E_SOCKET_HOST_NOT_FOUND (0x8BE32AF9, 11001): No such host is known.\n");
    EXPECT_EQ(failureOf(qvcl({"sockerr", "12345"})), (Failure{1, "qvcl sockerr: unknown socket error code: 12345\n"}));
    EXPECT_EQ(qvcl({"sockerr", "0x80070005"}).status, 1);
    EXPECT_EQ(qvcl({"sockerr", "ten"}).status, 2);
    EXPECT_EQ(qvcl({"sockerr"}).status, 2);
}

TEST(RegsvrCommandTest, RegistersAndReportsWithTheToolsExitStatus)
{
    TempDir dir;
    setenv("QV_REGISTRY_DIR", dir.path().c_str(), 1);
    const clitest::Result registered = qvcl({"regsvr", QVTEST_CP037_MODULE});
    EXPECT_EQ(registered.status, 0) << registered.err;
    EXPECT_NE(registered.out.find("DllRegisterServer"), std::string::npos);
    EXPECT_EQ(qvcl({"regsvr", "-u", "-s", QVTEST_CP037_MODULE}).out, "");
    EXPECT_EQ(qvcl({"regsvr", "/nonexistent/module.so"}).status, 1);
    EXPECT_EQ(failureOf(qvcl({"regsvr", QVTEST_QVCORE3})),
              (Failure{1, std::string("qvcl regsvr: ") + QVTEST_QVCORE3 + " has no DllRegisterServer\n"}));
    EXPECT_EQ(qvcl({"regsvr"}).status, 2);
    unsetenv("QV_REGISTRY_DIR");
}

TEST(QvclTest, EveryCommandHasHelpAndUnknownWordsAreUsageErrors)
{
    for (const char* command :
         {"iconv", "encodings", "alnum", "md5sum", "sha1sum", "sha256sum", "ini", "sockerr", "regsvr"}) {
        const clitest::Result help = qvcl({command, "--help"});
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_EQ(help.out.compare(0, 12 + std::strlen(command), std::string("Usage: qvcl ") + command), 0) << command;
    }
    EXPECT_EQ(qvcl({"--help"}).status, 0);
    EXPECT_EQ(qvcl({}).status, 2);
    EXPECT_EQ(failureOf(qvcl({"frobnicate"})),
              (Failure{2, "qvcl: unknown command 'frobnicate' (see 'qvcl --help')\n"}));
}

// What the tool writes to standard error when that is a terminal.
std::string terminalStandardError(const std::vector<std::string>& arguments)
{
    int master = -1;
    const pid_t child = forkpty(&master, nullptr, nullptr, nullptr);
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        std::vector<char*> argv = clitest::argvOf(arguments);
        execv(argv[0], argv.data());
        _exit(127);
    }
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(master, buffer, sizeof buffer);
        if (n <= 0)
            break;
        text.append(buffer, static_cast<size_t>(n));
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(master);
    return text;
}

TEST(QvclTest, ProgressBarOnlyForLargeFilesOnATerminal)
{
    TempDir dir;
    const std::string big = dir.file("big");
    const std::string small = dir.file("small");
    ASSERT_EQ(run({"truncate", "-s", "65M", big}).status, 0);
    ASSERT_EQ(run({"truncate", "-s", "63M", small}).status, 0);
    const std::string bar = terminalStandardError({QVTEST_QVCL, "md5sum", big});
    EXPECT_NE(bar.find("%"), std::string::npos) << bar.substr(0, 200);
    EXPECT_NE(bar.find("[####"), std::string::npos);
    EXPECT_EQ(terminalStandardError({QVTEST_QVCL, "md5sum", small}), "");
    // Never into a file or a pipe.
    EXPECT_EQ(qvcl({"md5sum", big}).err, "");
    EXPECT_EQ(qvcl({"alnum", big}, "", "/dev/null").err, "");
}

} // namespace
