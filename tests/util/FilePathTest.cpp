#include <qv/core/Exception.h>
#include <qv/util/FilePath.h>

#include "QvTextPrinting.h"
#include "Thrown.h"

#include <gtest/gtest.h>

#include <unordered_set>

using qv::String;
using qv::util::FilePath;

namespace {

std::string normalised(const char16_t* text)
{
    return FilePath(text).getPath().toUtf8();
}

template <class Operation>
std::string refusal(Operation&& operation)
{
    return qvtest::messageOf<qv::InvalidPathException>(operation);
}

} // namespace

TEST(FilePath, NormalisesSeparatorsDotsAndDotDots)
{
    EXPECT_EQ(normalised(u""), "");
    EXPECT_EQ(normalised(u"/"), "/");
    EXPECT_EQ(normalised(u"//a///b//"), "/a/b");
    EXPECT_EQ(normalised(u"/a/./b/."), "/a/b");
    EXPECT_EQ(normalised(u"/a/b/../c"), "/a/c");
    EXPECT_EQ(normalised(u"/a/.."), "/");
    EXPECT_EQ(normalised(u"a/b/../../.."), "..");
    EXPECT_EQ(normalised(u"../../x/../y"), "../../y");
    EXPECT_EQ(normalised(u"./"), ".");
    EXPECT_EQ(normalised(u"a/.."), ".");
    EXPECT_EQ(normalised(u"C:\\Data\\..\\logs\\\\app.log"), "C:/logs/app.log");
    EXPECT_EQ(normalised(u"\\\\server\\share"), "/server/share");
    EXPECT_EQ(normalised(u"a/...b/..."), "a/...b/...") << "only . and .. are special";
    EXPECT_EQ(normalised(u"/\u00E9t\u00E9/\U0001F600"), "/\xC3\xA9t\xC3\xA9/\xF0\x9F\x98\x80");
}

TEST(FilePath, RefusesClimbingAboveTheRootAndNul)
{
    EXPECT_EQ(refusal([] { FilePath(u"/.."); }), "path climbs above the root: /..");
    EXPECT_EQ(refusal([] { FilePath(u"/a/../../b"); }), "path climbs above the root: /a/../../b");
    EXPECT_EQ(refusal([] { FilePath(u"\\..\\x"); }), "path climbs above the root: /../x");
    EXPECT_EQ(refusal([] { FilePath(String(u"a\0b", 3)); }).substr(0, 30), "path contains a NUL character:");
    EXPECT_EQ(refusal([] { FilePath(u"/a").append(String(u"../..")); }), "path climbs above the root: /a/../..");
    EXPECT_EQ(refusal([] { FilePath(u"/a").append(String(u"/b")); }), "cannot append an absolute path: /b");
}

TEST(FilePath, PartsOfAPath)
{
    const FilePath file(u"/srv/data/archive.tar.gz");
    EXPECT_TRUE(file.isAbsolute());
    EXPECT_EQ(file.getFileName(), String(u"archive.tar.gz"));
    EXPECT_EQ(file.getBaseName(), String(u"archive.tar"));
    EXPECT_EQ(file.getExtension(), String(u"gz"));
    EXPECT_EQ(file.getDirectory(), String(u"/srv/data"));
    EXPECT_EQ(file.getParent().getParent(), FilePath(u"/srv"));
    EXPECT_EQ(FilePath(u"/srv").getParent(), FilePath(u"/"));
    EXPECT_EQ(FilePath(u"/").getParent(), FilePath(u"/"));
    EXPECT_EQ(FilePath(u"/").getFileName(), String(u""));

    const FilePath hidden(u"home/.profile");
    EXPECT_FALSE(hidden.isAbsolute());
    EXPECT_EQ(hidden.getBaseName(), String(u".profile"));
    EXPECT_EQ(hidden.getExtension(), String(u""));
    EXPECT_EQ(FilePath(u"README").getExtension(), String(u""));
    EXPECT_EQ(FilePath(u"README").getDirectory(), String(u"."));
    EXPECT_EQ(FilePath(u".").getFileName(), String(u""));
    EXPECT_EQ(FilePath(u"..").getExtension(), String(u""));
    EXPECT_EQ(FilePath(u"name.").getBaseName(), String(u"name"));
    EXPECT_TRUE(FilePath().isEmpty());
    EXPECT_TRUE(FilePath().getParent().isEmpty());
}

TEST(FilePath, AppendAndResolve)
{
    const FilePath base(u"/var/log");
    EXPECT_EQ(base.append(String(u"app/../sys.log")), FilePath(u"/var/log/sys.log"));
    EXPECT_EQ(base.append(String(u"..\\lib")), FilePath(u"/var/lib"));
    EXPECT_EQ(base.append(FilePath()), base);
    EXPECT_EQ(FilePath().append(String(u"x")), FilePath(u"x"));
    EXPECT_EQ(FilePath(u"rel").append(String(u"../../up")), FilePath(u"../up"));
    EXPECT_EQ(base.resolve(String(u"/etc/hosts")), FilePath(u"/etc/hosts"));
    EXPECT_EQ(base.resolve(String(u"messages")), FilePath(u"/var/log/messages"));
}

TEST(FilePath, ComparesAndHashesByNormalisedText)
{
    EXPECT_EQ(FilePath(u"/a//b/"), FilePath(u"\\a\\b"));
    EXPECT_NE(FilePath(u"/a/B"), FilePath(u"/a/b")) << "case matters";
    EXPECT_TRUE(FilePath(u"/a/b").equals(FilePath(u"/a/./b")));
    EXPECT_FALSE(FilePath(u"/a").equals(String(u"/a")));
    EXPECT_EQ(FilePath(u"/a/b").hashCode(), FilePath(u"/a/c/../b").hashCode());
    EXPECT_LT(FilePath(u"/a").compareTo(FilePath(u"/b")), 0);
    EXPECT_TRUE(FilePath(u"/a") < FilePath(u"/b"));
    EXPECT_THROW(FilePath(u"/a").compareTo(String(u"/a")), qv::CastFailedException);
    std::unordered_set<FilePath> set{FilePath(u"x/y"), FilePath(u"x//y/"), FilePath(u"x")};
    EXPECT_EQ(set.size(), 2u);

    FilePath copy(u"/a");
    copy = FilePath(u"/b/c");
    EXPECT_EQ(copy.toString(), String(u"/b/c"));
    EXPECT_EQ(copy.GetRefCount(), 0) << "a copy does not take the source's count";
    EXPECT_EQ(FilePath(reinterpret_cast<const unsigned short*>(u"/u")).toNarrow(), "/u");
}
