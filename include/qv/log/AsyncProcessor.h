#ifndef QV_LOG_ASYNCPROCESSOR_H
#define QV_LOG_ASYNCPROCESSOR_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/exec/IRunnable.h>
#include <qv/log/ILogProcessor.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/Semaphore.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>

namespace qv {
namespace log {

// The queue and the worker body behind an AsyncProcessor. Each worker
// thread holds a reference on it, so it outlives the AsyncProcessor until
// the last worker has ended.
class QV_EXPORT AsyncProcessorImpl : public Object, public exec::IRunnable {
    QV_DECLARE_INTERFACE_MAP()

public:
    AsyncProcessorImpl(ILogProcessor* target, int32_t threads);
    ~AsyncProcessorImpl() override;
    AsyncProcessorImpl(const AsyncProcessorImpl&) = delete;
    AsyncProcessorImpl& operator=(const AsyncProcessorImpl&) = delete;

    // Queues the entry (taking a reference) and wakes one waiting worker.
    void enqueue(const ILogEntry* entry);
    // The worker loop: stop when told, else take a batch from the queue in
    // one lock and pass its entries on, or wait when there is none.
    void run() override;
    // Sets the stop flag, wakes every worker, then passes every entry still
    // queued, or taken by a worker but not yet started, to the target in
    // this thread, in order.
    void shutdown();

private:
    // What one worker took from the queue in one go. The worker and the
    // drain claim its entries one at a time through next, so that each is
    // passed on exactly once and the entries a worker has not started on
    // when shutdown begins are still delivered by the destroying thread.
    struct Batch {
        // Changed (filled, cleared) under m_lock, or by its worker once no
        // entry of it is left to claim; an element is moved out only by
        // whoever claimed it.
        std::deque<Reference<const ILogEntry>> entries;
        // Under m_lock: the size when taken, and when, for the drain's order.
        size_t count = 0;
        uint64_t taken = 0;
        std::atomic<size_t> next{0};
    };
    // Takes this worker's next batch, or counts it idle if asked to and
    // there is none; false when stopping. Under m_lock.
    bool takeBatch(Batch& batch, bool idleIfEmpty, bool& wake);
    // Puts the entries of the batch nobody claimed back at the front of the
    // queue (a worker leaving through an exception). Only a failing lock
    // throws, and that exception then leaves the worker instead.
    void giveBack(Batch& batch);

    Reference<ILogProcessor> m_target;
    sync::Mutex m_lock;
    sync::Semaphore m_signal;
    std::deque<Reference<const ILogEntry>> m_queue;
    int32_t m_threads;
    // Workers that found the queue empty and wait, or are about to; under
    // m_lock.
    int32_t m_idle = 0;
    // Entries ever queued (wrapping); changed under m_lock, read without it
    // by a worker that watches for more before it sleeps.
    std::atomic<uint32_t> m_enqueued{0};
    std::atomic<bool> m_stop{false};
    // One per worker thread; a worker finds its own through m_started.
    std::unique_ptr<Batch[]> m_batches;
    std::atomic<int32_t> m_started{0};
    uint64_t m_batchesTaken = 0;
};

// Queues entries and lets worker threads pass them to the target. process()
// never blocks on the target and never drops an entry: the queue has no
// bound. Destroying the processor wakes the workers, does not wait for them,
// and hands whatever is still queued, or taken by a worker and not yet
// started, to the target in the destroying thread, so the target may be
// called from that thread and a worker at once. With
// fewer than one thread every entry waits for the destruction.
class QV_EXPORT AsyncProcessor : public Object, public ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()

public:
    // ResultException 0x80070057 for a null target.
    AsyncProcessor(ILogProcessor* target, int32_t threads);
    ~AsyncProcessor() noexcept(false) override;
    AsyncProcessor(const AsyncProcessor&) = delete;
    AsyncProcessor& operator=(const AsyncProcessor&) = delete;

    static Reference<AsyncProcessor> create(ILogProcessor* target, int32_t threads);

    void process(const ILogEntry* entry) override;

private:
    Reference<AsyncProcessorImpl> m_impl;
};

} // namespace log
} // namespace qv

#endif
