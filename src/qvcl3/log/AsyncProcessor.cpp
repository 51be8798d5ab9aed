#include <qv/log/AsyncProcessor.h>

#include <qv/core/Exception.h>
#include <qv/exec/Thread.h>

#include "LockHolder.h"

#include <algorithm>
#include <cstdint>
#include <new>

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

namespace {

// Set as a batch's next by the drain: every entry left in it is the drain's,
// and a worker's later claims (each adding one) stay far beyond any count.
constexpr size_t kClosed = SIZE_MAX / 2;
// A few microseconds of reading one word: about what a producer takes for
// a handful of entries.
constexpr int kSpinsBeforeWaiting = 2048;

} // namespace

AsyncProcessorImpl::AsyncProcessorImpl(ILogProcessor* target, int32_t threads)
    : m_target(target), m_lock("qv/log/AsyncProcessorImpl::m_lock"), m_signal(0, "qv/log/AsyncProcessorImpl::m_signal"),
      m_threads(threads)
{
    if (threads > 0)
        m_batches.reset(new Batch[static_cast<size_t>(threads)]);
}

AsyncProcessorImpl::~AsyncProcessorImpl() = default;

void AsyncProcessorImpl::enqueue(const ILogEntry* entry)
{
    bool wake;
    {
        LockHolder hold(m_lock);
        m_queue.emplace_back(entry);
        // Only ever changed under the lock: a plain store, not a locked add.
        m_enqueued.store(m_enqueued.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        // A busy worker comes back for the entry by itself: the semaphore
        // (a call into the platform) is posted only for one that waits.
        wake = m_idle > 0;
        if (wake)
            --m_idle;
    }
    if (wake)
        m_signal.signal();
}

bool AsyncProcessorImpl::takeBatch(Batch& batch, bool idleIfEmpty, bool& wake)
{
    // Checked under the lock as well: once the drain has run, nothing is
    // taken, and an entry queued before it is the drain's to deliver.
    if (m_stop.load(std::memory_order_acquire))
        return false;
    batch.count = 0;
    if (m_queue.empty()) {
        // Counted under the lock, so an entry queued from now on posts the
        // semaphore for this worker, even before it waits.
        if (idleIfEmpty)
            ++m_idle;
        return true;
    }
    // One worker takes everything: the lock is taken once per batch, not
    // once per entry, and the swap allocates nothing (the emptied deque the
    // worker hands back keeps its first block for the producers). Several
    // share the queue out, each taking its part.
    const size_t share = (m_queue.size() + static_cast<size_t>(m_threads) - 1) / static_cast<size_t>(m_threads);
    bool whole = share == m_queue.size();
    if (!whole) {
        try {
            // The only allocation comes first: if it fails, nothing has
            // left the queue, and the whole of it is taken instead.
            batch.entries.resize(share);
        } catch (const std::bad_alloc&) {
            batch.entries.clear();
            whole = true;
        }
        if (!whole) {
            const auto end = m_queue.begin() + static_cast<std::ptrdiff_t>(share);
            std::move(m_queue.begin(), end, batch.entries.begin());
            m_queue.erase(m_queue.begin(), end);
        }
    }
    if (whole)
        batch.entries.swap(m_queue);
    batch.count = batch.entries.size();
    batch.taken = ++m_batchesTaken;
    batch.next.store(0, std::memory_order_relaxed);
    wake = !m_queue.empty() && m_idle > 0;
    if (wake)
        --m_idle;
    return true;
}

void AsyncProcessorImpl::giveBack(Batch& batch)
{
    bool wake = false;
    {
        LockHolder hold(m_lock);
        const size_t from = batch.next.load(std::memory_order_relaxed);
        if (from >= batch.count)
            return;
        try {
            const auto first = batch.entries.begin() + static_cast<std::ptrdiff_t>(from);
            m_queue.insert(m_queue.begin(), first, batch.entries.end());
        } catch (const std::bad_alloc&) {
            // Left in the batch, where the drain still finds them.
            return;
        }
        batch.next.store(kClosed, std::memory_order_relaxed);
        batch.entries.clear();
        wake = m_idle > 0;
        if (wake)
            --m_idle;
    }
    if (wake)
        m_signal.signal();
}

void AsyncProcessorImpl::run()
{
    const int32_t slot = m_started.fetch_add(1, std::memory_order_relaxed);
    if (slot >= m_threads)
        return;
    Batch& batch = m_batches[static_cast<size_t>(slot)];
    bool idleIfEmpty = false;
    for (;;) {
        if (m_stop.load(std::memory_order_acquire))
            return;
        bool wake = false;
        uint32_t enqueued;
        {
            LockHolder hold(m_lock);
            if (!takeBatch(batch, idleIfEmpty, wake))
                return;
            enqueued = m_enqueued.load(std::memory_order_relaxed);
        }
        if (wake)
            m_signal.signal();
        const size_t count = batch.count;
        if (count == 0) {
            if (idleIfEmpty) {
                idleIfEmpty = false;
                m_signal.wait();
                continue;
            }
            // A worker that has just caught up watches the queue a moment
            // before it sleeps: a producer logging steadily then finds it
            // awake, and does not pay for a semaphore post (a wake-up in
            // the kernel) after every batch.
            for (int spin = 0; spin < kSpinsBeforeWaiting; ++spin) {
                if (m_enqueued.load(std::memory_order_relaxed) != enqueued)
                    break;
            }
            idleIfEmpty = m_enqueued.load(std::memory_order_relaxed) == enqueued;
            continue;
        }
        idleIfEmpty = false;
        size_t claimed;
        while ((claimed = batch.next.fetch_add(1, std::memory_order_acq_rel)) < count) {
            Reference<const ILogEntry> entry = std::move(batch.entries[claimed]);
            try {
                m_target->process(entry.get());
            } catch (...) {
                // This worker is lost; the entries after this one go back
                // to the others.
                giveBack(batch);
                throw;
            }
        }
        // Past the drain's mark the drain owns what is left and may still
        // be reading it; otherwise every entry was this worker's and the
        // emptied slots can go without the lock.
        if (claimed < kClosed)
            batch.entries.clear();
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
    // From here no worker takes anything: it tests the stop flag under the
    // lock first, so no entry is delivered twice. A worker inside the target
    // goes on with the entry it holds; what it took with it and has not
    // started on is delivered here, batches in the order they were taken,
    // then the queue. Nothing here allocates: the destructor that runs this
    // must not fail for want of memory.
    for (;;) {
        // The earliest batch not yet closed; a few workers at most, so a
        // scan per batch costs less than sorting them into new memory.
        Batch* earliest = nullptr;
        for (int32_t i = 0; i < m_threads; ++i) {
            Batch& batch = m_batches[static_cast<size_t>(i)];
            if (batch.next.load(std::memory_order_relaxed) < kClosed && (!earliest || batch.taken < earliest->taken))
                earliest = &batch;
        }
        if (!earliest)
            break;
        const size_t count = earliest->count;
        for (size_t i = earliest->next.exchange(kClosed, std::memory_order_acq_rel); i < count; ++i)
            m_target->process(earliest->entries[i].get());
    }
    // By index: the lock is recursive, and an entry queued from inside the
    // target in this thread is delivered too instead of breaking the walk.
    for (size_t i = 0; i < m_queue.size(); ++i)
        m_target->process(m_queue[i].get());
    m_queue.clear();
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
    // Refused here, in the caller's thread: queued, it would fail in a worker.
    if (!entry)
        throw ResultException(results::POINTER);
    m_impl->enqueue(entry);
}

} // namespace log
} // namespace qv
