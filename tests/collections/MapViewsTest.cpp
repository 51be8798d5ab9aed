// Key, value and entry views of the component maps: live, in the map's own
// order, removing through the views and their iterators, writing through
// MapEntry::SetValue; random interleavings checked against std::map.
#include "TestElements.h"

#include <qv/collections/qvcom/Collections.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/MapViews.h>
#include <qv/core/Exception.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;
using qvtest::idOf;
using qvtest::idsOf;
using qvtest::key;
using qvtest::unk;

namespace {

Reference<qvtest::TestKey> mapKey(int32_t id)
{
    return key(id, static_cast<uint32_t>(id * 3));
}

// Values are TestKeys with id 100 + key id unless a test replaces them.
Reference<HashMap> mapOf(int32_t count)
{
    Reference<HashMap> map = makeReference<HashMap>(7, 0.75f);
    for (int32_t id = 0; id < count; ++id)
        map->put(unk(mapKey(id)), unk(key(100 + id)));
    return map;
}

std::vector<int32_t> keysInEntryOrder(AbstractMap& map)
{
    std::vector<int32_t> ids;
    Reference<AbstractIterator> it = map.createConstEntryIterator();
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        Reference<MapEntry> entry;
        element->QueryInterface(MapEntry::iid, entry.putVoid());
        Reference<IQVUnknown> k;
        entry->GetKey(k.put());
        ids.push_back(idOf(k.get()));
    }
    return ids;
}

} // namespace

TEST(MapViews, KeysValuesAndEntriesFollowTheMapOrderAndWriteThrough)
{
    Reference<HashMap> map = mapOf(12); // grows past 7 buckets: the order is the table's
    Reference<AbstractSet> keys = map->keySet();
    Reference<AbstractCollection> values = map->values();
    const std::vector<int32_t> order = keysInEntryOrder(*map);
    EXPECT_EQ(idsOf(*keys), order);
    std::vector<int32_t> expectedValues;
    for (int32_t id : order)
        expectedValues.push_back(100 + id);
    EXPECT_EQ(idsOf(*values), expectedValues);
    EXPECT_EQ(keys->getSize(), 12);
    EXPECT_TRUE(keys->contains(unk(mapKey(3))));
    EXPECT_TRUE(values->contains(unk(key(103))));
    EXPECT_FALSE(values->contains(unk(mapKey(3))));

    // Removing through the views and their iterators, and SetValue on their
    // entries, are checked against a std::map in RandomViewOperationsMatchAStdMap.
    EXPECT_THROW(keys->add(unk(mapKey(50))), UnsupportedOperationException);
    EXPECT_THROW(values->add(unk(mapKey(50))), UnsupportedOperationException);

    // A new key behind a view iterator's back makes it fail like the map's own.
    Reference<AbstractIterator> stale = values->createIterator();
    map->put(unk(mapKey(60)), nullptr);
    EXPECT_THROW(stale->next(), Exception);
    EXPECT_EQ(idsOf(*keys), keysInEntryOrder(*map));

    Reference<Set> keyFace;
    Reference<Collection> valueFace;
    ASSERT_EQ(map->CreateKeySet(keyFace.put()), results::OK);
    ASSERT_EQ(map->CreateValues(valueFace.put()), results::OK);
    bool changed = false;
    EXPECT_EQ(keyFace->Remove(unk(mapKey(60)), &changed), results::OK);
    EXPECT_TRUE(changed);
    int32_t size = 0;
    EXPECT_EQ(valueFace->GetSize(&size), results::OK);
    EXPECT_EQ(size, 12);
    EXPECT_EQ(map->CreateKeySet(nullptr), results::POINTER);
}

TEST(MapViews, ReadOnlyMapRefusesChangesThroughEveryView)
{
    Reference<HashMap> map = mapOf(4);
    Reference<AbstractMap> readOnly = Collections::unmodifiableMap(*map);
    EXPECT_EQ(readOnly->toString().toUtf8(), map->toString().toUtf8());
    EXPECT_TRUE(readOnly->equals(*map));
    EXPECT_THROW(readOnly->put(unk(mapKey(9)), nullptr), UnsupportedOperationException);
    EXPECT_THROW(readOnly->remove(unk(mapKey(1))), UnsupportedOperationException);
    EXPECT_THROW(readOnly->keySet()->remove(unk(mapKey(1))), UnsupportedOperationException);
    EXPECT_THROW(readOnly->values()->clear(), UnsupportedOperationException);
    Reference<AbstractIterator> keys = readOnly->keySet()->createIterator();
    keys->next();
    EXPECT_THROW(keys->remove(), UnsupportedOperationException);
    Reference<AbstractIterator> entries = readOnly->entrySet()->createIterator();
    Reference<IQVUnknown> element = entries->next();
    Reference<MapEntry> entry;
    ASSERT_EQ(element->QueryInterface(MapEntry::iid, entry.putVoid()), results::OK);
    EXPECT_LT(entry->SetValue(nullptr, nullptr), 0);
    EXPECT_TRUE(readOnly->entrySet()->contains(element.get()));
    EXPECT_THROW(readOnly->entrySet()->remove(element.get()), UnsupportedOperationException);
    EXPECT_EQ(map->getSize(), 4);
    EXPECT_EQ(keysInEntryOrder(*readOnly), keysInEntryOrder(*map));
    map->put(unk(mapKey(9)), nullptr); // the view is live
    EXPECT_TRUE(readOnly->containsKey(unk(mapKey(9))));
}

TEST(MapViews, RandomViewOperationsMatchAStdMap)
{
    std::vector<Reference<qvtest::TestKey>> keys;
    std::vector<Reference<qvtest::TestKey>> values;
    for (int32_t id = 0; id < 24; ++id) {
        keys.push_back(key(id, static_cast<uint32_t>(id % 5)));
        values.push_back(key(100 + id));
    }
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        Reference<HashMap> map = makeReference<HashMap>(3, 0.75f);
        Reference<AbstractSet> keySet = map->keySet();
        Reference<AbstractCollection> valueView = map->values();
        Reference<AbstractSet> entrySet = map->entrySet();
        std::map<int32_t, int32_t> model;
        Reference<AbstractIterator> walk;
        for (int step = 0; step < 300; ++step) {
            const int32_t k = static_cast<int32_t>(random() % 24);
            const int32_t v = static_cast<int32_t>(random() % 24);
            switch (random() % 6) {
            case 0:
                map->put(unk(keys[k]), unk(values[v]));
                if (!model.count(k))
                    walk = nullptr; // a new key ends every walk
                model[k] = 100 + v;
                break;
            case 1:
                EXPECT_EQ(keySet->remove(unk(keys[k])), model.erase(k) == 1);
                walk = nullptr;
                break;
            case 2: {
                // values().remove takes the first equal value in the map's order.
                const bool present = valueView->contains(unk(values[v]));
                EXPECT_EQ(valueView->remove(unk(values[v])), present);
                int32_t removed = 0;
                for (auto it = model.begin(); it != model.end(); ++it)
                    removed += it->second == 100 + v ? 1 : 0;
                EXPECT_EQ(present, removed > 0);
                if (present) {
                    for (auto it = model.begin(); it != model.end(); ++it) {
                        if (it->second == 100 + v && !map->containsKey(unk(keys[it->first]))) {
                            model.erase(it);
                            break;
                        }
                    }
                }
                walk = nullptr;
                break;
            }
            case 3:
                if (!walk)
                    walk = (random() & 1) ? keySet->createIterator() : entrySet->createIterator();
                if (walk->hasNext()) {
                    Reference<IQVUnknown> element = walk->next();
                    int32_t id = idOf(element.get());
                    if (id == -2) {
                        Reference<MapEntry> entry;
                        element->QueryInterface(MapEntry::iid, entry.putVoid());
                        Reference<IQVUnknown> entryKey;
                        entry->GetKey(entryKey.put());
                        id = idOf(entryKey.get());
                        if (random() & 1) {
                            entry->SetValue(unk(values[v]), nullptr);
                            model[id] = 100 + v;
                            break;
                        }
                    }
                    ASSERT_EQ(model.count(id), 1u);
                    if (random() & 1) {
                        walk->remove();
                        model.erase(id);
                    }
                } else {
                    walk = nullptr;
                }
                break;
            default:
                ASSERT_EQ(keySet->getSize(), static_cast<int32_t>(model.size()));
                for (const auto& pair : model)
                    ASSERT_EQ(idOf(map->get(unk(keys[pair.first])).get()), pair.second) << "seed " << seed;
                EXPECT_EQ(idsOf(*keySet), keysInEntryOrder(*map));
            }
        }
        ASSERT_EQ(map->getSize(), static_cast<int32_t>(model.size())) << "seed " << seed;
    }
}
