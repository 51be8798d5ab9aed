#include "CliTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace clitest;

namespace {

// Every sixth regular file of /usr/bin in name order, 200 of them: a fixed
// sample of real binaries and scripts of every size.
std::vector<std::string> sampleOfUsrBin()
{
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/bin")) {
        std::error_code error;
        if (entry.is_regular_file(error) && !entry.is_symlink(error) && access(entry.path().c_str(), R_OK) == 0)
            all.push_back(entry.path().string());
    }
    std::sort(all.begin(), all.end());
    std::vector<std::string> sample;
    const size_t step = std::max<size_t>(1, all.size() / 200);
    for (size_t i = 0; i < all.size() && sample.size() < 200; i += step)
        sample.push_back(all[i]);
    return sample;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

TEST(DigestTest, AgreesWithCoreutilsOnUsrBinAndChecksItsLists)
{
    const std::vector<std::string> files = sampleOfUsrBin();
    ASSERT_GE(files.size(), 150u);
    TempDir dir;
    for (const char* command : {"md5sum", "sha256sum", "sha1sum"}) {
        std::vector<std::string> arguments = files;
        arguments.insert(arguments.begin(), command);
        const clitest::Result expected = run(arguments);
        const clitest::Result actual = qvcl(arguments);
        ASSERT_EQ(actual.status, 0) << command << ": " << actual.err;
        EXPECT_TRUE(actual.out == expected.out) << command;

        // -c on coreutils' own list: every file OK.
        const std::string list = dir.file(std::string(command) + ".txt");
        writeFile(list, expected.out);
        const clitest::Result checked = qvcl({command, "-c", list});
        EXPECT_EQ(checked.status, 0);
        EXPECT_EQ(std::count(checked.out.begin(), checked.out.end(), '\n'), static_cast<long>(files.size()));
        EXPECT_EQ(checked.out.find("FAILED"), std::string::npos);

        // A damaged list: a wrong sum, a missing file, a garbled line, and a
        // name with a backslash. Same lines, warnings and status as coreutils.
        writeFile(dir.file("back\\slash"), "x");
        std::string damaged = expected.out;
        damaged[0] = damaged[0] == '0' ? '1' : '0';
        damaged += expected.out.substr(0, expected.out.find(' ')) + "  " + dir.file("missing") + "\n";
        damaged += "not a checksum line\n";
        damaged += run({command, dir.file("back\\slash")}).out;
        writeFile(list, damaged);
        const clitest::Result coreutils = run({command, "-c", list});
        const clitest::Result ours = qvcl({command, "-c", list});
        EXPECT_EQ(ours.status, coreutils.status);
        EXPECT_TRUE(ours.out == coreutils.out)
            << ours.out.substr(ours.out.size() - std::min<size_t>(ours.out.size(), 300));
        EXPECT_EQ(ours.err,
                  replaceAll(coreutils.err, std::string(command) + ": ", std::string("qvcl ") + command + ": "));
    }
}

TEST(DigestTest, ReportsUnreadableFilesAndKeepsGoing)
{
    TempDir dir;
    writeFile(dir.file("a"), "abc");
    const clitest::Result result = qvcl({"md5sum", dir.file("missing"), dir.path(), dir.file("a")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "900150983cd24fb0d6963f7d28e17f72  " + dir.file("a") + "\n");
    EXPECT_EQ(result.err, "qvcl md5sum: " + dir.file("missing") +
                              ": No such file or directory\nqvcl md5sum: " + dir.path() + ": Is a directory\n");
    EXPECT_EQ(qvcl({"sha256sum"}, dir.file("a")).out,
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  -\n");
    EXPECT_EQ(failureOf(qvcl({"md5sum", "-c", dir.file("a")})),
              (Failure{1, "qvcl md5sum: " + dir.file("a") + ": no properly formatted checksum lines found\n"}));
    EXPECT_EQ(qvcl({"md5sum", "-x"}).status, 2);
    EXPECT_EQ(qvcl({"md5sum", dir.file("a")}, "", "/dev/full").status, 1);
}

} // namespace
