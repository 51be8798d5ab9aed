// A text from a cached string bundle against the plain standard container
// a program would otherwise use: std::unordered_map<std::u16string,
// std::u16string>::find and a copy of the text found.

#include <qv/i18n/ListStringBundle.h>

#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kKeys = 1000;

std::u16string key(int i)
{
    std::string narrow = "app.dialog.message." + std::to_string(i);
    return std::u16string(narrow.begin(), narrow.end());
}

std::u16string text(int i)
{
    std::string narrow = "A message of ordinary length, number " + std::to_string(i) + ", shown to the user.";
    return std::u16string(narrow.begin(), narrow.end());
}

qv::Reference<qv::i18n::ListStringBundle> filledBundle()
{
    qv::Reference<qv::i18n::ListStringBundle> bundle(new qv::i18n::ListStringBundle(u"bench"));
    for (int i = 0; i < kKeys; ++i)
        bundle->put(qv::String(key(i)), qv::String(text(i)));
    return bundle;
}

void bundleGetString(benchmark::State& state)
{
    qv::Reference<qv::i18n::ListStringBundle> bundle = filledBundle();
    std::vector<qv::String> keys;
    for (int i = 0; i < kKeys; ++i)
        keys.emplace_back(key(i));
    size_t next = 0;
    for (auto _ : state) {
        qv::String found = bundle->getString(keys[next]);
        benchmark::DoNotOptimize(found);
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(bundleGetString);

// The same lookup through the component face, as code across a boundary
// makes it: the text is copied into the caller's buffer (a String reused
// from call to call) and the key arrives as bare UTF-16.
void bundleFaceGetString(benchmark::State& state)
{
    qv::Reference<qv::i18n::ListStringBundle> bundle = filledBundle();
    std::vector<std::u16string> keys;
    for (int i = 0; i < kKeys; ++i)
        keys.push_back(key(i));
    const qv::i18n::IStringBundle* face = bundle.get();
    qv::String out;
    size_t next = 0;
    for (auto _ : state) {
        if (face->GetString(keys[next].c_str(), &out) != 0)
            state.SkipWithError("GetString failed");
        benchmark::DoNotOptimize(out);
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(bundleFaceGetString);

void unorderedMapFindAndCopy(benchmark::State& state)
{
    std::unordered_map<std::u16string, std::u16string> map;
    std::vector<std::u16string> keys;
    for (int i = 0; i < kKeys; ++i) {
        map.emplace(key(i), text(i));
        keys.push_back(key(i));
    }
    size_t next = 0;
    for (auto _ : state) {
        std::u16string found = map.find(keys[next])->second;
        benchmark::DoNotOptimize(found);
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}
BENCHMARK(unorderedMapFindAndCopy);

} // namespace

BENCHMARK_MAIN();
