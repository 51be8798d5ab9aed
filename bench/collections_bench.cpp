// The collections against the standard containers, side by side in one run.
// Both sides hold the same reference-counted keys; the HashMap rows and the
// "same comparator" std rows hash and compare through the same comparator
// object, so the difference is the table itself. The "direct" std rows call
// the key's hashCode() without the component layer, for scale.
#include <qv/collections/StringHashMap.h>
#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/core/Boundary.h>
#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

using namespace qv;
using namespace qv::collections;
using namespace qv::collections::qvcom;

namespace {

constexpr int32_t COUNT = 1000000;

class BenchKey : public Object {
public:
    explicit BenchKey(int32_t value) : m_value(value) {}
    int32_t value() const { return m_value; }
    uint32_t hashCode() const override { return static_cast<uint32_t>(m_value) * 2654435761u; }
    int compareTo(const Object& other) const override
    {
        const BenchKey* key = static_cast<const BenchKey*>(&other);
        return m_value < key->m_value ? -1 : (m_value > key->m_value ? 1 : 0);
    }

private:
    int32_t m_value;
};

// Lookups go in a shuffled order: keys made in sequence have neighbouring
// hash codes under multiplicative string hashes, and walking them in order
// would measure cache locality rather than the tables.
struct Keys {
    std::vector<Reference<IQVUnknown>> present;
    std::vector<Reference<IQVUnknown>> presentShuffled;
    std::vector<Reference<BenchKey>> typedShuffled;
    std::vector<Reference<IQVUnknown>> absent;
    std::vector<Reference<BenchKey>> typed;
    std::vector<String> strings;
    // The same texts in buffers of their own, as a caller's lookups would
    // be (the stored keys share the buffers of strings).
    std::vector<String> probeStrings;
    std::vector<String> absentStrings;
    std::vector<std::u16string> u16;
    std::vector<std::u16string> u16Shuffled;
    std::vector<std::u16string> absentU16;
    Reference<IQVUnknown> value;

    Keys()
    {
        value = Reference<BenchKey>(new BenchKey(-1))->GetUnknown();
        for (int32_t i = 0; i < COUNT; ++i) {
            Reference<BenchKey> key(new BenchKey(i));
            typed.push_back(key);
            present.emplace_back(key->GetUnknown());
            absent.emplace_back(Reference<BenchKey>(new BenchKey(COUNT + i))->GetUnknown());
            std::u16string text = u"key-" + String::valueOf(i).toU16String();
            u16.push_back(text);
            strings.emplace_back(text.c_str());
            probeStrings.emplace_back(text.c_str());
            std::u16string missing = u"nokey-" + text.substr(4);
            absentU16.push_back(missing);
            absentStrings.emplace_back(missing.c_str());
        }
        std::vector<size_t> order(COUNT);
        for (size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        std::shuffle(order.begin(), order.end(), std::mt19937(12345));
        std::vector<String> probes;
        std::vector<std::u16string> absentShuffled;
        std::vector<String> absentStringsShuffled;
        std::vector<Reference<IQVUnknown>> absentRefsShuffled;
        for (size_t i : order) {
            presentShuffled.push_back(present[i]);
            typedShuffled.push_back(typed[i]);
            u16Shuffled.push_back(u16[i]);
            probes.push_back(probeStrings[i]);
            absentShuffled.push_back(absentU16[i]);
            absentStringsShuffled.push_back(absentStrings[i]);
            absentRefsShuffled.push_back(absent[i]);
        }
        probeStrings.swap(probes);
        absentU16.swap(absentShuffled);
        absentStrings.swap(absentStringsShuffled);
        absent.swap(absentRefsShuffled);
    }
};

const Keys& keys()
{
    static const Keys* all = new Keys();
    return *all;
}

struct ComparatorHash {
    size_t operator()(const Reference<IQVUnknown>& key) const
    {
        uint32_t hash = 0;
        ::qv::qvcom::throwIfFailed(GetDefaultComparator()->HashCode(key.get(), &hash));
        return hash;
    }
};

struct ComparatorEqual {
    bool operator()(const Reference<IQVUnknown>& a, const Reference<IQVUnknown>& b) const
    {
        bool equal = false;
        ::qv::qvcom::throwIfFailed(GetDefaultComparator()->Equals(a.get(), b.get(), &equal));
        return equal;
    }
};

struct DirectHash {
    size_t operator()(const Reference<BenchKey>& key) const { return key->hashCode(); }
};

struct DirectEqual {
    bool operator()(const Reference<BenchKey>& a, const Reference<BenchKey>& b) const
    {
        return a->value() == b->value();
    }
};

typedef std::unordered_map<Reference<IQVUnknown>, Reference<IQVUnknown>, ComparatorHash, ComparatorEqual> StdSame;
typedef std::unordered_map<Reference<BenchKey>, Reference<IQVUnknown>, DirectHash, DirectEqual> StdDirect;
typedef std::unordered_map<std::u16string, Reference<IQVUnknown>> StdStrings;

// String::hashCode(false) for texts under 32 units (every unit, h = 37h + u),
// for a std map that hashes as StringHashMap does.
struct StringHash {
    size_t operator()(const std::u16string& text) const
    {
        uint32_t hash = 0;
        for (char16_t unit : text)
            hash = hash * 37u + unit;
        return hash;
    }
};
typedef std::unordered_map<std::u16string, Reference<IQVUnknown>, StringHash> StdStringsSameHash;

// The three maps over the same keys, filled in one pass, one key into each
// in turn: their entries then lie side by side in the heap. Built one after
// the other, the first map landed in the holes that making the keys had left
// and the others did not, so the order of building favoured one side.
struct KeyedMaps {
    Reference<HashMap> component = makeReference<HashMap>();
    StdSame same;
    StdDirect direct;

    KeyedMaps()
    {
        const Keys& k = keys();
        for (int32_t i = 0; i < COUNT; ++i) {
            component->put(k.present[i].get(), k.value.get());
            same.emplace(k.present[i], k.value);
            direct.emplace(k.typed[i], k.value);
        }
    }
};

const KeyedMaps& keyedMaps()
{
    static const KeyedMaps* maps = new KeyedMaps();
    return *maps;
}

Reference<HashMap> filledHashMap()
{
    return keyedMaps().component;
}

const StdSame& filledStdSame()
{
    return keyedMaps().same;
}

const StdDirect& filledStdDirect()
{
    return keyedMaps().direct;
}

StringHashMap& filledStringMap()
{
    static StringHashMap* map = [] {
        StringHashMap* made = new StringHashMap();
        for (const String& key : keys().strings)
            made->put(key, keys().value.get());
        return made;
    }();
    return *map;
}

const StdStringsSameHash& filledStdStringsSameHash()
{
    static const StdStringsSameHash* map = [] {
        StdStringsSameHash* made = new StdStringsSameHash();
        for (const std::u16string& key : keys().u16)
            made->emplace(key, keys().value);
        return made;
    }();
    return *map;
}

const StdStrings& filledStdStrings()
{
    static const StdStrings* map = [] {
        StdStrings* made = new StdStrings();
        for (const std::u16string& key : keys().u16)
            made->emplace(key, keys().value);
        return made;
    }();
    return *map;
}

void done(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * COUNT);
}

// Times make(), which builds and fills a container, and frees what it made
// outside the timing. One untimed fill comes first: the timed ones then
// reuse heap pages the process already holds, whatever ran before them (a
// cold first fill pays a page fault per page, and in interleaved runs
// another row may have left the heap trimmed or fragmented, which made the
// insert rows swing up to 4x between runs).
template <class Make>
void timeFills(benchmark::State& state, Make make)
{
    make();
    for (auto _ : state) {
        auto made = make();
        state.PauseTiming();
        made = decltype(made)();
        state.ResumeTiming();
    }
    done(state);
}

void HashMap_Insert(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        Reference<HashMap> map = makeReference<HashMap>();
        for (const Reference<IQVUnknown>& key : k.present)
            map->put(key.get(), k.value.get());
        return map;
    });
}

void StdSameComparator_Insert(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        std::unique_ptr<StdSame> map(new StdSame());
        for (const Reference<IQVUnknown>& key : k.present)
            map->emplace(key, k.value);
        return map;
    });
}

void StdDirect_Insert(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        std::unique_ptr<StdDirect> map(new StdDirect());
        for (const Reference<BenchKey>& key : k.typed)
            map->emplace(key, k.value);
        return map;
    });
}

// Looks every present key up in the filled HashMap, in the shuffled order.
template <class Lookup>
void timeHashMapHits(benchmark::State& state, Lookup lookup)
{
    Reference<HashMap> map = filledHashMap();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& key : keys().presentShuffled)
            lookup(*map, key.get());
    }
    done(state);
}

void HashMap_Hit(benchmark::State& state)
{
    timeHashMapHits(state, [](const HashMap& map, const IQVUnknown* key) { benchmark::DoNotOptimize(map.get(key)); });
}

void StdSameComparator_Hit(benchmark::State& state)
{
    const StdSame& map = filledStdSame();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& key : keys().presentShuffled)
            benchmark::DoNotOptimize(Reference<IQVUnknown>(map.find(key)->second));
    }
    done(state);
}

void StdDirect_Hit(benchmark::State& state)
{
    const StdDirect& map = filledStdDirect();
    for (auto _ : state) {
        for (const Reference<BenchKey>& key : keys().typedShuffled)
            benchmark::DoNotOptimize(Reference<IQVUnknown>(map.find(key)->second));
    }
    done(state);
}

// The part of a hit that lies outside any table, for splitting the hit rows
// apart: the key's HashCode called as the HashMap calls it (through its
// Object base, the key's virtual table read) and a reference taken to the
// value and dropped, over the same keys in the same order.
void KeyAlone_Hit(benchmark::State& state)
{
    const Reference<IQVUnknown>& value = keys().value;
    for (auto _ : state) {
        for (const Reference<BenchKey>& key : keys().typedShuffled) {
            uint32_t hash = 0;
            static_cast<const Object*>(key.get())->HashCode(&hash);
            benchmark::DoNotOptimize(hash);
            benchmark::DoNotOptimize(Reference<IQVUnknown>(value));
        }
    }
    done(state);
}

// The hit rows without the reference to the value (no interlocked
// operation per lookup), for telling the table's own pace from that of the
// reference counting around it.
void HashMap_HitUnreferenced(benchmark::State& state)
{
    timeHashMapHits(state,
                    [](const HashMap& map, const IQVUnknown* key) { benchmark::DoNotOptimize(map.containsKey(key)); });
}

void StdDirect_HitUnreferenced(benchmark::State& state)
{
    const StdDirect& map = filledStdDirect();
    for (auto _ : state) {
        for (const Reference<BenchKey>& key : keys().typedShuffled)
            benchmark::DoNotOptimize(map.find(key)->second.get());
    }
    done(state);
}

// The std hit with 24 stores to the stack before each lookup, none of them
// depending on it: what a longer path between lookups costs a hit bound by
// its cache misses (the processor then overlaps fewer lookups).
void StdDirectPadded_Hit(benchmark::State& state)
{
    const StdDirect& map = filledStdDirect();
    for (auto _ : state) {
        for (const Reference<BenchKey>& key : keys().typedShuffled) {
            volatile uintptr_t slots[24];
            for (volatile uintptr_t& slot : slots)
                slot = reinterpret_cast<uintptr_t>(key.get());
            benchmark::DoNotOptimize(Reference<IQVUnknown>(map.find(key)->second));
        }
    }
    done(state);
}

void HashMap_Miss(benchmark::State& state)
{
    Reference<HashMap> map = filledHashMap();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& key : keys().absent)
            benchmark::DoNotOptimize(map->get(key.get()));
    }
    done(state);
}

void StdSameComparator_Miss(benchmark::State& state)
{
    const StdSame& map = filledStdSame();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& key : keys().absent)
            benchmark::DoNotOptimize(map.find(key) == map.end());
    }
    done(state);
}

void HashMap_Iterate(benchmark::State& state)
{
    Reference<HashMap> map = filledHashMap();
    for (auto _ : state) {
        Reference<HashMapIterator> it = map->createEntryIterator();
        while (it->hasNext())
            benchmark::DoNotOptimize(it->nextEntry()->getKey().get());
    }
    done(state);
}

void HashMap_IterateByReference(benchmark::State& state)
{
    Reference<HashMap> map = filledHashMap();
    for (auto _ : state) {
        Reference<HashMapIterator> it = map->createKeyIterator();
        while (it->hasNext())
            benchmark::DoNotOptimize(it->next());
    }
    done(state);
}

void StdSameComparator_Iterate(benchmark::State& state)
{
    const StdSame& map = filledStdSame();
    for (auto _ : state) {
        for (const auto& entry : map)
            benchmark::DoNotOptimize(entry.first.get());
    }
    done(state);
}

void StringHashMap_Insert(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        std::unique_ptr<StringHashMap> map(new StringHashMap());
        for (const String& key : k.strings)
            map->put(key, k.value.get());
        return map;
    });
}

void StdU16String_Insert(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        std::unique_ptr<StdStrings> map(new StdStrings());
        for (const std::u16string& key : k.u16)
            map->emplace(key, k.value);
        return map;
    });
}

void StringHashMap_Hit(benchmark::State& state)
{
    StringHashMap& map = filledStringMap();
    for (auto _ : state) {
        for (const String& key : keys().probeStrings)
            benchmark::DoNotOptimize(map.get(key));
    }
    done(state);
}

void StdU16String_Hit(benchmark::State& state)
{
    const StdStrings& map = filledStdStrings();
    for (auto _ : state) {
        for (const std::u16string& key : keys().u16Shuffled)
            benchmark::DoNotOptimize(Reference<IQVUnknown>(map.find(key)->second));
    }
    done(state);
}

void StdU16StringSameHash_Hit(benchmark::State& state)
{
    const StdStringsSameHash& map = filledStdStringsSameHash();
    for (auto _ : state) {
        for (const std::u16string& key : keys().u16Shuffled)
            benchmark::DoNotOptimize(Reference<IQVUnknown>(map.find(key)->second));
    }
    done(state);
}

void StringHashMap_Miss(benchmark::State& state)
{
    StringHashMap& map = filledStringMap();
    for (auto _ : state) {
        for (const String& key : keys().absentStrings)
            benchmark::DoNotOptimize(map.get(key));
    }
    done(state);
}

void StdU16String_Miss(benchmark::State& state)
{
    const StdStrings& map = filledStdStrings();
    for (auto _ : state) {
        for (const std::u16string& key : keys().absentU16)
            benchmark::DoNotOptimize(map.find(key) == map.end());
    }
    done(state);
}

void ArrayList_Append(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        Reference<ArrayList> list = makeReference<ArrayList>();
        for (const Reference<IQVUnknown>& key : k.present)
            list->add(key.get());
        return list;
    });
}

void StdVector_Append(benchmark::State& state)
{
    timeFills(state, [] {
        const Keys& k = keys();
        std::unique_ptr<std::vector<Reference<IQVUnknown>>> list(new std::vector<Reference<IQVUnknown>>());
        for (const Reference<IQVUnknown>& key : k.present)
            list->push_back(key);
        return list;
    });
}

void ArrayList_Index(benchmark::State& state)
{
    Reference<ArrayList> list = makeReference<ArrayList>();
    for (const Reference<IQVUnknown>& key : keys().present)
        list->add(key.get());
    const ArrayList& view = *list;
    for (auto _ : state) {
        for (int32_t i = 0; i < COUNT; ++i)
            benchmark::DoNotOptimize(view.elementAt(i).get());
    }
    done(state);
}

void ArrayList_IndexByReference(benchmark::State& state)
{
    Reference<ArrayList> list = makeReference<ArrayList>();
    for (const Reference<IQVUnknown>& key : keys().present)
        list->add(key.get());
    for (auto _ : state) {
        for (int32_t i = 0; i < COUNT; ++i)
            benchmark::DoNotOptimize(list->get(i));
    }
    done(state);
}

void StdVector_Index(benchmark::State& state)
{
    std::vector<Reference<IQVUnknown>> list(keys().present);
    for (auto _ : state) {
        for (int32_t i = 0; i < COUNT; ++i)
            benchmark::DoNotOptimize(list[static_cast<size_t>(i)].get());
    }
    done(state);
}

// Keys whose String hash codes collide: 64 units differing only at odd
// positions (the hash samples every other unit of such a text), and
// zero-padded 70-digit record numbers (a thousand hash codes for a million
// numbers). Insert all, then look every one up; std::map is the ordered peer.
std::vector<std::u16string> collidingTexts(int64_t count, bool recordNumbers)
{
    std::vector<std::u16string> texts;
    texts.reserve(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i) {
        if (recordNumbers) {
            std::string digits = std::to_string(i);
            std::u16string text(70 - digits.size(), u'0');
            texts.push_back(text + std::u16string(digits.begin(), digits.end()));
        } else {
            std::u16string text(64, u'k');
            for (int bit = 0; bit < 30; ++bit)
                text[static_cast<size_t>(2 * bit + 1)] = (i >> bit) & 1 ? u'1' : u'0';
            texts.push_back(text);
        }
    }
    return texts;
}

void collidingStringMap(benchmark::State& state, bool recordNumbers)
{
    const std::vector<std::u16string> texts = collidingTexts(state.range(0), recordNumbers);
    std::vector<String> keys;
    for (const std::u16string& text : texts)
        keys.emplace_back(text.data(), static_cast<int32_t>(text.size()));
    Reference<IQVUnknown> value = Reference<BenchKey>(new BenchKey(-1))->GetUnknown();
    for (auto _ : state) {
        StringHashMap* map = new StringHashMap();
        for (const String& key : keys)
            map->put(key, value.get());
        for (const String& key : keys)
            benchmark::DoNotOptimize(map->get(key));
        state.PauseTiming();
        delete map;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void collidingStdMap(benchmark::State& state, bool recordNumbers)
{
    const std::vector<std::u16string> texts = collidingTexts(state.range(0), recordNumbers);
    Reference<IQVUnknown> value = Reference<BenchKey>(new BenchKey(-1))->GetUnknown();
    for (auto _ : state) {
        std::map<std::u16string, Reference<IQVUnknown>>* map = new std::map<std::u16string, Reference<IQVUnknown>>();
        for (const std::u16string& key : texts)
            map->emplace(key, value);
        for (const std::u16string& key : texts)
            benchmark::DoNotOptimize(map->find(key)->second.get());
        state.PauseTiming();
        delete map;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void StringHashMap_CollidingOddPositions(benchmark::State& state)
{
    collidingStringMap(state, false);
}
void StdMap_CollidingOddPositions(benchmark::State& state)
{
    collidingStdMap(state, false);
}
void StringHashMap_RecordNumbers(benchmark::State& state)
{
    collidingStringMap(state, true);
}
void StdMap_RecordNumbers(benchmark::State& state)
{
    collidingStdMap(state, true);
}

} // namespace

BENCHMARK(HashMap_Insert)->Unit(benchmark::kMillisecond);
BENCHMARK(StdSameComparator_Insert)->Unit(benchmark::kMillisecond);
BENCHMARK(StdDirect_Insert)->Unit(benchmark::kMillisecond);
BENCHMARK(HashMap_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(StdSameComparator_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(StdDirect_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(HashMap_HitUnreferenced)->Unit(benchmark::kMillisecond);
BENCHMARK(StdDirect_HitUnreferenced)->Unit(benchmark::kMillisecond);
BENCHMARK(StdDirectPadded_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(KeyAlone_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(HashMap_Miss)->Unit(benchmark::kMillisecond);
BENCHMARK(StdSameComparator_Miss)->Unit(benchmark::kMillisecond);
BENCHMARK(HashMap_Iterate)->Unit(benchmark::kMillisecond);
BENCHMARK(HashMap_IterateByReference)->Unit(benchmark::kMillisecond);
BENCHMARK(StdSameComparator_Iterate)->Unit(benchmark::kMillisecond);
BENCHMARK(StringHashMap_Insert)->Unit(benchmark::kMillisecond);
BENCHMARK(StdU16String_Insert)->Unit(benchmark::kMillisecond);
BENCHMARK(StringHashMap_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(StdU16String_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(StdU16StringSameHash_Hit)->Unit(benchmark::kMillisecond);
BENCHMARK(StringHashMap_Miss)->Unit(benchmark::kMillisecond);
BENCHMARK(StdU16String_Miss)->Unit(benchmark::kMillisecond);
BENCHMARK(ArrayList_Append)->Unit(benchmark::kMillisecond);
BENCHMARK(StdVector_Append)->Unit(benchmark::kMillisecond);
BENCHMARK(ArrayList_Index)->Unit(benchmark::kMillisecond);
BENCHMARK(ArrayList_IndexByReference)->Unit(benchmark::kMillisecond);
BENCHMARK(StdVector_Index)->Unit(benchmark::kMillisecond);

// QV_COLLIDING_SIZES (comma-separated) replaces the key counts of the
// colliding rows: the unindexed table needs hours for a million.
static const int registerColliding = [] {
    std::vector<int64_t> sizes{40000, 1000000};
    if (const char* list = std::getenv("QV_COLLIDING_SIZES")) {
        sizes.clear();
        for (const char* at = list; *at;) {
            char* end = nullptr;
            sizes.push_back(std::strtoll(at, &end, 10));
            at = *end ? end + 1 : end;
        }
    }
    for (int64_t size : sizes) {
        benchmark::RegisterBenchmark("StringHashMap_CollidingOddPositions", StringHashMap_CollidingOddPositions)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
        benchmark::RegisterBenchmark("StdMap_CollidingOddPositions", StdMap_CollidingOddPositions)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
        benchmark::RegisterBenchmark("StringHashMap_RecordNumbers", StringHashMap_RecordNumbers)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
        benchmark::RegisterBenchmark("StdMap_RecordNumbers", StdMap_RecordNumbers)
            ->Arg(size)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
    }
    return 0;
}();

// Every filled map is built here, before any row runs and in a fixed order.
// Built lazily, each map landed wherever the rows that happened to run before
// it had left the heap, so a lookup row's figure depended on which rows ran
// first (and, with random interleaving, on chance).
int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    keys();
    keyedMaps();
    filledStringMap();
    filledStdStrings();
    filledStdStringsSameHash();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
