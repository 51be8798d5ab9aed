#include "AllocationSweep.h"
#include "TestElements.h"
#include "Thrown.h"

#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/HashSet.h>
#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <typeinfo>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;
using qvtest::drain;
using qvtest::idOf;
using qvtest::key;
using qvtest::TestKey;
using qvtest::unk;

namespace {

Reference<HashMap> newMap()
{
    return makeReference<HashMap>();
}

// Adds keys 1000.. (hash 7 x id) not yet present until the map holds count entries.
void fill(HashMap& map, int32_t count)
{
    for (int32_t id = 1000; map.getSize() < count; ++id) {
        Reference<TestKey> k = key(id, static_cast<uint32_t>(id) * 7u);
        if (!map.containsKey(unk(k)))
            map.put(unk(k), unk(key(-id)));
    }
}

std::vector<int32_t> keysInOrder(HashMap& map, std::initializer_list<int32_t> only)
{
    std::vector<int32_t> ids;
    Reference<HashMapIterator> it = map.createKeyIterator();
    for (int32_t id : drain(*it)) {
        if (std::find(only.begin(), only.end(), id) != only.end())
            ids.push_back(id);
    }
    return ids;
}

// True when operation throws a plain qv::Exception (no subclass) without a
// message, as hash-map iterators do.
template <class Operation>
bool throwsPlainException(Operation&& operation)
{
    try {
        operation();
    } catch (const Exception& e) {
        return typeid(e) == typeid(Exception) && e.getDescription().getLength() == 0;
    }
    return false;
}

} // namespace

TEST(HashMapTable, DefaultTableGrowsAtThe76thNewKey)
{
    Reference<HashMap> map = newMap();
    EXPECT_EQ(map->getCapacity(), 101);
    EXPECT_EQ(map->getThreshold(), 75);
    fill(*map, 75);
    EXPECT_EQ(map->getCapacity(), 101);

    // Replacing a value does not count towards the threshold.
    Reference<TestKey> existing = key(1000, 7000u);
    EXPECT_EQ(idOf(map->put(unk(existing), unk(key(5))).get()), -1000);
    EXPECT_EQ(map->getCapacity(), 101);

    map->put(unk(key(1)), unk(key(2)));
    EXPECT_EQ(map->getSize(), 76);
    EXPECT_EQ(map->getCapacity(), 203);
    EXPECT_EQ(map->getThreshold(), 152);
    fill(*map, 153);
    EXPECT_EQ(map->getCapacity(), 407);
    EXPECT_EQ(idOf(map->get(unk(existing)).get()), 5);
}

TEST(HashMapTable, CopiesAreSizedByCalcCapacity)
{
    EXPECT_EQ(HashMap::calcCapacity(0), 11);
    EXPECT_EQ(HashMap::calcCapacity(5), 11);
    EXPECT_EQ(HashMap::calcCapacity(6), 12);

    Reference<HashMap> three = newMap();
    fill(*three, 3);
    EXPECT_EQ(makeReference<HashMap>(*three)->getCapacity(), 11);
    EXPECT_EQ(makeReference<HashMap>(static_cast<const Map&>(*three), 0.5f)->getCapacity(), 11);

    Reference<HashMap> ten = newMap();
    fill(*ten, 10);
    Reference<HashMap> copy = makeReference<HashMap>(*ten);
    EXPECT_EQ(copy->getCapacity(), 20);
    EXPECT_EQ(copy->getThreshold(), 15);
    EXPECT_TRUE(copy->equals(*ten));
    EXPECT_EQ(copy->hashCode(), ten->hashCode());
}

TEST(HashMapTable, RejectsUnusableSizes)
{
    EXPECT_THROW(HashMap(0, 0.75f), ResultException);
    EXPECT_THROW(HashMap(101, 0.0f), ResultException);
    EXPECT_THROW(HashMap(101, -1.0f), ResultException);
    EXPECT_EQ(qvtest::resultOf([] { HashMap map(-5, 0.75f); }), results::INVALIDARG);
}

TEST(HashMapOrder, CollidingKeysComeNewestFirst)
{
    Reference<HashMap> map = newMap();
    for (int32_t id = 1; id <= 20; ++id)
        map->put(unk(key(id, 42u)), unk(key(-id)));
    Reference<HashMapIterator> it = map->createKeyIterator();
    std::vector<int32_t> expected;
    for (int32_t id = 20; id >= 1; --id)
        expected.push_back(id);
    EXPECT_EQ(drain(*it), expected);
    for (int32_t id = 1; id <= 20; ++id)
        EXPECT_EQ(idOf(map->get(unk(key(id, 42u))).get()), -id);
}

TEST(HashMapOrder, HighestBucketFirstAndRehashOrder)
{
    Reference<HashMap> map = newMap();
    // In 101 buckets: A and B share bucket 0, C has bucket 1.
    map->put(unk(key(1, 0u)), nullptr);
    map->put(unk(key(2, 101u)), nullptr);
    map->put(unk(key(3, 203u)), nullptr);
    EXPECT_EQ(keysInOrder(*map, {1, 2, 3}), (std::vector<int32_t>{3, 2, 1}));

    fill(*map, 76);
    ASSERT_EQ(map->getCapacity(), 203);
    // Old buckets are moved from the last down, each chain from its head, to
    // the heads of the new buckets: C goes to 0 first, then B to 101, then A
    // to 0 in front of C.
    EXPECT_EQ(keysInOrder(*map, {1, 2, 3}), (std::vector<int32_t>{2, 1, 3}));
}

TEST(HashMapIteration, StructuralChangesMakeNextThrow)
{
    Reference<HashMap> map = newMap();
    fill(*map, 5);
    Reference<TestKey> present = key(1000, 7000u);

    Reference<HashMapIterator> it = map->createKeyIterator();
    it->next();
    map->put(unk(present), unk(key(99)));
    EXPECT_TRUE(it->hasNext());
    EXPECT_NO_THROW(it->next());

    map->remove(unk(present));
    EXPECT_TRUE(it->hasNext());
    EXPECT_THROW(it->next(), Exception);

    Reference<HashMapIterator> adding = map->createValueIterator();
    map->put(unk(key(7)), nullptr);
    EXPECT_TRUE(adding->hasNext());
    EXPECT_THROW(adding->next(), Exception);

    // hasNext answers from the scan alone: a walk that has passed every
    // bucket has nothing left, whatever changed behind it.
    Reference<HashMapIterator> done = map->createKeyIterator();
    while (done->hasNext())
        done->next();
    map->put(unk(key(8)), nullptr);
    EXPECT_FALSE(done->hasNext());
    EXPECT_TRUE(throwsPlainException([&] { done->next(); }));

    // Absent keys change nothing.
    Reference<HashMapIterator> quiet = map->createEntryIterator();
    EXPECT_FALSE(map->remove(unk(key(12345))));
    EXPECT_FALSE(map->get(unk(key(12345))));
    EXPECT_NO_THROW(quiet->next());
}

TEST(HashMapIteration, NextPastTheEndAndIteratorRemove)
{
    Reference<HashMap> map = newMap();
    fill(*map, 4);
    Reference<HashMapIterator> it = map->createKeyIterator();
    EXPECT_THROW(it->remove(), IllegalStateException);
    int32_t seen = 0;
    while (it->hasNext()) {
        it->next();
        if (seen++ % 2 == 0)
            it->remove();
    }
    EXPECT_EQ(seen, 4);
    EXPECT_EQ(map->getSize(), 2);
    EXPECT_TRUE(throwsPlainException([&] { it->next(); }));
    // The last element returned can still go, once.
    it->remove();
    EXPECT_EQ(map->getSize(), 1);
    EXPECT_THROW(it->remove(), IllegalStateException);

    Reference<AbstractIterator> readOnly = map->createConstEntryIterator();
    readOnly->next();
    EXPECT_THROW(readOnly->remove(), UnsupportedOperationException);
    EXPECT_EQ(map->getSize(), 1);
}

TEST(HashMapClear, KeepsSizeAndModCount)
{
    Reference<HashMap> map = newMap();
    Reference<TestKey> keys[] = {key(1), key(2), key(3)};
    for (const Reference<TestKey>& k : keys)
        map->put(unk(k), unk(k));
    Reference<HashMapIterator> before = map->createKeyIterator();
    before->next();

    map->clear();
    EXPECT_EQ(map->getSize(), 3);
    for (const Reference<TestKey>& k : keys) {
        EXPECT_FALSE(map->containsKey(unk(k)));
        EXPECT_EQ(k->GetRefCount(), 1);
    }
    EXPECT_EQ(map->getCapacity(), 101);
    // The iterator made before is not invalidated; it simply finds no more.
    EXPECT_FALSE(before->hasNext());
    EXPECT_THROW(before->next(), Exception);
    EXPECT_THROW(before->remove(), IllegalStateException);

    // The stale size meets the threshold that much earlier.
    fill(*map, 75);
    EXPECT_EQ(map->getCapacity(), 101);
    map->put(unk(key(77777)), nullptr);
    EXPECT_EQ(map->getCapacity(), 203);
}

TEST(HashMapComparators, FailureLeavesTheMapUnchanged)
{
    Reference<qvtest::FailingComparator> failing = makeReference<qvtest::FailingComparator>();
    Reference<HashMap> map = makeReference<HashMap>(failing.get(), nullptr);
    map->put(unk(key(1)), unk(key(10)));
    Reference<HashMapIterator> it = map->createKeyIterator();
    EXPECT_EQ(qvtest::resultOf([&] { map->put(unk(key(13)), unk(key(1))); }), qvtest::FailingComparator::FAILURE);
    EXPECT_EQ(map->getSize(), 1);
    EXPECT_NO_THROW(it->next());

    IQVUnknown* previous = nullptr;
    EXPECT_EQ(map->Put(unk(key(13)), nullptr, &previous), qvtest::FailingComparator::FAILURE);
    EXPECT_EQ(previous, nullptr);
    EXPECT_EQ(map->getSize(), 1);
}

namespace {

// A key whose own HashCode fails with a chosen code.
class UnhashableKey : public Object {
public:
    explicit UnhashableKey(Result code) : m_code(code) {}
    Result HashCode(uint32_t*) const override { return m_code; }

private:
    Result m_code;
};

} // namespace

// containsKey hashes and walks the chain in a frame of its own; a failing
// HashCode, the key's or a comparator's, must surface from it as from get,
// and a custom comparator must still decide equality.
TEST(HashMapComparators, LookupsHashAndCompareAsTheOtherOperations)
{
    Reference<qvtest::FailingComparator> failing = makeReference<qvtest::FailingComparator>();
    Reference<HashMap> custom = makeReference<HashMap>(failing.get(), nullptr);
    custom->put(unk(key(1)), unk(key(10)));
    EXPECT_TRUE(custom->containsKey(unk(key(1))));
    EXPECT_FALSE(custom->containsKey(unk(key(2))));
    EXPECT_EQ(qvtest::resultOf([&] { custom->containsKey(unk(key(13))); }), qvtest::FailingComparator::FAILURE);
    EXPECT_EQ(qvtest::resultOf([&] { custom->get(unk(key(13))); }), qvtest::FailingComparator::FAILURE);

    Reference<HashMap> map = newMap();
    map->put(unk(key(1)), unk(key(10)));
    const Result failure = static_cast<Result>(0x80004005u);
    Reference<UnhashableKey> broken = makeReference<UnhashableKey>(failure);
    bool found = true;
    EXPECT_EQ(map->ContainsKey(unk(broken), &found), failure);
    EXPECT_EQ(qvtest::resultOf<ResultException>([&] { map->get(unk(broken)); }), failure);
    EXPECT_THROW(map->containsKey(unk(makeReference<UnhashableKey>(results::OUTOFMEMORY))), OutOfMemoryException);
    EXPECT_TRUE(map->containsKey(unk(key(1))));
    // A null key hashes to 0 and is simply absent.
    EXPECT_FALSE(map->containsKey(nullptr));
}

TEST(HashMapComparators, StringKeysWithAndWithoutCase)
{
    HashMap exact(GetStringComparator(false), nullptr);
    HashMap folded(GetStringComparator(true), nullptr);
    Reference<String> upper = makeReference<String>(u"Hello");
    Reference<String> lower = makeReference<String>(u"hello");
    exact.put(upper->GetUnknown(), unk(key(1)));
    folded.put(upper->GetUnknown(), unk(key(1)));
    EXPECT_FALSE(exact.containsKey(lower->GetUnknown()));
    EXPECT_TRUE(folded.containsKey(lower->GetUnknown()));
    EXPECT_EQ(idOf(folded.get(lower->GetUnknown()).get()), 1);

    // A key the comparator cannot judge is refused.
    EXPECT_EQ(qvtest::resultOf([&] { exact.put(unk(key(3)), nullptr); }), results::INVALIDARG);
    EXPECT_EQ(exact.getSize(), 1);
}

TEST(HashMapInterface, ResultCodesAcrossTheBoundary)
{
    Reference<HashMap> object = newMap();
    Reference<Map> map = Reference<IQVUnknown>(object->GetUnknown()).query<Map>();
    ASSERT_TRUE(map);
    Reference<TestKey> k = key(1);
    Reference<IQVUnknown> value;
    EXPECT_EQ(map->Get(unk(k), value.put()), results::FALSE_);
    EXPECT_FALSE(value);
    EXPECT_EQ(map->Put(unk(k), nullptr, nullptr), results::OK);
    // Present with a null value: found, not absent.
    EXPECT_EQ(map->Get(unk(k), value.put()), results::OK);
    EXPECT_EQ(map->Get(unk(k), nullptr), results::POINTER);
    EXPECT_EQ(map->Remove(unk(key(2)), nullptr), results::FALSE_);
    EXPECT_EQ(map->Remove(unk(k), value.put()), results::OK);
    EXPECT_EQ(map->PutAll(nullptr), results::POINTER);

    Reference<Set> entries;
    ASSERT_EQ(map->CreateEntrySet(entries.put()), results::OK);
    bool changed = true;
    EXPECT_EQ(entries->Add(unk(k), &changed), results::FAIL);
    EXPECT_FALSE(changed);
}

TEST(HashMapViews, EntrySetFollowsTheMap)
{
    Reference<HashMap> map = newMap();
    Reference<TestKey> k1 = key(1);
    Reference<TestKey> v1 = key(10);
    map->put(unk(k1), unk(v1));
    map->put(unk(key(2)), unk(key(20)));
    Reference<AbstractSet> entries = map->createEntrySet();
    EXPECT_EQ(entries->getSize(), 2);

    Reference<HashMapIterator> it = map->createEntryIterator();
    Reference<IQVUnknown> first = it->next();
    EXPECT_TRUE(entries->contains(first.get()));
    EXPECT_FALSE(entries->contains(unk(k1)));

    Reference<HashMap> other = newMap();
    other->put(unk(k1), unk(key(11)));
    Reference<HashMapIterator> otherIt = other->createEntryIterator();
    EXPECT_FALSE(entries->contains(otherIt->next().get()));

    EXPECT_TRUE(entries->remove(first.get()));
    EXPECT_EQ(map->getSize(), 1);
    // The entry handed out stays usable after the map let it go.
    Reference<MapEntry> entry = first.query<MapEntry>();
    Reference<IQVUnknown> entryKey;
    EXPECT_EQ(entry->GetKey(entryKey.put()), results::OK);
    EXPECT_FALSE(map->containsKey(entryKey.get()));
}

TEST(HashMapObject, EqualityHashOrderAndText)
{
    Reference<HashMap> a = newMap();
    Reference<HashMap> b = makeReference<HashMap>(11, 0.5f);
    for (int32_t id = 1; id <= 3; ++id) {
        a->put(unk(key(id)), unk(key(id * 10)));
        b->put(unk(key(id)), unk(key(id * 10)));
    }
    EXPECT_TRUE(a->equals(*b));
    EXPECT_EQ(a->compareTo(*b), 0);
    EXPECT_EQ(a->hashCode(), b->hashCode());
    b->put(unk(key(3)), unk(key(31)));
    EXPECT_FALSE(a->equals(*b));
    EXPECT_EQ(a->compareTo(*b), -b->compareTo(*a));
    EXPECT_NE(a->compareTo(*b), 0);
    b->remove(unk(key(3)));
    EXPECT_EQ(a->compareTo(*b), 1);

    Reference<HashMap> c = newMap();
    c->put(unk(key(1)), unk(key(2)));
    EXPECT_EQ(c->toString().toUtf8(), "{1=2}");
    c->putAll(*a);
    EXPECT_EQ(c->getSize(), 3);
    EXPECT_EQ(idOf(c->get(unk(key(1))).get()), 10);
    c->putAll(*c);
    EXPECT_EQ(c->getSize(), 3);
    EXPECT_TRUE(c->containsValue(unk(key(30))));
    EXPECT_FALSE(c->containsValue(unk(key(31))));
}

TEST(HashMapMemory, FailedAllocationLeavesTheMapUnchanged)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "the platform layer was built without fault injection";
    Reference<HashMap> map = newMap();
    fill(*map, 75);
    Reference<TestKey> extra = key(5);
    Reference<TestKey> value = key(6);
    Reference<HashMapIterator> it = map->createKeyIterator();
    // The entry and the larger table can each fail.
    EXPECT_EQ(qvtest::sweepAllocations([&] { map->put(unk(extra), unk(value)); },
                                       [&] {
                                           EXPECT_EQ(map->getSize(), 75);
                                           EXPECT_EQ(map->getCapacity(), 101);
                                           EXPECT_FALSE(map->containsKey(unk(extra)));
                                           EXPECT_EQ(extra->GetRefCount(), 1);
                                           EXPECT_EQ(drain(*it).size(), 75u);
                                           it = map->createKeyIterator();
                                       }),
              2);
    EXPECT_EQ(map->getSize(), 76);
    EXPECT_EQ(map->getCapacity(), 203);
}

TEST(HashSetTest, SetOperations)
{
    Reference<HashSet> set = makeReference<HashSet>();
    EXPECT_TRUE(set->add(unk(key(1))));
    EXPECT_TRUE(set->add(unk(key(2))));
    EXPECT_FALSE(set->add(unk(key(1))));
    EXPECT_EQ(set->getSize(), 2);
    EXPECT_TRUE(set->contains(unk(key(2))));
    EXPECT_TRUE(set->remove(unk(key(2))));
    EXPECT_FALSE(set->remove(unk(key(2))));

    Reference<ArrayList> list = makeReference<ArrayList>();
    for (int32_t id : {3, 1, 4, 1, 5})
        list->add(unk(key(id)));
    Reference<HashSet> fromList = makeReference<HashSet>(*list);
    EXPECT_EQ(fromList->getSize(), 4);
    EXPECT_EQ(fromList->getCapacity(), 11);
    EXPECT_TRUE(fromList->containsAll(*set));
    Reference<HashSet> same = makeReference<HashSet>(*fromList);
    EXPECT_TRUE(same->equals(*fromList));
    EXPECT_EQ(same->hashCode(), fromList->hashCode());
    EXPECT_EQ(same->compareTo(*fromList), 0);
    EXPECT_FALSE(fromList->equals(*list));

    EXPECT_TRUE(same->retainAll(*set));
    EXPECT_EQ(same->getSize(), 1);
    EXPECT_EQ(same->compareTo(*fromList), -1);
    EXPECT_TRUE(fromList->removeAll(*set));
    EXPECT_EQ(fromList->getSize(), 3);

    Reference<AbstractIterator> it = fromList->createIterator();
    fromList->add(unk(key(9)));
    EXPECT_THROW(it->next(), Exception);
    Reference<AbstractIterator> keys = fromList->createIterator();
    std::vector<int32_t> ids = drain(*keys);
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(ids, (std::vector<int32_t>{3, 4, 5, 9}));
}
