// Loading and reading an INI file of 1 000 sets x 100 keys, against inih (a
// callback parser that builds nothing), inih's INIReader (a std::map of
// std::string) and POCO's IniFileConfiguration.
//   bash scripts/bench.sh ini_bench

#include <qv/qvcl3.h>

#include <INIReader.h>
#include <Poco/AutoPtr.h>
#include <Poco/Util/IniFileConfiguration.h>
#include <benchmark/benchmark.h>
#include <ini.h>

#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

const int kSets = 1000;
const int kKeys = 100;

const std::string& iniPath()
{
    static const std::string path = [] {
        const std::string file = "/tmp/qvcl3-ini-bench-" + std::to_string(getpid()) + ".ini";
        FILE* out = std::fopen(file.c_str(), "w");
        for (int s = 0; s < kSets; ++s) {
            std::fprintf(out, "[section%04d]\n", s);
            for (int k = 0; k < kKeys; ++k)
                std::fprintf(out, "key%03d = value number %d of section %d\n", k, k, s);
        }
        std::fclose(out);
        return file;
    }();
    return path;
}

const std::u16string& widePath()
{
    static const std::u16string path = qv::String(iniPath().c_str()).toU16String();
    return path;
}

void loadQvIniFile(benchmark::State& state)
{
    for (auto _ : state) {
        qv::util::IniFile file(widePath().c_str());
        char16_t value[64];
        benchmark::DoNotOptimize(file.GetValue(u"section0500", u"key050", value, 64));
    }
    state.SetItemsProcessed(state.iterations() * kSets * kKeys);
}

int countEntry(void* user, const char*, const char*, const char*)
{
    ++*static_cast<long*>(user);
    return 1;
}

void loadInihCallback(benchmark::State& state)
{
    for (auto _ : state) {
        long entries = 0;
        ini_parse(iniPath().c_str(), &countEntry, &entries);
        benchmark::DoNotOptimize(entries);
    }
    state.SetItemsProcessed(state.iterations() * kSets * kKeys);
}

void loadInihReader(benchmark::State& state)
{
    for (auto _ : state) {
        INIReader reader(iniPath());
        benchmark::DoNotOptimize(reader.Get("section0500", "key050", ""));
    }
    state.SetItemsProcessed(state.iterations() * kSets * kKeys);
}

void loadPoco(benchmark::State& state)
{
    for (auto _ : state) {
        Poco::AutoPtr<Poco::Util::IniFileConfiguration> config(new Poco::Util::IniFileConfiguration(iniPath()));
        benchmark::DoNotOptimize(config->getString("section0500.key050"));
    }
    state.SetItemsProcessed(state.iterations() * kSets * kKeys);
}

// Every GetValue asks the file system whether the file changed: that status
// call is the price of the automatic reload.
void getValueQv(benchmark::State& state)
{
    qv::util::IniFile file(widePath().c_str());
    char16_t value[64];
    file.GetValue(u"section0001", u"key001", value, 64);
    for (auto _ : state)
        benchmark::DoNotOptimize(file.GetValue(u"section0500", u"key050", value, 64));
}

// The same two-level lookup without the status call: the cost of the maps
// and Strings alone.
void getValueWithoutStatus(benchmark::State& state)
{
    std::map<qv::String, std::map<qv::String, qv::String>> sets;
    for (int s = 0; s < kSets; ++s) {
        auto& keys = sets[qv::String::valueOf(s)];
        for (int k = 0; k < kKeys; ++k)
            keys[qv::String::valueOf(k)] = qv::String(u"value");
    }
    char16_t value[64];
    for (auto _ : state) {
        const auto& keys = sets.find(qv::String(u"500"))->second;
        const qv::String& found = keys.find(qv::String(u"50"))->second;
        benchmark::DoNotOptimize(QVStrNCpyW(value, found.getData(), 64));
    }
}

void getValuePoco(benchmark::State& state)
{
    Poco::AutoPtr<Poco::Util::IniFileConfiguration> config(new Poco::Util::IniFileConfiguration(iniPath()));
    for (auto _ : state)
        benchmark::DoNotOptimize(config->getString("section0500.key050"));
}

} // namespace

BENCHMARK(loadQvIniFile)->Unit(benchmark::kMillisecond);
BENCHMARK(loadInihCallback)->Unit(benchmark::kMillisecond);
BENCHMARK(loadInihReader)->Unit(benchmark::kMillisecond);
BENCHMARK(loadPoco)->Unit(benchmark::kMillisecond);
BENCHMARK(getValueQv);
BENCHMARK(getValueWithoutStatus);
BENCHMARK(getValuePoco);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::remove(iniPath().c_str());
    return 0;
}
