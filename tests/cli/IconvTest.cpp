#include "CliTestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdio>
#include <random>
#include <sstream>

using namespace clitest;

namespace {

// glibc's messages with the program's name as qvcl words it.
std::string asQvcl(std::string messages)
{
    std::string result;
    std::istringstream lines(messages);
    for (std::string line; std::getline(lines, line);)
        result += (line.compare(0, 7, "iconv: ") == 0 ? "qvcl " + line : line) + "\n";
    return result;
}

// The encodings qvcl lists, each under the first of its names glibc knows.
std::vector<std::string> sharedEncodings()
{
    std::vector<std::string> shared;
    std::istringstream lines(qvcl({"encodings"}).out);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::vector<std::string> names;
        std::string word;
        while (words >> word)
            names.push_back(word);
        if (names.size() > 2)
            names.erase(names.begin() + 1);
        for (const std::string& name : names) {
            if (run({"iconv", "-f", name, "-t", "UTF-8"}).status == 0) {
                shared.push_back(name);
                break;
            }
        }
    }
    return shared;
}

void expectSameAsGlibc(std::vector<std::string> arguments, const std::string& input, const std::string& what)
{
    std::vector<std::string> glibc = arguments;
    glibc.insert(glibc.begin(), "iconv");
    arguments.insert(arguments.begin(), "iconv");
    const clitest::Result expected = run(glibc, input);
    const clitest::Result actual = qvcl(arguments, input);
    EXPECT_EQ(actual.status, expected.status) << what;
    EXPECT_TRUE(actual.out == expected.out)
        << what << ": output differs (" << actual.out.size() << " bytes against " << expected.out.size() << ")";
    EXPECT_EQ(actual.err, asQvcl(expected.err)) << what;
}

// The sanitizers slow every child process tenfold: there the corpus is cut
// to a size that still crosses every converter's buffer boundary.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const char* const kManPages = "2";
const int kRandomCharacters = 6000;
const bool kSanitized = true;
#else
const char* const kManPages = "12";
const int kRandomCharacters = 30000;
const bool kSanitized = false;
#endif

class IconvTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new TempDir;
        // Licences and manual pages as they are on the system, and random
        // text with characters from every plane.
        run({"sh", "-c",
             "cat /usr/share/common-licenses/* > " + s_dir->file("system.txt") +
                 " && for f in $(ls /usr/share/man/man1/*.1.gz | head -" + std::string(kManPages) +
                 "); do zcat \"$f\"; done >> " + s_dir->file("system.txt")});
        writeFile(s_dir->file("random.txt"), clitest::randomUnicodeText(22, kRandomCharacters));
        std::mt19937 random(7);
        std::string bytes;
        for (int i = 0; i < 4096; ++i)
            bytes += static_cast<char>(random() % 6 ? random() % 128 : random() % 256);
        writeFile(s_dir->file("bytes.bin"), bytes);
    }
    static void TearDownTestSuite() { delete s_dir; }
    static TempDir* s_dir;
};

TempDir* IconvTest::s_dir = nullptr;

TEST_F(IconvTest, AgreesWithGlibcIconvOnEveryEncodingBothKnow)
{
    const std::vector<std::string> encodings = sharedEncodings();
    ASSERT_GE(encodings.size(), 20u);
    for (const std::string& encoding : encodings) {
        for (const char* corpus : {"system.txt", "random.txt"}) {
            const std::string source = s_dir->file(corpus);
            const std::string what = std::string(corpus) + " to " + encoding;
            expectSameAsGlibc({"-f", "UTF-8", "-t", encoding}, source, what);
            expectSameAsGlibc({"-c", "-f", "UTF-8", "-t", encoding}, source, what + " with -c");
            // Back from what glibc wrote in that encoding.
            const std::string encoded = s_dir->file("encoded");
            run({"iconv", "-c", "-f", "UTF-8", "-t", encoding}, source, encoded);
            expectSameAsGlibc({"-f", encoding, "-t", "UTF-8"}, encoded, what + " and back");
        }
        // Arbitrary bytes: the same malformed input found at the same offset.
        expectSameAsGlibc({"-f", encoding, "-t", "UTF-16LE"}, s_dir->file("bytes.bin"), "bytes from " + encoding);
        // Except there: an undefined CP932 double-byte pair is one character
        // glibc skips whole, where the library's decoder drops the lead byte
        // and reads on from the trail byte (docs/cli.md).
        if (encoding != "CP932")
            expectSameAsGlibc({"-c", "-f", encoding, "-t", "UTF-16LE"}, s_dir->file("bytes.bin"),
                              "bytes from " + encoding + " with -c");
    }
}

TEST_F(IconvTest, ReadsFilesInTurnOrStandardInput)
{
    writeFile(s_dir->file("a"), "caf\xc3\xa9 ");
    writeFile(s_dir->file("b"), "na\xc3\xafve\n");
    const clitest::Result files =
        qvcl({"iconv", "-f", "UTF-8", "-t", "ISO-8859-1", s_dir->file("a"), s_dir->file("b")});
    EXPECT_EQ(files.status, 0);
    EXPECT_EQ(files.out, "caf\xe9 na\xefve\n");
    const clitest::Result piped = qvcl({"iconv", "--from-code=UTF-8", "--to-code=UTF-16BE"}, s_dir->file("a"));
    EXPECT_EQ(piped.out, std::string("\0c\0a\0f\0\xe9\0 ", 10));
    // A missing file among others: reported, the others converted, status 1.
    const clitest::Result missing =
        qvcl({"iconv", "-f", "UTF-8", "-t", "ASCII", s_dir->file("nothing"), s_dir->file("b")});
    EXPECT_EQ(missing.status, 1);
    // b's third byte is its first beyond ASCII; offsets count from each file's start.
    EXPECT_EQ(missing.err, "qvcl iconv: cannot open input file `" + s_dir->file("nothing") +
                               "': No such file or directory\n"
                               "qvcl iconv: illegal input sequence at position 2\n");
}

TEST_F(IconvTest, FailuresAreOneLineWithStatusAndNoPartialOutputFile)
{
    const std::string text = s_dir->file("text");
    writeFile(text, "abc\xff"
                    "def");
    const std::string target = s_dir->file("target");
    writeFile(target, "old contents");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    } cases[] = {
        {{"-f", "UTF-8", "-t", "UTF-16LE", s_dir->file("nothing")},
         1,
         "qvcl iconv: cannot open input file `" + s_dir->file("nothing") + "': No such file or directory\n"},
        {{"-f", "UTF-8", "-t", "UTF-16LE", s_dir->path()},
         1,
         "qvcl iconv: cannot open input file `" + s_dir->path() + "': Is a directory\n"},
        {{"-f", "NO-SUCH", "-t", "UTF-8", text}, 1, "qvcl iconv: conversion from `NO-SUCH' is not supported\n"},
        {{"-f", "UTF-8", "-t", "NO-SUCH", text}, 1, "qvcl iconv: conversion to `NO-SUCH' is not supported\n"},
        {{"-f", "X", "-t", "Y", text}, 1, "qvcl iconv: conversions from `X' and to `Y' are not supported\n"},
        {{"-f", "UTF-8", "-t", "UTF-16LE", "-o", target, text},
         1,
         "qvcl iconv: illegal input sequence at position 3\n"},
        {{"-f", "UTF-8", "-t", "UTF-16LE", "-o", s_dir->file("no/such/dir"), text},
         1,
         "qvcl iconv: cannot open output file `" + s_dir->file("no/such/dir") + "': No such file or directory\n"},
        {{"-f", "UTF-8", "-t", "UTF-16LE", "-o", "/dev/full", s_dir->file("a")},
         1,
         "qvcl iconv: conversion stopped due to problem in writing the output: No space left on device\n"},
        {{"-f", "UTF-8", "--colour"}, 2, "qvcl iconv: unknown option: --colour (see 'qvcl iconv --help')\n"},
    };
    writeFile(s_dir->file("a"), "abc");
    for (const Case& c : cases) {
        std::vector<std::string> arguments = c.arguments;
        arguments.insert(arguments.begin(), "iconv");
        EXPECT_EQ(failureOf(qvcl(arguments)), (Failure{c.status, c.message}));
    }
    // The failed -o left the old file and no temporary one.
    EXPECT_EQ(readFile(target), "old contents");
    EXPECT_EQ(run({"sh", "-c", "ls -A " + s_dir->path() + " | grep -c '^\\.'"}).out, "0\n");
    // Standard output on a full disk.
    EXPECT_EQ(
        failureOf(qvcl({"iconv", "-f", "UTF-8", "-t", "UTF-16LE", s_dir->file("a")}, "", "/dev/full")),
        (Failure{1, "qvcl iconv: conversion stopped due to problem in writing the output: No space left on device\n"}));
    // A good run replaces the file whole, keeping its permissions.
    chmod(target.c_str(), 0640);
    EXPECT_EQ(qvcl({"iconv", "-f", "UTF-8", "-t", "UTF-16LE", "-o", target, s_dir->file("a")}).status, 0);
    EXPECT_EQ(readFile(target), std::string("a\0b\0c\0", 6));
    struct stat status {};
    stat(target.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(IconvTest, StreamsInConstantMemory)
{
    // 128 MiB through the converters in half that much memory.
    if (kSanitized)
        GTEST_SKIP() << "the sanitizers' own memory hides the converters'";
    const std::string big = s_dir->file("big");
    ASSERT_EQ(run({"sh", "-c", "head -c 134217728 /dev/zero | tr '\\0' 'x' > " + big}).status, 0);
    const clitest::Result result = qvcl({"iconv", "-f", "UTF-8", "-t", "UTF-16LE", big}, "", "/dev/null");
    std::remove(big.c_str());
    EXPECT_EQ(result.status, 0);
    EXPECT_LT(result.maxResidentKiB, 64 * 1024);
}

} // namespace
