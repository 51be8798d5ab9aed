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

} // namespace

TEST(NetworkPath, FindsTheMountOfALocalPath)
{
    const NetworkPath nfs = NetworkPath::forLocalPath(String(u"/home/ann//docs/./a.txt"), kMounts);
    EXPECT_EQ(nfs.getKind(), NetworkPath::NFS);
    EXPECT_EQ(nfs.getServer().toUtf8(), "fileserver");
    EXPECT_EQ(nfs.getShare().toUtf8(), "/export/home");
    EXPECT_EQ(nfs.getRemainder().toUtf8(), "/ann/docs/a.txt");
    EXPECT_EQ(nfs.getMountPoint().toUtf8(), "/home");
    EXPECT_EQ(nfs.toString().toUtf8(), "fileserver:/export/home/ann/docs/a.txt");
    EXPECT_EQ(nfs.toUNC().toUtf8(), "\\\\fileserver\\export\\home\\ann\\docs\\a.txt");

    const NetworkPath smb = NetworkPath::forLocalPath(String(u"/mnt/public docs/report.doc"), kMounts);
    EXPECT_EQ(smb.getKind(), NetworkPath::SMB);
    EXPECT_EQ(smb.getServer().toUtf8(), "winbox");
    EXPECT_EQ(smb.getShare().toUtf8(), "Public Docs");
    EXPECT_EQ(smb.toString().toUtf8(), "//winbox/Public Docs/report.doc");
    EXPECT_EQ(smb.toUNC().toUtf8(), "\\\\winbox\\Public Docs\\report.doc");

    // A deeper local mount hides the network one; a sibling name is no prefix.
    EXPECT_FALSE(NetworkPath::forLocalPath(String(u"/home/local/x"), kMounts).isNetwork());
    EXPECT_FALSE(NetworkPath::forLocalPath(String(u"/homework"), kMounts).isNetwork());
    EXPECT_TRUE(NetworkPath::forLocalPath(String(u"/home"), kMounts).isNetwork());
    EXPECT_EQ(NetworkPath::forLocalPath(String(u"/home"), kMounts).getRemainder().getLength(), 0);
    const NetworkPath local = NetworkPath::forLocalPath(String(u"/etc/hosts"), kMounts);
    EXPECT_EQ(local.getKind(), NetworkPath::LOCAL);
    EXPECT_EQ(local.toString().toUtf8(), "/etc/hosts");
    EXPECT_EQ(local.getMountPoint().toUtf8(), "/");
    EXPECT_THROW(NetworkPath::forLocalPath(String(u"relative/path"), kMounts), qv::InvalidPathException);
    // This machine's own table reads without failing.
    EXPECT_NO_THROW(NetworkPath::forLocalPath(String(u"/tmp")));
}

TEST(NetworkPath, ParsesUncAndNfsText)
{
    const NetworkPath unc = NetworkPath::parse(String(u"\\\\server\\share\\dir\\file.txt"));
    EXPECT_EQ(unc.getKind(), NetworkPath::SMB);
    EXPECT_EQ(unc.getServer().toUtf8(), "server");
    EXPECT_EQ(unc.getShare().toUtf8(), "share");
    EXPECT_EQ(unc.getRemainder().toUtf8(), "/dir/file.txt");
    EXPECT_EQ(unc.toUNC().toUtf8(), "\\\\server\\share\\dir\\file.txt");
    EXPECT_EQ(NetworkPath::parse(String(u"//server/share")).getRemainder().getLength(), 0);
    EXPECT_TRUE(unc.equals(NetworkPath::parse(String(u"//server/share/dir/file.txt"))));
    EXPECT_EQ(unc.hashCode(), NetworkPath::parse(String(u"//server/share/dir/file.txt")).hashCode());

    const NetworkPath nfs = NetworkPath::parse(String(u"host:/export/a"));
    EXPECT_EQ(nfs.getKind(), NetworkPath::NFS);
    EXPECT_EQ(nfs.getShare().toUtf8(), "/export/a");
    for (const char16_t* bad :
         {u"\\\\server", u"\\\\server\\", u"\\\\\\share", u"/local/path", u":/x", u"a/b:/c", u""}) {
        EXPECT_THROW(NetworkPath::parse(String(bad)), qv::InvalidPathException) << String(bad).toUtf8();
    }
}
