// UTF-8 <-> UTF-16 and single-byte decoding: this library's converters at
// each instruction-set level side by side with iconv, ICU and (for the
// validation half of decoding) simdjson on four generated 16 MiB corpora
// (another size through CHARSET_BENCH_KIB).
// Throughput is counted in bytes of the UTF-8 (or single-byte) side in both
// directions.
//
// So that figures reproduce across processes: the corpora and one output
// buffer per direction are made and touched before anything is timed, and
// every contender writes into the same buffer; unless told otherwise the
// program repeats every benchmark five times with the repetitions of all
// contenders interleaved in random order, and reports the median, the
// spread (min, max, coefficient of variation) and the mean.

#include <qv/qvcl3.h>

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <simdjson.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <sys/mman.h>

namespace {

using namespace qv::text::charset;

// 16 MiB, or CHARSET_BENCH_KIB kibibytes: a size that stays in the caches
// (256) shows the kernels' own speed where 16 MiB is bound by memory.
size_t corpusBytes()
{
    static const size_t bytes = [] {
        const char* kib = std::getenv("CHARSET_BENCH_KIB");
        const long value = kib != nullptr ? std::strtol(kib, nullptr, 10) : 0;
        return value > 0 ? static_cast<size_t>(value) << 10 : size_t{16} << 20;
    }();
    return bytes;
}

class Random {
public:
    explicit Random(uint64_t seed) : m_state(seed) {}
    uint32_t next(uint32_t bound)
    {
        m_state = m_state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<uint32_t>((m_state >> 33) % bound);
    }

private:
    uint64_t m_state;
};

void appendUtf8(std::string& out, uint32_t cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Cuts at a character boundary just below the target size.
void trim(std::string& text)
{
    text.resize(corpusBytes());
    while (!text.empty() && (static_cast<uint8_t>(text.back()) & 0xC0) == 0x80) {
        text.pop_back();
    }
    if (!text.empty() && static_cast<uint8_t>(text.back()) >= 0xC0) {
        text.pop_back();
    }
}

std::string words(const std::vector<const char*>& vocabulary, uint64_t seed, const std::vector<uint32_t>& extras = {},
                  uint32_t extraEvery = 0)
{
    Random random(seed);
    std::string text;
    size_t sentence = 0;
    while (text.size() < corpusBytes() + 16) {
        const char* word = vocabulary[random.next(static_cast<uint32_t>(vocabulary.size()))];
        text += word;
        if (extraEvery != 0 && random.next(extraEvery) == 0) {
            text += ' ';
            appendUtf8(text, extras[random.next(static_cast<uint32_t>(extras.size()))]);
        }
        if (++sentence % 12 == 0) {
            text += random.next(4) == 0 ? ".\n" : ". ";
        } else {
            text += random.next(9) == 0 ? ", " : " ";
        }
    }
    trim(text);
    return text;
}

std::string english()
{
    return words({"the",       "of",        "and",        "to",         "in",
                  "a",         "is",        "that",       "for",        "it",
                  "as",        "was",       "with",       "be",         "by",
                  "on",        "not",       "he",         "this",       "are",
                  "or",        "his",       "from",       "at",         "which",
                  "but",       "have",      "an",         "had",        "they",
                  "you",       "were",      "their",      "one",        "all",
                  "we",        "can",       "her",        "has",        "there",
                  "been",      "if",        "more",       "when",       "will",
                  "would",     "who",       "so",         "no",         "river",
                  "morning",   "library",   "government", "question",   "understanding",
                  "therefore", "character", "remembered", "afterwards", "Thursday"},
                 1);
}

std::string latin()
{
    return words({"été",     "déjà",  "über",  "Straße", "naïve",   "façade",  "garçon",      "où",    "père",
                  "mère",    "frère", "année", "élève",  "château", "Müller",  "Größe",       "schön", "für",
                  "Mädchen", "große", "niño",  "mañana", "corazón", "canción", "información", "Łódź",  "zażółć",
                  "gęślą",   "jaźń",  "the",   "and",    "de",      "la",      "le",          "et",    "les",
                  "des",     "en",    "un",    "une",    "du",      "est",     "pour",        "que",   "dans",
                  "qui",     "par",   "pas",   "sur",    "plus",    "die",     "der",         "und",   "das",
                  "ist",     "nicht", "mit",   "sich",   "auf",     "el",      "los",         "con",   "para",
                  "por",     "una",   "como",  "pero",   "sus",     "maison",  "travail",     "Zeit"},
                 2);
}

std::string cjk()
{
    Random random(3);
    const char16_t common[] =
        u"的一是不了人我在有他这为之大来以个中上们到说国和地也子时道出而要于就下得可你年生自会那后能对着事其"
        u"日本語東京大学電車新聞天気今朝彼女友達先生学校会社時間問題世界経済政治文化歴史言葉意味";
    const char16_t kana[] =
        u"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよらりるれろわをん"
        u"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモラリルレロン";
    std::string text;
    while (text.size() < corpusBytes() + 16) {
        const uint32_t r = random.next(100);
        if (r < 55) {
            appendUtf8(text, common[random.next(sizeof common / 2 - 1)]);
        } else if (r < 90) {
            appendUtf8(text, kana[random.next(sizeof kana / 2 - 1)]);
        } else if (r < 96) {
            appendUtf8(text, random.next(2) == 0 ? 0x3001 : 0x3002);
        } else if (r < 99) {
            text += static_cast<char>('0' + random.next(10));
        } else {
            text += '\n';
        }
    }
    trim(text);
    return text;
}

std::string emoji()
{
    std::vector<uint32_t> faces;
    for (uint32_t cp = 0x1F600; cp < 0x1F650; ++cp) {
        faces.push_back(cp);
    }
    for (uint32_t cp = 0x1F300; cp < 0x1F340; ++cp) {
        faces.push_back(cp);
    }
    faces.push_back(0x2764);
    faces.push_back(0x2728);
    return words({"so",      "happy", "today", "lol",  "see",    "you",     "soon",   "party",
                  "tonight", "love",  "this",  "omg",  "thanks", "friends", "coffee", "weekend",
                  "vibes",   "best",  "day",   "ever", "good",   "morning"},
                 4, faces, 2);
}

struct Corpus {
    std::string utf8;
    std::u16string utf16;
};

std::u16string toUtf16(const std::string& utf8)
{
    std::u16string out(utf8.size() + 1, u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &length, utf8.data(), static_cast<int32_t>(utf8.size()),
                  &status);
    out.resize(static_cast<size_t>(length));
    return out;
}

const Corpus& corpus(const std::string& name)
{
    static std::map<std::string, Corpus> corpora;
    auto found = corpora.find(name);
    if (found == corpora.end()) {
        std::string utf8 = name == "english" ? english() : name == "latin" ? latin() : name == "cjk" ? cjk() : emoji();
        std::u16string utf16 = toUtf16(utf8);
        found = corpora.emplace(name, Corpus{std::move(utf8), std::move(utf16)}).first;
    }
    return found->second;
}

const char* const corpusNames[] = {"english", "latin", "cjk", "emoji"};

// Memory on a 2 MiB boundary, in transparent huge pages where the system
// grants them (madvise mode), written all over before use: a plain loop
// widening 16 MiB wrote its 32 MiB 1.36x as fast into huge pages as into
// small ones, so the kind of memory, not only the code, decided the 16 MiB
// figures.
template <typename T>
class PlacedBuffer {
public:
    PlacedBuffer() = default;
    PlacedBuffer(const PlacedBuffer&) = delete;
    PlacedBuffer& operator=(const PlacedBuffer&) = delete;
    ~PlacedBuffer() { std::free(m_data); }
    void assign(size_t count, T value)
    {
        constexpr size_t hugePage = size_t{2} << 20;
        const size_t bytes = (count * sizeof(T) + hugePage - 1) / hugePage * hugePage;
        std::free(m_data);
        m_data = static_cast<T*>(std::aligned_alloc(hugePage, bytes));
        if (m_data == nullptr) {
            std::abort();
        }
        madvise(m_data, bytes, MADV_HUGEPAGE);
        std::fill(m_data, m_data + count, value);
        m_size = count;
    }
    T* data() { return m_data; }
    size_t size() const { return m_size; }

private:
    T* m_data = nullptr;
    size_t m_size = 0;
};

// One output buffer per direction, big enough for every corpus and placed
// before the first benchmark, shared by every contender: a fresh buffer per
// contender (whether its pages were mapped yet, and where) changed results
// by a third to a half between processes.
PlacedBuffer<char16_t>& decodeBuffer()
{
    static PlacedBuffer<char16_t> buffer;
    return buffer;
}

PlacedBuffer<char>& encodeBuffer()
{
    static PlacedBuffer<char> buffer;
    return buffer;
}

void prepareCorpora()
{
    size_t units = 0;
    size_t bytes = 0;
    for (const char* name : corpusNames) {
        units = std::max(units, corpus(name).utf8.size() + 16);
        bytes = std::max(bytes, corpus(name).utf16.size() * 3 + 16);
    }
    decodeBuffer().assign(units, u'\1');
    encodeBuffer().assign(bytes, '\1');
}

const char* levelName(SimdLevel level)
{
    static const char* const names[] = {"scalar", "sse2", "avx2", "avx512"};
    return names[static_cast<int>(level)];
}

// True for this library's contenders ("qvcl3-avx2" and the like), with
// their level switched on; a level the processor lacks skips the benchmark.
bool isQvcl3(benchmark::State& state, const std::string& who)
{
    for (SimdLevel level : {SimdLevel::Scalar, SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512}) {
        if (who == std::string("qvcl3-") + levelName(level)) {
            if (setUtf8SimdLevel(level) != level) {
                state.SkipWithError("level not available here");
            }
            return true;
        }
    }
    return false;
}

// simdjson's UTF-8 validation with one of its kernels ("icelake" is
// AVX-512, "haswell" AVX2, "westmere" SSE4.2): a ceiling for the checking
// half of decoding, which writes nothing.
void validateBenchmark(benchmark::State& state, const std::string& name, const std::string& kernel)
{
    const Corpus& c = corpus(name);
    const simdjson::implementation* implementation = simdjson::get_available_implementations()[kernel];
    if (implementation == nullptr || !implementation->supported_by_runtime_system()) {
        state.SkipWithError("kernel not available here");
        return;
    }
    if (!implementation->validate_utf8(c.utf8.data(), c.utf8.size())) {
        state.SkipWithError("corpus rejected");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(implementation->validate_utf8(c.utf8.data(), c.utf8.size()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(c.utf8.size()));
}

// Every contender's output is checked once against ICU's before timing.
void decodeBenchmark(benchmark::State& state, const std::string& name, const std::string& who)
{
    const Corpus& c = corpus(name);
    PlacedBuffer<char16_t>& out = decodeBuffer();
    const int32_t inSize = static_cast<int32_t>(c.utf8.size());
    const int32_t outSize = static_cast<int32_t>(out.size());
    const bool ours = isQvcl3(state, who);
    if (state.error_occurred()) {
        return;
    }
    BTCUTF8 decoder;
    iconv_t cd = iconv_open("UTF-16LE", "UTF-8");
    UErrorCode status = U_ZERO_ERROR;
    UConverter* icu = ucnv_open("UTF-8", &status);
    auto run = [&]() -> int32_t {
        if (ours) {
            int32_t ip = 0;
            int32_t op = 0;
            decoder.convert(reinterpret_cast<const signed char*>(c.utf8.data()), &ip, inSize, out.data(), &op, outSize);
            return op;
        }
        if (who == "memcpy") {
            std::memcpy(out.data(), c.utf16.data(), c.utf16.size() * 2);
            return static_cast<int32_t>(c.utf16.size());
        }
        if (who == "iconv") {
            char* in = const_cast<char*>(c.utf8.data());
            size_t inLeft = c.utf8.size();
            char* o = reinterpret_cast<char*>(out.data());
            size_t outLeft = out.size() * 2;
            iconv(cd, &in, &inLeft, &o, &outLeft);
            return static_cast<int32_t>((out.size() * 2 - outLeft) / 2);
        }
        UErrorCode error = U_ZERO_ERROR;
        if (who == "icu-ucnv") {
            return ucnv_toUChars(icu, out.data(), outSize, c.utf8.data(), inSize, &error);
        }
        int32_t length = 0;
        u_strFromUTF8(out.data(), outSize, &length, c.utf8.data(), inSize, &error);
        return length;
    };
    const int32_t length = run();
    if (std::u16string(out.data(), static_cast<size_t>(length)) != c.utf16) {
        state.SkipWithError("output differs from ICU's");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(run());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * inSize);
    iconv_close(cd);
    ucnv_close(icu);
}

void encodeBenchmark(benchmark::State& state, const std::string& name, const std::string& who)
{
    const Corpus& c = corpus(name);
    PlacedBuffer<char>& out = encodeBuffer();
    const int32_t inSize = static_cast<int32_t>(c.utf16.size());
    const int32_t outSize = static_cast<int32_t>(out.size());
    const bool ours = isQvcl3(state, who);
    if (state.error_occurred()) {
        return;
    }
    CTBUTF8 encoder;
    iconv_t cd = iconv_open("UTF-8", "UTF-16LE");
    UErrorCode status = U_ZERO_ERROR;
    UConverter* icu = ucnv_open("UTF-8", &status);
    auto run = [&]() -> int32_t {
        if (ours) {
            int32_t ip = 0;
            int32_t op = 0;
            encoder.convert(c.utf16.data(), &ip, inSize, reinterpret_cast<signed char*>(out.data()), &op, outSize);
            return op;
        }
        if (who == "memcpy") {
            std::memcpy(out.data(), c.utf8.data(), c.utf8.size());
            return static_cast<int32_t>(c.utf8.size());
        }
        if (who == "iconv") {
            char* in = const_cast<char*>(reinterpret_cast<const char*>(c.utf16.data()));
            size_t inLeft = c.utf16.size() * 2;
            char* o = out.data();
            size_t outLeft = out.size();
            iconv(cd, &in, &inLeft, &o, &outLeft);
            return static_cast<int32_t>(out.size() - outLeft);
        }
        UErrorCode error = U_ZERO_ERROR;
        if (who == "icu-ucnv") {
            return ucnv_fromUChars(icu, out.data(), outSize, c.utf16.data(), inSize, &error);
        }
        int32_t length = 0;
        u_strToUTF8(out.data(), outSize, &length, c.utf16.data(), inSize, &error);
        return length;
    };
    const int32_t length = run();
    if (std::string(out.data(), static_cast<size_t>(length)) != c.utf8) {
        state.SkipWithError("output differs from the corpus");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(run());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(c.utf8.size()));
    iconv_close(cd);
    ucnv_close(icu);
}

// Single-byte text: the Latin corpus in CP1252 (mostly ASCII), and every
// defined byte in random order (no ASCII fast path to lean on).
std::string singleByteText(const std::string& kind, const char* iconvName)
{
    std::string out;
    if (kind == "latin") {
        const std::string& utf8 = corpus("latin").utf8;
        out.assign(utf8.size(), '\0');
        iconv_t cd = iconv_open((std::string(iconvName) + "//TRANSLIT").c_str(), "UTF-8");
        char* in = const_cast<char*>(utf8.data());
        size_t inLeft = utf8.size();
        char* o = out.data();
        size_t outLeft = out.size();
        iconv(cd, &in, &inLeft, &o, &outLeft);
        iconv_close(cd);
        out.resize(out.size() - outLeft);
        return out;
    }
    std::vector<char> defined;
    iconv_t cd = iconv_open("UTF-16LE", iconvName);
    for (int b = 0; b < 256; ++b) {
        char byte = static_cast<char>(b);
        char* in = &byte;
        size_t inLeft = 1;
        char buffer[8];
        char* o = buffer;
        size_t outLeft = sizeof buffer;
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        if (b >= 0x80 && iconv(cd, &in, &inLeft, &o, &outLeft) != static_cast<size_t>(-1)) {
            defined.push_back(byte);
        }
    }
    iconv_close(cd);
    Random random(5);
    out.resize(corpusBytes());
    for (char& b : out) {
        b = defined[random.next(static_cast<uint32_t>(defined.size()))];
    }
    return out;
}

template <typename Decoder>
void singleByteBenchmark(benchmark::State& state, const std::string& kind, const char* iconvName)
{
    const std::string bytes = singleByteText(kind, iconvName);
    PlacedBuffer<char16_t>& out = decodeBuffer();
    const int32_t size = static_cast<int32_t>(std::min(bytes.size(), out.size()));
    Decoder decoder;
    decoder.setSubstitutionMode(false);
    for (auto _ : state) {
        int32_t ip = 0;
        int32_t op = 0;
        decoder.convert(reinterpret_cast<const signed char*>(bytes.data()), &ip, size, out.data(), &op, size);
        benchmark::DoNotOptimize(op);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

void withSpread(benchmark::internal::Benchmark* b)
{
    b->Unit(benchmark::kMillisecond);
    b->ComputeStatistics("min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
    b->ComputeStatistics("max", [](const std::vector<double>& v) { return *std::max_element(v.begin(), v.end()); });
}

} // namespace

int main(int argc, char** argv)
{
    prepareCorpora();
    std::vector<std::string> contenders;
    for (SimdLevel level : {SimdLevel::Scalar, SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512}) {
        if (setUtf8SimdLevel(level) == level) {
            contenders.push_back(std::string("qvcl3-") + levelName(level));
        }
    }
    // memcpy writes the same output from a ready copy of it: the ceiling
    // that the memory (or cache) bandwidth puts on any converter.
    contenders.insert(contenders.end(), {"memcpy", "iconv", "icu-ucnv", "icu-ustr"});
    for (const char* name : corpusNames) {
        for (const std::string& who : contenders) {
            withSpread(benchmark::RegisterBenchmark((std::string("decode/") + name + "/" + who).c_str(),
                                                    decodeBenchmark, std::string(name), who));
        }
        for (const char* kernel : {"westmere", "haswell", "icelake"}) {
            const simdjson::implementation* implementation = simdjson::get_available_implementations()[kernel];
            if (implementation != nullptr && implementation->supported_by_runtime_system()) {
                withSpread(
                    benchmark::RegisterBenchmark((std::string("validate/") + name + "/simdjson-" + kernel).c_str(),
                                                 validateBenchmark, std::string(name), std::string(kernel)));
            }
        }
        for (const std::string& who : contenders) {
            withSpread(benchmark::RegisterBenchmark((std::string("encode/") + name + "/" + who).c_str(),
                                                    encodeBenchmark, std::string(name), who));
        }
    }
    for (const char* kind : {"latin", "random"}) {
        const std::string k = kind;
        withSpread(benchmark::RegisterBenchmark(("singlebyte/" + k + "/ISO8859_1").c_str(),
                                                singleByteBenchmark<BTCISO8859_1>, k, "ISO-8859-1"));
        withSpread(benchmark::RegisterBenchmark(("singlebyte/" + k + "/CP1252").c_str(), singleByteBenchmark<BTCCP1252>,
                                                k, "CP1252"));
        withSpread(benchmark::RegisterBenchmark(("singlebyte/" + k + "/CP437").c_str(), singleByteBenchmark<BTCCP437>,
                                                k, "CP437"));
    }
    withSpread(benchmark::RegisterBenchmark("singlebyte/ascii/ASCII", singleByteBenchmark<BTCASCII>,
                                            std::string("latin"), "ASCII"));
    // Five interleaved repetitions, aggregates only, unless the command line
    // says otherwise (its options come later and win).
    std::vector<char*> args(argv, argv + argc);
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleave = "--benchmark_enable_random_interleaving=true";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    args.insert(args.begin() + 1, {repetitions.data(), interleave.data(), aggregates.data()});
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
