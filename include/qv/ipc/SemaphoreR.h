#ifndef QV_IPC_SEMAPHORER_H
#define QV_IPC_SEMAPHORER_H

#include <qv/ipc/Semaphore.h>
#include <qv/sync/Mutex.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace qv {
namespace ipc {

// A named semaphore used as a lock that its holding thread may take again.
//
// The rule: the first wait/tryWait of a thread takes the in-process mutex
// and then one count of the named semaphore; that thread is then the holder.
// Further waits by the holder only count up and never block. signal() by the
// holder counts down; the last one gives the count back and then the mutex.
// So at most one thread of this process holds it at a time, whatever the
// count; other threads of this process queue on the mutex, other processes
// on the named semaphore. signal() by a thread that is not the holder posts
// the semaphore like ipc::Semaphore and leaves the holder alone.
//
// mutex: the in-process lock, not owned (it must outlive this object); null
// makes the semaphore use one of its own. Give the same mutex to several
// SemaphoreR objects to keep one thread of this process inside all of them.
class QV_EXPORT SemaphoreR : public Semaphore {
public:
    SemaphoreR(const char* name, unsigned long initialCount, sync::Mutex* mutex = nullptr);
    ~SemaphoreR() noexcept(false) override;

    void wait() override;
    bool tryWait() override;
    void signal() override;

    // The holding thread's id (Thread::getCurrentID), 0 when none.
    uint32_t getOwner() const noexcept { return m_owner.load(std::memory_order_relaxed); }
    // How many times the holder has taken it; 0 when not held.
    uint32_t getDepth() const noexcept;

private:
    std::unique_ptr<sync::Mutex> m_ownMutex;
    sync::Mutex* m_mutex;
    std::atomic<uint32_t> m_owner{0};
    // Written only by the holder.
    uint32_t m_depth = 0;
};

} // namespace ipc
} // namespace qv

#endif
