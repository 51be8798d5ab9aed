#include <qv/exec/Thread.h>
#include <qv/ipc/SemaphoreR.h>

namespace qv {
namespace ipc {

SemaphoreR::SemaphoreR(const char* name, unsigned long initialCount, sync::Mutex* mutex)
    : Semaphore(name, initialCount), m_ownMutex(mutex ? nullptr : new sync::Mutex("qv::ipc::SemaphoreR::m_mutex")),
      m_mutex(mutex ? mutex : m_ownMutex.get())
{}

SemaphoreR::~SemaphoreR() noexcept(false) = default;

uint32_t SemaphoreR::getDepth() const noexcept
{
    // Only the holder may read its own depth without a race; others see 0.
    return m_owner.load(std::memory_order_relaxed) == exec::Thread::getCurrentID() ? m_depth : 0;
}

// Only the holder itself can find its own id here: no other thread stores it.
void SemaphoreR::wait()
{
    const uint32_t self = exec::Thread::getCurrentID();
    if (m_owner.load(std::memory_order_relaxed) == self) {
        ++m_depth;
        return;
    }
    m_mutex->wait();
    try {
        Semaphore::wait();
    } catch (...) {
        m_mutex->signal();
        throw;
    }
    m_depth = 1;
    m_owner.store(self, std::memory_order_relaxed);
}

bool SemaphoreR::tryWait()
{
    const uint32_t self = exec::Thread::getCurrentID();
    if (m_owner.load(std::memory_order_relaxed) == self) {
        ++m_depth;
        return true;
    }
    if (!m_mutex->tryWait())
        return false;
    if (!Semaphore::tryWait()) {
        m_mutex->signal();
        return false;
    }
    m_depth = 1;
    m_owner.store(self, std::memory_order_relaxed);
    return true;
}

void SemaphoreR::signal()
{
    const uint32_t self = exec::Thread::getCurrentID();
    if (m_owner.load(std::memory_order_relaxed) != self) {
        Semaphore::signal();
        return;
    }
    if (m_depth > 1) {
        --m_depth;
        return;
    }
    // The count goes back first: if that fails, the holder still holds.
    Semaphore::signal();
    m_depth = 0;
    m_owner.store(0, std::memory_order_relaxed);
    m_mutex->signal();
}

} // namespace ipc
} // namespace qv
