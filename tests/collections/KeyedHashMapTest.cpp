#include "AllocationSweep.h"
#include "TestElements.h"

#include <qv/collections/IntegerHashMap.h>
#include <qv/collections/Str1HashMap.h>
#include <qv/collections/StringHashMap.h>
#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
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
    // Growth, order and lookups against the component map are in
    // CollidingKeysTest; here, what that comparison leaves out.
    IntegerHashMap map;
    for (int32_t k = 0; k <= 75; ++k)
        map.put(k, unk(key(k)));
    EXPECT_EQ(map.getThreshold(), 152);
    EXPECT_TRUE(map.containsValue(unk(key(74))));
    EXPECT_FALSE(map.containsValue(unk(key(76))));

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
    // Lookups, removals and walks against a std::map are in KeyedMapViews.
    for (int32_t i = 0; i < 200; ++i)
        map.put(String::valueOf(i), unk(key(i)));
    EXPECT_EQ(map.getCapacity(), 407);
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
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "the platform layer was built without fault injection";
    Str1HashMapLC map;
    map.put(Str1(u"A"), nullptr);
    Str1 name(u"Some-Long-Encoding-Name");
    // The lower-cased copy of the key and the entry.
    EXPECT_GE(qvtest::sweepAllocations([&] { map.put(name, nullptr); },
                                       [&] {
                                           EXPECT_EQ(map.getSize(), 1);
                                           EXPECT_FALSE(map.containsKey(name));
                                       }),
              2);
    EXPECT_TRUE(map.containsKey(Str1(u"some-long-encoding-name")));
}

namespace {

struct IntegerKeys {
    using Map = IntegerHashMap;
    static int32_t make(int32_t n) { return n * 101; } // many share a bucket
    static bool same(int32_t a, int32_t b) { return a == b; }
};
struct StringKeys {
    using Map = StringHashMap;
    static String make(int32_t n) { return String::valueOf(n); }
    static bool same(const String& a, const String& b) { return a == b; }
};
template <class M>
struct Str1Keys {
    using Map = M;
    // Lower case: the folding map keeps its keys lower-cased.
    static Str1 make(int32_t n)
    {
        const std::u16string text = u"key" + std::u16string(1, static_cast<char16_t>(u'a' + n % 26)) +
                                    std::u16string(static_cast<size_t>(n / 26), u'x');
        return Str1(text.data(), static_cast<int32_t>(text.size()));
    }
    static bool same(const Str1& a, const Str1& b) { return a.equals(b); }
};

constexpr int32_t KEY_COUNT = 40;

template <class K, class Key>
int32_t numberOf(const Key& key)
{
    for (int32_t n = 0; n < KEY_COUNT; ++n) {
        if (K::same(K::make(n), key))
            return n;
    }
    return -1;
}

} // namespace

template <class K>
class KeyedMapViews : public ::testing::Test {};

using KeyKinds = ::testing::Types<IntegerKeys, StringKeys, Str1Keys<Str1HashMap>, Str1Keys<Str1HashMapLC>>;
TYPED_TEST_SUITE(KeyedMapViews, KeyKinds);

// Random puts and removals through the map, the key set, the values and the
// view iterators (with setValue on entries), against std::map; the three
// walks must agree with each other, that is with the map's own order.
TYPED_TEST(KeyedMapViews, ViewsAreLiveAndFollowTheMapOrder)
{
    using Map = typename TypeParam::Map;
    std::vector<Reference<qvtest::TestKey>> values;
    for (int32_t v = 0; v < 8; ++v)
        values.push_back(key(v));
    std::mt19937 random(11);
    Map map(5);
    auto keySet = map.keySet();
    auto valueView = map.values();
    auto entrySet = map.entrySet();
    std::map<int32_t, int32_t> model;
    for (int step = 0; step < 3000; ++step) {
        const int32_t n = static_cast<int32_t>(random() % KEY_COUNT);
        const int32_t v = static_cast<int32_t>(random() % 8);
        switch (random() % 6) {
        case 0:
        case 1:
            map.put(TypeParam::make(n), unk(values[v]));
            model[n] = v;
            break;
        case 2: ASSERT_EQ(keySet.remove(TypeParam::make(n)), model.erase(n) == 1); break;
        case 3: {
            int32_t first = -1;
            for (auto it = entrySet.createIterator(); it.hasNext() && first < 0;) {
                const auto& entry = it.next();
                if (idOf(entry.getValue().get()) == v)
                    first = numberOf<TypeParam>(entry.getKey());
            }
            ASSERT_EQ(valueView.remove(unk(values[v])), first >= 0);
            if (first >= 0) {
                model.erase(first);
                ASSERT_FALSE(map.containsKey(TypeParam::make(first)));
            }
            break;
        }
        default: {
            auto keys = keySet.createIterator();
            auto vals = valueView.createIterator();
            auto entries = entrySet.createIterator();
            std::map<int32_t, int32_t> seen;
            while (entries.hasNext()) {
                ASSERT_TRUE(keys.hasNext() && vals.hasNext());
                auto& entry = entries.next();
                const int32_t number = numberOf<TypeParam>(entry.getKey());
                EXPECT_EQ(numberOf<TypeParam>(keys.next()), number);
                EXPECT_EQ(vals.next().get(), entry.getValue().get());
                seen[number] = idOf(entry.getValue().get());
                if (random() % 7 == 0) {
                    EXPECT_EQ(idOf(entry.setValue(unk(values[v])).get()), model[number]);
                    model[number] = seen[number] = v;
                }
            }
            EXPECT_FALSE(keys.hasNext());
            EXPECT_EQ(seen, model);
            // Removal through a view iterator.
            auto remover = keySet.createIterator();
            if (remover.hasNext()) {
                model.erase(numberOf<TypeParam>(remover.next()));
                remover.remove();
            }
        }
        }
        ASSERT_EQ(keySet.getSize(), static_cast<int32_t>(model.size()));
        ASSERT_EQ(valueView.getSize(), static_cast<int32_t>(model.size()));
    }
    for (const auto& pair : model) {
        EXPECT_TRUE(keySet.contains(TypeParam::make(pair.first)));
        EXPECT_EQ(idOf(map.get(TypeParam::make(pair.first)).get()), pair.second);
    }
    auto stale = keySet.createIterator();
    map.put(TypeParam::make(KEY_COUNT), nullptr);
    EXPECT_THROW(stale.next(), Exception);
}
