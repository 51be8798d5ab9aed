#ifndef QV_UTIL_INIFILE_H
#define QV_UTIL_INIFILE_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>
#include <qv/lang/String.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace qv {
namespace ipc {
class Semaphore;
}
namespace util {

class IniFileLayout;

// A configuration file of named sets of "key=value" lines. The sets live in
// memory, sorted by name, and are read again whenever the file's
// modification time has grown; every change is written back at once.
// Operations report failure by result code and never throw. One object must
// not be used from two threads at once; processes (and objects) that share a
// file share it safely by naming the same lock.
class QV_EXPORT IniFile : public Object {
public:
    // Flags. With none, a rewrite writes the sets and keys alone, in sorted
    // order, as the format always has.
    // KEEP_LAYOUT: a rewrite keeps the file as it was (comments, blank and
    // indented lines, order, line ends) and changes only the lines it must.
    static constexpr short KEEP_LAYOUT = 0x0001;

    // path: the file (null: none). lockName: a named semaphore (count 1)
    // held by each operation for its whole length; null for no lock.
    IniFile(const char16_t* path, const char* lockName = nullptr, short flags = 0);
    template <class T, IfUShortText<T> = 0>
    IniFile(const T* path, const char* lockName = nullptr, short flags = 0)
        : IniFile(reinterpret_cast<const char16_t*>(path), lockName, flags)
    {}
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;
    ~IniFile() override;

    // 0x80070002 when the set has no such key; 0x80004009 when the value and
    // its NUL do not fit in size units (nothing is copied).
    Result GetValue(const char16_t* set, const char16_t* key, char16_t* buffer, unsigned int size);
    template <class T, IfUShortText<T> = 0>
    Result GetValue(const T* set, const T* key, T* buffer, unsigned int size)
    {
        return GetValue(reinterpret_cast<const char16_t*>(set), reinterpret_cast<const char16_t*>(key),
                        reinterpret_cast<char16_t*>(buffer), size);
    }
    // replace: true lets the value replace an existing one; false makes an
    // existing key 0x800700B7. A missing set is created. Returns what the
    // rewrite returns: 0, or 1 when the file can't be written (the copy in
    // memory keeps the change until the next reload).
    Result AddKey(const char16_t* set, const char16_t* key, const char16_t* value, bool replace);
    template <class T, IfUShortText<T> = 0>
    Result AddKey(const T* set, const T* key, const T* value, bool replace)
    {
        return AddKey(reinterpret_cast<const char16_t*>(set), reinterpret_cast<const char16_t*>(key),
                      reinterpret_cast<const char16_t*>(value), replace);
    }
    // 0x80070002 when there is no such key. A set left empty stays.
    Result DeleteKey(const char16_t* set, const char16_t* key);
    template <class T, IfUShortText<T> = 0>
    Result DeleteKey(const T* set, const T* key)
    {
        return DeleteKey(reinterpret_cast<const char16_t*>(set), reinterpret_cast<const char16_t*>(key));
    }
    // Removes the set and its subsets (see ListSubsets); a missing set is no
    // error. Returns what the rewrite returns.
    Result DeleteSet(const char16_t* set);
    template <class T, IfUShortText<T> = 0>
    Result DeleteSet(const T* set)
    {
        return DeleteSet(reinterpret_cast<const char16_t*>(set));
    }

private:
    friend class IniFileSetIterator;
    friend class IniFileKeyIterator;

    friend class IniFileLayout;
    typedef std::map<String, String> Keys;
    typedef std::map<String, Keys> Sets;

    int load();
    void checkAndUpdate();
    bool KeyExists(const String& set, const String& key) const;
    bool SetExists(const String& set) const;
    int WriteToFile(const char16_t* path);
    void internalDeleteSet(const String& set);
    std::vector<String> ListSets() const;
    std::vector<String> ListKeys(const String& set) const;
    // The sets whose names continue set's name after a '\\', '/' or '.'
    // ("a\\b", "a/b", "a.b" are subsets of "a"), at any depth.
    std::vector<String> ListSubsets(const String& set) const;

    Reference<ipc::Semaphore> m_lock;
    String m_path;
    Sets m_sets;
    int64_t m_modified;
    short m_flags;
    // The file carried the UTF-8 mark: the rewrite writes UTF-8 after a mark.
    bool m_utf8;
    // Only with KEEP_LAYOUT: the file's lines as read.
    std::unique_ptr<IniFileLayout> m_layout;
};

} // namespace util
} // namespace qv

#endif
