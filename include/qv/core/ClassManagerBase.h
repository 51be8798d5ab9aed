#ifndef QV_CORE_CLASSMANAGERBASE_H
#define QV_CORE_CLASSMANAGERBASE_H

#include <qv/core/Class.h>
#include <qv/core/Library.h>
#include <qv/core/Reference.h>
#include <qv/util/Singleton.h>

#include <map>
#include <typeinfo>

namespace qv {

namespace sync {
class LockObject;
}

// The process-wide registry of classes, by name and by type. Filled at
// library start-up; lookups afterwards only read, so it takes no lock.
class QV_EXPORT ClassManagerBase {
public:
    // The first registration of a name wins; later ones are ignored.
    void registerClass(const char16_t* name, const std::type_info* type, Class::CreateFunction creator,
                       Class::InstanceTest instanceTest = nullptr);
    void registerClass(const unsigned short* name, const std::type_info* type, Class::CreateFunction creator,
                       Class::InstanceTest instanceTest = nullptr);
    // ClassNotFoundException with the name as message when unknown.
    Class* lookupName(const char16_t* name) const;
    Class* lookupName(const unsigned short* name) const;
    // ClassNotFoundException with the type's name as message when unknown.
    Class* lookupType(const std::type_info* type) const;
    size_t getClassCount() const noexcept { return m_byName.size(); }

private:
    template <class T, sync::LockObject** Lock>
    friend class util::Singleton;

    struct NameLess {
        bool operator()(const char16_t* a, const char16_t* b) const noexcept;
    };
    // Orders by the descriptor's identity as the run time sees it, so that a
    // type whose descriptor was emitted again in another shared object still
    // finds its class.
    struct TypeLess {
        bool operator()(const std::type_info* a, const std::type_info* b) const noexcept { return a->before(*b); }
    };

    ClassManagerBase();
    ~ClassManagerBase();
    ClassManagerBase(const ClassManagerBase&) = delete;
    ClassManagerBase& operator=(const ClassManagerBase&) = delete;

    std::map<const char16_t*, Reference<Class>, NameLess> m_byName;
    std::map<const std::type_info*, Reference<Class>, TypeLess> m_byType;
};

namespace util {
// One registry for the whole process: instantiated and exported by the library
// only, never by client code.
extern template class QV_EXPORT Singleton<ClassManagerBase, &g_pGlobalLock>;
} // namespace util

typedef util::Singleton<ClassManagerBase, &g_pGlobalLock> ClassManager;

} // namespace qv

#endif
