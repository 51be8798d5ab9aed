#ifndef QVCL3_CORE_RECYCLEDBLOCKS_H
#define QVCL3_CORE_RECYCLEDBLOCKS_H

#include <qvcore3/qvcore3.h>

#include <atomic>
#include <cstddef>
#include <mutex>
#include <new>

namespace qv {
namespace detail {

// Memory blocks of one size, recycled across threads. Made for objects that
// one thread creates and another destroys (a log entry and its boxed values,
// built by a caller and dropped by a queue's worker): handed to the general
// allocator, every such block would go back to the creator's arena under its
// lock, and the creator would take every new one from there under the same
// lock.
//
// Each thread keeps a short list of free blocks. A thread that frees more
// than it allocates passes them on in batches of BATCH through a shared
// stack; a thread whose list is empty takes a whole batch from there, so the
// shared lock is taken once per BATCH blocks, not once per block. At most
// MAX_BATCHES batches wait on the stack (about 512 KiB, and at least 32
// batches) and fewer than 2 x BATCH blocks on a thread's list; beyond that
// blocks go back to where they came from, as they do when a thread ends.
// While a queue between two threads grows and shrinks again, the blocks its
// consumer frees wait on the stack for the producer instead of crossing the
// allocator's arenas.
//
// Fresh blocks come from Source::allocate(size), spare ones go back through
// Source::release(block), and Source::failed() throws what a failed
// allocation throws: the general operator new and delete unless said
// otherwise. In builds with fault injection a recycled block handed out
// counts as an allocation that may be made to fail, so that a test sweeping
// allocation failures meets every block, fresh or recycled.
struct GlobalNew {
    static void* allocate(size_t size) { return ::operator new(size); }
    static void release(void* block) noexcept { ::operator delete(block); }
    [[noreturn]] static void failed()
    {
        if (std::new_handler handler = std::get_new_handler())
            handler();
        throw std::bad_alloc();
    }
};

template <size_t Size, class Source = GlobalNew>
class RecycledBlocks {
public:
    static constexpr size_t BATCH = 32;
    static constexpr size_t MAX_BATCHES = 512 * 1024 / (BATCH * Size) > 32 ? 512 * 1024 / (BATCH * Size) : 32;

    // A block of Size bytes; what Source::allocate throws when a fresh one
    // is needed and there is none.
    static void* allocate()
    {
        Local& local = t_local;
        if (!local.head && !local.closed && Shared::instance().waiting.load(std::memory_order_relaxed) > 0) {
            if (Block* batch = Shared::instance().take()) {
                t_reaper.armed = true;
                local.head = batch;
                local.count = BATCH;
            }
        }
        if (!local.head)
            return Source::allocate(Size);
        if (injectedFailure())
            Source::failed();
        return local.pop();
    }

    // Takes back a block from allocate(), from any thread.
    static void release(void* memory) noexcept
    {
        Local& local = t_local;
        if (local.closed) {
            Source::release(memory);
            return;
        }
        if (local.count == 0)
            t_reaper.armed = true;
        Block* block = static_cast<Block*>(memory);
        block->next = local.head;
        local.head = block;
        if (++local.count < 2 * BATCH)
            return;
        Block* batch = local.split();
        if (!Shared::instance().give(batch))
            freeChain(batch);
    }

private:
    struct Block {
        Block* next;
        Block* nextBatch;
    };
    static_assert(Size >= sizeof(Block), "a block must hold its links");

    // Trivially destructible, so that it stays usable (closed) after the
    // thread's reaper has run, for blocks freed by later thread-exit code.
    struct Local {
        Block* head;
        size_t count;
        bool closed;

        void* pop() noexcept
        {
            Block* block = head;
            head = block->next;
            --count;
            return block;
        }
        // Detaches the first BATCH blocks as one chain.
        Block* split() noexcept
        {
            Block* batch = head;
            Block* last = batch;
            for (size_t i = 1; i < BATCH; ++i)
                last = last->next;
            head = last->next;
            last->next = nullptr;
            count -= BATCH;
            return batch;
        }
    };

    // Hands the thread's blocks on when the thread ends.
    struct Reaper {
        bool armed = false;
        ~Reaper()
        {
            Local& local = t_local;
            while (local.count >= BATCH) {
                Block* batch = local.split();
                if (!Shared::instance().give(batch))
                    freeChain(batch);
            }
            freeChain(local.head);
            local.head = nullptr;
            local.count = 0;
            local.closed = true;
        }
    };

    struct Shared {
        std::mutex lock;
        Block* top = nullptr;
        std::atomic<size_t> waiting{0};

        // Never destroyed: blocks may come back while the process exits.
        static Shared& instance() noexcept
        {
            alignas(Shared) static unsigned char storage[sizeof(Shared)];
            static Shared* const shared = new (storage) Shared();
            return *shared;
        }
        bool give(Block* batch) noexcept
        {
            std::lock_guard<std::mutex> hold(lock);
            if (waiting.load(std::memory_order_relaxed) >= MAX_BATCHES)
                return false;
            batch->nextBatch = top;
            top = batch;
            waiting.fetch_add(1, std::memory_order_relaxed);
            return true;
        }
        Block* take() noexcept
        {
            std::lock_guard<std::mutex> hold(lock);
            Block* batch = top;
            if (batch) {
                top = batch->nextBatch;
                waiting.fetch_sub(1, std::memory_order_relaxed);
            }
            return batch;
        }
    };

    static bool injectedFailure() noexcept
    {
        static const bool available = QVFaultInjectionAvailable() != 0;
        return available && QVFaultAllocationFires() != 0;
    }

    static void freeChain(Block* block) noexcept
    {
        while (block) {
            Block* next = block->next;
            Source::release(block);
            block = next;
        }
    }

    static thread_local Local t_local;
    static thread_local Reaper t_reaper;
};

template <size_t Size, class Source>
thread_local typename RecycledBlocks<Size, Source>::Local RecycledBlocks<Size, Source>::t_local{nullptr, 0, false};
template <size_t Size, class Source>
thread_local typename RecycledBlocks<Size, Source>::Reaper RecycledBlocks<Size, Source>::t_reaper;

// A class-level operator new and delete for T through the blocks of
// sizeof(T). A derived class's objects are larger and take the general
// allocator; a fresh block always comes from ::operator new, so its failure
// surfaces exactly as it would without the recycling.
template <class T>
void* allocateRecycled(size_t size)
{
    return size == sizeof(T) ? RecycledBlocks<sizeof(T)>::allocate() : ::operator new(size);
}

template <class T>
void releaseRecycled(void* block, size_t size) noexcept
{
    if (size == sizeof(T))
        RecycledBlocks<sizeof(T)>::release(block);
    else
        ::operator delete(block);
}

} // namespace detail
} // namespace qv

#endif
