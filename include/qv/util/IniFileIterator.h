#ifndef QV_UTIL_INIFILEITERATOR_H
#define QV_UTIL_INIFILEITERATOR_H

#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>
#include <qv/lang/String.h>

#include <cstddef>
#include <vector>

namespace qv {
namespace util {

class IniFile;

// The iterators read the file's sets as they are when the iterator is made
// (bringing the copy up to date under the file's lock) and are not disturbed
// by later changes. next() past the end throws
// IniFileException(NO_MORE_ELEMENTS).
class QV_EXPORT IniFileIteratorBase : public Object {
public:
    explicit IniFileIteratorBase(const String& setName);
    ~IniFileIteratorBase() override;

    String getSetName() const;
    bool hasNext() const;
    String next();

protected:
    String m_setName;
    std::vector<String> m_names;
    size_t m_position;
};

// The names of the sets: all of them for an empty or null set name, else the
// subsets of that set.
class QV_EXPORT IniFileSetIterator : public IniFileIteratorBase {
public:
    IniFileSetIterator(IniFile& file, const char16_t* setName);
    template <class T, IfUShortText<T> = 0>
    IniFileSetIterator(IniFile& file, const T* setName)
        : IniFileSetIterator(file, reinterpret_cast<const char16_t*>(setName))
    {}
    ~IniFileSetIterator() override;
};

// The keys of one set, in order; none for a missing set.
class QV_EXPORT IniFileKeyIterator : public IniFileIteratorBase {
public:
    IniFileKeyIterator(IniFile& file, const char16_t* setName);
    template <class T, IfUShortText<T> = 0>
    IniFileKeyIterator(IniFile& file, const T* setName)
        : IniFileKeyIterator(file, reinterpret_cast<const char16_t*>(setName))
    {}
    ~IniFileKeyIterator() override;
};

} // namespace util
} // namespace qv

#endif
