#ifndef QV_UTIL_FILEPATH_H
#define QV_UTIL_FILEPATH_H

#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>
#include <qv/lang/String.h>

#include <cstddef>
#include <functional>
#include <string>

namespace qv {
namespace util {

// A file path, normalised when it is made: backslashes (from older callers)
// become "/", repeated separators and "." components go, ".." removes the
// component before it, and a trailing separator is dropped. A relative path
// keeps its leading ".." components; one that normalises to nothing is ".".
// A ".." that would climb above the root of an absolute path, and a NUL
// character, throw InvalidPathException. Paths compare and hash by their
// normalised text, case-sensitively, as the file system does.
class QV_EXPORT FilePath : public Object {
public:
    // The empty path.
    FilePath() noexcept;
    explicit FilePath(const String& path);
    explicit FilePath(const char16_t* path);
    template <class T, IfUShortText<T> = 0>
    explicit FilePath(const T* path) : FilePath(reinterpret_cast<const char16_t*>(path))
    {}
    FilePath(const FilePath& other);
    FilePath(FilePath&& other) noexcept;
    FilePath& operator=(const FilePath& other);
    FilePath& operator=(FilePath&& other) noexcept;
    ~FilePath() override;

    // The normalised text, "/" between components.
    const String& getPath() const noexcept { return m_path; }
    using Object::toString;
    String toString() override;
    bool isEmpty() const;
    bool isAbsolute() const;

    // The last component ("" for the root and for "."): "c.tar.gz" for
    // "/a/b/c.tar.gz".
    String getFileName() const;
    // The file name without its extension: "c.tar".
    String getBaseName() const;
    // After the last dot of the file name, without the dot: "gz"; "" when
    // there is none, and for names that only start with a dot (".profile").
    String getExtension() const;
    // The path without its last component: "/a/b" for "/a/b/c", "/" for "/a"
    // and for "/", "." for a single relative component, "" for the empty path.
    FilePath getParent() const;
    // getParent()'s text.
    String getDirectory() const;

    // This path followed by a relative one, normalised ("/a/b" append "../c"
    // is "/a/c"). An absolute argument throws InvalidPathException.
    FilePath append(const String& relative) const;
    FilePath append(const FilePath& relative) const;
    // As append for a relative path; an absolute one replaces this path.
    FilePath resolve(const String& other) const;
    FilePath resolve(const FilePath& other) const;

    // The narrow form the platform layer opens: UTF-8.
    std::string toNarrow() const;

    bool equals(const Object& other) const override;
    // Orders by the normalised text; anything but a FilePath throws
    // CastFailedException.
    int compareTo(const Object& other) const override;
    uint32_t hashCode() const override;

    bool operator==(const FilePath& other) const;
    bool operator!=(const FilePath& other) const { return !(*this == other); }
    bool operator<(const FilePath& other) const;

private:
    String m_path;
};

} // namespace util
} // namespace qv

namespace std {
template <>
struct hash<qv::util::FilePath> {
    size_t operator()(const qv::util::FilePath& path) const { return path.hashCode(); }
};
} // namespace std

#endif
