#ifndef QV_CORE_CLASS_H
#define QV_CORE_CLASS_H

#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>

#include <type_traits>
#include <typeinfo>

namespace qv {

class ClassManagerBase;

// Run-time description of a library class: its qualified name, its type and
// the function that creates an instance (null for classes that cannot be
// created by name). Only the class registry makes them.
class QV_EXPORT Class : public Object {
public:
    typedef Object* (*CreateFunction)();
    // Answers whether an object is of the class or derived from it; made per
    // class by instanceTestFor<T>. A class registered without one is answered
    // from its type descriptor through the platform layer.
    typedef bool (*InstanceTest)(const Object& obj);

    template <class T>
    static bool instanceTestFor(const Object& obj) noexcept
    {
        if constexpr (std::is_base_of<T, Object>::value)
            return true;
        else
            return dynamic_cast<const T*>(&obj) != nullptr;
    }

    const char16_t* getName() const noexcept { return m_name; }
    const std::type_info* getType() const noexcept { return m_type; }
    // True when obj is of this class or derived from it.
    bool isInstance(const Object& obj) const;
    // A new instance from the creating function; IllegalAccessException when
    // there is none.
    Object* createInstance() const;

    // ClassNotFoundException when unknown.
    static Class* forName(const char16_t* name);
    // Also UTF-32 names (wchar_t here), converted to UTF-16 for the lookup. A
    // template so that a null pointer literal still picks the char16_t form.
    template <class T,
              std::enable_if_t<std::is_same<T, unsigned short>::value || std::is_same<T, wchar_t>::value, int> = 0>
    static Class* forName(const T* name)
    {
        if constexpr (std::is_same<T, wchar_t>::value)
            return forWideName(name);
        else
            return forName(reinterpret_cast<const char16_t*>(name));
    }
    static Class* forType(const std::type_info* type);

    ~Class() override;

private:
    friend class ClassManagerBase;
    static Class* forWideName(const wchar_t* name);
    Class(const char16_t* name, const std::type_info* type, CreateFunction creator, InstanceTest test) noexcept;

    const char16_t* m_name;
    const std::type_info* m_type;
    CreateFunction m_creator;
    InstanceTest m_instanceTest;
};

} // namespace qv

#endif
