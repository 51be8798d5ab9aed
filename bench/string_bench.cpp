// qv::String beside std::u16string and icu::UnicodeString on the same work.
// Sizes are in UTF-16 units: "1 KiB" is 1024 units, "4 KiB" 4096 units and
// "1 MiB" 1 Mi units.
#include <qv/lang/String.h>

#include <benchmark/benchmark.h>
#include <unicode/unistr.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

std::u16string words(size_t units, uint32_t seed)
{
    static const char16_t* const vocabulary[] = {
        u"the ",  u"buffer ", u"string ", u"of ",     u"and ", u"copy ",   u"write ", u"a ",      u"shared ", u"text ",
        u"lock ", u"units ",  u"reader ", u"writer ", u"in ",  u"length ", u"to ",    u"search ", u"format ", u"hash "};
    std::mt19937 random(seed);
    std::u16string out;
    while (out.size() < units)
        out += vocabulary[random() % 20];
    out.resize(units);
    return out;
}

const std::u16string& text1k()
{
    static const std::u16string t = words(1024, 1);
    return t;
}

const std::u16string& text4k()
{
    static const std::u16string t = words(4096, 2);
    return t;
}

const std::u16string& text64()
{
    static const std::u16string t = words(64, 3);
    return t;
}

// 1 Mi units of words with the needle only at the very end.
const std::u16string needle = u"qzx-needle-16-un";

const std::u16string& haystack()
{
    static const std::u16string t = [] {
        std::u16string h = words(1024 * 1024 - needle.size(), 4);
        h += needle;
        return h;
    }();
    return t;
}

icu::UnicodeString icu(const std::u16string& s)
{
    return icu::UnicodeString(s.data(), static_cast<int32_t>(s.size()));
}

qv::String qvs(const std::u16string& s)
{
    return qv::String(s.data(), static_cast<int32_t>(s.size()));
}

void Copy1KiB_Qv(benchmark::State& state)
{
    qv::String source = qvs(text1k());
    for (auto _ : state) {
        qv::String copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
void Copy1KiB_U16(benchmark::State& state)
{
    std::u16string source = text1k();
    for (auto _ : state) {
        std::u16string copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
void Copy1KiB_Icu(benchmark::State& state)
{
    icu::UnicodeString source = icu(text1k());
    for (auto _ : state) {
        icu::UnicodeString copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

constexpr int kAppends = 1 << 20;

void Append1M_Qv(benchmark::State& state)
{
    for (auto _ : state) {
        qv::String s;
        for (int i = 0; i < kAppends; ++i)
            s.append(static_cast<char16_t>(u'a' + (i & 15)));
        benchmark::DoNotOptimize(s.getData());
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}
void Append1M_U16(benchmark::State& state)
{
    for (auto _ : state) {
        std::u16string s;
        for (int i = 0; i < kAppends; ++i)
            s.push_back(static_cast<char16_t>(u'a' + (i & 15)));
        benchmark::DoNotOptimize(s.data());
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}
void Append1M_Icu(benchmark::State& state)
{
    for (auto _ : state) {
        icu::UnicodeString s;
        for (int i = 0; i < kAppends; ++i)
            s.append(static_cast<char16_t>(u'a' + (i & 15)));
        benchmark::DoNotOptimize(s.getBuffer());
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}

void IndexOf16In1MiB_Qv(benchmark::State& state)
{
    qv::String hay = qvs(haystack());
    qv::String wanted = qvs(needle);
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.indexOf(wanted));
    if (hay.indexOf(wanted) != static_cast<int32_t>(haystack().size() - needle.size()))
        state.SkipWithError("wrong position");
}
void IndexOf16In1MiB_U16(benchmark::State& state)
{
    const std::u16string& hay = haystack();
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.find(needle));
}
void IndexOf16In1MiB_Icu(benchmark::State& state)
{
    icu::UnicodeString hay = icu(haystack());
    icu::UnicodeString wanted = icu(needle);
    for (auto _ : state)
        benchmark::DoNotOptimize(hay.indexOf(wanted));
}

template <const std::u16string& (*Text)()>
void Hash_Qv(benchmark::State& state)
{
    qv::String s = qvs(Text());
    for (auto _ : state)
        benchmark::DoNotOptimize(s.hashCode());
}
template <const std::u16string& (*Text)()>
void Hash_U16(benchmark::State& state)
{
    std::u16string s = Text();
    std::hash<std::u16string> hash;
    for (auto _ : state)
        benchmark::DoNotOptimize(hash(s));
}
template <const std::u16string& (*Text)()>
void Hash_Icu(benchmark::State& state)
{
    icu::UnicodeString s = icu(Text());
    for (auto _ : state)
        benchmark::DoNotOptimize(s.hashCode());
}

// Two equal texts in separate buffers, so nobody can answer from identity.
void CompareEqual4KiB_Qv(benchmark::State& state)
{
    qv::String a = qvs(text4k());
    qv::String b = qvs(text4k());
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b));
}
void CompareEqual4KiB_U16(benchmark::State& state)
{
    std::u16string a = text4k();
    std::u16string b = text4k();
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b));
}
void CompareEqual4KiB_Icu(benchmark::State& state)
{
    icu::UnicodeString a = icu(text4k());
    icu::UnicodeString b = icu(text4k());
    for (auto _ : state)
        benchmark::DoNotOptimize(a.compare(b));
}

// Each round trims a fresh copy of 1 KiB with white space on both sides.
const std::u16string& padded()
{
    static const std::u16string t = u" \t  " + text1k() + u" \r\n";
    return t;
}
void Trim_Qv(benchmark::State& state)
{
    qv::String source = qvs(padded());
    for (auto _ : state) {
        qv::String s(source);
        s.trim();
        benchmark::DoNotOptimize(s.getData());
    }
}
void Trim_U16(benchmark::State& state)
{
    std::u16string source = padded();
    for (auto _ : state) {
        std::u16string s(source);
        const char16_t* space = u" \t\r\n";
        size_t last = s.find_last_not_of(space);
        s.erase(last == std::u16string::npos ? 0 : last + 1);
        s.erase(0, s.find_first_not_of(space));
        benchmark::DoNotOptimize(s.data());
    }
}
void Trim_Icu(benchmark::State& state)
{
    icu::UnicodeString source = icu(padded());
    for (auto _ : state) {
        icu::UnicodeString s(source);
        s.trim();
        benchmark::DoNotOptimize(s.getBuffer());
    }
}

const char16_t* const kPattern = u"Entry {0} of {1}: {2} (entry {0})";
const char16_t* const kArguments[] = {u"42", u"100", u"the buffer was copied on write"};

void Format3_Qv(benchmark::State& state)
{
    for (auto _ : state) {
        qv::String s;
        s.format(kPattern, -1, kArguments[0], kArguments[1], kArguments[2]);
        benchmark::DoNotOptimize(s.getData());
    }
}
void Format3_U16(benchmark::State& state)
{
    const std::u16string placeholders[] = {u"{0}", u"{1}", u"{2}"};
    for (auto _ : state) {
        std::u16string s(kPattern);
        for (int i = 0; i < 3; ++i) {
            std::u16string argument(kArguments[i]);
            for (size_t at = s.find(placeholders[i]); at != std::u16string::npos;
                 at = s.find(placeholders[i], at + argument.size()))
                s.replace(at, 3, argument);
        }
        benchmark::DoNotOptimize(s.data());
    }
}
void Format3_Icu(benchmark::State& state)
{
    const icu::UnicodeString placeholders[] = {u"{0}", u"{1}", u"{2}"};
    const icu::UnicodeString arguments[] = {kArguments[0], kArguments[1], kArguments[2]};
    for (auto _ : state) {
        icu::UnicodeString s(kPattern);
        for (int i = 0; i < 3; ++i)
            s.findAndReplace(placeholders[i], arguments[i]);
        benchmark::DoNotOptimize(s.getBuffer());
    }
}

// N copies of "{0}" filled with empty text: the pattern of a hostile
// template. The std row is a find-and-append pass over the same text.
std::u16string repeatedPlaceholders(int64_t count)
{
    std::u16string pattern;
    pattern.reserve(static_cast<size_t>(count) * 3);
    for (int64_t i = 0; i < count; ++i)
        pattern += u"{0}";
    return pattern;
}

void FormatRepeated_Qv(benchmark::State& state)
{
    const std::u16string pattern = repeatedPlaceholders(state.range(0));
    for (auto _ : state) {
        qv::String s;
        s.format(pattern.data(), static_cast<int32_t>(pattern.size()), u"");
        benchmark::DoNotOptimize(s.getData());
    }
}
void FormatRepeated_U16(benchmark::State& state)
{
    const std::u16string pattern = repeatedPlaceholders(state.range(0));
    const std::u16string placeholder(u"{0}");
    for (auto _ : state) {
        std::u16string s;
        size_t from = 0;
        for (size_t at = pattern.find(placeholder); at != std::u16string::npos;
             from = at + 3, at = pattern.find(placeholder, from))
            s.append(pattern, from, at - from);
        s.append(pattern, from, std::u16string::npos);
        benchmark::DoNotOptimize(s.data());
    }
}

// "{0}{1}...{N-1}" with N arguments of two units each.
void FormatArrayMany_Qv(benchmark::State& state)
{
    const int32_t count = static_cast<int32_t>(state.range(0));
    std::u16string pattern;
    for (int32_t i = 0; i < count; ++i) {
        std::string digits = std::to_string(i);
        pattern += u"{" + std::u16string(digits.begin(), digits.end()) + u"}";
    }
    std::vector<const char16_t*> arguments(static_cast<size_t>(count), u"ab");
    for (auto _ : state) {
        qv::String s;
        s.formatArray(pattern.data(), static_cast<int32_t>(pattern.size()), arguments.data(), count);
        benchmark::DoNotOptimize(s.getData());
    }
}

} // namespace

BENCHMARK(Copy1KiB_Qv);
BENCHMARK(Copy1KiB_U16);
BENCHMARK(Copy1KiB_Icu);
BENCHMARK(Append1M_Qv)->Unit(benchmark::kMillisecond);
BENCHMARK(Append1M_U16)->Unit(benchmark::kMillisecond);
BENCHMARK(Append1M_Icu)->Unit(benchmark::kMillisecond);
BENCHMARK(IndexOf16In1MiB_Qv)->Unit(benchmark::kMicrosecond);
BENCHMARK(IndexOf16In1MiB_U16)->Unit(benchmark::kMicrosecond);
BENCHMARK(IndexOf16In1MiB_Icu)->Unit(benchmark::kMicrosecond);
BENCHMARK(Hash_Qv<text64>)->Name("Hash64_Qv");
BENCHMARK(Hash_U16<text64>)->Name("Hash64_U16");
BENCHMARK(Hash_Icu<text64>)->Name("Hash64_Icu");
BENCHMARK(Hash_Qv<text4k>)->Name("Hash4KiB_Qv");
BENCHMARK(Hash_U16<text4k>)->Name("Hash4KiB_U16");
BENCHMARK(Hash_Icu<text4k>)->Name("Hash4KiB_Icu");
BENCHMARK(CompareEqual4KiB_Qv);
BENCHMARK(CompareEqual4KiB_U16);
BENCHMARK(CompareEqual4KiB_Icu);
BENCHMARK(Trim_Qv);
BENCHMARK(Trim_U16);
BENCHMARK(Trim_Icu);
BENCHMARK(Format3_Qv);
BENCHMARK(Format3_U16);
BENCHMARK(Format3_Icu);

BENCHMARK(FormatRepeated_Qv)->Arg(100000)->Arg(400000)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(FormatRepeated_U16)->Arg(100000)->Arg(400000)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(FormatArrayMany_Qv)->Arg(20000)->Unit(benchmark::kMillisecond)->Iterations(1);

BENCHMARK_MAIN();
