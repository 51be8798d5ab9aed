// The maps, the set, their iterators, copies and putAll under allocation
// failure: each failed allocation surfaces as OutOfMemoryException and the
// collection keeps its entries, capacity and order.
#include "TestElements.h"

#include <qv/collections/IntegerHashMap.h>
#include <qv/collections/StringHashMap.h>
#include <qv/collections/qvcom/AbstractSet.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/HashSet.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qv;
using namespace qv::collections;
using qvtest::idOf;
using qvtest::unk;

namespace {

using CollectionsAllocationSweep = qvtest::AllocationFaultTest;

template <class Map>
std::vector<int32_t> walk(Map& map)
{
    std::vector<int32_t> ids;
    typename Map::Iterator it = map.createIterator();
    while (it.hasNext())
        ids.push_back(idOf(it.next().getValue().get()));
    return ids;
}

String collidingKey(int32_t n)
{
    std::u16string text(64, u'c');
    for (int bit = 0; bit < 8; ++bit)
        text[static_cast<size_t>(2 * bit + 1)] = (n >> bit) & 1 ? u'1' : u'0';
    return String(text.data(), 64);
}

} // namespace

TEST_F(CollectionsAllocationSweep, KeyedMapsGrowAndIndexWithoutLosingEntries)
{
    // The next put grows the table (75 entries reach the threshold of 101).
    StringHashMap strings;
    IntegerHashMap integers;
    for (int32_t i = 0; i < 75; ++i) {
        strings.put(String::valueOf(i), unk(qvtest::key(i)));
        integers.put(i * 101, unk(qvtest::key(i)));
    }
    const std::vector<int32_t> stringOrder = walk(strings);
    const std::vector<int32_t> integerOrder = walk(integers);
    const String newKey(u"new key");
    qvtest::sweepAllocations([&] { strings.put(newKey, unk(qvtest::key(75))); },
                             [&] {
                                 EXPECT_EQ(strings.getCapacity(), 101);
                                 EXPECT_FALSE(strings.containsKey(newKey));
                                 EXPECT_EQ(walk(strings), stringOrder);
                             });
    EXPECT_EQ(strings.getCapacity(), 203);
    qvtest::sweepAllocations([&] { integers.put(-1, unk(qvtest::key(75))); },
                             [&] {
                                 EXPECT_EQ(integers.getSize(), 75);
                                 EXPECT_EQ(walk(integers), integerOrder);
                             });
    EXPECT_EQ(idOf(integers.get(-1).get()), 75);

    // A chain long enough to carry an index: the index's memory running out
    // costs speed only, never an entry.
    StringHashMap colliding;
    for (int32_t i = 0; i < 12; ++i)
        colliding.put(collidingKey(i), unk(qvtest::key(i)));
    ASSERT_EQ(colliding.getIndexedChainCount(), 1);
    const std::vector<int32_t> collidingOrder = walk(colliding);
    qvtest::sweepAllocations([&] { colliding.put(collidingKey(12), unk(qvtest::key(12))); },
                             [&] { EXPECT_EQ(walk(colliding), collidingOrder); });
    for (int32_t i = 0; i <= 12; ++i)
        EXPECT_EQ(idOf(colliding.get(collidingKey(i)).get()), i);

    StringHashMap* copy = nullptr;
    qvtest::sweepAllocations([&] { copy = new StringHashMap(strings); });
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getSize(), 76);
    delete copy;
}

TEST_F(CollectionsAllocationSweep, ComponentMapSetIteratorsAndPutAll)
{
    Reference<collections::qvcom::HashMap> source = makeReference<collections::qvcom::HashMap>();
    for (int32_t i = 0; i < 30; ++i)
        source->put(unk(qvtest::key(i)), unk(qvtest::key(100 + i)));
    Reference<collections::qvcom::HashMap> target = makeReference<collections::qvcom::HashMap>();
    target->put(unk(qvtest::key(1000)), nullptr);
    qvtest::sweepAllocations([&] { target->putAll(*source); },
                             [&] {
                                 // Entries already copied stay; each one is whole.
                                 EXPECT_TRUE(target->containsKey(unk(qvtest::key(1000))));
                                 EXPECT_EQ(static_cast<int32_t>(qvtest::drain(*target->createKeyIterator()).size()),
                                           target->getSize());
                             });
    EXPECT_EQ(target->getSize(), 31);

    Reference<collections::qvcom::HashMap> copy;
    qvtest::sweepAllocations([&] { copy = makeReference<collections::qvcom::HashMap>(*source); },
                             [&] { EXPECT_FALSE(copy); });
    EXPECT_TRUE(copy->equals(*source));

    std::vector<int32_t> keys;
    qvtest::sweepAllocations(
        [&] {
            Reference<collections::qvcom::AbstractSet> entries = source->createEntrySet();
            Reference<collections::qvcom::HashMapIterator> it = source->createKeyIterator();
            keys = qvtest::drain(*it);
        },
        [&] { EXPECT_TRUE(keys.empty()); });
    EXPECT_EQ(keys.size(), 30u);

    Reference<collections::qvcom::HashSet> set = makeReference<collections::qvcom::HashSet>();
    for (int32_t i = 0; i < 75; ++i)
        set->add(unk(qvtest::key(i)));
    qvtest::sweepAllocations([&] { set->add(unk(qvtest::key(75))); },
                             [&] {
                                 EXPECT_EQ(set->getSize(), 75);
                                 EXPECT_FALSE(set->contains(unk(qvtest::key(75))));
                             });
    EXPECT_TRUE(set->contains(unk(qvtest::key(75))));

    // Twenty comparable keys with one hash: the chain carries an index,
    // whose memory running out costs speed only.
    Reference<collections::qvcom::HashSet> colliding = makeReference<collections::qvcom::HashSet>();
    for (int32_t i = 0; i < 20; ++i)
        colliding->add(unk(qvtest::key(i, 5)));
    const std::vector<int32_t> order = qvtest::drain(*colliding->createIterator());
    qvtest::sweepAllocations([&] { colliding->add(unk(qvtest::key(20, 5))); },
                             [&] { EXPECT_EQ(qvtest::drain(*colliding->createIterator()), order); });
    for (int32_t i = 0; i <= 20; ++i)
        EXPECT_TRUE(colliding->contains(unk(qvtest::key(i, 5)))) << i;
}
