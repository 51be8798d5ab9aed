#include <qv/util/Property.h>

namespace qv {
namespace util {

Property::Property() = default;

Property::Property(const String& name, const Reference<Object>& value) : m_name(name), m_value(value) {}

Property::Property(const Property& other) : Object(), m_name(other.m_name), m_value(other.m_value) {}

Property& Property::operator=(const Property& other)
{
    m_name = other.m_name;
    m_value = other.m_value;
    return *this;
}

Property::~Property() = default;

String Property::getName() const
{
    return m_name;
}

Reference<Object> Property::getValue() const
{
    return m_value;
}

void Property::setValue(const Reference<Object>& value)
{
    m_value = value;
}

bool Property::equals(const Object& other) const
{
    const Property* property = dynamic_cast<const Property*>(&other);
    if (!property || !m_name.equals(property->m_name))
        return false;
    if (!m_value || !property->m_value)
        return !m_value && !property->m_value;
    return m_value->equals(*property->m_value);
}

uint32_t Property::hashCode() const
{
    return m_name.hashCode() * 31u + (m_value ? m_value->hashCode() : 0u);
}

String Property::toString()
{
    String text(m_name);
    text.append(u'=');
    if (m_value)
        text.append(m_value->toString());
    return text;
}

} // namespace util
} // namespace qv
