#include <qv/legacy/CQVPropertySet.h>

#include <qv/core/Boundary.h>

#include "util/CopyText.h"

namespace qv {

using util::detail::copyText;

CQVPropertySet::CQVPropertySet() = default;

CQVPropertySet::~CQVPropertySet() = default;

Result CQVPropertySet::SetValue(const char16_t* name, const char16_t* value)
{
    if (!name || !value)
        return results::POINTER;
    return qvcom::guardBoundary([&] { m_set.setString(String(name), String(value)); });
}

Result CQVPropertySet::GetValue(const char16_t* name, char16_t* buffer, unsigned int size) const
{
    if (!name)
        return results::POINTER;
    return qvcom::guardBoundary([&]() -> Result {
        Reference<Object> value = m_set.getProperty(String(name));
        if (!value)
            return results::FILE_NOT_FOUND;
        return copyText(value->toString(), buffer, size);
    });
}

Result CQVPropertySet::Remove(const char16_t* name)
{
    if (!name)
        return results::POINTER;
    return qvcom::guardBoundary([&] { return m_set.remove(String(name)) ? results::OK : results::FILE_NOT_FOUND; });
}

int32_t CQVPropertySet::GetCount() const
{
    return m_set.size();
}

Result CQVPropertySet::GetName(int32_t index, char16_t* buffer, unsigned int size) const
{
    if (index < 0 || index >= m_set.size())
        return results::INVALIDARG;
    return qvcom::guardBoundary(
        [&] { return copyText(m_set.getProperties()[static_cast<size_t>(index)]->getName(), buffer, size); });
}

Result CQVPropertySet::GetAt(int32_t index, Reference<CQVProperty>* property) const
{
    if (!property)
        return results::POINTER;
    if (index < 0 || index >= m_set.size())
        return results::INVALIDARG;
    return qvcom::guardBoundary([&] {
        *property = Reference<CQVProperty>(new CQVProperty(m_set.getProperties()[static_cast<size_t>(index)]));
    });
}

Result CQVPropertySet::Load(const char16_t* path)
{
    if (!path)
        return results::POINTER;
    return qvcom::guardBoundary([&] { m_set.load(String(path)); });
}

Result CQVPropertySet::Save(const char16_t* path) const
{
    if (!path)
        return results::POINTER;
    return qvcom::guardBoundary([&] { m_set.store(String(path)); });
}

util::PropertySet& CQVPropertySet::GetPropertySet()
{
    return m_set;
}

} // namespace qv
