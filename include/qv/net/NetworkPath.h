#ifndef QV_NET_NETWORKPATH_H
#define QV_NET_NETWORKPATH_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

namespace qv {
namespace net {

// Where a file lives on the network. On Linux a network file system is
// mounted rather than mapped to a drive letter, so the mount table tells
// which source (NFS "host:/export", SMB/CIFS "//server/share") a local path
// comes from; the rest of the path is kept as the remainder. UNC text
// ("\\server\share\dir") from older callers parses into the same parts.
class QV_EXPORT NetworkPath : public Object {
public:
    enum Kind { LOCAL, NFS, SMB };

    // An empty local path.
    NetworkPath();
    NetworkPath(const NetworkPath& other);
    NetworkPath& operator=(const NetworkPath& other);
    ~NetworkPath() noexcept(false) override;

    // The mount that holds the absolute path localPath (the longest mount
    // point that is a whole-segment prefix), from /proc/self/mounts. A path
    // that is not absolute throws InvalidPathException.
    static NetworkPath forLocalPath(const String& localPath);
    // The same against the text of a mount table in the /proc/mounts form.
    static NetworkPath forLocalPath(const String& localPath, const String& mountTable);
    // "\\server\share\rest", "//server/share/rest" or "host:/export/rest".
    // Anything else throws InvalidPathException.
    static NetworkPath parse(const String& text);

    Kind getKind() const noexcept { return m_kind; }
    bool isNetwork() const noexcept { return m_kind != LOCAL; }
    // Host of the source; empty for local paths.
    const String& getServer() const noexcept { return m_server; }
    // The export (NFS, "/export") or share (SMB, "share").
    const String& getShare() const noexcept { return m_share; }
    // The path below the share, "/" separated, starting with "/" or empty.
    const String& getRemainder() const noexcept { return m_remainder; }
    // Where it is mounted locally; empty when parsed from text.
    const String& getMountPoint() const noexcept { return m_mountPoint; }

    using Object::toString;
    // "host:/export/rest", "//server/share/rest", or the local path.
    String toString() override;
    // "\\server\share\rest" for SMB and NFS (NFS shows its export without
    // the leading slash); the local path otherwise.
    String toUNC() const;
    bool equals(const Object& other) const override;
    uint32_t hashCode() const override;
    Object* clone() const override;

private:
    Kind m_kind;
    String m_server;
    String m_share;
    String m_remainder;
    String m_mountPoint;
    String m_local;
};

} // namespace net
} // namespace qv

#endif
