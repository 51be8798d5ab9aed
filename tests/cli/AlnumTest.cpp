#include "CliTestSupport.h"

#include <gtest/gtest.h>

#include <random>

using namespace clitest;

namespace {

TEST(AlnumTest, AgreesWithBase32ForEveryLengthUpTo100)
{
    TempDir dir;
    std::mt19937 random(5);
    const std::string data = dir.file("data");
    for (size_t length = 0; length <= 100; ++length) {
        std::string bytes;
        for (size_t i = 0; i < length; ++i)
            bytes += static_cast<char>(random());
        writeFile(data, bytes);
        // base32's alphabet mapped onto the default one, padding dropped.
        const clitest::Result expected =
            run({"sh", "-c", "base32 -w 0 | tr -d = | tr A-Z2-7 ABCDEFGHJKLMNPQRSTUVWXYZ23456789"}, data);
        const clitest::Result encoded = qvcl({"alnum", "-w", "0"}, data);
        ASSERT_EQ(encoded.status, 0);
        EXPECT_EQ(encoded.out, expected.out) << length << " bytes";
        // Back, exactly: with the default wrapping, whose line ends are skipped.
        const std::string text = dir.file("text");
        ASSERT_EQ(qvcl({"alnum"}, data, text).status, 0);
        const clitest::Result decoded = qvcl({"alnum", "-d", text});
        EXPECT_EQ(decoded.status, 0);
        EXPECT_TRUE(decoded.out == bytes) << length << " bytes";
    }
}

TEST(AlnumTest, WrapsLikeBase32AndRefusesBadInput)
{
    TempDir dir;
    const std::string data = dir.file("data");
    writeFile(data, std::string(200, 'x'));
    const clitest::Result expected =
        run({"sh", "-c", "base32 -w 7 | tr -d = | tr A-Z2-7 ABCDEFGHJKLMNPQRSTUVWXYZ23456789"}, data);
    // 200 bytes make 320 characters, no padding for tr to drop.
    EXPECT_EQ(qvcl({"alnum", "--wrap=7", data}).out, expected.out);

    writeFile(dir.file("bad"), "ABCDEFGI\n");
    writeFile(dir.file("short"), "ABC\n");
    const std::string alphabet = "abcdefghijklmnopqrstuvwxyz012345";
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    } cases[] = {
        {{"alnum", "-d", dir.file("bad")}, 1, "qvcl alnum: " + dir.file("bad") + ": invalid input\n"},
        {{"alnum", "-d", dir.file("short")}, 1, "qvcl alnum: " + dir.file("short") + ": invalid input\n"},
        {{"alnum", dir.file("missing")}, 1, "qvcl alnum: " + dir.file("missing") + ": No such file or directory\n"},
        {{"alnum", dir.path()}, 1, "qvcl alnum: " + dir.path() + ": Is a directory\n"},
        {{"alnum", "-w", "x"}, 2, "qvcl alnum: invalid wrap size: 'x' (see 'qvcl alnum --help')\n"},
        {{"alnum", "--alphabet=ABC"}, 2, ""},
        {{"alnum", "--alphabet=ABCDEFGHJKLMNPQRSTUVWXYZ23456788"}, 2, ""},
        {{"alnum", "a", "b"}, 2, "qvcl alnum: extra operand 'b' (see 'qvcl alnum --help')\n"},
    };
    for (const Case& c : cases) {
        const clitest::Result result = qvcl(c.arguments);
        EXPECT_EQ(result.status, c.status) << c.arguments.back();
        if (!c.message.empty()) {
            EXPECT_EQ(result.err, c.message);
        }
    }
    // Another alphabet both ways.
    const clitest::Result encoded = qvcl({"alnum", "--alphabet=" + alphabet, data});
    EXPECT_EQ(encoded.out.find_first_not_of(alphabet + "\n"), std::string::npos);
    writeFile(dir.file("encoded"), encoded.out);
    EXPECT_EQ(qvcl({"alnum", "-d", "--alphabet=" + alphabet, dir.file("encoded")}).out, std::string(200, 'x'));
    EXPECT_EQ(qvcl({"alnum", data}, "", "/dev/full").status, 1);
}

} // namespace
