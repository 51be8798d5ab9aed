#ifndef QV_CORE_CLASS_H
#define QV_CORE_CLASS_H

#include <qv/core/Object.h>

#include <typeinfo>

namespace qv {

class ClassManagerBase;

// Run-time description of a library class: its qualified name, its type and
// the function that creates an instance (null for classes that cannot be
// created by name). Only the class registry makes them.
class QV_EXPORT Class : public Object {
public:
    typedef Object* (*CreateFunction)();

    const char16_t* getName() const noexcept { return m_name; }
    const std::type_info* getType() const noexcept { return m_type; }
    // True when obj is of this class or derived from it.
    bool isInstance(const Object& obj) const;
    // A new instance from the creating function; IllegalAccessException when
    // there is none.
    Object* createInstance() const;

    // ClassNotFoundException when unknown.
    static const Class* forName(const char16_t* name);
    static const Class* forName(const unsigned short* name);
    static const Class* forType(const std::type_info* type);

    ~Class() override;

private:
    friend class ClassManagerBase;
    Class(const char16_t* name, const std::type_info* type, CreateFunction creator) noexcept;

    const char16_t* m_name;
    const std::type_info* m_type;
    CreateFunction m_creator;
};

} // namespace qv

#endif
