#include <qv/net/NetworkPath.h>

#include <qv/core/Exception.h>

#include <fstream>
#include <sstream>
#include <string>

namespace qv {
namespace net {

namespace {

String fromUtf8(const std::string& text)
{
    return String(text.c_str(), static_cast<int32_t>(text.size()), u"UTF-8");
}

// The mount table writes space, tab, newline and backslash as \ooo.
std::string unescapeMountField(const std::string& field)
{
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const std::string digits = field.substr(i + 1, 3);
            if (digits.find_first_not_of("01234567") == std::string::npos) {
                out += static_cast<char>(std::stoi(digits, nullptr, 8));
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return out;
}

// "a//b/./c/" to "a/b/c", keeping a leading '/'.
std::string tidy(const std::string& path)
{
    std::string out;
    std::stringstream segments(path);
    std::string segment;
    while (std::getline(segments, segment, '/')) {
        if (segment.empty() || segment == ".")
            continue;
        out += '/';
        out += segment;
    }
    return out.empty() ? "/" : out;
}

bool splitSource(const std::string& type, const std::string& source, NetworkPath::Kind& kind, std::string& server,
                 std::string& share)
{
    if (type.compare(0, 3, "nfs") == 0) {
        const size_t colon = source.find(':');
        if (colon == std::string::npos || colon == 0)
            return false;
        kind = NetworkPath::NFS;
        server = source.substr(0, colon);
        share = source.substr(colon + 1);
        return true;
    }
    if (type == "cifs" || type == "smb3" || type == "smbfs") {
        if (source.size() < 3 || (source.compare(0, 2, "//") != 0 && source.compare(0, 2, "\\\\") != 0))
            return false;
        std::string rest = source.substr(2);
        for (char& c : rest)
            if (c == '\\')
                c = '/';
        const size_t slash = rest.find('/');
        if (slash == std::string::npos || slash == 0)
            return false;
        kind = NetworkPath::SMB;
        server = rest.substr(0, slash);
        share = rest.substr(slash + 1);
        while (!share.empty() && share.back() == '/')
            share.pop_back();
        return !share.empty();
    }
    return false;
}

} // namespace

NetworkPath::NetworkPath() : m_kind(LOCAL) {}
NetworkPath::NetworkPath(const NetworkPath& other) = default;
NetworkPath& NetworkPath::operator=(const NetworkPath& other) = default;
NetworkPath::~NetworkPath() noexcept(false) = default;

NetworkPath NetworkPath::forLocalPath(const String& localPath)
{
    std::ifstream table("/proc/self/mounts");
    std::stringstream text;
    text << table.rdbuf();
    return forLocalPath(localPath, fromUtf8(text.str()));
}

NetworkPath NetworkPath::forLocalPath(const String& localPath, const String& mountTable)
{
    const std::string raw = localPath.toUtf8();
    if (raw.empty() || raw[0] != '/')
        throw InvalidPathException(String(u"path is not absolute"));
    const std::string path = tidy(raw);
    std::istringstream lines(mountTable.toUtf8());
    std::string line;
    std::string bestMount;
    std::string bestSource;
    std::string bestType;
    bool found = false;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string source, mount, type;
        if (!(fields >> source >> mount >> type))
            continue;
        mount = tidy(unescapeMountField(mount));
        const bool covers = mount == "/" || path == mount || path.compare(0, mount.size() + 1, mount + "/") == 0;
        // A later mount on the same point hides the earlier one.
        if (covers && (!found || mount.size() >= bestMount.size())) {
            found = true;
            bestMount = mount;
            bestSource = unescapeMountField(source);
            bestType = type;
        }
    }
    NetworkPath result;
    result.m_local = fromUtf8(path);
    std::string server, share;
    if (found && splitSource(bestType, bestSource, result.m_kind, server, share)) {
        result.m_server = fromUtf8(server);
        result.m_share = fromUtf8(share);
        result.m_mountPoint = fromUtf8(bestMount);
        result.m_remainder = fromUtf8(bestMount == "/" ? (path == "/" ? "" : path) : path.substr(bestMount.size()));
    } else {
        result.m_kind = LOCAL;
        result.m_remainder = result.m_local;
        if (found)
            result.m_mountPoint = fromUtf8(bestMount);
    }
    return result;
}

NetworkPath NetworkPath::parse(const String& text)
{
    std::string raw = text.toUtf8();
    NetworkPath result;
    std::string server, share, rest;
    if (raw.size() > 2 && (raw.compare(0, 2, "\\\\") == 0 || raw.compare(0, 2, "//") == 0)) {
        for (char& c : raw)
            if (c == '\\')
                c = '/';
        const size_t serverEnd = raw.find('/', 2);
        if (serverEnd == std::string::npos || serverEnd == 2)
            throw InvalidPathException(String(u"no share in network path"));
        const size_t shareEnd = raw.find('/', serverEnd + 1);
        server = raw.substr(2, serverEnd - 2);
        share = raw.substr(serverEnd + 1, shareEnd == std::string::npos ? std::string::npos : shareEnd - serverEnd - 1);
        if (share.empty())
            throw InvalidPathException(String(u"no share in network path"));
        rest = shareEnd == std::string::npos ? "" : tidy(raw.substr(shareEnd));
        result.m_kind = SMB;
    } else {
        const size_t colon = raw.find(":/");
        if (colon == std::string::npos || colon == 0 || raw.find('/') < colon)
            throw InvalidPathException(String(u"not a network path"));
        server = raw.substr(0, colon);
        share = tidy(raw.substr(colon + 1));
        result.m_kind = NFS;
    }
    if (rest == "/")
        rest.clear();
    result.m_server = fromUtf8(server);
    result.m_share = fromUtf8(share);
    result.m_remainder = fromUtf8(rest);
    return result;
}

String NetworkPath::toString()
{
    switch (m_kind) {
    case NFS: return String(m_server).append(u":").append(m_share).append(m_remainder);
    case SMB: return String(u"//").append(m_server).append(u"/").append(m_share).append(m_remainder);
    case LOCAL: break;
    }
    return m_local;
}

String NetworkPath::toUNC() const
{
    if (m_kind == LOCAL)
        return m_local;
    String share(m_share);
    if (share.startsWith(String(u"/")))
        share.remove(0, 1);
    String unc = String(u"\\\\").append(m_server).append(u"\\").append(share).append(m_remainder);
    unc.translate(u'/', u'\\');
    return unc;
}

bool NetworkPath::equals(const Object& other) const
{
    const auto* path = dynamic_cast<const NetworkPath*>(&other);
    return path != nullptr && path->m_kind == m_kind && path->toString().equals(toString());
}

uint32_t NetworkPath::hashCode() const
{
    return toString().hashCode() * 3u + static_cast<uint32_t>(m_kind);
}

Object* NetworkPath::clone() const
{
    return new NetworkPath(*this);
}

} // namespace net
} // namespace qv
