#include <qv/util/FilePath.h>

#include <qv/core/Exception.h>

#include <vector>

namespace qv {
namespace util {

namespace {

[[noreturn]] void refuse(const char16_t* what, const std::u16string& path)
{
    throw InvalidPathException(String(std::u16string(what) + path));
}

std::u16string normalise(std::u16string text)
{
    if (text.find(u'\0') != std::u16string::npos)
        refuse(u"path contains a NUL character: ", text);
    for (char16_t& c : text)
        if (c == u'\\')
            c = u'/';
    if (text.empty())
        return text;
    const bool absolute = text[0] == u'/';
    std::vector<std::u16string> parts;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(u'/', start);
        if (end == std::u16string::npos)
            end = text.size();
        std::u16string part = text.substr(start, end - start);
        start = end + 1;
        if (part.empty() || part == u".")
            continue;
        if (part == u"..") {
            if (!parts.empty() && parts.back() != u"..") {
                parts.pop_back();
                continue;
            }
            if (absolute)
                refuse(u"path climbs above the root: ", text);
        }
        parts.push_back(std::move(part));
    }
    std::u16string result = absolute ? u"/" : u"";
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            result += u'/';
        result += parts[i];
    }
    return result.empty() ? u"." : result;
}

} // namespace

FilePath::FilePath() noexcept = default;

FilePath::FilePath(const String& path) : m_path(normalise(path.toU16String())) {}

FilePath::FilePath(const char16_t* path) : FilePath(String(path ? path : u"")) {}

// The reference count stays with the object; only the text is copied.
FilePath::FilePath(const FilePath& other) : Object(), m_path(other.m_path) {}

FilePath::FilePath(FilePath&& other) noexcept : Object(), m_path(std::move(other.m_path)) {}

FilePath& FilePath::operator=(const FilePath& other)
{
    m_path = other.m_path;
    return *this;
}

FilePath& FilePath::operator=(FilePath&& other) noexcept
{
    m_path = std::move(other.m_path);
    return *this;
}

FilePath::~FilePath() = default;

String FilePath::toString()
{
    return m_path;
}

bool FilePath::isEmpty() const
{
    return m_path.getLength() == 0;
}

bool FilePath::isAbsolute() const
{
    return m_path.getLength() > 0 && m_path.getData()[0] == u'/';
}

String FilePath::getFileName() const
{
    const std::u16string text = m_path.toU16String();
    const size_t slash = text.rfind(u'/');
    const std::u16string name = slash == std::u16string::npos ? text : text.substr(slash + 1);
    return String(name == u"." ? std::u16string() : name);
}

namespace {

// The position of the dot that starts the extension, or npos.
size_t extensionDot(const std::u16string& name)
{
    const size_t dot = name.rfind(u'.');
    return dot == std::u16string::npos || dot == 0 || name == u".." ? std::u16string::npos : dot;
}

} // namespace

String FilePath::getBaseName() const
{
    const std::u16string name = getFileName().toU16String();
    return String(name.substr(0, extensionDot(name)));
}

String FilePath::getExtension() const
{
    const std::u16string name = getFileName().toU16String();
    const size_t dot = extensionDot(name);
    return String(dot == std::u16string::npos ? std::u16string() : name.substr(dot + 1));
}

FilePath FilePath::getParent() const
{
    const std::u16string text = m_path.toU16String();
    FilePath parent;
    if (text.empty())
        return parent;
    const size_t slash = text.rfind(u'/');
    if (slash == std::u16string::npos)
        parent.m_path = String(u".");
    else
        parent.m_path = String(slash == 0 ? std::u16string(u"/") : text.substr(0, slash));
    return parent;
}

String FilePath::getDirectory() const
{
    return getParent().m_path;
}

FilePath FilePath::append(const String& relative) const
{
    return append(FilePath(relative));
}

FilePath FilePath::append(const FilePath& relative) const
{
    if (relative.isAbsolute())
        refuse(u"cannot append an absolute path: ", relative.m_path.toU16String());
    if (isEmpty())
        return relative;
    if (relative.isEmpty())
        return *this;
    return FilePath(String(m_path.toU16String() + u'/' + relative.m_path.toU16String()));
}

FilePath FilePath::resolve(const String& other) const
{
    return resolve(FilePath(other));
}

FilePath FilePath::resolve(const FilePath& other) const
{
    return other.isAbsolute() ? other : append(other);
}

std::string FilePath::toNarrow() const
{
    return m_path.toUtf8();
}

bool FilePath::equals(const Object& other) const
{
    const FilePath* path = dynamic_cast<const FilePath*>(&other);
    return path && *this == *path;
}

int FilePath::compareTo(const Object& other) const
{
    const FilePath* path = dynamic_cast<const FilePath*>(&other);
    if (!path)
        throw CastFailedException();
    return m_path.compare(path->m_path);
}

uint32_t FilePath::hashCode() const
{
    return m_path.hashCode();
}

bool FilePath::operator==(const FilePath& other) const
{
    return m_path == other.m_path;
}

bool FilePath::operator<(const FilePath& other) const
{
    return m_path.compare(other.m_path) < 0;
}

} // namespace util
} // namespace qv
