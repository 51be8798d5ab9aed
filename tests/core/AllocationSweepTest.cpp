// The class registry and exceptions under allocation failure: each failed
// allocation surfaces as OutOfMemoryException (never as the exception that
// was being made), and the registry stays as it was.
#include <qv/core/Class.h>
#include <qv/core/ClassManagerBase.h>
#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <typeinfo>

using namespace qv;

namespace {

class SweepRegistered : public Object {};

Object* createSweepRegistered()
{
    return new SweepRegistered();
}

using CoreAllocationSweep = qvtest::AllocationFaultTest;

} // namespace

TEST_F(CoreAllocationSweep, ClassRegistry)
{
    ClassManagerBase* registry = ClassManager::getInstance();
    const size_t classes = registry->getClassCount();
    qvtest::sweepAllocations(
        [&] { registry->registerClass(u"test::SweepRegistered", &typeid(SweepRegistered), &createSweepRegistered); },
        [&] {
            EXPECT_EQ(registry->getClassCount(), classes);
            EXPECT_THROW(Class::forName(u"test::SweepRegistered"), ClassNotFoundException);
        });
    ASSERT_EQ(registry->getClassCount(), classes + 1);

    Reference<Object> made;
    qvtest::sweepAllocations(
        [&] { made = Reference<Object>(Class::forName(u"test::SweepRegistered")->createInstance()); },
        [&] { EXPECT_FALSE(made); });
    EXPECT_TRUE(made && Class::forType(&typeid(SweepRegistered))->isInstance(*made));

    // The failure of a lookup carries the name in a message made on the spot.
    qvtest::sweepAllocations([] {
        try {
            Class::forName(u"test::NeverRegistered");
            ADD_FAILURE() << "found a class never registered";
        } catch (const ClassNotFoundException& e) {
            EXPECT_EQ(e.getDescription().toU16String(), u"test::NeverRegistered");
        }
    });
}

TEST_F(CoreAllocationSweep, ExceptionsWithMessages)
{
    const String message(u"a message long enough to need a block of its own", -1);
    qvtest::sweepAllocations([&] {
        IllegalStateException original(String(u"made from text"));
        ResultException coded(static_cast<Result>(0x80070057u), message);
        IllegalStateException copy(original);
        copy = original;
        EXPECT_EQ(copy.getDescription().toU16String(), u"made from text");
        EXPECT_TRUE(coded.getDescription() == message);
        EXPECT_GT(coded.toString().getLength(), 0);
    });
}
