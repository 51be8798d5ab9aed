#include <qv/legacy/CQVProperty.h>

#include <qv/core/Boundary.h>

#include "util/CopyText.h"

namespace qv {

using util::detail::copyText;

CQVProperty::CQVProperty() : m_property(new util::Property()) {}

CQVProperty::CQVProperty(const char16_t* name, const char16_t* value)
    : m_property(new util::Property(name ? String(name) : String(),
                                    value ? Reference<Object>(new String(value)) : Reference<Object>()))
{}

CQVProperty::CQVProperty(const Reference<util::Property>& property) : m_property(property)
{
    if (!m_property)
        throw ResultException(results::POINTER);
}

CQVProperty::~CQVProperty() = default;

Result CQVProperty::GetName(char16_t* buffer, unsigned int size) const
{
    return qvcom::guardBoundary([&] { return copyText(m_property->getName(), buffer, size); });
}

Result CQVProperty::GetValue(char16_t* buffer, unsigned int size) const
{
    return qvcom::guardBoundary([&] {
        Reference<Object> value = m_property->getValue();
        return copyText(value ? value->toString() : String(), buffer, size);
    });
}

Result CQVProperty::SetValue(const char16_t* value)
{
    if (!value)
        return results::POINTER;
    return qvcom::guardBoundary([&] { m_property->setValue(Reference<Object>(new String(value))); });
}

Reference<util::Property> CQVProperty::GetProperty() const
{
    return m_property;
}

} // namespace qv
