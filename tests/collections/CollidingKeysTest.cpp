#include "TestElements.h"

#include <qv/collections/IntegerHashMap.h>
#include <qv/collections/Str1HashMap.h>
#include <qv/collections/StringHashMap.h>
#include <qv/collections/qvcom/HashMap.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace qv;
using namespace qv::collections;
using qvtest::idOf;
using qvtest::unk;

namespace {

template <class Map>
std::vector<int32_t> valueIdsInOrder(Map& map)
{
    std::vector<int32_t> ids;
    typename Map::Iterator it = map.createIterator();
    while (it.hasNext())
        ids.push_back(idOf(it.next().getValue().get()));
    return ids;
}

std::vector<int32_t> keyIdsInOrder(collections::qvcom::HashMap& map)
{
    return qvtest::drain(*map.createKeyIterator());
}

// Runs a keyed map (whose long chains get an index ordered by key digests)
// and a component HashMap (whose index orders TestKeys by CompareTo) through
// the same random puts, removals and iterator removals, with key i of the
// keyed map standing for TestKey i with the same hash in the component map.
// Both share the table rules, so every order must stay identical and every
// lookup must agree.
template <class Map, class Key, class Hash>
void runBesideUnindexedTable(const std::vector<Key>& keys, Hash hashOf, uint32_t seed)
{
    Map map;
    collections::qvcom::HashMap oracle;
    std::vector<Reference<qvtest::TestKey>> oracleKeys;
    for (size_t i = 0; i < keys.size(); ++i)
        oracleKeys.push_back(qvtest::key(static_cast<int32_t>(i), hashOf(keys[i])));
    std::mt19937 random(seed);
    const int32_t n = static_cast<int32_t>(keys.size());
    int32_t mostIndexed = 0;
    for (int step = 0; step < 6 * n; ++step) {
        const int32_t i = static_cast<int32_t>(random() % static_cast<uint32_t>(n));
        const uint32_t action = random() % 10;
        if (action < 6) {
            Reference<IQVUnknown> value = unk(qvtest::key(i));
            EXPECT_EQ(idOf(map.put(keys[i], value.get()).get()),
                      idOf(oracle.put(unk(oracleKeys[i]), value.get()).get()));
        } else if (action < 9) {
            EXPECT_EQ(idOf(map.remove(keys[i]).get()), idOf(oracle.remove(unk(oracleKeys[i])).get()));
        } else if (map.getSize() > 0) {
            // Remove the entry at a random place of the walk, through both
            // iterators.
            const int32_t at = i % map.getSize();
            typename Map::Iterator it = map.createIterator();
            Reference<collections::qvcom::HashMapIterator> oracleIt = oracle.createKeyIterator();
            for (int32_t k = 0; k <= at; ++k) {
                it.next();
                oracleIt->next();
            }
            it.remove();
            oracleIt->remove();
        }
        if (map.getIndexedChainCount() > mostIndexed)
            mostIndexed = map.getIndexedChainCount();
        if (step % n == n - 1) {
            ASSERT_EQ(map.getSize(), oracle.getSize());
            ASSERT_EQ(map.getCapacity(), oracle.getCapacity());
            ASSERT_EQ(valueIdsInOrder(map), keyIdsInOrder(oracle)) << "step " << step;
            for (int32_t k = 0; k < n; ++k)
                ASSERT_EQ(idOf(map.get(keys[k]).get()), idOf(oracle.get(unk(oracleKeys[k])).get())) << k;
        }
    }
    EXPECT_GT(mostIndexed, 0) << "no chain was ever long enough to be indexed";
    map.clear();
    oracle.clear();
    EXPECT_EQ(valueIdsInOrder(map), keyIdsInOrder(oracle));
    EXPECT_EQ(map.getIndexedChainCount(), 0);
}

} // namespace

// 64-unit keys hash only their even positions: all of these collide.
TEST(CollidingKeysTest, StringKeysThatShareOneHash)
{
    std::vector<String> keys;
    for (int32_t i = 0; i < 1500; ++i) {
        std::u16string text(64, u'k');
        for (int32_t bit = 0; bit < 11; ++bit)
            text[static_cast<size_t>(2 * bit + 1)] = (i >> bit) & 1 ? u'1' : u'0';
        keys.emplace_back(text.data(), 64);
    }
    ASSERT_EQ(keys[0].hashCode(), keys[1499].hashCode());
    runBesideUnindexedTable<StringHashMap>(
        keys, [](const String& k) { return k.hashCode(false); }, 1);
}

// Distinct hashes in one bucket (multiples of the capacity), and a few
// buckets at once, through two growths of the table.
TEST(CollidingKeysTest, IntegerKeysThatShareBuckets)
{
    std::vector<int32_t> keys;
    for (int32_t i = 0; i < 400; ++i)
        keys.push_back((i % 4) + 101 * 203 * 407 * (i / 4 + 1));
    runBesideUnindexedTable<IntegerHashMap>(
        keys, [](int32_t k) { return static_cast<uint32_t>(k); }, 2);
}

// "Aa" and "BB" have the same polynomial hash; so have all nine-pair
// concatenations of them.
TEST(CollidingKeysTest, Str1KeysWithOnePolynomialHash)
{
    std::vector<std::u16string> texts;
    for (int32_t i = 0; i < 512; ++i) {
        std::u16string text;
        for (int32_t bit = 0; bit < 9; ++bit)
            text += (i >> bit) & 1 ? u"Aa" : u"BB";
        texts.push_back(text);
    }
    std::vector<Str1> keys;
    for (const auto& text : texts)
        keys.emplace_back(text.c_str());
    runBesideUnindexedTable<Str1HashMap>(
        keys, [](const Str1& k) { return k.hashCode(false); }, 3);

    // Folding case makes "Aa" and "BB" differ; "1z" and "2[" collide with
    // or without case, and are found as "1Z".
    std::vector<Str1> lower;
    std::vector<Str1> upper;
    for (int32_t i = 0; i < 512; ++i) {
        std::u16string text;
        for (int32_t bit = 0; bit < 9; ++bit)
            text += (i >> bit) & 1 ? u"1z" : u"2[";
        lower.emplace_back(text.c_str());
        for (auto& unit : text)
            unit = unit == u'z' ? u'Z' : unit;
        upper.emplace_back(text.c_str());
    }
    ASSERT_EQ(lower[0].hashCode(true), lower[511].hashCode(true));
    runBesideUnindexedTable<Str1HashMapLC>(
        lower, [](const Str1& k) { return k.hashCode(true); }, 4);
    Str1HashMapLC map;
    for (size_t i = 0; i < lower.size(); ++i)
        map.put(lower[i], unk(qvtest::key(static_cast<int32_t>(i))));
    ASSERT_GT(map.getIndexedChainCount(), 0);
    EXPECT_EQ(idOf(map.get(upper[7]).get()), 7);
    EXPECT_EQ(idOf(map.remove(upper[9]).get()), 9);
    EXPECT_FALSE(map.containsKey(lower[9]));
}

namespace {

struct IntNode : HashNode {
    int32_t key = 0;
};

const IntNode* asInt(const HashNode* node)
{
    return static_cast<const IntNode*>(node);
}

int compareInts(int32_t a, int32_t b)
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

// Digests shared by runs of four keys, so that the keys decide within each
// run; the table gives each chain an index as soon as it is long.
const HashTable::KeyOrder* intOrder()
{
    static const HashTable::KeyOrder order{
        [](const HashNode* a, const HashNode* b) noexcept { return compareInts(asInt(a)->key, asInt(b)->key); },
        [](const void* key, const HashNode* node) noexcept {
            return compareInts(*static_cast<const int32_t*>(key), asInt(node)->key);
        },
        [](const HashNode* node) noexcept { return static_cast<uint64_t>(asInt(node)->key / 4); },
        [](const void* key) noexcept { return static_cast<uint64_t>(*static_cast<const int32_t*>(key) / 4); }};
    return &order;
}

void destroyInt(HashNode* node) noexcept
{
    delete static_cast<IntNode*>(node);
}

std::vector<int32_t> tableOrder(const HashTable& table)
{
    std::vector<int32_t> order;
    HashCursor cursor(table);
    while (cursor.hasNext())
        order.push_back(asInt(cursor.next())->key);
    return order;
}

} // namespace

// Thousands of keys in seven chains, so that the indexes grow several levels
// deep and lose entries that their inner levels name, beside a table without
// indexes: same walk, same lookups, after every round.
TEST(CollidingKeysTest, DeepIndexesMatchPlainChains)
{
    HashTable indexed(HashTable::DEFAULT_CAPACITY, HashTable::DEFAULT_LOAD, &destroyInt, intOrder());
    HashTable plain(HashTable::DEFAULT_CAPACITY, HashTable::DEFAULT_LOAD, &destroyInt);
    std::mt19937 random(5);
    const int32_t n = 6000;
    for (int32_t step = 0; step < 8 * n; ++step) {
        int32_t key = static_cast<int32_t>(random() % n);
        const uint32_t hash = static_cast<uint32_t>(key % 7);
        auto same = [key](HashNode* node) { return asInt(node)->key == key; };
        // Removals come in runs, so that whole leaves empty.
        const bool removing = (step / 2000) % 2 == 1 ? random() % 4 != 0 : random() % 4 == 0;
        if (!removing) {
            ASSERT_EQ(indexed.find(hash, &key, same) != nullptr, plain.find(hash, same) != nullptr);
            if (!indexed.find(hash, &key, same)) {
                for (HashTable* table : {&indexed, &plain}) {
                    IntNode* node = new IntNode();
                    node->key = key;
                    node->hash = hash;
                    table->insert(node);
                }
            }
        } else if (random() % 3 != 0) {
            HashNode* gone = indexed.detach(hash, &key, same);
            HashNode* plainGone = plain.detach(hash, same);
            ASSERT_EQ(gone != nullptr, plainGone != nullptr);
            if (gone) {
                destroyInt(gone);
                destroyInt(plainGone);
            }
        } else if (indexed.getSize() > 0) {
            const int32_t at = key % indexed.getSize();
            HashCursor cursor(indexed);
            HashCursor plainCursor(plain);
            for (int32_t k = 0; k <= at; ++k) {
                cursor.next();
                plainCursor.next();
            }
            cursor.remove();
            plainCursor.remove();
        }
        if (step % 1000 == 999) {
            ASSERT_GT(indexed.getIndexedChainCount(), 0);
            ASSERT_EQ(tableOrder(indexed), tableOrder(plain)) << "step " << step;
            for (key = 0; key < n; ++key) {
                auto same = [key](HashNode* node) { return asInt(node)->key == key; };
                const uint32_t hash = static_cast<uint32_t>(key % 7);
                ASSERT_EQ(indexed.find(hash, &key, same), indexed.find(hash, same)) << key;
            }
        }
    }
    EXPECT_EQ(indexed.getCapacity(), plain.getCapacity());
}

namespace {

// Counts its comparisons; fails them against keys with a negative id.
class CountingKey : public Object {
public:
    static int32_t comparisons;
    explicit CountingKey(int32_t id) : m_id(id) {}
    uint32_t hashCode() const override { return 7; }
    int compareTo(const Object& other) const override
    {
        ++comparisons;
        const CountingKey* key = dynamic_cast<const CountingKey*>(&other);
        if (!key)
            return Object::compareTo(other);
        if (key->m_id < 0 || m_id < 0)
            throw ResultException(0x80070057);
        return m_id < key->m_id ? -1 : (m_id > key->m_id ? 1 : 0);
    }

private:
    int32_t m_id;
};

int32_t CountingKey::comparisons = 0;

} // namespace

// Keys of one class that compare with CompareTo get an index in the
// component map too: a lookup in a chain of 4 000 costs a few dozen
// comparisons, not thousands. Keys of another class in the same chain, or a
// comparison that fails, send lookups back to the walk with its answers.
TEST(CollidingKeysTest, ComponentMapIndexesComparableKeysOfOneClass)
{
    collections::qvcom::HashMap map;
    std::vector<Reference<CountingKey>> keys;
    for (int32_t i = 0; i < 4000; ++i) {
        keys.push_back(makeReference<CountingKey>(i));
        map.put(unk(keys.back()), unk(qvtest::key(i)));
    }
    CountingKey::comparisons = 0;
    for (int32_t i = 0; i < 4000; i += 7)
        ASSERT_EQ(idOf(map.get(unk(makeReference<CountingKey>(i))).get()), i);
    EXPECT_LT(CountingKey::comparisons, 572 * 40);
    EXPECT_EQ(map.get(unk(makeReference<CountingKey>(4000))).get(), nullptr);

    // A key of another class with the same hash: found by the walk, and the
    // comparable keys are still found.
    Reference<qvtest::TestKey> stranger = qvtest::key(-5, 7);
    map.put(unk(stranger), unk(qvtest::key(-5)));
    EXPECT_EQ(idOf(map.get(unk(stranger)).get()), -5);
    EXPECT_EQ(idOf(map.remove(unk(keys[123])).get()), 123);
    EXPECT_EQ(map.get(unk(keys[123])).get(), nullptr);
    EXPECT_EQ(idOf(map.get(unk(keys[3999])).get()), 3999);
    EXPECT_EQ(idOf(map.remove(unk(stranger)).get()), -5);
    EXPECT_EQ(map.getSize(), 3999);

    // A comparison that fails surfaces as it does without an index, and
    // changes nothing.
    EXPECT_THROW(map.put(unk(makeReference<CountingKey>(-1)), nullptr), ResultException);
    EXPECT_EQ(map.getSize(), 3999);
    for (int32_t i = 0; i < 4000; i += 97)
        EXPECT_EQ(idOf(map.get(unk(keys[i])).get()), i == 123 ? -1 : i) << i;
}
