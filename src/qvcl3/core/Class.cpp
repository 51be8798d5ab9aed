#include <qv/core/Class.h>

#include <qv/core/ClassManagerBase.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

namespace qv {

Class::Class(const char16_t* name, const std::type_info* type, CreateFunction creator, InstanceTest test) noexcept
    : m_name(name), m_type(type), m_creator(creator), m_instanceTest(test)
{}

Class::~Class() = default;

bool Class::isInstance(const Object& obj) const
{
    if (typeid(obj) == *m_type)
        return true;
    if (m_instanceTest)
        return m_instanceTest(obj);
    // A class registered by a client has only its type descriptor.
    int32_t derived = 0;
    const Result result = QVTypeIsBaseOf(m_type, &typeid(obj), dynamic_cast<const void*>(&obj), &derived);
    if (result < 0)
        throw ResultException(result);
    return derived != 0;
}

Object* Class::createInstance() const
{
    if (!m_creator)
        throw IllegalAccessException();
    return m_creator();
}

Class* Class::forName(const char16_t* name)
{
    return ClassManager::getInstance()->lookupName(name);
}

Class* Class::forWideName(const wchar_t* name)
{
    if (!name)
        return forName(static_cast<const char16_t*>(nullptr));
    const String converted(name);
    return forName(converted.getData());
}

Class* Class::forType(const std::type_info* type)
{
    return ClassManager::getInstance()->lookupType(type);
}

} // namespace qv
