#include "TestElements.h"

#include <qv/collections/IntegerHashMap.h>
#include <qv/collections/Str1HashMap.h>
#include <qv/collections/StringHashMap.h>
#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qv;
using namespace qv::collections;
using qvtest::idOf;
using qvtest::key;
using qvtest::unk;

static_assert(StringHashMap::DEFAULT_CAPACITY == 101 && IntegerHashMap::DEFAULT_CAPACITY == 101,
              "every hash map starts with 101 buckets");
static_assert(Str1HashMap::DEFAULT_LOAD == 0.75f && StringHashMap::DEFAULT_LOAD == 0.75f,
              "every hash map has load factor 0.75");

TEST(IntegerHashMapTest, SameTableRulesAsTheComponentMap)
{
    IntegerHashMap map;
    for (int32_t k = 0; k < 75; ++k)
        map.put(k, unk(key(k)));
    EXPECT_EQ(map.getCapacity(), 101);
    map.put(0, unk(key(100)));
    EXPECT_EQ(map.getCapacity(), 101);
    map.put(75, nullptr);
    EXPECT_EQ(map.getCapacity(), 203);
    EXPECT_EQ(map.getThreshold(), 152);
    EXPECT_EQ(idOf(map.get(0).get()), 100);
    EXPECT_TRUE(map.containsKey(75));
    EXPECT_FALSE(map.get(-5));
    EXPECT_TRUE(map.containsValue(unk(key(74))));

    IntegerHashMap copy(map);
    EXPECT_EQ(copy.getCapacity(), 152);
    EXPECT_EQ(copy.getSize(), 76);
}

TEST(IntegerHashMapTest, OrderFailFastAndClear)
{
    IntegerHashMap map;
    // 5 and 106 share bucket 5; 7 has its own.
    map.put(5, nullptr);
    map.put(7, nullptr);
    map.put(106, nullptr);
    std::vector<int32_t> keys;
    IntegerHashMap::Iterator it = map.createIterator();
    while (it.hasNext())
        keys.push_back(it.next().getKey());
    EXPECT_EQ(keys, (std::vector<int32_t>{7, 106, 5}));

    IntegerHashMap::Iterator changed = map.createIterator();
    changed.next();
    map.put(7, unk(key(1)));
    EXPECT_NO_THROW(changed.next());
    map.remove(5);
    EXPECT_THROW(changed.next(), Exception);
    EXPECT_FALSE(map.remove(5));

    IntegerHashMap::Iterator removing = map.createIterator();
    removing.next();
    removing.remove();
    EXPECT_EQ(map.getSize(), 1);

    map.clear();
    EXPECT_EQ(map.getSize(), 1);
    EXPECT_FALSE(map.containsKey(7));
    EXPECT_FALSE(map.containsKey(106));
    EXPECT_FALSE(removing.hasNext());
}

TEST(StringHashMapTest, KeysByValue)
{
    StringHashMap map;
    String name(u"level");
    map.put(name, unk(key(3)));
    name.append(u"-changed");
    EXPECT_TRUE(map.containsKey(String(u"level")));
    EXPECT_FALSE(map.containsKey(String(u"LEVEL")));
    EXPECT_EQ(idOf(map.put(QV_STR(u"level"), unk(key(4))).get()), 3);
    EXPECT_EQ(map.getSize(), 1);
    for (int32_t i = 0; i < 200; ++i)
        map.put(String::valueOf(i), unk(key(i)));
    EXPECT_EQ(map.getCapacity(), 407);
    EXPECT_EQ(idOf(map.get(String(u"150")).get()), 150);
    EXPECT_EQ(idOf(map.remove(String(u"150")).get()), 150);
    EXPECT_FALSE(map.containsKey(String(u"150")));
    StringHashMap::Iterator it = map.createIterator();
    int32_t count = 0;
    while (it.hasNext()) {
        it.next();
        ++count;
    }
    EXPECT_EQ(count, 200);
}

TEST(Str1HashMapTest, CaseSensitiveAndLowerCaseMaps)
{
    Str1HashMap exact;
    Str1HashMapLC folded;
    exact.put(Str1(u"UTF-8"), unk(key(8)));
    folded.put(Str1(u"UTF-8"), unk(key(8)));
    folded.put(Str1(u"ΣΊΣΥΦΟΣ"), unk(key(9)));

    EXPECT_TRUE(exact.containsKey(Str1(u"UTF-8")));
    EXPECT_FALSE(exact.containsKey(Str1(u"utf-8")));
    for (const char16_t* spelling : {u"utf-8", u"UTF-8", u"Utf-8", u"uTF-8"})
        EXPECT_EQ(idOf(folded.get(Str1(spelling)).get()), 8);
    EXPECT_EQ(idOf(folded.get(Str1(u"σίσυφοσ")).get()), 9);
    EXPECT_EQ(idOf(folded.put(Str1(u"utf-8"), unk(key(80))).get()), 8);
    EXPECT_EQ(folded.getSize(), 2);

    Str1HashMapLC::Iterator it = folded.createIterator();
    std::vector<std::u16string> keys;
    while (it.hasNext()) {
        const Str1& stored = it.next().getKey();
        keys.emplace_back(stored.getData(), static_cast<size_t>(stored.getLength()));
    }
    EXPECT_NE(std::find(keys.begin(), keys.end(), u"utf-8"), keys.end());
    EXPECT_NE(std::find(keys.begin(), keys.end(), u"σίσυφοσ"), keys.end());

    Str1HashMapLC copy(folded);
    EXPECT_EQ(copy.getCapacity(), 11);
    EXPECT_TRUE(copy.containsKey(Str1(u"UTF-8")));
    EXPECT_EQ(idOf(folded.remove(Str1(u"UTF-8")).get()), 80);
    EXPECT_TRUE(copy.containsKey(Str1(u"utf-8")));
}

TEST(Str1HashMapTest, FailedAllocationLeavesTheMapUnchanged)
{
    if (!qvtest::AllocationFault::available())
        GTEST_SKIP() << "the platform layer was built without fault injection";
    Str1HashMapLC map;
    map.put(Str1(u"A"), nullptr);
    Str1 name(u"Some-Long-Encoding-Name");
    int32_t failures = 0;
    for (int32_t nth = 1; nth < 10; ++nth) {
        try {
            qvtest::AllocationFault fault(nth);
            map.put(name, nullptr);
        } catch (const std::bad_alloc&) {
            ++failures;
            EXPECT_EQ(map.getSize(), 1);
            EXPECT_FALSE(map.containsKey(name));
            continue;
        }
        break;
    }
    // The lower-cased copy of the key and the entry.
    EXPECT_GE(failures, 2);
    EXPECT_TRUE(map.containsKey(Str1(u"some-long-encoding-name")));
}
