// The hash maps under random put / remove / iterator-remove / clear
// sequences, checked against std::unordered_map after every step. Keys come
// from a small pool that collides on purpose (String keys differing only at
// positions the hash skips, integers sharing buckets, component keys of two
// classes with eight hashes), so that chains grow long enough to be indexed,
// lose their index to a key of the other class, and shrink again.
#include <qv/qvcl3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

qv::String stringKey(uint32_t n)
{
    // 64 units: the hash reads only the even positions, all 'k'.
    std::u16string text(64, u'k');
    for (int bit = 0; bit < 8; ++bit)
        text[static_cast<size_t>(2 * bit + 1)] = (n >> bit) & 1 ? u'1' : u'0';
    if (n & 0x100)
        return qv::String::valueOf(static_cast<int>(n));
    return qv::String(text.data(), static_cast<int32_t>(text.size()));
}

int32_t integerKey(uint32_t n)
{
    return static_cast<int32_t>((n & 3) + 101u * 203u * (n >> 2));
}

// Component keys ordered by number; the subclass is another class with the
// same hash and order, so that chains mix classes.
class FuzzKey : public qv::Object {
public:
    explicit FuzzKey(uint32_t n) : m_n(n) {}
    uint32_t hashCode() const override { return m_n & 7; }
    int compareTo(const qv::Object& other) const override
    {
        const FuzzKey* key = dynamic_cast<const FuzzKey*>(&other);
        if (!key)
            return qv::Object::compareTo(other);
        return m_n < key->m_n ? -1 : (m_n > key->m_n ? 1 : 0);
    }

private:
    uint32_t m_n;
};

class OtherFuzzKey : public FuzzKey {
public:
    using FuzzKey::FuzzKey;
};

struct ComponentKey {
    qv::Reference<FuzzKey> object;
    bool operator==(const qv::Reference<IQVUnknown>& key) const { return object->GetUnknown() == key.get(); }
};

ComponentKey componentKey(uint32_t n)
{
    if (n & 0x100)
        return ComponentKey{qv::makeReference<OtherFuzzKey>(n)};
    return ComponentKey{qv::makeReference<FuzzKey>(n)};
}

// The component HashMap with the keyed maps' member names.
class ComponentMap {
public:
    class Iterator {
    public:
        explicit Iterator(qv::collections::qvcom::HashMap& map) : m_walk(map.createEntryIterator()) {}
        bool hasNext() { return m_walk->hasNext(); }
        const qv::collections::qvcom::HashMapEntry& next() { return *m_walk->nextEntry(); }
        void remove() { m_walk->remove(); }

    private:
        qv::Reference<qv::collections::qvcom::HashMapIterator> m_walk;
    };

    qv::Reference<IQVUnknown> put(const ComponentKey& key, IQVUnknown* value)
    {
        return m_map->put(key.object->GetUnknown(), value);
    }
    qv::Reference<IQVUnknown> remove(const ComponentKey& key) { return m_map->remove(key.object->GetUnknown()); }
    qv::Reference<IQVUnknown> get(const ComponentKey& key) { return m_map->get(key.object->GetUnknown()); }
    int32_t getSize() const { return m_map->getSize(); }
    void clear() { m_map->clear(); }
    Iterator createIterator() { return Iterator(*m_map); }

private:
    qv::Reference<qv::collections::qvcom::HashMap> m_map = qv::makeReference<qv::collections::qvcom::HashMap>();
};

template <class Map, class Key, class MakeKey>
void run(const uint8_t* data, size_t size, MakeKey makeKey)
{
    // The 512 keys, made once per process.
    static const std::vector<Key> pool = [&] {
        std::vector<Key> keys;
        for (uint32_t n = 0; n < 512; ++n)
            keys.push_back(makeKey(n));
        return keys;
    }();
    Map map;
    std::unordered_map<uint32_t, int32_t> model;
    std::vector<qv::Reference<qv::math::BigInteger>> values;
    for (int32_t i = 0; i < 16; ++i)
        values.push_back(qv::makeReference<qv::math::BigInteger>(i));
    bool cleared = false;
    for (size_t i = 0; i + 1 < size; i += 2) {
        const uint32_t n = data[i + 1] | ((data[i] & 0x1u) << 8);
        const Key& key = pool[n];
        switch (data[i] >> 5) {
        case 0:
        case 1:
        case 2: {
            const int32_t v = data[i] & 0xF;
            map.put(key, values[static_cast<size_t>(v)]->GetUnknown());
            model[n] = v;
            break;
        }
        case 3:
        case 4: {
            const bool had = map.remove(key) != nullptr;
            if (had != (model.erase(n) == 1))
                fail("remove disagrees with the model");
            break;
        }
        case 5: {
            if (map.getSize() == 0 || cleared)
                break;
            typename Map::Iterator it = map.createIterator();
            // Near the start of the walk: a long walk per step would make each input slow.
            uint32_t skip = n % static_cast<uint32_t>(map.getSize() < 16 ? map.getSize() : 16);
            while (skip-- > 0)
                it.next();
            const auto& entry = it.next();
            uint32_t found = 0;
            bool known = false;
            for (const auto& pair : model) {
                if (pool[pair.first] == entry.getKey()) {
                    found = pair.first;
                    known = true;
                }
            }
            if (!known)
                fail("the iterator gave a key the model does not have");
            it.remove();
            model.erase(found);
            break;
        }
        case 6:
            // clear() keeps the reported size; after it the size no longer
            // counts entries, so only lookups are compared from then on.
            map.clear();
            model.clear();
            cleared = true;
            break;
        default:
            if ((map.get(key) != nullptr) != (model.count(n) == 1))
                fail("get disagrees with the model");
            break;
        }
        if (!cleared && map.getSize() != static_cast<int32_t>(model.size()))
            fail("size disagrees with the model");
    }
    for (uint32_t n = 0; n < 512; ++n) {
        qv::Reference<IQVUnknown> value = map.get(pool[n]);
        auto expected = model.find(n);
        if ((expected == model.end()) != !value)
            fail("presence disagrees with the model");
        if (value && value.get() != values[static_cast<size_t>(expected->second)]->GetUnknown())
            fail("a value disagrees with the model");
    }
    int32_t walked = 0;
    typename Map::Iterator it = map.createIterator();
    while (it.hasNext()) {
        it.next();
        ++walked;
    }
    if (walked != static_cast<int32_t>(model.size()))
        fail("the walk does not visit every entry once");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    switch (data[0] % 3) {
    case 0: run<qv::collections::IntegerHashMap, int32_t>(data + 1, size - 1, integerKey); break;
    case 1: run<qv::collections::StringHashMap, qv::String>(data + 1, size - 1, stringKey); break;
    default: run<ComponentMap, ComponentKey>(data + 1, size - 1, componentKey); break;
    }
    return 0;
}
