// Converter components against their peer: decoding IBM EBCDIC code page 037
// through the sample module (BTCCom over the component) and through glibc's
// iconv ("IBM037"), on the same 64 KiB; plus what creating a component by
// ProgID and reading the key store cost. Uses a temporary key store.

#include <qv/qvcl3.h>

#include <benchmark/benchmark.h>

#include <ftw.h>
#include <iconv.h>
#include <stdlib.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int kSize = 64 * 1024;

std::vector<signed char> sampleBytes()
{
    std::vector<signed char> bytes(kSize);
    for (int i = 0; i < kSize; ++i)
        bytes[i] = static_cast<signed char>((i * 7 + 0x40) & 0xFF);
    return bytes;
}

// Registers the sample module in a store of its own for the whole run.
class Store {
public:
    Store()
    {
        char pattern[] = "/tmp/qvcl3-bench-registry-XXXXXX";
        if (mkdtemp(pattern))
            m_dir = pattern;
        setenv("QV_REGISTRY_DIR", m_dir.c_str(), 1);
        const qv::String path(QVBENCH_CP037_MODULE, -1, u"UTF-8");
        QVHANDLE library = QV_INVALID_HANDLE;
        void* entry = nullptr;
        if (QVModuleLibOpen(QV_INVALID_HANDLE, path.getData(), &library) == 0 &&
            QVLibGetSymbol(library, u"DllRegisterServer", &entry) == 0)
            m_registered = reinterpret_cast<QVDllRegisterServerFunction>(entry)() == 0;
        QVModuleLibClose(library);
    }
    ~Store()
    {
        nftw(
            m_dir.c_str(), [](const char* p, const struct stat*, int, struct FTW*) { return std::remove(p); }, 16,
            FTW_DEPTH | FTW_PHYS);
    }
    bool registered() const { return m_registered; }

private:
    std::string m_dir;
    bool m_registered = false;
};

Store& store()
{
    static Store instance;
    return instance;
}

void BM_ComponentDecodeCP037(benchmark::State& state)
{
    if (!store().registered()) {
        state.SkipWithError("the sample module did not register");
        return;
    }
    const std::vector<signed char> in = sampleBytes();
    std::vector<char16_t> out(kSize);
    qv::Reference<qv::text::charset::ByteToCharConverter> decoder =
        qv::text::charset::ByteToCharConverter::getConverter(u"CP037");
    for (auto _ : state) {
        int32_t inPos = 0;
        int32_t outPos = 0;
        decoder->convert(in.data(), &inPos, kSize, out.data(), &outPos, kSize);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * kSize);
}
BENCHMARK(BM_ComponentDecodeCP037);

void BM_IconvDecodeIBM037(benchmark::State& state)
{
    const std::vector<signed char> in = sampleBytes();
    std::vector<char16_t> out(kSize);
    iconv_t cd = iconv_open("UTF-16LE", "IBM037");
    for (auto _ : state) {
        char* inPtr = const_cast<char*>(reinterpret_cast<const char*>(in.data()));
        char* outPtr = reinterpret_cast<char*>(out.data());
        size_t inLeft = kSize;
        size_t outLeft = 2 * kSize;
        iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
        benchmark::DoNotOptimize(out.data());
    }
    iconv_close(cd);
    state.SetBytesProcessed(state.iterations() * kSize);
}
BENCHMARK(BM_IconvDecodeIBM037);

void BM_CreateComponentByProgID(benchmark::State& state)
{
    if (!store().registered()) {
        state.SkipWithError("the sample module did not register");
        return;
    }
    for (auto _ : state) {
        void* object = nullptr;
        if (QVComCreateObjectByProgID(u"Velmara.CharCodec.CP037", nullptr, &IQVUnknown::iid, &object) != 0) {
            state.SkipWithError("creation failed");
            break;
        }
        static_cast<IQVUnknown*>(object)->Release();
    }
}
BENCHMARK(BM_CreateComponentByProgID);

void BM_RegistryGetValue(benchmark::State& state)
{
    store();
    const qv::util::RegistryKey key = qv::util::RegistryKey::currentUser().createKey(u"Bench\\Values");
    key.setValue(u"name", qv::String(u"a value of moderate length"));
    for (auto _ : state)
        benchmark::DoNotOptimize(key.getValue(u"NAME"));
}
BENCHMARK(BM_RegistryGetValue);

void BM_RegistrySetValue(benchmark::State& state)
{
    store();
    const qv::util::RegistryKey key = qv::util::RegistryKey::currentUser().createKey(u"Bench\\Values");
    const qv::String value(u"a value of moderate length");
    for (auto _ : state)
        key.setValue(u"name", value);
}
BENCHMARK(BM_RegistrySetValue);

} // namespace

BENCHMARK_MAIN();
