// Line reading and text writing through the library's readers and writers
// against the standard library on the same files, in the same run.
//
//   readLine over a 128 MiB UTF-8 file of English lines into Strings, against
//   std::getline into std::string (no decoding at all) and std::getline +
//   mbstowcs into std::wstring (decoding to UTF-32);
//   128 MiB of UTF-16 text written as UTF-8 through a buffered writer over an
//   OutputStreamWriter, against std::ofstream writing the encoded bytes.
#include <qv/qvcl3.h>

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t kFileBytes = size_t(128) << 20;

std::string benchDirectory()
{
    const char* tmp = std::getenv("TMPDIR");
    return tmp ? tmp : "/tmp";
}

// A thousand English-looking lines of 20 to 120 characters, deterministic.
const std::vector<std::string>& sampleLines()
{
    static const std::vector<std::string> lines = [] {
        static const char* words[] = {
            "the",     "of",     "and",    "to",      "in",      "is",     "that",   "for",     "it",
            "as",      "was",    "with",   "be",      "by",      "on",     "not",    "he",      "this",
            "are",     "or",     "his",    "from",    "at",      "which",  "but",    "have",    "an",
            "had",     "they",   "you",    "were",    "their",   "one",    "all",    "we",      "can",
            "her",     "has",    "there",  "been",    "if",      "more",   "when",   "will",    "would",
            "who",     "so",     "no",     "library", "reader",  "lines",  "stream", "encoded", "quiet",
            "harbour", "winter", "letter", "north",   "through", "garden", "signal", "careful", "window"};
        std::mt19937 random(2024);
        std::vector<std::string> made;
        for (int i = 0; i < 1000; ++i) {
            size_t target = std::uniform_int_distribution<size_t>(20, 120)(random);
            std::string line;
            while (line.size() < target) {
                if (!line.empty())
                    line += ' ';
                line += words[random() % (sizeof(words) / sizeof(words[0]))];
            }
            line += random() % 5 == 0 ? "." : ",";
            made.push_back(line);
        }
        return made;
    }();
    return lines;
}

// The 128 MiB corpus, written once per run.
const std::string& utf8File()
{
    static const std::string path = [] {
        std::string file = benchDirectory() + "/qvcl3-textio-bench.txt";
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        size_t written = 0;
        for (size_t i = 0; written < kFileBytes; ++i) {
            const std::string& line = sampleLines()[i % sampleLines().size()];
            out << line << '\n';
            written += line.size() + 1;
        }
        return file;
    }();
    return path;
}

qv::String qvPath(const std::string& path)
{
    return qv::String(path.c_str(), -1, u"UTF-8");
}

void BM_ReadLine_qvcl3(benchmark::State& state)
{
    using namespace qv::io;
    const std::string& file = utf8File();
    size_t units = 0;
    for (auto _ : state) {
        auto in = Channels::newInputStream(FileChannel::open(qvPath(file), FileChannel::READ).get());
        auto reader = qv::makeReference<BufferedReader>(qv::makeReference<InputStreamReader>(in.get(), u"UTF-8").get());
        qv::String line;
        units = 0;
        while (reader->readLine(line))
            units += static_cast<size_t>(line.getLength()) + 1;
        benchmark::DoNotOptimize(units);
        reader->close();
    }
    if (units < kFileBytes)
        state.SkipWithError("short read");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units));
}

void BM_ReadLine_getline_string(benchmark::State& state)
{
    const std::string& file = utf8File();
    size_t bytes = 0;
    for (auto _ : state) {
        std::ifstream in(file, std::ios::binary);
        std::string line;
        bytes = 0;
        while (std::getline(in, line))
            bytes += line.size() + 1;
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_ReadLine_getline_mbstowcs(benchmark::State& state)
{
    std::setlocale(LC_ALL, "C.UTF-8");
    const std::string& file = utf8File();
    size_t bytes = 0;
    for (auto _ : state) {
        std::ifstream in(file, std::ios::binary);
        std::string line;
        std::wstring wide;
        bytes = 0;
        while (std::getline(in, line)) {
            wide.resize(line.size() + 1);
            size_t n = std::mbstowcs(&wide[0], line.c_str(), wide.size());
            wide.resize(n == static_cast<size_t>(-1) ? 0 : n);
            bytes += line.size() + 1;
        }
        benchmark::DoNotOptimize(wide);
    }
    std::setlocale(LC_ALL, "");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_Write_qvcl3(benchmark::State& state)
{
    using namespace qv::io;
    std::vector<std::u16string> lines;
    for (const std::string& line : sampleLines())
        lines.push_back(qv::String(line.c_str(), -1, u"UTF-8").toU16String() + u"\n");
    std::string file = benchDirectory() + "/qvcl3-textio-bench-out.txt";
    size_t bytes = 0;
    for (auto _ : state) {
        auto channel =
            FileChannel::open(qvPath(file), FileChannel::WRITE | FileChannel::CREATE | FileChannel::TRUNCATE);
        auto writer = qv::makeReference<BufferedWriter>(
            qv::makeReference<OutputStreamWriter>(Channels::newOutputStream(channel.get()).get(), u"UTF-8").get());
        bytes = 0;
        for (size_t i = 0; bytes < kFileBytes; ++i) {
            const std::u16string& line = lines[i % lines.size()];
            writer->write(line.data(), static_cast<int32_t>(line.size()));
            bytes += line.size();
        }
        writer->close();
    }
    std::remove(file.c_str());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_Write_ofstream_encoded(benchmark::State& state)
{
    std::vector<std::string> lines;
    for (const std::string& line : sampleLines())
        lines.push_back(line + "\n");
    std::string file = benchDirectory() + "/qvcl3-textio-bench-out.txt";
    size_t bytes = 0;
    for (auto _ : state) {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        bytes = 0;
        for (size_t i = 0; bytes < kFileBytes; ++i) {
            const std::string& line = lines[i % lines.size()];
            out.write(line.data(), static_cast<std::streamsize>(line.size()));
            bytes += line.size();
        }
        out.close();
    }
    std::remove(file.c_str());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

} // namespace

BENCHMARK(BM_ReadLine_qvcl3)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ReadLine_getline_string)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ReadLine_getline_mbstowcs)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Write_qvcl3)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_Write_ofstream_encoded)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
