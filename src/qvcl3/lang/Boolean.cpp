#include <qv/lang/Boolean.h>

#include <qv/core/Exception.h>

namespace qv {

Boolean::Boolean() noexcept : m_value(false) {}

Boolean::Boolean(bool value) noexcept : m_value(value) {}

Boolean::Boolean(const Boolean& other) noexcept : Object(), m_value(other.m_value) {}

Boolean& Boolean::operator=(const Boolean& other) noexcept
{
    m_value = other.m_value;
    return *this;
}

Boolean::~Boolean() = default;

bool Boolean::equals(const Object& other) const
{
    const Boolean* boolean = dynamic_cast<const Boolean*>(&other);
    return boolean && boolean->m_value == m_value;
}

uint32_t Boolean::hashCode() const
{
    return m_value ? 1231u : 1237u;
}

int Boolean::compareTo(const Object& other) const
{
    const Boolean* boolean = dynamic_cast<const Boolean*>(&other);
    if (!boolean)
        throw CastFailedException();
    return static_cast<int>(m_value) - static_cast<int>(boolean->m_value);
}

String Boolean::toString()
{
    return String(m_value ? u"true" : u"false");
}

Object* Boolean::clone() const
{
    return new Boolean(m_value);
}

bool Boolean::parse(const String& text)
{
    if (text.equals(u"true", true))
        return true;
    if (text.equals(u"false", true))
        return false;
    throw ResultException(results::INVALIDARG, String(u"not a truth value: ").append(text));
}

} // namespace qv
