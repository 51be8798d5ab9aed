#ifndef QV_LEGACY_CQVPROPERTYSET_H
#define QV_LEGACY_CQVPROPERTYSET_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>
#include <qv/legacy/CQVProperty.h>
#include <qv/util/PropertySet.h>

#include <cstdint>

namespace qv {

// Kept for older callers: a set of named text values over util::PropertySet
// (GetPropertySet()), kept in the order they were first set. Missing names
// give 0x80070002; text that does not fit the caller's buffer 0x80004009;
// files are read and written as properties text (UTF-8).
class QV_EXPORT CQVPropertySet : public Object {
public:
    CQVPropertySet();
    ~CQVPropertySet() override;

    Result SetValue(const char16_t* name, const char16_t* value);
    Result GetValue(const char16_t* name, char16_t* buffer, unsigned int size) const;
    Result Remove(const char16_t* name);
    int32_t GetCount() const;
    // The index-th property in order; 0x80070057 out of range.
    Result GetName(int32_t index, char16_t* buffer, unsigned int size) const;
    Result GetAt(int32_t index, Reference<CQVProperty>* property) const;
    Result Load(const char16_t* path);
    Result Save(const char16_t* path) const;

    util::PropertySet& GetPropertySet();

    // The same with the unsigned short spelling of UTF-16.
    template <class T, IfUShortText<T> = 0>
    Result SetValue(const T* name, const T* value)
    {
        return SetValue(reinterpret_cast<const char16_t*>(name), reinterpret_cast<const char16_t*>(value));
    }
    template <class T, IfUShortText<T> = 0>
    Result GetValue(const T* name, T* buffer, unsigned int size) const
    {
        return GetValue(reinterpret_cast<const char16_t*>(name), reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result Remove(const T* name)
    {
        return Remove(reinterpret_cast<const char16_t*>(name));
    }
    template <class T, IfUShortText<T> = 0>
    Result GetName(int32_t index, T* buffer, unsigned int size) const
    {
        return GetName(index, reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result Load(const T* path)
    {
        return Load(reinterpret_cast<const char16_t*>(path));
    }
    template <class T, IfUShortText<T> = 0>
    Result Save(const T* path) const
    {
        return Save(reinterpret_cast<const char16_t*>(path));
    }

private:
    util::PropertySet m_set;
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVPropertySet;

#endif
