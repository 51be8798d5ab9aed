// The interface query against the direct calls it stands for. Each query row
// is one QueryInterface and the Release of what it handed out, as a caller
// holding a Reference does; the direct rows are the virtual call a caller
// that already knows the class makes instead.
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace qv;

namespace {

class IBenchExtra : public IQVUnknown {
public:
    static constexpr GUID iid = {0x5C1E0A37, 0x2B4D, 0x4C8E, {0x9A, 0x61, 0x0D, 0x7E, 0x33, 0x52, 0x8F, 0x14}};
    virtual int32_t Extra() const = 0;

protected:
    ~IBenchExtra() = default;
};

class IBenchAbsent : public IQVUnknown {
public:
    static constexpr GUID iid = {0x5C1E0A37, 0x2B4D, 0x4C8E, {0x9A, 0x61, 0x0D, 0x7E, 0x33, 0x52, 0x8F, 0x15}};
};

// An object whose own map has one row and chains to Object's, so that
// IQVComparable is found one level down.
class BenchKey : public Object, public IBenchExtra {
    QV_DECLARE_INTERFACE_MAP()

public:
    explicit BenchKey(int32_t value) : m_value(value) {}
    uint32_t hashCode() const override { return static_cast<uint32_t>(m_value) * 2654435761u; }
    int32_t Extra() const override { return m_value; }

private:
    int32_t m_value;
};

QV_BEGIN_INTERFACE_MAP(BenchKey)
QV_INTERFACE_ENTRY(BenchKey, IBenchExtra)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Reference<BenchKey> makeKey()
{
    return Reference<BenchKey>(new BenchKey(42));
}

void queryRow(benchmark::State& state, const GUID& iid)
{
    Reference<BenchKey> key = makeKey();
    IQVUnknown* unknown = key->GetUnknown();
    for (auto _ : state) {
        void* found = nullptr;
        Result code = unknown->QueryInterface(iid, &found);
        benchmark::DoNotOptimize(code);
        benchmark::DoNotOptimize(found);
        static_cast<IQVUnknown*>(found)->Release();
    }
}

void BM_QueryFirstRow(benchmark::State& state)
{
    queryRow(state, IBenchExtra::iid);
}
BENCHMARK(BM_QueryFirstRow);

void BM_QueryUnknown(benchmark::State& state)
{
    queryRow(state, IQVUnknown::iid);
}
BENCHMARK(BM_QueryUnknown);

void BM_QueryChainedRow(benchmark::State& state)
{
    queryRow(state, IQVComparable::iid);
}
BENCHMARK(BM_QueryChainedRow);

void BM_QueryMiss(benchmark::State& state)
{
    Reference<BenchKey> key = makeKey();
    IQVUnknown* unknown = key->GetUnknown();
    for (auto _ : state) {
        void* found = nullptr;
        Result code = unknown->QueryInterface(IBenchAbsent::iid, &found);
        benchmark::DoNotOptimize(code);
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(BM_QueryMiss);

void BM_DirectCall(benchmark::State& state)
{
    Reference<BenchKey> key = makeKey();
    const Object* object = key.get();
    benchmark::DoNotOptimize(object);
    for (auto _ : state) {
        uint32_t hash = object->hashCode();
        benchmark::DoNotOptimize(hash);
    }
}
BENCHMARK(BM_DirectCall);

// The hash a qvcom::HashMap computes for a key: the default comparator asks
// the key for IQVComparable and calls HashCode through it.
void BM_HashThroughComparator(benchmark::State& state)
{
    Reference<BenchKey> key = makeKey();
    const IQVUnknown* unknown = key->GetUnknown();
    const collections::qvcom::IQVComparator* comparator = collections::qvcom::GetDefaultComparator();
    for (auto _ : state) {
        uint32_t hash = 0;
        Result code = comparator->HashCode(unknown, &hash);
        benchmark::DoNotOptimize(code);
        benchmark::DoNotOptimize(hash);
    }
}
BENCHMARK(BM_HashThroughComparator);

// The same over a million objects in shuffled order, as a hash table's
// lookups meet them: each object's first touch misses the cache.
const std::vector<Reference<BenchKey>>& shuffledKeys()
{
    static const std::vector<Reference<BenchKey>>* keys = [] {
        auto* all = new std::vector<Reference<BenchKey>>();
        for (int32_t i = 0; i < 1000000; ++i)
            all->emplace_back(new BenchKey(i));
        std::shuffle(all->begin(), all->end(), std::mt19937(12345));
        return all;
    }();
    return *keys;
}

// Runs visit(key) once per iteration, walking the shuffled keys round.
template <class Visit>
void overShuffledKeys(benchmark::State& state, Visit visit)
{
    const std::vector<Reference<BenchKey>>& keys = shuffledKeys();
    size_t i = 0;
    for (auto _ : state) {
        visit(keys[i].get());
        i = i + 1 == keys.size() ? 0 : i + 1;
    }
}

void BM_QueryFirstRowCold(benchmark::State& state)
{
    overShuffledKeys(state, [](BenchKey* key) {
        void* found = nullptr;
        Result code = key->GetUnknown()->QueryInterface(IBenchExtra::iid, &found);
        benchmark::DoNotOptimize(code);
        benchmark::DoNotOptimize(static_cast<IBenchExtra*>(found)->Extra());
        static_cast<IQVUnknown*>(found)->Release();
    });
}
BENCHMARK(BM_QueryFirstRowCold);

// Only the reference a query takes and its caller drops: two interlocked
// operations, which also keep the next object's loads from starting early.
void BM_AddRefReleaseCold(benchmark::State& state)
{
    overShuffledKeys(state, [](BenchKey* key) {
        IQVUnknown* unknown = key->GetUnknown();
        unknown->AddRef();
        unknown->Release();
    });
}
BENCHMARK(BM_AddRefReleaseCold);

void BM_DirectCallCold(benchmark::State& state)
{
    overShuffledKeys(state, [](BenchKey* key) { benchmark::DoNotOptimize(key->Extra()); });
}
BENCHMARK(BM_DirectCallCold);

} // namespace

BENCHMARK_MAIN();
