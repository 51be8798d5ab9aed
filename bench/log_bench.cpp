// Logging against spdlog and POCO, in one run, a 60-byte text with two
// integer arguments per entry:
// - caller cost through an asynchronous stage with one worker and a target
//   that writes nowhere: Logger -> AsyncProcessor(1) -> BasicLogWriter ->
//   NullWriter, spdlog's async_logger (thread pool of one, its default
//   queue of 8192 with the blocking policy) over a null sink, and POCO's
//   Logger -> AsyncChannel -> NullChannel; 1 and 4 producer threads. Each
//   producer makes QVBENCH_LOG_CALLS calls (default 50 000): the queues of
//   the library and of POCO have no bound, so the count is fixed to keep
//   their memory in hand. The time is the callers' wall time per call. The
//   LogCallerPreformatted rows log a text made once before the loop.
// - end to end into a file, flushed after every entry, in the caller's
//   thread: Logger -> BasicLogWriter -> FileWriter (UTF-8), spdlog's
//   basic_file_sink_mt with flush_on(trace), POCO's FileChannel with
//   flush = true.
// The library's Logger() carries the fields "level" and "text"; spdlog and
// POCO stamp each message with the time as well.

#include <qv/qvcl3.h>

#include <Poco/AsyncChannel.h>
#include <Poco/AutoPtr.h>
#include <Poco/FileChannel.h>
#include <Poco/Format.h>
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>

#include <spdlog/async.h>
#include <spdlog/async_logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <unistd.h>

namespace {

// 60 bytes once both numbers are filled in (5 and 6 digits).
const char16_t* const kQvPattern = u"request {0} served from cache shard {1} in time, all good";
const char* const kSpdPattern = "request {} served from cache shard {} in time, all good";
const char* const kPocoPattern = "request %d served from cache shard %d in time, all good";
constexpr int kFirst = 12345, kSecond = 678901;

int64_t callsPerThread()
{
    const char* calls = std::getenv("QVBENCH_LOG_CALLS");
    return calls ? std::atoll(calls) : 50000;
}

std::string tempFile(const char* stem)
{
    return std::string("/tmp/qvbench_log_") + stem + "_" + std::to_string(getpid()) + ".log";
}

// The chain a benchmark's threads share, made before the run and torn down
// after it, so that draining the queues is not timed.
template <class Chain>
struct Shared {
    static std::unique_ptr<Chain>& get()
    {
        static std::unique_ptr<Chain> chain;
        return chain;
    }
    static void setUp(const benchmark::State&) { get().reset(new Chain()); }
    static void tearDown(const benchmark::State&) { get().reset(); }
};

struct QvAsync {
    qv::Reference<qv::log::Logger> logger = qv::log::Logger::create();
    qv::Reference<qv::log::AsyncProcessor> async;
    QvAsync()
    {
        qv::Reference<qv::io::NullWriter> nowhere(new qv::io::NullWriter());
        // Writers take no lock, and the teardown drains the queue while the
        // worker may still be writing: a MultiProcessor serialises the two.
        qv::Reference<qv::log::MultiProcessor> serial = qv::log::MultiProcessor::create();
        serial->addProcessor(qv::log::BasicLogWriter::create(nowhere.get()).get());
        async = qv::log::AsyncProcessor::create(serial.get(), 1);
        logger->addProcessor(async.get());
    }
};

// The timed loop of the library's benchmarks: format, then log.
void logEachIteration(benchmark::State& state, qv::log::Logger* logger)
{
    const qv::String first = qv::String::valueOf(kFirst), second = qv::String::valueOf(kSecond);
    for (auto _ : state) {
        qv::String text;
        text.format(kQvPattern, -1, first, second);
        logger->log(3, text);
    }
    state.SetItemsProcessed(state.iterations());
}

void LogCallerQvAsync(benchmark::State& state)
{
    logEachIteration(state, Shared<QvAsync>::get()->logger.get());
}

// The same text made once before the loop: the logging path alone, without
// the caller's formatting (each library's formatting differs more than its
// logging does).
void LogCallerPreformattedQvAsync(benchmark::State& state)
{
    qv::log::Logger* logger = Shared<QvAsync>::get()->logger.get();
    qv::String text;
    text.format(kQvPattern, -1, qv::String::valueOf(kFirst), qv::String::valueOf(kSecond));
    for (auto _ : state)
        logger->log(3, text);
    state.SetItemsProcessed(state.iterations());
}

struct SpdAsync {
    std::shared_ptr<spdlog::details::thread_pool> pool = std::make_shared<spdlog::details::thread_pool>(8192, 1);
    std::shared_ptr<spdlog::async_logger> logger = std::make_shared<spdlog::async_logger>(
        "async", std::make_shared<spdlog::sinks::null_sink_mt>(), pool, spdlog::async_overflow_policy::block);
};

void LogCallerSpdlogAsync(benchmark::State& state)
{
    spdlog::async_logger* logger = Shared<SpdAsync>::get()->logger.get();
    for (auto _ : state)
        logger->info(kSpdPattern, kFirst, kSecond);
    state.SetItemsProcessed(state.iterations());
}

void LogCallerPreformattedSpdlogAsync(benchmark::State& state)
{
    spdlog::async_logger* logger = Shared<SpdAsync>::get()->logger.get();
    const std::string text = fmt::format(kSpdPattern, kFirst, kSecond);
    for (auto _ : state)
        logger->info(spdlog::string_view_t(text));
    state.SetItemsProcessed(state.iterations());
}

struct PocoAsync {
    Poco::AutoPtr<Poco::AsyncChannel> async{new Poco::AsyncChannel(new Poco::NullChannel())};
    Poco::Logger& logger =
        Poco::Logger::create("bench.async." + std::to_string(++s_made), async, Poco::Message::PRIO_TRACE);
    ~PocoAsync() { async->close(); }
    static int s_made;
};
int PocoAsync::s_made = 0;

void LogCallerPocoAsync(benchmark::State& state)
{
    Poco::Logger& logger = Shared<PocoAsync>::get()->logger;
    for (auto _ : state)
        logger.information(Poco::format(kPocoPattern, kFirst, kSecond));
    state.SetItemsProcessed(state.iterations());
}

void LogCallerPreformattedPocoAsync(benchmark::State& state)
{
    Poco::Logger& logger = Shared<PocoAsync>::get()->logger;
    const std::string text = Poco::format(kPocoPattern, kFirst, kSecond);
    for (auto _ : state)
        logger.information(text);
    state.SetItemsProcessed(state.iterations());
}

void FileQvBasic(benchmark::State& state)
{
    const std::string path = tempFile("qv");
    {
        qv::Reference<qv::io::FileWriter> file(new qv::io::FileWriter(qv::String(path.c_str()), false, u"UTF-8"));
        qv::Reference<qv::log::Logger> logger = qv::log::Logger::create();
        logger->addProcessor(qv::log::BasicLogWriter::create(file.get()).get());
        logEachIteration(state, logger.get());
    }
    std::remove(path.c_str());
}

void FileSpdlogBasic(benchmark::State& state)
{
    const std::string path = tempFile("spdlog");
    {
        auto logger =
            std::make_shared<spdlog::logger>("file", std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true));
        logger->flush_on(spdlog::level::trace);
        for (auto _ : state)
            logger->info(kSpdPattern, kFirst, kSecond);
    }
    state.SetItemsProcessed(state.iterations());
    std::remove(path.c_str());
}

void FilePocoChannel(benchmark::State& state)
{
    static int made = 0;
    const std::string path = tempFile("poco");
    {
        Poco::AutoPtr<Poco::FileChannel> channel(new Poco::FileChannel(path));
        channel->setProperty("flush", "true");
        Poco::Logger& logger =
            Poco::Logger::create("bench.file." + std::to_string(++made), channel, Poco::Message::PRIO_TRACE);
        for (auto _ : state)
            logger.information(Poco::format(kPocoPattern, kFirst, kSecond));
        channel->close();
    }
    state.SetItemsProcessed(state.iterations());
    std::remove(path.c_str());
}

// The caller benchmarks: 1 and 4 producers, a fixed number of calls each.
template <class Chain>
void registerCallerBenchmark(const char* name, void (*body)(benchmark::State&))
{
    benchmark::RegisterBenchmark(name, body)
        ->Setup(Shared<Chain>::setUp)
        ->Teardown(Shared<Chain>::tearDown)
        ->Threads(1)
        ->Threads(4)
        ->Iterations(callsPerThread())
        ->UseRealTime();
}

[[maybe_unused]] const int g_registered =
    (registerCallerBenchmark<QvAsync>("LogCallerQvAsync", LogCallerQvAsync),
     registerCallerBenchmark<SpdAsync>("LogCallerSpdlogAsync", LogCallerSpdlogAsync),
     registerCallerBenchmark<PocoAsync>("LogCallerPocoAsync", LogCallerPocoAsync),
     registerCallerBenchmark<QvAsync>("LogCallerPreformattedQvAsync", LogCallerPreformattedQvAsync),
     registerCallerBenchmark<SpdAsync>("LogCallerPreformattedSpdlogAsync", LogCallerPreformattedSpdlogAsync),
     registerCallerBenchmark<PocoAsync>("LogCallerPreformattedPocoAsync", LogCallerPreformattedPocoAsync), 0);

} // namespace

BENCHMARK(FileQvBasic)->UseRealTime();
BENCHMARK(FileSpdlogBasic)->UseRealTime();
BENCHMARK(FilePocoChannel)->UseRealTime();

BENCHMARK_MAIN();
