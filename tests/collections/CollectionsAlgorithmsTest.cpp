// Sorting, searching and reordering lists against the std algorithms,
// read-only wrappers, collections that contain themselves through others,
// and the allocation-failure sweep on sublists, views and sort.
#include "TestElements.h"
#include "Thrown.h"

#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/Collections.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/HashSet.h>
#include <qv/collections/qvcom/LinkedList.h>
#include <qv/core/Exception.h>
#include <qv/lang/Integer32.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;
using qvtest::unk;

namespace {

int32_t valueOf(const IQVUnknown* element)
{
    const Integer32* number = dynamic_cast<const Integer32*>(element);
    return number ? number->getValue() : -1;
}

std::vector<int32_t> valuesOf(const AbstractCollection& collection)
{
    std::vector<int32_t> values;
    Reference<AbstractIterator> it = collection.createConstIterator();
    while (it->hasNext())
        values.push_back(valueOf(it->next().get()));
    return values;
}

// Orders Integer32 elements by value / 10, so that elements of one decade
// are "equal" and a stable sort must keep them in their old order. Fails on
// the value 13.
class DecadeOrdering final : public ComObject, public IQVOrdering {
    QV_DECLARE_INTERFACE_MAP()

public:
    Result Compare(const IQVUnknown* a, const IQVUnknown* b, int32_t* order) const override
    {
        if (valueOf(a) == 13 || valueOf(b) == 13)
            return static_cast<Result>(0x80070057u);
        *order = valueOf(a) / 10 - valueOf(b) / 10;
        return results::OK;
    }
};

QV_BEGIN_INTERFACE_MAP(DecadeOrdering)
QV_INTERFACE_ENTRY(DecadeOrdering, IQVOrdering)
QV_END_INTERFACE_MAP()

template <class L>
Reference<L> listOfValues(const std::vector<Reference<Integer32>>& elements)
{
    Reference<L> list = makeReference<L>();
    for (const Reference<Integer32>& element : elements)
        list->add(unk(element));
    return list;
}

} // namespace

template <class L>
class ListAlgorithms : public ::testing::Test {};

using ListTypes = ::testing::Types<ArrayList, LinkedList>;
TYPED_TEST_SUITE(ListAlgorithms, ListTypes);

// The identity of each element is checked, not only its value, so that a
// sort that is not stable is caught.
TYPED_TEST(ListAlgorithms, SortAndSearchMatchTheStdAlgorithms)
{
    std::mt19937 random(7);
    Reference<DecadeOrdering> decades = makeReference<DecadeOrdering>();
    for (int round = 0; round < 40; ++round) {
        std::vector<Reference<Integer32>> elements;
        const int count = static_cast<int>(random() % 60);
        for (int i = 0; i < count; ++i)
            elements.push_back(makeReference<Integer32>(static_cast<int32_t>(random() % 100 + 14)));
        Reference<TypeParam> list = listOfValues<TypeParam>(elements);
        Reference<AbstractListIterator> walk = list->createListIterator(0);

        std::vector<Reference<Integer32>> expected = elements;
        auto byDecade = [](const Reference<Integer32>& a, const Reference<Integer32>& b) {
            return a->getValue() / 10 < b->getValue() / 10;
        };
        std::stable_sort(expected.begin(), expected.end(), byDecade);
        Collections::sort(*list, decades.get());
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(list->get(i).get(), unk(expected[static_cast<size_t>(i)])) << "round " << round << " at " << i;
        EXPECT_EQ(walk->hasNext(), count > 0); // reordering is not a structural change

        std::stable_sort(expected.begin(), expected.end(),
                         [](const Reference<Integer32>& a, const Reference<Integer32>& b) { return *a < *b; });
        Collections::sort(*list);
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(list->get(i).get(), unk(expected[static_cast<size_t>(i)]));

        for (int32_t probe = 10; probe < 120; probe += 7) {
            Reference<Integer32> target = makeReference<Integer32>(probe);
            const int32_t found = Collections::binarySearch(*list, unk(target));
            auto lower = std::lower_bound(expected.begin(), expected.end(), probe,
                                          [](const Reference<Integer32>& a, int32_t v) { return a->getValue() < v; });
            const bool present = lower != expected.end() && (*lower)->getValue() == probe;
            if (present)
                EXPECT_EQ(valueOf(list->get(found).get()), probe);
            else
                EXPECT_EQ(found, -static_cast<int32_t>(lower - expected.begin()) - 1);
        }
    }
}

TYPED_TEST(ListAlgorithms, ReorderingHelpersAndExtremes)
{
    std::vector<Reference<Integer32>> elements;
    for (int32_t v : {5, 3, 9, 3, 7, 1, 9})
        elements.push_back(makeReference<Integer32>(v));
    Reference<TypeParam> list = listOfValues<TypeParam>(elements);
    EXPECT_EQ(Collections::min(*list).get(), unk(elements[5]));
    EXPECT_EQ(Collections::max(*list).get(), unk(elements[2])); // the first of the two 9s
    EXPECT_THROW(Collections::min(*makeReference<TypeParam>()), IllegalStateException);

    Collections::reverse(*list);
    EXPECT_EQ(valuesOf(*list), (std::vector<int32_t>{9, 1, 7, 3, 9, 3, 5}));
    Reference<AbstractList> middle = list->subList(1, 5);
    Collections::reverse(*middle);
    EXPECT_EQ(valuesOf(*list), (std::vector<int32_t>{9, 9, 3, 7, 1, 3, 5}));
    Collections::sort(*middle);
    EXPECT_EQ(valuesOf(*list), (std::vector<int32_t>{9, 1, 3, 7, 9, 3, 5}));

    list = listOfValues<TypeParam>(elements);
    Reference<TypeParam> again = listOfValues<TypeParam>(elements);
    Collections::shuffle(*list, 42);
    Collections::shuffle(*again, 42);
    EXPECT_EQ(valuesOf(*list), valuesOf(*again));
    std::vector<int32_t> sorted = valuesOf(*list);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, (std::vector<int32_t>{1, 3, 3, 5, 7, 9, 9}));
    std::set<std::vector<int32_t>> orders;
    for (uint64_t seed = 0; seed < 20; ++seed) {
        Collections::shuffle(*again, seed);
        orders.insert(valuesOf(*again));
    }
    EXPECT_GT(orders.size(), 10u);

    // A failing ordering, or an element without an order, leaves the list as it was.
    elements.push_back(makeReference<Integer32>(13));
    Reference<TypeParam> failing = listOfValues<TypeParam>(elements);
    const std::vector<int32_t> before = valuesOf(*failing);
    Reference<DecadeOrdering> decades = makeReference<DecadeOrdering>();
    EXPECT_THROW(Collections::sort(*failing, decades.get()), ResultException);
    EXPECT_EQ(valuesOf(*failing), before);
    failing->add(makeReference<ComObject>()->GetUnknown()); // no IQVComparable
    failing->add(nullptr);
    EXPECT_EQ(qvtest::resultOf<ResultException>([&] { Collections::sort(*failing); }), results::NOINTERFACE)
        << "sorting an element without IQVComparable";
    failing->removeAt(8);
    Collections::sort(*failing); // null first, then by value
    EXPECT_EQ(valueOf(failing->get(0).get()), -1);
    EXPECT_EQ(failing->get(0).get(), nullptr);
}

TEST(Unmodifiable, ListCollectionAndSetRefuseEveryChange)
{
    Reference<ArrayList> list = makeReference<ArrayList>();
    for (int32_t id = 0; id < 5; ++id)
        list->add(unk(qvtest::key(id)));
    Reference<AbstractList> readOnly = Collections::unmodifiableList(*list);
    EXPECT_TRUE(readOnly->equals(*list));
    EXPECT_EQ(readOnly->hashCode(), list->hashCode());
    EXPECT_EQ(readOnly->toString().toUtf8(), list->toString().toUtf8());
    EXPECT_THROW(readOnly->add(nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnly->set(0, nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnly->removeAt(0), UnsupportedOperationException);
    EXPECT_THROW(readOnly->remove(unk(qvtest::key(99))), UnsupportedOperationException);
    EXPECT_THROW(readOnly->clear(), UnsupportedOperationException);
    EXPECT_THROW(readOnly->addAll(*list), UnsupportedOperationException);
    EXPECT_THROW(Collections::sort(*readOnly), UnsupportedOperationException);
    Reference<AbstractListIterator> it = readOnly->createListIterator(2);
    it->previous();
    EXPECT_THROW(it->set(nullptr), UnsupportedOperationException);
    EXPECT_THROW(it->add(nullptr), UnsupportedOperationException);
    Reference<AbstractList> view = readOnly->subList(1, 3);
    EXPECT_THROW(view->removeAt(0), UnsupportedOperationException);
    EXPECT_EQ(qvtest::idOf(view->get(1).get()), 2);
    list->removeAt(0);
    EXPECT_THROW(view->get(0), IllegalStateException); // still fail-fast
    EXPECT_EQ(readOnly->getSize(), 4);                 // and live

    Reference<HashSet> set = makeReference<HashSet>();
    set->add(unk(qvtest::key(1)));
    Reference<AbstractSet> readOnlySet = Collections::unmodifiableSet(*set);
    EXPECT_TRUE(readOnlySet->equals(*set));
    EXPECT_THROW(readOnlySet->add(nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnlySet->retainAll(*set), UnsupportedOperationException);
    Reference<AbstractCollection> readOnlyCollection = Collections::unmodifiableCollection(*list);
    EXPECT_TRUE(readOnlyCollection->contains(unk(qvtest::key(4))));
    Reference<AbstractIterator> walk = readOnlyCollection->createIterator();
    walk->next();
    EXPECT_THROW(walk->remove(), UnsupportedOperationException);
    EXPECT_EQ(list->getSize(), 4);
}

// A list holding a map that holds the list (and a set holding the list):
// text, hash code and equality terminate, and what they give is fixed.
TEST(SelfContaining, IndirectCyclesTerminateWithFixedResults)
{
    Reference<ArrayList> list = makeReference<ArrayList>();
    Reference<HashMap> map = makeReference<HashMap>();
    list->add(unk(qvtest::key(1)));
    list->add(map->GetUnknown());
    map->put(unk(qvtest::key(2)), list->GetUnknown());
    EXPECT_EQ(list->toString().toUtf8(), "[1, {2=(this collection)}]");
    EXPECT_EQ(map->toString().toUtf8(), "{2=[1, (this map)]}");

    // The list meets itself inside the map and counts 0 there.
    const uint32_t mapHashInside = 2u ^ 0u;
    EXPECT_EQ(list->hashCode(), 31u * (31u * 1u + 1u) + mapHashInside);
    const uint32_t listHashInside = 31u * (31u + 1u) + 0u;
    EXPECT_EQ(map->hashCode(), 2u ^ listHashInside);

    Reference<ArrayList> twin = makeReference<ArrayList>();
    Reference<HashMap> twinMap = makeReference<HashMap>();
    twin->add(unk(qvtest::key(1)));
    twin->add(twinMap->GetUnknown());
    twinMap->put(unk(qvtest::key(2)), twin->GetUnknown());
    EXPECT_TRUE(list->equals(*twin));
    EXPECT_EQ(list->compareTo(*twin), 0);
    twinMap->put(unk(qvtest::key(3)), nullptr);
    EXPECT_FALSE(list->equals(*twin));

    Reference<HashSet> set = makeReference<HashSet>();
    set->add(list->GetUnknown());
    list->add(set->GetUnknown());
    EXPECT_EQ(set->toString().toUtf8(), "[[1, {2=(this collection)}, (this collection)]]");
    (void)set->hashCode();
    list->clear();
    map->clear();
    set->clear();
    twinMap->clear();
}

using ViewsAllocationSweep = qvtest::AllocationFaultTest;

TEST_F(ViewsAllocationSweep, SubListViewsAndSortLeaveEverythingAsItWas)
{
    std::vector<Reference<Integer32>> elements;
    for (int32_t v : {4, 8, 1, 9, 2, 7, 3})
        elements.push_back(makeReference<Integer32>(v));
    for (Reference<AbstractList> list : {Reference<AbstractList>(listOfValues<ArrayList>(elements)),
                                         Reference<AbstractList>(listOfValues<LinkedList>(elements))}) {
        const std::vector<int32_t> before = valuesOf(*list);
        Reference<AbstractList> view;
        EXPECT_GT(qvtest::sweepAllocations([&] { view = list->subList(1, 6); }), 0);
        qvtest::sweepAllocations([&] { view->insert(2, nullptr); }, [&] { EXPECT_EQ(valuesOf(*list), before); });
        view->removeAt(2);
        Reference<AbstractListIterator> it;
        qvtest::sweepAllocations([&] { it = view->createListIterator(3); });
        EXPECT_EQ(valueOf(it->previous().get()), 9);
        EXPECT_GT(
            qvtest::sweepAllocations([&] { Collections::sort(*view); }, [&] { EXPECT_EQ(valuesOf(*list), before); }),
            2);
        EXPECT_EQ(valuesOf(*list), (std::vector<int32_t>{4, 1, 2, 7, 8, 9, 3}));
        qvtest::sweepAllocations([&] { Collections::shuffle(*list, 5); },
                                 [&] {
                                     EXPECT_EQ(valuesOf(*list), (std::vector<int32_t>{4, 1, 2, 7, 8, 9, 3}));
                                 });
    }

    Reference<HashMap> map = makeReference<HashMap>();
    for (int32_t id = 0; id < 6; ++id)
        map->put(unk(qvtest::key(id)), unk(elements[static_cast<size_t>(id)]));
    Reference<AbstractSet> keys;
    Reference<AbstractCollection> values;
    EXPECT_GT(qvtest::sweepAllocations([&] { keys = map->keySet(); }), 0);
    qvtest::sweepAllocations([&] { values = map->values(); });
    std::vector<int32_t> walked;
    qvtest::sweepAllocations(
        [&] {
            walked.clear();
            Reference<AbstractIterator> it = values->createIterator();
            while (it->hasNext())
                walked.push_back(valueOf(it->next().get()));
        },
        [&] { EXPECT_EQ(map->getSize(), 6); });
    EXPECT_EQ(walked.size(), 6u);
    qvtest::sweepAllocations([&] { keys->remove(unk(qvtest::key(3))); },
                             [&] { EXPECT_TRUE(map->containsKey(unk(qvtest::key(3)))); });
    EXPECT_EQ(map->getSize(), 5);
    Reference<AbstractMap> readOnly = Collections::unmodifiableMap(*map);
    qvtest::sweepAllocations([&] { walked = valuesOf(*readOnly->entrySet()); });
}
