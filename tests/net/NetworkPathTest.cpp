#include <qv/core/Exception.h>
#include <qv/net/NetworkPath.h>

#include <gtest/gtest.h>

using qv::String;
using qv::net::NetworkPath;

namespace {

const String kMounts(u"sysfs /sys sysfs rw 0 0\n"
                     u"/dev/sda1 / ext4 rw 0 0\n"
                     u"fileserver:/export/home /home nfs4 rw,vers=4.2 0 0\n"
                     u"//winbox/Public\\040Docs /mnt/public\\040docs cifs rw 0 0\n"
                     u"/dev/sdb1 /home/local ext4 rw 0 0\n"
                     u"broken line\n");

// Every part of a path, then its text and UNC forms, in one line.
std::string partsOf(const NetworkPath& path)
{
    const char* const kinds[] = {"LOCAL", "NFS", "SMB"};
    return std::string(kinds[path.getKind()]) + " " + path.getServer().toUtf8() + " [" + path.getShare().toUtf8() +
           "] [" + path.getRemainder().toUtf8() + "] " + path.getMountPoint().toUtf8() + " = " +
           path.toString().toUtf8() + " = " + path.toUNC().toUtf8();
}

} // namespace

TEST(NetworkPath, FindsTheMountOfALocalPath)
{
    EXPECT_EQ(partsOf(NetworkPath::forLocalPath(String(u"/home/ann//docs/./a.txt"), kMounts)),
              "NFS fileserver [/export/home] [/ann/docs/a.txt] /home = fileserver:/export/home/ann/docs/a.txt = "
              "\\\\fileserver\\export\\home\\ann\\docs\\a.txt");
    EXPECT_EQ(partsOf(NetworkPath::forLocalPath(String(u"/mnt/public docs/report.doc"), kMounts)),
              "SMB winbox [Public Docs] [/report.doc] /mnt/public docs = //winbox/Public Docs/report.doc = "
              "\\\\winbox\\Public Docs\\report.doc");

    // A deeper local mount hides the network one; a sibling name is no prefix.
    EXPECT_FALSE(NetworkPath::forLocalPath(String(u"/home/local/x"), kMounts).isNetwork());
    EXPECT_FALSE(NetworkPath::forLocalPath(String(u"/homework"), kMounts).isNetwork());
    EXPECT_TRUE(NetworkPath::forLocalPath(String(u"/home"), kMounts).isNetwork());
    EXPECT_EQ(NetworkPath::forLocalPath(String(u"/home"), kMounts).getRemainder().getLength(), 0);
    EXPECT_EQ(partsOf(NetworkPath::forLocalPath(String(u"/etc/hosts"), kMounts)).substr(0, 37),
              "LOCAL  [] [/etc/hosts] / = /etc/hosts");
    EXPECT_THROW(NetworkPath::forLocalPath(String(u"relative/path"), kMounts), qv::InvalidPathException);
    // This machine's own table reads without failing.
    EXPECT_NO_THROW(NetworkPath::forLocalPath(String(u"/tmp")));
}

TEST(NetworkPath, ParsesUncAndNfsText)
{
    const NetworkPath unc = NetworkPath::parse(String(u"\\\\server\\share\\dir\\file.txt"));
    EXPECT_EQ(partsOf(unc), "SMB server [share] [/dir/file.txt]  = //server/share/dir/file.txt = "
                            "\\\\server\\share\\dir\\file.txt");
    EXPECT_EQ(NetworkPath::parse(String(u"//server/share")).getRemainder().getLength(), 0);
    EXPECT_TRUE(unc.equals(NetworkPath::parse(String(u"//server/share/dir/file.txt"))));
    EXPECT_EQ(unc.hashCode(), NetworkPath::parse(String(u"//server/share/dir/file.txt")).hashCode());

    EXPECT_EQ(partsOf(NetworkPath::parse(String(u"host:/export/a"))).substr(0, 23), "NFS host [/export/a] []");
    for (const char16_t* bad :
         {u"\\\\server", u"\\\\server\\", u"\\\\\\share", u"/local/path", u":/x", u"a/b:/c", u""}) {
        EXPECT_THROW(NetworkPath::parse(String(bad)), qv::InvalidPathException) << String(bad).toUtf8();
    }
}
