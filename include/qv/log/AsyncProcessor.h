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
    // The worker loop: stop when told, else pass the first entry on, or wait
    // when there is none.
    void run() override;
    // Sets the stop flag, wakes every worker, then passes every entry still
    // queued to the target in this thread, in order.
    void shutdown();

private:
    Reference<ILogProcessor> m_target;
    sync::Mutex m_lock;
    sync::Semaphore m_signal;
    std::deque<Reference<const ILogEntry>> m_queue;
    int32_t m_threads;
    // Workers that found the queue empty and wait, or are about to; under
    // m_lock.
    int32_t m_idle = 0;
    std::atomic<bool> m_stop{false};
};

// Queues entries and lets worker threads pass them to the target. process()
// never blocks on the target and never drops an entry: the queue has no
// bound. Destroying the processor wakes the workers, does not wait for them,
// and hands whatever is still queued to the target in the destroying thread,
// so the target may be called from that thread and a worker at once. With
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
