#include "AllocationSweep.h"
#include "TestElements.h"

#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/LinkedList.h>
#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;
using qvtest::drain;
using qvtest::idOf;
using qvtest::key;
using qvtest::unk;

using qvtest::idsOf;
using qvtest::listOf;

template <class L>
class ListContract : public ::testing::Test {};

using ListTypes = ::testing::Types<ArrayList, LinkedList>;
TYPED_TEST_SUITE(ListContract, ListTypes);

TYPED_TEST(ListContract, PositionsAndBounds)
{
    // Inserting, replacing and removing at every position, out of range
    // too, is checked against a model in ListIteratorTest.
    Reference<TypeParam> list = listOf<TypeParam>({0, 1, 2, 3, 4});
    EXPECT_EQ(idOf(list->get(4).get()), 4);
    EXPECT_THROW(list->get(5), RangeErrorException);
    EXPECT_THROW(list->get(-1), RangeErrorException);

    IQVUnknown* element = reinterpret_cast<IQVUnknown*>(1);
    EXPECT_EQ(list->GetAt(7, &element), results::FAIL);
    EXPECT_EQ(element, nullptr);
    EXPECT_EQ(list->GetAt(0, nullptr), results::POINTER);
    EXPECT_EQ(list->InsertAt(-1, nullptr), results::FAIL);
    EXPECT_EQ(list->GetAt(1, &element), results::OK);
    EXPECT_EQ(idOf(element), 1);
    element->Release();
}

TYPED_TEST(ListContract, SearchWithNullsAndEqualElements)
{
    Reference<TypeParam> list = listOf<TypeParam>({5, -1, 6, 5, -1});
    EXPECT_EQ(list->indexOf(unk(key(5))), 0);
    EXPECT_EQ(list->lastIndexOf(unk(key(5))), 3);
    EXPECT_EQ(list->indexOf(nullptr), 1);
    EXPECT_EQ(list->lastIndexOf(nullptr), 4);
    EXPECT_EQ(list->indexOf(unk(key(8))), -1);
    EXPECT_TRUE(list->contains(unk(key(6))));
    EXPECT_TRUE(list->remove(unk(key(5))));
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{-1, 6, 5, -1}));
    EXPECT_EQ(list->toString().toUtf8(), "[null, 6, 5, null]");
}

TYPED_TEST(ListContract, IteratorsFailFast)
{
    Reference<TypeParam> list = listOf<TypeParam>({1, 2, 3, 4});
    Reference<AbstractIterator> it = list->createIterator();
    EXPECT_THROW(it->remove(), IllegalStateException);
    it->next();
    list->set(0, unk(key(10)));
    EXPECT_NO_THROW(it->next());
    list->add(unk(key(5)));
    EXPECT_TRUE(it->hasNext());
    EXPECT_THROW(it->next(), IllegalStateException);
    EXPECT_THROW(it->remove(), IllegalStateException);

    Reference<AbstractIterator> other = list->createIterator();
    other->next();
    list->removeAt(0);
    EXPECT_THROW(other->next(), IllegalStateException);

    Reference<AbstractIterator> cleared = list->createIterator();
    list->clear();
    EXPECT_THROW(cleared->next(), IllegalStateException);
    Reference<AbstractIterator> empty = list->createIterator();
    EXPECT_FALSE(empty->hasNext());
    EXPECT_THROW(empty->next(), IllegalStateException);

    // Through the interface the failure is a result code.
    Reference<TypeParam> more = listOf<TypeParam>({1});
    Reference<Iterator> face;
    ASSERT_EQ(more->CreateIterator(face.put()), results::OK);
    more->add(unk(key(2)));
    Reference<IQVUnknown> element;
    EXPECT_EQ(face->Next(element.put()), results::FAIL);
    EXPECT_FALSE(element);
}

TYPED_TEST(ListContract, IteratorRemoveKeepsTheWalkValid)
{
    Reference<TypeParam> list = listOf<TypeParam>({1, 2, 3, 4, 5, 6});
    Reference<AbstractIterator> it = list->createIterator();
    while (it->hasNext()) {
        if (idOf(it->next().get()) % 2 == 0)
            it->remove();
    }
    EXPECT_THROW(it->remove(), IllegalStateException);
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{1, 3, 5}));

    Reference<AbstractIterator> readOnly = list->createConstIterator();
    readOnly->next();
    EXPECT_THROW(readOnly->remove(), UnsupportedOperationException);
    EXPECT_EQ(list->getSize(), 3);

    Reference<ConstIterator> face;
    ASSERT_EQ(list->CreateConstIterator(face.put()), results::OK);
    EXPECT_FALSE(face.template query<Iterator>() == nullptr);
    EXPECT_EQ(face.template query<Iterator>()->Remove(), results::FAIL);
}

TYPED_TEST(ListContract, BulkOperations)
{
    Reference<TypeParam> list = listOf<TypeParam>({1, 2});
    EXPECT_TRUE(list->addAll(*list));
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{1, 2, 1, 2}));
    Reference<ArrayList> some = listOf<ArrayList>({2, 3});
    EXPECT_TRUE(list->containsAll(listOf<ArrayList>({1, 2})->asCollection()));
    EXPECT_FALSE(list->containsAll(*some));
    EXPECT_TRUE(list->removeAll(*some));
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{1, 1}));
    EXPECT_FALSE(list->removeAll(*some));
    list->addAll(*some);
    EXPECT_TRUE(list->retainAll(*some));
    EXPECT_EQ(idsOf(*list), (std::vector<int32_t>{2, 3}));
    EXPECT_FALSE(list->retainAll(*list));

    bool changed = true;
    EXPECT_EQ(list->AddAll(nullptr, &changed), results::POINTER);
    EXPECT_FALSE(changed);
}

TYPED_TEST(ListContract, EqualityHashAndOrderAcrossListKinds)
{
    Reference<TypeParam> list = listOf<TypeParam>({1, 2, 3});
    Reference<ArrayList> array = listOf<ArrayList>({1, 2, 3});
    Reference<LinkedList> linked = listOf<LinkedList>({1, 2, 3});
    EXPECT_TRUE(list->equals(*array));
    EXPECT_TRUE(list->equals(*linked));
    EXPECT_EQ(list->hashCode(), array->hashCode());
    EXPECT_EQ(list->compareTo(*linked), 0);

    Reference<TypeParam> prefix = listOf<TypeParam>({1, 2});
    Reference<TypeParam> bigger = listOf<TypeParam>({1, 4});
    EXPECT_FALSE(list->equals(*prefix));
    EXPECT_EQ(prefix->compareTo(*list), -1);
    EXPECT_EQ(list->compareTo(*prefix), 1);
    EXPECT_EQ(list->compareTo(*bigger), -1);
    EXPECT_EQ(bigger->compareTo(*list), 1);

    // A list that holds itself still prints and hashes.
    list->add(list->GetUnknown());
    EXPECT_EQ(list->toString().toUtf8(), "[1, 2, 3, (this collection)]");
    EXPECT_NO_THROW(list->hashCode());
    list->removeAt(3);

    Reference<TypeParam> copy = makeReference<TypeParam>(*list);
    EXPECT_TRUE(copy->equals(*list));
    EXPECT_EQ(copy->GetRefCount(), 1);
}

TEST(LinkedListQueue, BothEnds)
{
    Reference<LinkedList> queue = makeReference<LinkedList>();
    EXPECT_THROW(queue->getFirst(), IllegalStateException);
    EXPECT_THROW(queue->removeLast(), IllegalStateException);
    for (int32_t id = 1; id <= 3; ++id)
        queue->addLast(unk(key(id)));
    queue->addFirst(unk(key(0)));
    EXPECT_EQ(idOf(queue->getFirst().get()), 0);
    EXPECT_EQ(idOf(queue->getLast().get()), 3);
    EXPECT_EQ(idOf(queue->removeFirst().get()), 0);
    EXPECT_EQ(idOf(queue->removeLast().get()), 3);
    EXPECT_EQ(idOf(queue->removeFirst().get()), 1);
    EXPECT_EQ(idOf(queue->removeFirst().get()), 2);
    EXPECT_TRUE(queue->isEmpty());
    EXPECT_THROW(queue->removeFirst(), IllegalStateException);
}

TEST(ArrayListStorage, GrowthAndReferences)
{
    Reference<ArrayList> list = makeReference<ArrayList>(0);
    EXPECT_EQ(list->getCapacity(), 0);
    Reference<qvtest::TestKey> element = key(1);
    for (int32_t i = 0; i < 100; ++i)
        list->add(unk(element));
    EXPECT_GE(list->getCapacity(), 100);
    EXPECT_EQ(element->GetRefCount(), 101);
    EXPECT_EQ(list->elementAt(99).get(), unk(element));
    EXPECT_THROW(list->elementAt(100), RangeErrorException);
    list->trimToSize();
    EXPECT_EQ(list->getCapacity(), 100);
    list->clear();
    EXPECT_EQ(element->GetRefCount(), 1);
    EXPECT_THROW(ArrayList(-1), ResultException);
}

TEST(ListMemory, FailedGrowthLeavesTheListUnchanged)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "the platform layer was built without fault injection";
    Reference<ArrayList> array = listOf<ArrayList>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    ASSERT_EQ(array->getCapacity(), ArrayList::DEFAULT_CAPACITY);
    Reference<LinkedList> linked = listOf<LinkedList>({1, 2});
    Reference<qvtest::TestKey> extra = key(11);
    EXPECT_GT(
        qvtest::sweepAllocations([&] { array->add(unk(extra)); },
                                 [&] {
                                     EXPECT_EQ(idsOf(*array), (std::vector<int32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
                                     EXPECT_EQ(extra->GetRefCount(), 1);
                                 }),
        0);
    EXPECT_EQ(array->getCapacity(), 20);
    EXPECT_GT(qvtest::sweepAllocations([&] { linked->addFirst(unk(extra)); },
                                       [&] {
                                           EXPECT_EQ(idsOf(*linked), (std::vector<int32_t>{1, 2}));
                                       }),
              0);
}

TEST(ListOwnership, ScopedListsAreBorrowedByTheirIterators)
{
    // A list that lives by scope has no references; its iterators must not
    // take one (dropping it would destroy the list).
    ArrayList array;
    LinkedList linked;
    for (int32_t id = 1; id <= 3; ++id) {
        array.add(unk(key(id)));
        linked.add(unk(key(id)));
    }
    {
        Reference<AbstractIterator> a = array.createIterator();
        Reference<AbstractIterator> b = linked.createConstIterator();
        EXPECT_EQ(drain(*a).size(), 3u);
        EXPECT_EQ(drain(*b).size(), 3u);
    }
    EXPECT_EQ(array.GetRefCount(), 0);
    EXPECT_EQ(linked.GetRefCount(), 0);
    EXPECT_TRUE(array.equals(linked));

    // A counted list is held by its iterator and outlives the last outside reference.
    Reference<AbstractIterator> it;
    {
        Reference<ArrayList> counted = listOf<ArrayList>({7, 8});
        it = counted->createIterator();
    }
    EXPECT_EQ(drain(*it), (std::vector<int32_t>{7, 8}));
}
