// List iterators in both directions, sublists, and random interleavings of
// list, sublist and iterator operations checked against a std::vector model.
#include "TestElements.h"

#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/LinkedList.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <ListOperations.h>
#include <Thrown.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;
using qvtest::idOf;
using qvtest::idsOf;
using qvtest::key;
using qvtest::listOf;
using qvtest::unk;

namespace {

template <class Operation>
std::string messageOf(Operation operation)
{
    return qvtest::messageOf<Exception>(operation);
}

} // namespace

template <class L>
class ListIteration : public ::testing::Test {};

using ListTypes = ::testing::Types<ArrayList, LinkedList>;
TYPED_TEST_SUITE(ListIteration, ListTypes);

// Moving and editing through list iterators and sublists, bounds included,
// is checked against the model in RandomOperationsMatchTheVectorModel; these
// cases add the texts of the range errors, what a stale iterator refuses
// besides next(), read-only iterators, nested sublists and the interface.
TYPED_TEST(ListIteration, RangeErrorsNameThePositionAndTheBounds)
{
    Reference<TypeParam> list = listOf<TypeParam>({0, 1, 2, 3, 4});
    EXPECT_EQ(messageOf([&] { list->createListIterator(-1); }), "list position -1 outside [0, 5]");
    EXPECT_EQ(messageOf([&] { list->get(5); }), "list index 5 outside [0, 5)");
}

TYPED_TEST(ListIteration, FailsFastAndReadOnlyIteratorsRefuseChanges)
{
    Reference<TypeParam> list = listOf<TypeParam>({0, 1, 2});
    Reference<AbstractListIterator> it = list->createListIterator(1);
    it->next();
    list->add(unk(key(3)));
    EXPECT_TRUE(it->hasNext());
    EXPECT_TRUE(it->hasPrevious());
    EXPECT_THROW(it->next(), IllegalStateException);
    EXPECT_THROW(it->previous(), IllegalStateException);
    EXPECT_THROW(it->set(nullptr), IllegalStateException);
    EXPECT_THROW(it->add(nullptr), IllegalStateException);
    EXPECT_THROW(it->remove(), IllegalStateException);
    list->set(0, nullptr); // replacing is not structural
    Reference<AbstractListIterator> fresh = list->createListIterator(0);
    list->set(1, unk(key(9)));
    fresh->next();

    Reference<AbstractListIterator> readOnly = list->createConstListIterator(0);
    readOnly->next();
    EXPECT_THROW(readOnly->set(nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnly->add(nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnly->remove(), UnsupportedOperationException);
    EXPECT_EQ(list->getSize(), 4);

    // The interface face answers by result code.
    Reference<ListIterator> face;
    EXPECT_EQ(list->CreateListIterator(7, face.put()), static_cast<Result>(0x80004005u));
    ASSERT_EQ(list->CreateListIterator(4, face.put()), results::OK);
    bool more = true;
    EXPECT_EQ(face->HasNext(&more), results::OK);
    EXPECT_FALSE(more);
    Reference<IQVUnknown> element;
    EXPECT_EQ(face->Previous(element.put()), results::OK);
    EXPECT_EQ(idOf(element.get()), 3);
    int32_t index = 0;
    EXPECT_EQ(face->PreviousIndex(&index), results::OK);
    EXPECT_EQ(index, 2);
}

TYPED_TEST(ListIteration, SubListIsALiveViewThatFailsFast)
{
    Reference<TypeParam> list = listOf<TypeParam>({0, 11, 3, 4, 15, 5});
    Reference<AbstractList> middle = list->subList(1, 5);
    Reference<AbstractList> inner = middle->subList(1, 3);
    Reference<AbstractListIterator> it = inner->createListIterator(2);
    EXPECT_EQ(idOf(it->previous().get()), 4);
    it->remove();
    inner->insert(0, unk(key(20)));
    EXPECT_EQ(idsOf(*middle), (std::vector<int32_t>{11, 20, 3, 15}));
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{0, 11, 20, 3, 15, 5}));
    inner->clear();
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{0, 11, 15, 5}));
    EXPECT_TRUE(middle->equals(*listOf<ArrayList>({11, 15})));

    EXPECT_EQ(messageOf([&] { middle->get(2); }), "list index 2 outside [0, 2)");
    EXPECT_EQ(messageOf([&] { list->subList(3, 5); }), "sublist [3, 5) outside [0, 4]");
    EXPECT_THROW(list->subList(2, 1), RangeErrorException);

    list->removeAt(0);
    EXPECT_THROW(middle->getSize(), IllegalStateException);
    EXPECT_THROW(middle->get(0), IllegalStateException);
    EXPECT_THROW(middle->add(nullptr), IllegalStateException);
    EXPECT_THROW(inner->getSize(), IllegalStateException);
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{11, 15, 5}));

    Reference<List> face;
    EXPECT_EQ(list->CreateSubList(0, 4, face.put()), static_cast<Result>(0x80004005u));
    ASSERT_EQ(list->CreateSubList(1, 3, face.put()), results::OK);
    int32_t size = 0;
    EXPECT_EQ(face->GetSize(&size), results::OK);
    EXPECT_EQ(size, 2);
}

TYPED_TEST(ListIteration, RandomOperationsMatchTheVectorModel)
{
    std::vector<Reference<qvtest::TestKey>> pool;
    std::vector<IQVUnknown*> elements{nullptr};
    for (int32_t id = 0; id < 12; ++id) {
        pool.push_back(key(id));
        elements.push_back(unk(pool.back()));
    }
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        std::vector<uint8_t> bytes(600);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random());
        Reference<TypeParam> list = makeReference<TypeParam>();
        qvtest::ListOperations operations(*list, elements);
        const char* failure = operations.run(bytes.data(), bytes.size());
        ASSERT_EQ(failure, nullptr) << failure << " (seed " << seed << ")";
    }
}
