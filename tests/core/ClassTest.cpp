#include <qv/core/Class.h>
#include <qv/core/ClassManagerBase.h>
#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/String.h>
#include <qv/sync/Mutex.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cstdio>

namespace {

class Unregistered : public qv::Object {};

class ClientBase : public qv::Object {};
class ClientDerived : public ClientBase {};

// Overrides only the overridable, non-const form.
class Named : public qv::Object {
public:
    qv::String toString() override { return qv::String(u"named"); }
};

class NamedException : public qv::Exception {
public:
    qv::String toString() override { return qv::String(u"named exception"); }
};

qv::Object* makeObject()
{
    return new qv::Object;
}

qv::Object* makeException()
{
    return new qv::Exception;
}

} // namespace

TEST(Class, LookupByNameAndCreate)
{
    // The registry's Class objects are component objects a caller may hold.
    qv::Reference<qv::Class> cls(qv::Class::forName(u"qv::Exception"));
    ASSERT_NE(cls, nullptr);
    EXPECT_TRUE(qv::String(cls->getName()).equals(u"qv::Exception"));
    qv::Reference<qv::Object> made(cls->createInstance());
    ASSERT_NE(dynamic_cast<qv::Exception*>(made.get()), nullptr);
    EXPECT_TRUE(cls->isInstance(*made));
    EXPECT_TRUE(cls->isInstance(qv::ReadOnlyException()));
    EXPECT_FALSE(cls->isInstance(qv::Object()));

    // The doubled Int...Exception rows: the first, with a creating function, wins.
    qv::Reference<qv::Object> overflow(qv::Class::forName(u"qv::IntOverflowException")->createInstance());
    EXPECT_NE(dynamic_cast<qv::IntOverflowException*>(overflow.get()), nullptr);

    EXPECT_THROW(qv::Class::forName(u"qv::AccessViolationException")->createInstance(), qv::IllegalAccessException);
    const unsigned short wide[] = {'q', 'v', ':', ':', 'O', 'b', 'j', 'e', 'c', 't', 0};
    EXPECT_EQ(qv::Class::forName(wide), qv::Class::forName(u"qv::Object"));
    EXPECT_EQ(qv::Class::forName(L"qv::Exception"), cls.get());
    EXPECT_EQ(qv::String(u"text").getClass(), qv::Class::forName(u"qv::String"));
}

TEST(Class, UnknownNameOrTypeThrowsWithTheName)
{
    EXPECT_EQ(qvtest::messageOf<qv::ClassNotFoundException>([] { qv::Class::forName(u"qv::NoSuchClass"); }),
              "qv::NoSuchClass");
    EXPECT_THROW(qv::Class::forName(u"qv::exception"), qv::ClassNotFoundException);
    EXPECT_THROW(qv::Class::forType(&typeid(Unregistered)), qv::ClassNotFoundException);
    EXPECT_THROW(qv::Class::forName(nullptr), qv::ClassNotFoundException);
    EXPECT_EQ(qvtest::messageOf<qv::ClassNotFoundException>([] { qv::Class::forName(L"qv::NoSuch\u00e9\U0001F600"); }),
              "qv::NoSuch\u00e9\U0001F600");
    EXPECT_THROW(qv::Class::forName(static_cast<const wchar_t*>(nullptr)), qv::ClassNotFoundException);
    EXPECT_THROW(qv::ClassManager::getInstance()->lookupName(nullptr), qv::ClassNotFoundException);
}

TEST(Class, ByTypeAndFirstRegistrationWins)
{
    const qv::Class* byType = qv::Class::forType(&typeid(qv::sync::Mutex));
    EXPECT_EQ(byType, qv::Class::forName(u"qv::sync::Mutex"));
    qv::sync::Mutex m;
    EXPECT_EQ(m.getClass(), byType);

    qv::ClassManagerBase* registry = qv::ClassManager::getInstance();
    size_t before = registry->getClassCount();
    const unsigned short wideName[] = {'t', 'e', 's', 't', ':', ':', 'R', 'e', 'g',
                                       'i', 's', 't', 'e', 'r', 'e', 'd', 0};
    registry->registerClass(u"test::Registered", &typeid(qv::Object), &makeObject);
    registry->registerClass(wideName, &typeid(qv::Exception), &makeException);
    EXPECT_EQ(registry->getClassCount(), before + 1);
    EXPECT_EQ(registry->lookupName(wideName), qv::Class::forName(u"test::Registered"));
    qv::Reference<qv::Object> made(qv::Class::forName(u"test::Registered")->createInstance());
    EXPECT_EQ(dynamic_cast<qv::Exception*>(made.get()), nullptr);
    // The type index keeps the class that registered the type first.
    EXPECT_TRUE(qv::String(qv::Class::forType(&typeid(qv::Object))->getName()).equals(u"qv::Object"));

    // A client's class comes with its type descriptor only; objects of classes
    // derived from it are still its instances.
    registry->registerClass(u"test::ClientBase", &typeid(ClientBase), nullptr);
    const qv::Class* client = qv::Class::forType(&typeid(ClientBase));
    EXPECT_TRUE(client->isInstance(ClientDerived()));
    EXPECT_TRUE(client->isInstance(ClientBase()));
    EXPECT_FALSE(client->isInstance(qv::Object()));
}

TEST(Object, ConstCallersReachTheNonConstOverride)
{
    Named named;
    NamedException exception;
    const qv::Object& asObject = named;
    const qv::Object& asThrowable = exception;
    EXPECT_EQ(asObject.toString().toUtf8(), "named");
    EXPECT_EQ(asThrowable.toString().toUtf8(), "named exception");

    // The library's own overrides keep printing through const objects.
    const qv::Integer32 number(-42);
    const qv::Object& numberAsObject = number;
    EXPECT_EQ(number.toString().toUtf8(), "-42");
    EXPECT_EQ(numberAsObject.toString().toUtf8(), "-42");
    const qv::String text(u"text");
    EXPECT_EQ(static_cast<const qv::Object&>(text).toString().toUtf8(), "text");
}

TEST(Object, IdentityComparisonHashAndText)
{
    qv::Object a, b;
    EXPECT_EQ(a.compareTo(b), -b.compareTo(a));
    EXPECT_NE(a.compareTo(b), 0);
    EXPECT_EQ(a.compareTo(a), 0);
    EXPECT_TRUE(a.equals(a));
    EXPECT_FALSE(a.equals(b));
    EXPECT_EQ(a.hashCode(), static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&a)));

    char expected[64];
    std::snprintf(expected, sizeof expected, "qv::Object@%x", a.hashCode());
    EXPECT_EQ(a.toString().toUtf8(), expected);
    EXPECT_EQ(static_cast<const qv::Object&>(a).toString().toUtf8(), expected);

    int result = 99;
    EXPECT_EQ(a.CompareTo(static_cast<qv::ComObject*>(&b), &result), 0);
    EXPECT_EQ(result, a.compareTo(b));
    uint32_t hash = 0;
    EXPECT_EQ(a.HashCode(&hash), 0);
    EXPECT_EQ(hash, a.hashCode());
    EXPECT_EQ(a.HashCode(nullptr), static_cast<qv::Result>(0x80004003u));

    qv::Reference<qv::Object> copy(a.clone());
    EXPECT_NE(copy.get(), &a);
    EXPECT_THROW(qv::Exception().clone(), qv::CloneNotSupportedException);
}
