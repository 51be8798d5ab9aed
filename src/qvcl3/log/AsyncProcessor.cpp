#include <qv/log/AsyncProcessor.h>

#include <qv/core/Exception.h>
#include <qv/exec/Thread.h>

#include "LockHolder.h"

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(AsyncProcessorImpl)
QV_INTERFACE_ENTRY(AsyncProcessorImpl, exec::IRunnable)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

QV_BEGIN_INTERFACE_MAP(AsyncProcessor)
QV_INTERFACE_ENTRY(AsyncProcessor, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AsyncProcessorImpl::AsyncProcessorImpl(ILogProcessor* target, int32_t threads)
    : m_target(target), m_lock("qv/log/AsyncProcessorImpl::m_lock"), m_signal(0, "qv/log/AsyncProcessorImpl::m_signal"),
      m_threads(threads)
{}

AsyncProcessorImpl::~AsyncProcessorImpl() = default;

void AsyncProcessorImpl::enqueue(const ILogEntry* entry)
{
    bool wake;
    {
        LockHolder hold(m_lock);
        m_queue.emplace_back(entry);
        // A busy worker comes back for the entry by itself: the semaphore
        // (a call into the platform) is posted only for one that waits.
        wake = m_idle > 0;
        if (wake)
            --m_idle;
    }
    if (wake)
        m_signal.signal();
}

void AsyncProcessorImpl::run()
{
    for (;;) {
        if (m_stop.load(std::memory_order_acquire))
            return;
        Reference<const ILogEntry> entry;
        {
            LockHolder hold(m_lock);
            if (m_queue.empty()) {
                // Counted under the lock, so an entry queued from now on
                // posts the semaphore for this worker, even before it waits.
                ++m_idle;
            } else {
                entry = std::move(m_queue.front());
                m_queue.pop_front();
            }
        }
        if (entry)
            m_target->process(entry.get());
        else
            m_signal.wait();
    }
}

void AsyncProcessorImpl::shutdown()
{
    m_stop.store(true, std::memory_order_release);
    // One post for each worker, waiting or not: a worker that has counted
    // itself idle but not yet waited must not sleep through the stop.
    for (int32_t i = 0; i < m_threads; ++i)
        m_signal.signal();
    LockHolder hold(m_lock);
    // The queue is emptied before the target sees the entries, so a worker
    // that passed its stop test just before the flag was set finds nothing
    // and no entry is delivered twice.
    std::deque<Reference<const ILogEntry>> pending;
    pending.swap(m_queue);
    for (const Reference<const ILogEntry>& entry : pending)
        m_target->process(entry.get());
}

AsyncProcessor::AsyncProcessor(ILogProcessor* target, int32_t threads)
{
    if (!target)
        throw ResultException(results::INVALIDARG);
    m_impl = new AsyncProcessorImpl(target, threads);
    try {
        for (int32_t i = 0; i < threads; ++i) {
            // Not kept: the thread detaches when this object goes and holds
            // its own reference on the implementation until run() returns.
            exec::Thread worker(m_impl.get());
            worker.start();
        }
    } catch (...) {
        // The workers already running would otherwise wait for ever.
        m_impl->shutdown();
        throw;
    }
}

AsyncProcessor::~AsyncProcessor() noexcept(false)
{
    Reference<AsyncProcessorImpl> impl = std::move(m_impl);
    if (impl)
        impl->shutdown();
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, int32_t threads)
{
    return Reference<AsyncProcessor>(new AsyncProcessor(target, threads));
}

void AsyncProcessor::process(const ILogEntry* entry)
{
    m_impl->enqueue(entry);
}

} // namespace log
} // namespace qv
