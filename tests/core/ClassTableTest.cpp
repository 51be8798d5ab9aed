#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>
#include <qv/legacy/CQVByteBuffer.h>

#include "core/ClassTable.h"

#include <gtest/gtest.h>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>

namespace {

std::string demangled(const std::type_info& type)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    return status == 0 ? std::string(name.get()) : std::string(type.name());
}

} // namespace

TEST(ClassTable, EveryRowNamesItsOwnTypeAndIsRegisteredFirstWins)
{
    std::set<std::string> seen;
    int rows = 0;
    int legacyRows = 0;
    for (const qv::detail::ClassTableRow* const* fragment = qv::detail::g_classTableFragments; *fragment; ++fragment) {
        for (const qv::detail::ClassTableRow* row = *fragment; row->type; ++row, ++rows) {
            std::string name = qv::String(row->name).toUtf8();
            std::string typeName = demangled(*row->type);
            // The CQV classes register unqualified and come before every
            // "qv::" name.
            if (name.compare(0, 3, "CQV") == 0) {
                EXPECT_EQ("qv::" + name, typeName);
                EXPECT_EQ(rows, legacyRows++) << name;
            } else if (typeName.find('<') == std::string::npos) {
                // A typedef of a template instance registers under the typedef's name.
                EXPECT_EQ(name, typeName);
            }
            const qv::Class* cls = qv::Class::forName(row->name);
            ASSERT_NE(cls, nullptr) << name;
            if (seen.insert(name).second) {
                EXPECT_EQ(demangled(*cls->getType()), typeName) << name;
                if (row->creator) {
                    qv::Reference<qv::Object> made(cls->createInstance());
                    EXPECT_EQ(made->getClass(), cls) << name;
                } else {
                    EXPECT_THROW(cls->createInstance(), qv::IllegalAccessException) << name;
                }
            } else {
                // The repeated rows carry no creator and must lose to the first.
                EXPECT_EQ(row->creator, nullptr) << name;
            }
        }
    }
    EXPECT_GT(rows, 100);
    EXPECT_EQ(legacyRows, 6);
    EXPECT_EQ(seen.size() + 3, static_cast<size_t>(rows));
}

TEST(ClassTable, LegacyClassesAreFoundOutsideTheNamespace)
{
    const qv::Class* cls = qv::Class::forName(u"CQVByteBuffer");
    EXPECT_EQ(qv::String(cls->getName()).toUtf8(), "CQVByteBuffer");
    EXPECT_EQ(cls, qv::Class::forType(&typeid(::CQVByteBuffer)));
    qv::Reference<qv::Object> made(cls->createInstance());
    EXPECT_NE(dynamic_cast<::CQVByteBuffer*>(made.get()), nullptr);
    EXPECT_TRUE(cls->isInstance(*made));
    EXPECT_EQ(made->toString().toUtf8().compare(0, 14, "CQVByteBuffer@"), 0) << made->toString().toUtf8();
    EXPECT_THROW(qv::Class::forName(u"qv::CQVByteBuffer"), qv::ClassNotFoundException);

    // The table begins with the abstract buffer, which knows its subclasses.
    const qv::detail::ClassTableRow& first = qv::detail::g_classTableFragments[0][0];
    EXPECT_EQ(std::u16string(first.name), u"CQVAbstractByteBuffer");
    const qv::Class* abstract = qv::Class::forName(u"CQVAbstractByteBuffer");
    EXPECT_TRUE(abstract->isInstance(*made));
    EXPECT_THROW(abstract->createInstance(), qv::IllegalAccessException);

    // Within each fragment, rows stay in UTF-16 order of their names.
    for (const qv::detail::ClassTableRow* const* fragment = qv::detail::g_classTableFragments; *fragment; ++fragment) {
        for (const qv::detail::ClassTableRow* row = *fragment; row->type && row[1].type; ++row) {
            EXPECT_LT(std::u16string(row->name), std::u16string(row[1].name));
        }
    }
}
