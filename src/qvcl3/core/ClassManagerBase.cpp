#include <qv/core/ClassManagerBase.h>

#include <qv/core/Exception.h>
#include <qvcore3/qvcore3.h>

namespace qv {

namespace util {
template class Singleton<ClassManagerBase, &g_pGlobalLock>;
}

bool ClassManagerBase::NameLess::operator()(const char16_t* a, const char16_t* b) const noexcept
{
    return QVStrCmpW(a, b) < 0;
}

ClassManagerBase::ClassManagerBase() = default;
ClassManagerBase::~ClassManagerBase() = default;

void ClassManagerBase::registerClass(const char16_t* name, const std::type_info* type, Class::CreateFunction creator,
                                     Class::InstanceTest instanceTest)
{
    if (!name || !type)
        throw ResultException(results::INVALIDARG);
    if (m_byName.find(name) != m_byName.end())
        return;
    Reference<Class> cls(new Class(name, type, creator, instanceTest));
    auto named = m_byName.emplace(name, cls).first;
    // A type listed under two names keeps the first name's class. Both
    // indexes or neither: a class found by name but not by type would be
    // half registered.
    try {
        m_byType.emplace(type, cls);
    } catch (...) {
        m_byName.erase(named);
        throw;
    }
}

void ClassManagerBase::registerClass(const unsigned short* name, const std::type_info* type,
                                     Class::CreateFunction creator, Class::InstanceTest instanceTest)
{
    registerClass(reinterpret_cast<const char16_t*>(name), type, creator, instanceTest);
}

Class* ClassManagerBase::lookupName(const unsigned short* name) const
{
    return lookupName(reinterpret_cast<const char16_t*>(name));
}

Class* ClassManagerBase::lookupName(const char16_t* name) const
{
    if (!name)
        throw ClassNotFoundException();
    auto it = m_byName.find(name);
    if (it == m_byName.end())
        throw ClassNotFoundException(String(name));
    return it->second.get();
}

Class* ClassManagerBase::lookupType(const std::type_info* type) const
{
    if (!type)
        throw ClassNotFoundException();
    auto it = m_byType.find(type);
    if (it == m_byType.end()) {
        String name;
        for (const char* c = type->name(); *c; ++c)
            name += static_cast<char16_t>(static_cast<unsigned char>(*c));
        throw ClassNotFoundException(name);
    }
    return it->second.get();
}

} // namespace qv
