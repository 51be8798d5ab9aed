#ifndef QV_LEGACY_CQVPROPERTY_H
#define QV_LEGACY_CQVPROPERTY_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/Property.h>

namespace qv {

// Kept for older callers: a named text value, over util::Property
// (GetProperty()). Values of other types are read as their text.
class QV_EXPORT CQVProperty : public Object {
public:
    CQVProperty();
    CQVProperty(const char16_t* name, const char16_t* value);
    explicit CQVProperty(const Reference<util::Property>& property);
    ~CQVProperty() override;

    Result GetName(char16_t* buffer, unsigned int size) const;
    Result GetValue(char16_t* buffer, unsigned int size) const;
    Result SetValue(const char16_t* value);

    Reference<util::Property> GetProperty() const;

    // The same with the unsigned short spelling of UTF-16.
    template <class T, IfUShortText<T> = 0>
    Result GetName(T* buffer, unsigned int size) const
    {
        return GetName(reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result GetValue(T* buffer, unsigned int size) const
    {
        return GetValue(reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result SetValue(const T* value)
    {
        return SetValue(reinterpret_cast<const char16_t*>(value));
    }

private:
    Reference<util::Property> m_property;
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVProperty;

#endif
