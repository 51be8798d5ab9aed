#ifndef QVCL3_CORE_CLASSTABLE_H
#define QVCL3_CORE_CLASSTABLE_H

#include <qv/core/Class.h>

#include <typeinfo>

namespace qv {
namespace detail {

// One row of the library's static class table. The instance test is this
// port's addition: it lets Class::isInstance recognise derived classes.
struct ClassTableRow {
    const char16_t* name;
    const std::type_info* type;
    Class::CreateFunction creator;
    Class::InstanceTest instanceTest;
};

// Ends with a row whose type is null.
extern const ClassTableRow g_classTable[];

template <class T>
Object* createInstanceOf()
{
    return new T();
}

} // namespace detail
} // namespace qv

// A row for a class that can be created by name, and one for a class that can't.
#define QV_CLASS_ROW(Name, Type) {Name, &typeid(Type), &::qv::detail::createInstanceOf<Type>, &::qv::Class::instanceTestFor<Type>}
#define QV_CLASS_ROW_NO_CREATOR(Name, Type) {Name, &typeid(Type), nullptr, &::qv::Class::instanceTestFor<Type>}

#endif
