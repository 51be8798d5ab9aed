#include <qv/util/IniFile.h>
#include <qv/util/IniFileException.h>
#include <qv/util/IniFileIterator.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include "AllocationSweep.h"
#include "ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using qv::String;
using qv::util::IniFile;
using qv::util::IniFileException;
using qv::util::IniFileKeyIterator;
using qv::util::IniFileSetIterator;

namespace {

class IniFileTest : public ::testing::Test {
protected:
    void write(const std::string& content, const std::string& path = std::string())
    {
        qvtest::writeFile(path.empty() ? m_path : path, content);
    }
    std::string read(const std::string& path = std::string()) const
    {
        return qvtest::readFile(path.empty() ? m_path : path);
    }
    const char16_t* path() { return (m_widePath = String(m_path.c_str()).toU16String()).c_str(); }
    // The file's modification time must grow for a reload to happen; pushing
    // it a second ahead keeps the tests independent of the clock's grain.
    void touchLater()
    {
        struct stat info;
        ASSERT_EQ(stat(m_path.c_str(), &info), 0);
        struct timespec times[2] = {info.st_atim, info.st_mtim};
        times[1].tv_sec += 1;
        ASSERT_EQ(utimensat(AT_FDCWD, m_path.c_str(), times, 0), 0);
    }

    qvtest::TempDir m_temp{"qvcl3-ini"};
    const std::string m_dir = m_temp.path();
    const std::string m_path = m_temp.file("test.ini");
    std::u16string m_widePath;
};

std::string valueOf(IniFile& file, const char16_t* set, const char16_t* key)
{
    char16_t buffer[256] = {};
    const qv::Result result = file.GetValue(set, key, buffer, 256);
    if (result != 0)
        return "<" + std::to_string(static_cast<uint32_t>(result)) + ">";
    return String(buffer).toUtf8();
}

const std::string kMissing = "<" + std::to_string(0x80070002u) + ">";

std::vector<std::string> names(qv::util::IniFileIteratorBase&& iterator)
{
    std::vector<std::string> result;
    while (iterator.hasNext())
        result.push_back(iterator.next().toUtf8());
    return result;
}

} // namespace

TEST_F(IniFileTest, LoadFollowsTheFormatsRules)
{
    write("early=dropped\n"
          "[a]x]\n"
          "key = value \n"
          "  indented=ignored\n"
          "\tk2=ignored\n"
          "# comment=1\n"
          "; comment=2\n"
          ": comment=3\n"
          "\n"
          "dup=1\n"
          "dup=2\n"
          "[b]\n"
          "eq=x=y\n"
          "last=v");
    IniFile file(path());
    EXPECT_EQ(valueOf(file, u"a]x", u"key"), "value");
    EXPECT_EQ(valueOf(file, u"a]x", u"dup"), "2");
    EXPECT_EQ(valueOf(file, u"a]x", u"indented"), kMissing);
    EXPECT_EQ(valueOf(file, u"a]x", u"k2"), kMissing);
    EXPECT_EQ(valueOf(file, u"a]x", u"# comment"), kMissing);
    EXPECT_EQ(valueOf(file, u"", u"early"), kMissing);
    EXPECT_EQ(valueOf(file, u"b", u"eq"), "x=y");
    // The last character of a key line goes, whether or not it is a line feed.
    EXPECT_EQ(valueOf(file, u"b", u"last"), "");
    EXPECT_EQ(names(IniFileSetIterator(file, u"")), (std::vector<std::string>{"a]x", "b"}));
    EXPECT_EQ(names(IniFileKeyIterator(file, u"a]x")), (std::vector<std::string>{"dup", "key"}));
}

TEST_F(IniFileTest, BrokenLinesEndTheLoadSilently)
{
    write("[a]\nk=1\ngarbage\n[b]\nx=1\n");
    IniFile withGarbage(path());
    EXPECT_EQ(valueOf(withGarbage, u"a", u"k"), "1");
    EXPECT_EQ(valueOf(withGarbage, u"b", u"x"), kMissing);

    write("[a]\nk=1\n[b\n[c]\nz=1\n");
    touchLater();
    IniFile brokenHeader(path());
    EXPECT_EQ(valueOf(brokenHeader, u"a", u"k"), kMissing);
    EXPECT_EQ(names(IniFileSetIterator(brokenHeader, u"")), std::vector<std::string>{"a"});
    EXPECT_TRUE(names(IniFileKeyIterator(brokenHeader, u"a")).empty());
}

TEST_F(IniFileTest, HostileFilesLoadAsTheLineRulesSay)
{
    // One 10 MB line is read 511 bytes at a time: the first piece is a key
    // (its last byte dropped), the second has no '=' and ends the load.
    write("[s]\nk=" + std::string(10 << 20, 'v') + "\n[t]\nx=1\n");
    IniFile longLine(path());
    char16_t value[600] = {};
    ASSERT_EQ(longLine.GetValue(u"s", u"k", value, 600), 0);
    EXPECT_EQ(String(value), String(u'v', 508));
    EXPECT_EQ(valueOf(longLine, u"t", u"x"), kMissing);

    // A piece is read as a C string: NUL bytes hide the rest of their piece,
    // here the header that shares the last piece with them.
    write(std::string(1 << 20, '\0') + "[s]\nk=1\n[t]\nx=1\n");
    touchLater();
    IniFile zeros(path());
    EXPECT_EQ(valueOf(zeros, u"s", u"k"), kMissing);
    EXPECT_EQ(names(IniFileSetIterator(zeros, u"")), std::vector<std::string>{"t"});
}

TEST_F(IniFileTest, RepeatedSetsMergeInTheMiddleAndTheLastOneReplaces)
{
    write("[a]\nk=1\nj=1\n[b]\nx=1\n[a]\nk=2\n[c]\ny=1\n");
    IniFile merged(path());
    EXPECT_EQ(valueOf(merged, u"a", u"k"), "2");
    EXPECT_EQ(valueOf(merged, u"a", u"j"), "1");

    write("[a]\nk=1\nj=1\n[a]\nk=2\n");
    touchLater();
    IniFile replaced(path());
    EXPECT_EQ(valueOf(replaced, u"a", u"k"), "2");
    EXPECT_EQ(valueOf(replaced, u"a", u"j"), kMissing);
}

TEST_F(IniFileTest, Utf8MarkSwitchesTheRestOfTheFile)
{
    write("[s]\nbefore=\xC3\xA9\n\xEF\xBB\xBF"
          "after=\xC3\xA9\nlater=\xC3\xA9\nbad=\xFF\xC3(\n");
    IniFile file(path());
    EXPECT_EQ(valueOf(file, u"s", u"after"), "\xC3\xA9");
    // Bytes the encoding can't read are taken one by one as ISO-8859-1.
    EXPECT_EQ(valueOf(file, u"s", u"bad"), "\xC3\xBF\xC3\x83(");
    EXPECT_EQ(valueOf(file, u"s", u"later"), "\xC3\xA9");
    // Before the mark, the bytes are read in the default encoding.
    char16_t name[64] = {};
    if (QVGetDefaultCharEncoding(name, 64) == 0 && String(name).toUtf8() != "UTF-8") {
        EXPECT_NE(valueOf(file, u"s", u"before"), "\xC3\xA9");
    }
}

// Plain ASCII key lines are split without the converter; a line that starts
// with a non-ASCII character goes through it. Both must read every line
// alike: the key of the second is the first's behind that character.
TEST_F(IniFileTest, AsciiLinesReadAsTheConverterReadsThem)
{
    std::mt19937 random(2024);
    const char alphabet[] = " \t\r=ab";
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> lines;
        for (int n = 0; n < 6; ++n) {
            std::string line(1, "ab="[random() % 3]);
            for (int i = random() % 8; i > 0; --i)
                line += alphabet[random() % 6];
            lines.push_back(line + (n == 5 && random() % 2 ? "x" : "\n"));
        }
        std::string plain = "\xEF\xBB\xBF[s]\n";
        std::string marked = plain;
        for (const std::string& line : lines) {
            plain += line;
            marked += "\xC3\xA9" + line;
        }
        write(plain);
        IniFile plainFile(path());
        const std::vector<std::string> plainKeys = names(IniFileKeyIterator(plainFile, u"s"));
        write(marked, m_dir + "/marked.ini");
        IniFile markedFile(String((m_dir + "/marked.ini").c_str()).getData());
        const std::vector<std::string> markedKeys = names(IniFileKeyIterator(markedFile, u"s"));
        ASSERT_EQ(plainKeys.size(), markedKeys.size()) << plain;
        for (const std::string& key : plainKeys) {
            const String wideKey(key.c_str());
            String markedKey(u"\u00E9");
            markedKey.append(wideKey);
            EXPECT_EQ(valueOf(plainFile, u"s", wideKey.getData()), valueOf(markedFile, u"s", markedKey.getData()))
                << plain;
        }
    }
}

TEST_F(IniFileTest, GetValueCodesAndBufferRule)
{
    write("[s]\nk=abcd\n");
    IniFile file(path());
    char16_t buffer[8];
    std::fill(buffer, buffer + 8, u'#');
    EXPECT_EQ(file.GetValue(u"s", u"k", buffer, 4), static_cast<qv::Result>(0x80004009u));
    EXPECT_EQ(buffer[0], u'#');
    EXPECT_EQ(file.GetValue(u"s", u"k", buffer, 5), 0);
    EXPECT_EQ(String(buffer), String(u"abcd"));
    EXPECT_EQ(file.GetValue(u"s", u"nope", buffer, 8), static_cast<qv::Result>(0x80070002u));
    EXPECT_EQ(file.GetValue(u"nope", u"k", buffer, 8), static_cast<qv::Result>(0x80070002u));
    unsigned short wide[8];
    EXPECT_EQ(file.GetValue(reinterpret_cast<const unsigned short*>(u"s"),
                            reinterpret_cast<const unsigned short*>(u"k"), wide, 8),
              0);

    IniFile missing(String((m_dir + "/absent.ini").c_str()).getData());
    EXPECT_EQ(missing.GetValue(u"s", u"k", buffer, 8), static_cast<qv::Result>(0x80070002u));
}

TEST_F(IniFileTest, ChangesAreWrittenBackInSortedOrderWithoutComments)
{
    write("# heading\n[zeta]\nb=2\na=1\n[alpha]\nk=v\n");
    IniFile file(path());
    EXPECT_EQ(file.AddKey(u"zeta", u"a", u"x", false), static_cast<qv::Result>(0x800700B7u));
    EXPECT_EQ(file.AddKey(u"zeta", u"a", u"x", true), 0);
    EXPECT_EQ(file.AddKey(u"new", u"n", u"1", false), 0);
    EXPECT_EQ(read(), "[alpha]\nk=v\n[new]\nn=1\n[zeta]\na=x\nb=2\n");
    EXPECT_EQ(file.DeleteKey(u"zeta", u"nope"), static_cast<qv::Result>(0x80070002u));
    EXPECT_EQ(file.DeleteKey(u"new", u"n"), 0);
    EXPECT_EQ(read(), "[alpha]\nk=v\n[new]\n[zeta]\na=x\nb=2\n");
    EXPECT_EQ(valueOf(file, u"zeta", u"a"), "x");
}

TEST_F(IniFileTest, DeleteSetTakesItsSubsets)
{
    write("[a]\nk=1\n[a.b]\nk=1\n[a\\c]\nk=1\n[a/d/e]\nk=1\n[ab]\nk=1\n[b]\nk=1\n");
    IniFile file(path());
    EXPECT_EQ(names(IniFileSetIterator(file, u"a")), (std::vector<std::string>{"a.b", "a/d/e", "a\\c"}));
    EXPECT_EQ(file.DeleteSet(u"a"), 0);
    EXPECT_EQ(read(), "[ab]\nk=1\n[b]\nk=1\n");
    EXPECT_EQ(file.DeleteSet(u"absent"), 0);
}

TEST_F(IniFileTest, ReloadsWhenTheFileChangesAndKeepsItsCopyWhenItVanishes)
{
    write("[s]\nk=1\n");
    IniFile file(path());
    EXPECT_EQ(valueOf(file, u"s", u"k"), "1");
    write("[s]\nk=2\n");
    touchLater();
    EXPECT_EQ(valueOf(file, u"s", u"k"), "2");
    ASSERT_EQ(std::remove(m_path.c_str()), 0);
    EXPECT_EQ(valueOf(file, u"s", u"k"), "2");

    IniFileKeyIterator keys(file, u"s");
    EXPECT_EQ(keys.getSetName(), String(u"s"));
    EXPECT_EQ(keys.next(), String(u"k"));
    try {
        keys.next();
        FAIL() << "next() past the end";
    } catch (const IniFileException& e) {
        EXPECT_EQ(e.GetType(), IniFileException::NO_MORE_ELEMENTS);
        // The code is the general failure whatever the type.
        EXPECT_EQ(e.getResult(), static_cast<qv::Result>(0x80004005u));
    }
}

TEST_F(IniFileTest, FailedRewriteReportsOneAndNeverDestroysTheFile)
{
    IniFile nowhere(String((m_dir + "/no/such/dir.ini").c_str()).getData());
    EXPECT_EQ(nowhere.AddKey(u"s", u"k", u"v", true), 1);
    EXPECT_EQ(valueOf(nowhere, u"s", u"k"), "v");

    // A directory as the file: nothing opens, nothing is lost.
    IniFile directory(String(m_dir.c_str()).getData());
    EXPECT_EQ(directory.AddKey(u"s", u"k", u"v", true), 1);

    // The rewrite goes through a file beside the target and keeps its mode;
    // a symbolic link is followed and stays a link.
    write("[s]\nk=1\n");
    ASSERT_EQ(chmod(m_path.c_str(), 0640), 0);
    const std::string link = m_dir + "/link.ini";
    ASSERT_EQ(symlink(m_path.c_str(), link.c_str()), 0);
    IniFile viaLink(String(link.c_str()).getData());
    EXPECT_EQ(viaLink.AddKey(u"s", u"k", u"2", true), 0);
    struct stat info;
    ASSERT_EQ(lstat(link.c_str(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    ASSERT_EQ(stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_EQ(read(), "[s]\nk=2\n");
}

TEST_F(IniFileTest, KeepLayoutChangesOnlyTheLinesItMust)
{
    const std::string original = "; top comment\r\n"
                                 "orphan=kept\r\n"
                                 "[server]\r\n"
                                 "  indented = kept\r\n"
                                 "host = example   \r\n"
                                 "# port comment\r\n"
                                 "port=80\r\n"
                                 "\r\n"
                                 "[old]\r\n"
                                 "; old comment\r\n"
                                 "x=1\r\n"
                                 "[tail]\r\n"
                                 "t=1";
    write(original);
    IniFile file(path(), nullptr, IniFile::KEEP_LAYOUT);
    EXPECT_EQ(file.AddKey(u"server", u"host", u"localhost", true), 0);
    EXPECT_EQ(read(), "; top comment\r\norphan=kept\r\n[server]\r\n  indented = kept\r\nhost = localhost   \r\n"
                      "# port comment\r\nport=80\r\n\r\n[old]\r\n; old comment\r\nx=1\r\n[tail]\r\nt=1");
    EXPECT_EQ(file.AddKey(u"server", u"added", u"yes", true), 0);
    EXPECT_EQ(file.DeleteKey(u"server", u"port"), 0);
    EXPECT_EQ(file.DeleteSet(u"old"), 0);
    EXPECT_EQ(file.AddKey(u"tail", u"t", u"2", true), 0);
    EXPECT_EQ(file.AddKey(u"fresh", u"f", u"1", true), 0);
    EXPECT_EQ(read(), "; top comment\r\norphan=kept\r\n[server]\r\n  indented = kept\r\nhost = localhost   \r\n"
                      "# port comment\r\nadded=yes\r\n\r\n[tail]\r\nt=2\r\n[fresh]\r\nf=1\r\n");
    EXPECT_EQ(valueOf(file, u"tail", u"t"), "2");
    EXPECT_EQ(valueOf(file, u"server", u"added"), "yes");
}

TEST_F(IniFileTest, KeepLayoutEditOfARealConfigurationChangesOneLine)
{
    const char* sample = "/etc/systemd/journald.conf";
    std::ifstream probe(sample);
    if (!probe)
        GTEST_SKIP() << sample << " is not on this machine";
    const std::string copy = m_dir + "/journald.conf";
    ASSERT_EQ(std::system(("cp " + std::string(sample) + " " + copy).c_str()), 0);
    const std::string before = read(copy);
    IniFile file(String(copy.c_str()).getData(), nullptr, IniFile::KEEP_LAYOUT);
    ASSERT_EQ(file.AddKey(u"Journal", u"Storage", u"volatile", true), 0);
    ASSERT_EQ(file.AddKey(u"Journal", u"Storage", u"persistent", true), 0);
    const std::string after = read(copy);
    // diff counts the one added line, and the rest is untouched.
    const std::string diff = "diff " + std::string(sample) + " " + copy + " | grep -c '^[<>]'";
    FILE* pipe = popen(diff.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    char count[16] = {};
    ASSERT_NE(fgets(count, sizeof count, pipe), nullptr);
    pclose(pipe);
    EXPECT_EQ(std::string(count), "1\n");
    EXPECT_NE(after.find("Storage=persistent\n"), std::string::npos);
    EXPECT_EQ(after.size(), before.size() + std::string("Storage=persistent\n").size());
}

TEST_F(IniFileTest, ProcessesSharingALockLoseNoKey)
{
    write("");
    const std::string lock = "qvcl3-ini-test-" + std::to_string(getpid());
    const int processes = 4;
    const int keysEach = 1000;
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            IniFile file(path(), lock.c_str());
            int failures = 0;
            for (int k = 0; k < keysEach; ++k) {
                const String key = String::valueOf(p * 1000 + k);
                failures += file.AddKey(u"s", key.getData(), u"v", true) != 0;
            }
            _exit(failures == 0 ? 0 : 1);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    QVNamedSemUnlink(lock.c_str());
    IniFile file(path());
    EXPECT_EQ(names(IniFileKeyIterator(file, u"s")).size(), static_cast<size_t>(processes * keysEach));
}

TEST_F(IniFileTest, RewriteKilledAtAnyPointLeavesTheOldOrTheNewFile)
{
    // Lines stay under the format's 511 bytes; the file is large enough
    // (about 240 KB) for a kill to land in the middle of a write.
    std::string first = "[s]\n";
    for (int k = 0; k < 3000; ++k)
        first += "k" + std::to_string(10000 + k) + "=" + std::string(70, 'x') + "\n";
    std::string second = first;
    second.replace(second.find('x'), 70, std::string(70, 'y'));
    std::mt19937 random(12345);
    for (const short flags : {short(0), IniFile::KEEP_LAYOUT}) {
        for (int round = 0; round < 12; ++round) {
            write(first);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                IniFile file(path(), nullptr, flags);
                for (int i = 0;; ++i)
                    file.AddKey(u"s", u"k10000", String(i % 2 ? u'x' : u'y', 70).getData(), true);
            }
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
            kill(child, SIGKILL);
            int status = 0;
            waitpid(child, &status, 0);
            const std::string now = read();
            EXPECT_TRUE(now == first || now == second)
                << (flags ? "layout" : "plain") << " round " << round << ": " << now.size() << " bytes";
        }
    }
}

TEST_F(IniFileTest, AllocationFailureChangesNeitherCopyNorFile)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    write("[s]\nk=1\n");
    IniFile file(path());
    EXPECT_EQ(valueOf(file, u"s", u"k"), "1");
    int failures = 0;
    for (int n = 1; n < 1000; ++n) {
        QVFaultArmAllocation(n);
        const qv::Result result = file.AddKey(u"s", u"k", u"2", true);
        QVFaultDisarmAll();
        if (result == 0)
            break;
        ++failures;
        EXPECT_EQ(result, static_cast<qv::Result>(0x8007000Eu)) << n;
        EXPECT_EQ(read(), "[s]\nk=1\n") << n;
    }
    EXPECT_GT(failures, 0);
    EXPECT_EQ(read(), "[s]\nk=2\n");
}
