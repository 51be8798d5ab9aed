// Byte streams against the peers users would otherwise pick, in one run:
//  - copying a file through BufferedInputStream -> BufferedOutputStream
//    (64 KiB buffers) against std::ifstream/std::ofstream and POCO's file
//    streams, with 64 KiB and 4 KiB requests;
//  - 16 M big-endian int32 through DataOutputStream into a
//    ByteArrayOutputStream and back through DataInputStream, against POCO's
//    BinaryWriter/BinaryReader in big-endian mode over memory streams;
//  - AlphaNum encoding and decoding of 64 MiB against POCO's
//    Base32Encoder/Base32Decoder, and file to file against coreutils base32
//    run as a whole process.
// The file size is QV_BENCH_FILE_MIB (default 256).

#include <qv/qvcl3.h>

#include <Poco/Base32Decoder.h>
#include <Poco/Base32Encoder.h>
#include <Poco/BinaryReader.h>
#include <Poco/BinaryWriter.h>
#include <Poco/FileStream.h>
#include <Poco/MemoryStream.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace qv::io;

constexpr int32_t kBuffer = 64 << 10;
constexpr int kInts = 16 << 20;
constexpr size_t kAlphaNumBytes = 64u << 20;

size_t fileBytes()
{
    const char* mib = std::getenv("QV_BENCH_FILE_MIB");
    return static_cast<size_t>(mib ? std::atoi(mib) : 256) << 20;
}

std::vector<signed char> randomBytes(size_t n)
{
    std::vector<signed char> bytes(n);
    uint64_t state = 0x9E3779B97F4A7C15ull;
    for (auto& b : bytes) {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        b = static_cast<signed char>(state >> 56);
    }
    return bytes;
}

// The files live for the whole run and are removed at its end.
struct Files {
    std::string dir;
    std::string source;
    std::string copy;
    std::string text;
    Files()
    {
        char pattern[] = "/tmp/qvcl3-io-bench-XXXXXX";
        dir = mkdtemp(pattern);
        source = dir + "/source.bin";
        copy = dir + "/copy.bin";
        text = dir + "/text.txt";
        const std::vector<signed char> data = randomBytes(fileBytes());
        std::ofstream(source, std::ios::binary).write(reinterpret_cast<const char*>(data.data()), data.size());
        const std::vector<signed char> alnum = randomBytes(kAlphaNumBytes);
        std::ofstream(dir + "/alnum.bin", std::ios::binary)
            .write(reinterpret_cast<const char*>(alnum.data()), alnum.size());
        // Written back before the first measurement, so that none of them
        // pays for another's dirty pages.
        for (const std::string& path : {source, dir + "/alnum.bin"}) {
            const int fd = open(path.c_str(), O_RDONLY);
            fsync(fd);
            close(fd);
        }
    }
    ~Files() { std::system(("rm -rf " + dir).c_str()); }
};

Files& files()
{
    static Files instance;
    return instance;
}

qv::String name(const std::string& path)
{
    return qv::String(path.c_str(), -1, u"UTF-8");
}

void copyQv(benchmark::State& state)
{
    const int32_t request = static_cast<int32_t>(state.range(0));
    std::vector<signed char> chunk(static_cast<size_t>(request));
    for (auto _ : state) {
        qv::Reference<FileInputStream> file = qv::makeReference<FileInputStream>(name(files().source));
        qv::Reference<BufferedInputStream> in = qv::makeReference<BufferedInputStream>(file.get(), kBuffer);
        qv::Reference<FileOutputStream> sink = qv::makeReference<FileOutputStream>(name(files().copy));
        qv::Reference<BufferedOutputStream> out = qv::makeReference<BufferedOutputStream>(sink.get(), kBuffer);
        for (int32_t n; (n = in->read(chunk.data(), request)) > 0;)
            out->write(chunk.data(), n);
        out->close();
        in->close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileBytes()));
}

void copyStd(benchmark::State& state)
{
    const size_t request = static_cast<size_t>(state.range(0));
    std::vector<char> chunk(request), inBuffer(kBuffer), outBuffer(kBuffer);
    for (auto _ : state) {
        std::ifstream in;
        in.rdbuf()->pubsetbuf(inBuffer.data(), kBuffer);
        in.open(files().source, std::ios::binary);
        std::ofstream out;
        out.rdbuf()->pubsetbuf(outBuffer.data(), kBuffer);
        out.open(files().copy, std::ios::binary | std::ios::trunc);
        while (in.read(chunk.data(), static_cast<std::streamsize>(request)) || in.gcount() > 0)
            out.write(chunk.data(), in.gcount());
        out.close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileBytes()));
}

void copyPoco(benchmark::State& state)
{
    const size_t request = static_cast<size_t>(state.range(0));
    std::vector<char> chunk(request);
    for (auto _ : state) {
        Poco::FileInputStream in(files().source, std::ios::in | std::ios::binary);
        Poco::FileOutputStream out(files().copy, std::ios::out | std::ios::binary | std::ios::trunc);
        while (in.read(chunk.data(), static_cast<std::streamsize>(request)) || in.gcount() > 0)
            out.write(chunk.data(), in.gcount());
        out.close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileBytes()));
}

void dataQv(benchmark::State& state)
{
    int64_t sum = 0;
    for (auto _ : state) {
        qv::Reference<ByteArrayOutputStream> bytes = qv::makeReference<ByteArrayOutputStream>(kInts * 4);
        {
            DataOutputStream out(bytes.get());
            for (int i = 0; i < kInts; ++i)
                out.writeInt32(i * 2654435761u);
        }
        qv::Reference<ByteArrayInputStream> source =
            qv::makeReference<ByteArrayInputStream>(bytes->getData(), bytes->size());
        DataInputStream in(source.get());
        for (int i = 0; i < kInts; ++i)
            sum += in.readInt32();
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * kInts);
}

void dataPoco(benchmark::State& state)
{
    int64_t sum = 0;
    std::vector<char> memory(static_cast<size_t>(kInts) * 4);
    for (auto _ : state) {
        {
            Poco::MemoryOutputStream stream(memory.data(), memory.size());
            Poco::BinaryWriter out(stream, Poco::BinaryWriter::BIG_ENDIAN_BYTE_ORDER);
            for (int i = 0; i < kInts; ++i)
                out << static_cast<int32_t>(i * 2654435761u);
            out.flush();
        }
        Poco::MemoryInputStream stream(memory.data(), memory.size());
        Poco::BinaryReader in(stream, Poco::BinaryReader::BIG_ENDIAN_BYTE_ORDER);
        for (int i = 0; i < kInts; ++i) {
            int32_t value;
            in >> value;
            sum += value;
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * kInts);
}

const std::vector<signed char>& alphaNumInput()
{
    static const std::vector<signed char> bytes = randomBytes(kAlphaNumBytes);
    return bytes;
}

const std::string& alphaNumText()
{
    static const std::string text = [] {
        qv::Reference<ByteArrayOutputStream> out = qv::makeReference<ByteArrayOutputStream>(kAlphaNumBytes * 8 / 5 + 8);
        AlphaNumOutputStream encoder(out.get());
        encoder.write(alphaNumInput().data(), static_cast<int32_t>(kAlphaNumBytes));
        encoder.flush();
        return std::string(out->getData(), out->getData() + out->size());
    }();
    return text;
}

const std::string& base32Text()
{
    static const std::string text = [] {
        std::ostringstream out;
        Poco::Base32Encoder encoder(out);
        encoder.write(reinterpret_cast<const char*>(alphaNumInput().data()), kAlphaNumBytes);
        encoder.close();
        return out.str();
    }();
    return text;
}

void encodeQv(benchmark::State& state)
{
    qv::Reference<ByteArrayOutputStream> out = qv::makeReference<ByteArrayOutputStream>(kAlphaNumBytes * 8 / 5 + 8);
    for (auto _ : state) {
        out->clear();
        AlphaNumOutputStream encoder(out.get());
        for (size_t done = 0; done < kAlphaNumBytes; done += kBuffer)
            encoder.write(alphaNumInput().data() + done, kBuffer);
        encoder.flush();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

void encodePoco(benchmark::State& state)
{
    std::vector<char> memory(kAlphaNumBytes * 8 / 5 + 64);
    for (auto _ : state) {
        Poco::MemoryOutputStream out(memory.data(), memory.size());
        Poco::Base32Encoder encoder(out);
        for (size_t done = 0; done < kAlphaNumBytes; done += kBuffer)
            encoder.write(reinterpret_cast<const char*>(alphaNumInput().data()) + done, kBuffer);
        encoder.close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

void decodeQv(benchmark::State& state)
{
    const std::string& text = alphaNumText();
    std::vector<signed char> chunk(kBuffer);
    int64_t total = 0;
    for (auto _ : state) {
        qv::Reference<ByteArrayInputStream> source =
            qv::makeReference<ByteArrayInputStream>(text.data(), static_cast<int32_t>(text.size()));
        AlphaNumInputStream decoder(source.get());
        for (int32_t n; (n = decoder.read(chunk.data(), kBuffer)) > 0;)
            total += n;
    }
    benchmark::DoNotOptimize(total);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

void decodePoco(benchmark::State& state)
{
    const std::string& text = base32Text();
    std::vector<char> chunk(kBuffer);
    int64_t total = 0;
    for (auto _ : state) {
        Poco::MemoryInputStream source(text.data(), text.size());
        Poco::Base32Decoder decoder(source);
        while (decoder.read(chunk.data(), kBuffer) || decoder.gcount() > 0)
            total += decoder.gcount();
    }
    benchmark::DoNotOptimize(total);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

// File to file, as a program would do it: the whole 64 MiB file encoded
// (or the text decoded) through file streams.
void fileEncodeQv(benchmark::State& state)
{
    const std::string input = files().dir + "/alnum.bin";
    std::vector<signed char> chunk(kBuffer);
    for (auto _ : state) {
        qv::Reference<FileInputStream> in = qv::makeReference<FileInputStream>(name(input));
        qv::Reference<FileOutputStream> file = qv::makeReference<FileOutputStream>(name(files().text));
        qv::Reference<BufferedOutputStream> buffered = qv::makeReference<BufferedOutputStream>(file.get(), kBuffer);
        qv::Reference<AlphaNumOutputStream> out = qv::makeReference<AlphaNumOutputStream>(buffered.get());
        for (int32_t n; (n = in->read(chunk.data(), kBuffer)) > 0;)
            out->write(chunk.data(), n);
        out->close();
        in->close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

void fileDecodeQv(benchmark::State& state)
{
    std::vector<signed char> chunk(kBuffer);
    for (auto _ : state) {
        state.PauseTiming();
        std::ofstream(files().text, std::ios::binary) << alphaNumText();
        state.ResumeTiming();
        qv::Reference<FileInputStream> file = qv::makeReference<FileInputStream>(name(files().text));
        qv::Reference<BufferedInputStream> buffered = qv::makeReference<BufferedInputStream>(file.get(), kBuffer);
        qv::Reference<AlphaNumInputStream> in = qv::makeReference<AlphaNumInputStream>(buffered.get());
        qv::Reference<FileOutputStream> out = qv::makeReference<FileOutputStream>(name(files().copy));
        for (int32_t n; (n = in->read(chunk.data(), kBuffer)) > 0;)
            out->write(chunk.data(), n);
        out->close();
        in->close();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

// The CPU time of the finished child processes, in milliseconds: a process
// run through system() does not show in the benchmark's own CPU column.
double childCpuMs()
{
    rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

void fileEncodeCoreutils(benchmark::State& state)
{
    const std::string command = "base32 -w0 " + files().dir + "/alnum.bin > " + files().text;
    const double before = childCpuMs();
    for (auto _ : state)
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("base32 failed");
    state.counters["child_cpu_ms"] = (childCpuMs() - before) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

void fileDecodeCoreutils(benchmark::State& state)
{
    const std::string encoded = files().dir + "/alnum.b32";
    if (std::system(("base32 -w0 " + files().dir + "/alnum.bin > " + encoded).c_str()) != 0)
        state.SkipWithError("base32 failed");
    const std::string command = "base32 -d " + encoded + " > " + files().copy;
    const double before = childCpuMs();
    for (auto _ : state)
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("base32 -d failed");
    state.counters["child_cpu_ms"] = (childCpuMs() - before) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kAlphaNumBytes));
}

} // namespace

BENCHMARK(copyQv)
    ->Name("FileCopy/qvcl3")
    ->Arg(64 << 10)
    ->Arg(4 << 10)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(copyStd)
    ->Name("FileCopy/std_fstream")
    ->Arg(64 << 10)
    ->Arg(4 << 10)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(copyPoco)
    ->Name("FileCopy/poco")
    ->Arg(64 << 10)
    ->Arg(4 << 10)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(dataQv)->Name("Int32x16M/qvcl3_DataStreams")->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(dataPoco)
    ->Name("Int32x16M/poco_BinaryWriterReader")
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(encodeQv)->Name("Encode64MiB/qvcl3_AlphaNum")->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(encodePoco)->Name("Encode64MiB/poco_Base32")->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(decodeQv)->Name("Decode64MiB/qvcl3_AlphaNum")->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(decodePoco)->Name("Decode64MiB/poco_Base32")->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(fileEncodeQv)
    ->Name("FileEncode64MiB/qvcl3_AlphaNum")
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(fileEncodeCoreutils)
    ->Name("FileEncode64MiB/coreutils_base32")
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(fileDecodeQv)
    ->Name("FileDecode64MiB/qvcl3_AlphaNum")
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(fileDecodeCoreutils)
    ->Name("FileDecode64MiB/coreutils_base32")
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

BENCHMARK_MAIN();
