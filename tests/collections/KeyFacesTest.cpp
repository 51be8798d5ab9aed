// Keys are hashed and compared through their IQVComparable face, which the
// default comparator finds for qv::Object keys from a per-class cache rather
// than by asking each key. These tests hold that shortcut to the rules: the
// same HashCode and CompareTo calls, whichever face of a key is passed,
// references balanced, and keys of components that are not Objects still
// asked through QueryInterface.
#include "TestElements.h"

#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Object.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;

namespace {

// A comparable component that is not a qv::Object: its own count and its
// own QueryInterface, all counted.
class CountedComponent final : public IQVComparable {
public:
    explicit CountedComponent(int32_t id) : m_id(id) {}

    Result QueryInterface(const GUID& iid, void** ppv) override
    {
        ++queries;
        if (!ppv)
            return results::POINTER;
        *ppv = nullptr;
        if (iid != IQVUnknown::iid && iid != IQVComparable::iid)
            return results::NOINTERFACE;
        *ppv = static_cast<IQVComparable*>(this);
        AddRef();
        return results::OK;
    }
    uint32_t AddRef() const override
    {
        ++addRefs;
        return static_cast<uint32_t>(++m_count);
    }
    uint32_t Release() const override
    {
        ++releases;
        return static_cast<uint32_t>(--m_count);
    }
    Result CompareTo(const IQVUnknown* other, int* result) const override
    {
        ++compares;
        const CountedComponent* that = dynamic_cast<const CountedComponent*>(other);
        *result = that ? (m_id < that->m_id ? -1 : (m_id > that->m_id ? 1 : 0)) : 1;
        return results::OK;
    }
    Result HashCode(uint32_t* result) const override
    {
        ++hashes;
        *result = static_cast<uint32_t>(m_id) % 3u;
        return results::OK;
    }
    int32_t count() const { return m_count; }

    mutable int32_t queries = 0, addRefs = 0, releases = 0, compares = 0, hashes = 0;

private:
    int32_t m_id;
    mutable int32_t m_count = 1; // the test's own reference, never released
};

// An Object seen through three faces at three offsets, counting the calls a map makes to its comparable side and the
// references taken on it.
class IOtherFace : public IQVUnknown {
public:
    static constexpr GUID iid = {0x3F1D2C4B, 0x8A7E, 0x4B60, {0x91, 0x2D, 0x55, 0x0C, 0x6E, 0x7A, 0x1B, 0x39}};
    virtual int32_t Id() const = 0;

protected:
    ~IOtherFace() = default;
};

class ShiftedKey final : public Object, public IOtherFace {
public:
    explicit ShiftedKey(int32_t id) : m_id(id) {}
    static const qvcom::InterfaceData* GetComIntfMap();
    Result QueryInterface(const GUID& iid, void** ppv) override
    {
        return qvcom::QueryInterfaceMap(GetComIntfMap(), static_cast<ComObject*>(this), iid, ppv);
    }
    int32_t Id() const override { return m_id; }
    uint32_t hashCode() const override { return static_cast<uint32_t>(m_id) % 5u; }
    int compareTo(const Object& other) const override
    {
        const ShiftedKey* that = dynamic_cast<const ShiftedKey*>(&other);
        if (!that)
            return Object::compareTo(other);
        return m_id < that->m_id ? -1 : (m_id > that->m_id ? 1 : 0);
    }
    Result HashCode(uint32_t* result) const override
    {
        ++hashes;
        return Object::HashCode(result);
    }
    Result CompareTo(const IQVUnknown* other, int* result) const override
    {
        ++compares;
        return Object::CompareTo(other, result);
    }
    uint32_t AddRef() const override
    {
        ++addRefs;
        return Object::AddRef();
    }
    uint32_t Release() const override
    {
        ++releases;
        return Object::Release();
    }

    const IQVUnknown* comparableFace() const { return static_cast<const IQVComparable*>(this); }
    const IQVUnknown* otherFace() const { return static_cast<const IOtherFace*>(this); }

    mutable int32_t addRefs = 0, releases = 0, compares = 0, hashes = 0;

private:
    int32_t m_id;
};

QV_BEGIN_INTERFACE_MAP(ShiftedKey)
QV_INTERFACE_ENTRY(ShiftedKey, IOtherFace)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

uint32_t defaultHash(const IQVUnknown* element)
{
    uint32_t hash = 0;
    EXPECT_EQ(GetDefaultComparator()->HashCode(element, &hash), results::OK);
    return hash;
}

bool defaultEquals(const IQVUnknown* a, const IQVUnknown* b)
{
    bool equal = false;
    EXPECT_EQ(GetDefaultComparator()->Equals(a, b, &equal), results::OK);
    return equal;
}

// Distinct Object classes, more of them than the cache keeps, so that
// some keys go the uncached way.
template <int N, int Set>
class ManyKey final : public Object {
public:
    explicit ManyKey(int32_t id) : m_id(id) {}
    uint32_t hashCode() const override { return static_cast<uint32_t>(N * 1000 + m_id); }
    int compareTo(const Object& other) const override
    {
        const ManyKey* that = dynamic_cast<const ManyKey*>(&other);
        return that ? (m_id < that->m_id ? -1 : (m_id > that->m_id ? 1 : 0)) : Object::compareTo(other);
    }

private:
    int32_t m_id;
};

typedef std::vector<std::pair<Reference<Object>, Reference<Object>>> KeyPairs;

// Two equal but distinct keys of each class.
template <int Set, int... N>
KeyPairs equalPairs(std::integer_sequence<int, N...>)
{
    return {std::make_pair(Reference<Object>(new ManyKey<N, Set>(7)), Reference<Object>(new ManyKey<N, Set>(7)))...};
}

// A comparator of its own: equality by the default comparator, counted.
class CountingComparator final : public ComObject, public IQVComparator {
    QV_DECLARE_INTERFACE_MAP()

public:
    Result HashCode(const IQVUnknown* element, uint32_t* result) const override
    {
        return GetDefaultComparator()->HashCode(element, result);
    }
    Result Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const override
    {
        ++equals;
        return GetDefaultComparator()->Equals(a, b, result);
    }
    mutable int32_t equals = 0;
};

QV_BEGIN_INTERFACE_MAP(CountingComparator)
QV_INTERFACE_ENTRY(CountingComparator, IQVComparator)
QV_END_INTERFACE_MAP()

} // namespace

TEST(KeyFaces, OnlyTheDefaultComparatorSkipsComparingAKeyWithItself)
{
    Reference<ShiftedKey> stored(new ShiftedKey(3));
    Reference<CountingComparator> comparator(new CountingComparator());
    Reference<HashMap> own = makeReference<HashMap>(comparator.get(), nullptr);
    Reference<HashMap> plain = makeReference<HashMap>();
    own->put(stored->GetUnknown(), stored->GetUnknown());
    plain->put(stored->GetUnknown(), stored->GetUnknown());
    EXPECT_TRUE(own->containsKey(stored->GetUnknown()));
    EXPECT_EQ(comparator->equals, 1);
    EXPECT_TRUE(plain->containsKey(stored->GetUnknown()));
    EXPECT_EQ(stored->compares, 0);
}

TEST(KeyFaces, ComponentsThatAreNotObjectsAreAskedAndStayBalanced)
{
    CountedComponent a(1), b(1), c(2);
    {
        Reference<HashMap> map = makeReference<HashMap>();
        map->put(&a, &c);
        EXPECT_EQ(a.hashes, 1);
        // An equal key of its own: one hash of the probe, one CompareTo by it.
        EXPECT_EQ(map->get(&b).get(), static_cast<IQVUnknown*>(&c));
        EXPECT_EQ(b.hashes, 1);
        EXPECT_EQ(b.compares, 1);
        EXPECT_GE(b.queries, 1); // nothing else finds its IQVComparable
        EXPECT_EQ(map->remove(&b).get(), static_cast<IQVUnknown*>(&c));
        EXPECT_EQ(b.hashes, 2);
        EXPECT_EQ(map->getSize(), 0);
        map->put(&a, &c);
        map->put(&c, &a);
        map->clear();
    }
    for (const CountedComponent* component : {&a, &b, &c}) {
        EXPECT_EQ(component->addRefs, component->releases);
        EXPECT_EQ(component->count(), 1);
    }
}

TEST(KeyFaces, EveryFaceOfAnObjectKeyFindsTheSameEntry)
{
    Reference<ShiftedKey> stored(new ShiftedKey(4));
    Reference<ShiftedKey> probe(new ShiftedKey(4));
    Reference<ShiftedKey> other(new ShiftedKey(9)); // same hash (4), unequal
    const int32_t storedRefs = stored->GetRefCount();
    const int32_t probeRefs = probe->GetRefCount();
    {
        Reference<HashMap> map = makeReference<HashMap>();
        map->put(stored->GetUnknown(), other->GetUnknown());
        map->put(other->GetUnknown(), stored->GetUnknown());
        EXPECT_EQ(stored->hashes, 1);

        const IQVUnknown* faces[] = {probe->GetUnknown(), probe->comparableFace(), probe->otherFace()};
        int32_t round = 0;
        for (const IQVUnknown* face : faces) {
            ++round;
            EXPECT_EQ(defaultHash(face), 4u);
            EXPECT_TRUE(defaultEquals(face, stored->GetUnknown()));
            EXPECT_FALSE(defaultEquals(face, other->GetUnknown()));
            EXPECT_EQ(map->get(face).get(), other->GetUnknown()) << "face " << round;
            EXPECT_TRUE(map->containsKey(face));
        }
        // Per face: a hash and two CompareTo for the equality checks, then
        // a hash and one CompareTo for get and for containsKey (the newer
        // entry, key 9, heads the chain and is compared first).
        EXPECT_EQ(probe->hashes, 3 * 3);
        EXPECT_EQ(probe->compares, 3 * (2 + 2 + 2));
        EXPECT_EQ(stored->compares, 0);

        EXPECT_EQ(map->remove(probe->otherFace()).get(), other->GetUnknown());
        EXPECT_FALSE(map->containsKey(stored->GetUnknown()));
        map->clear();
    }
    EXPECT_EQ(stored->GetRefCount(), storedRefs);
    EXPECT_EQ(probe->GetRefCount(), probeRefs);
    // Only the test's own references are left.
    EXPECT_EQ(probe->addRefs - probe->releases, 1);
    EXPECT_EQ(stored->addRefs - stored->releases, 1);
}

TEST(KeyFaces, ObjectCompareToFindsTheOtherObjectThroughAnyFace)
{
    Reference<ShiftedKey> low(new ShiftedKey(1));
    Reference<ShiftedKey> high(new ShiftedKey(2));
    int order = 0;
    const IQVUnknown* faces[] = {high->GetUnknown(), high->comparableFace(), high->otherFace()};
    for (const IQVUnknown* face : faces) {
        ASSERT_EQ(low->CompareTo(face, &order), results::OK);
        EXPECT_EQ(order, -1);
    }
    // Not an Object: ordered by address against the object's start.
    CountedComponent plain(1);
    ASSERT_EQ(low->CompareTo(&plain, &order), results::OK);
    const void* self = static_cast<const ComObject*>(low.get());
    const void* that = &plain;
    EXPECT_EQ(order, std::less<const void*>()(self, that) ? -1 : 1);
    EXPECT_EQ(plain.queries, 0);
}

TEST(KeyFaces, ConcurrentFirstUseOfManyClasses)
{
    // Threads meet classes for the first time together, racing to record
    // them; every answer must still be right.
    const KeyPairs pairs = equalPairs<1>(std::make_integer_sequence<int, 64>());
    std::atomic<int32_t> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&pairs, &wrong, t] {
            for (size_t i = 0; i < pairs.size(); ++i) {
                const auto& pair = pairs[(i * 7 + static_cast<size_t>(t) * 13) % pairs.size()];
                uint32_t hash = 0;
                bool equal = false;
                GetDefaultComparator()->HashCode(pair.second->GetUnknown(), &hash);
                GetDefaultComparator()->Equals(pair.first->GetUnknown(), pair.second->GetUnknown(), &equal);
                if (hash != pair.second->hashCode() || !equal)
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

TEST(KeyFaces, MoreClassesThanTheCacheHoldsHashAndCompareAlike)
{
    const KeyPairs pairs = equalPairs<0>(std::make_integer_sequence<int, 320>());
    Reference<HashMap> map = makeReference<HashMap>();
    for (const auto& pair : pairs) {
        EXPECT_EQ(defaultHash(pair.first->GetUnknown()), pair.first->hashCode());
        EXPECT_TRUE(defaultEquals(pair.first->GetUnknown(), pair.second->GetUnknown()));
        map->put(pair.first->GetUnknown(), pair.second->GetUnknown());
    }
    ASSERT_EQ(map->getSize(), static_cast<int32_t>(pairs.size()));
    for (const auto& pair : pairs)
        EXPECT_EQ(map->get(pair.second->GetUnknown()).get(), pair.second->GetUnknown());
    EXPECT_FALSE(defaultEquals(pairs[0].first->GetUnknown(), pairs[1].first->GetUnknown()));
}
