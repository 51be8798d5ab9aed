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

// Each area owns the rows of its classes in a fragment of its own folder
// (src/qvcl3/<area>/<Area>ClassRows.cpp), ending with QV_CLASS_TABLE_END.
// Start-up registers the fragments in the order of g_classTableFragments;
// the first registration of a name wins.
extern const ClassTableRow g_coreClassRows[];
extern const ClassTableRow g_langClassRows[];
extern const ClassTableRow g_mathClassRows[];
extern const ClassTableRow g_collectionsClassRows[];
extern const ClassTableRow g_syncClassRows[];
extern const ClassTableRow g_utilClassRows[];
extern const ClassTableRow g_ioClassRows[];
extern const ClassTableRow g_charsetClassRows[];
extern const ClassTableRow g_execClassRows[];
extern const ClassTableRow g_ipcClassRows[];
extern const ClassTableRow g_i18nClassRows[];
extern const ClassTableRow g_cryptoClassRows[];
extern const ClassTableRow g_netClassRows[];
extern const ClassTableRow g_legacyClassRows[];
extern const ClassTableRow g_logClassRows[];
extern const ClassTableRow g_repeatedClassRows[];

// Ends with a null pointer.
extern const ClassTableRow* const g_classTableFragments[];

template <class T>
Object* createInstanceOf()
{
    return new T();
}

} // namespace detail
} // namespace qv

// A row for a class that can be created by name, and one for a class that
// can't. The registered name is spelled from the type itself, relative to
// namespace qv, so the two can never disagree.
#define QV_CLASS_ROW(Type)                                                                                             \
    {                                                                                                                  \
        u"qv::" #Type, &typeid(::qv::Type), &::qv::detail::createInstanceOf<::qv::Type>,                               \
            &::qv::Class::instanceTestFor<::qv::Type>                                                                  \
    }
#define QV_CLASS_ROW_NO_CREATOR(Type)                                                                                  \
    {                                                                                                                  \
        u"qv::" #Type, &typeid(::qv::Type), nullptr, &::qv::Class::instanceTestFor<::qv::Type>                         \
    }
// The CQV classes kept for older callers register without the namespace, as
// they are reached from the global namespace.
#define QV_CLASS_ROW_GLOBAL(Type)                                                                                      \
    {                                                                                                                  \
        u"" #Type, &typeid(::Type), &::qv::detail::createInstanceOf<::Type>, &::qv::Class::instanceTestFor<::Type>     \
    }
#define QV_CLASS_ROW_GLOBAL_NO_CREATOR(Type)                                                                           \
    {                                                                                                                  \
        u"" #Type, &typeid(::Type), nullptr, &::qv::Class::instanceTestFor<::Type>                                     \
    }
#define QV_CLASS_TABLE_END                                                                                             \
    {                                                                                                                  \
        nullptr, nullptr, nullptr, nullptr                                                                             \
    }

#endif
