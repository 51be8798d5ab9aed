#ifndef QV_UTIL_SINGLETON_H
#define QV_UTIL_SINGLETON_H

#include <qv/sync/LockObject.h>

#include <atomic>

namespace qv {
namespace util {

// A lazily created process-wide instance of T, created under the lock that
// Lock points to. The instance is tested before and again after taking the
// lock, so the common path takes no lock at all.
template <class T, sync::LockObject** Lock>
class Singleton {
public:
    static T* getInstance()
    {
        T* instance = m_instance.load(std::memory_order_acquire);
        if (instance)
            return instance;
        sync::LockObject* lock = *Lock;
        if (lock)
            lock->wait();
        instance = m_instance.load(std::memory_order_relaxed);
        if (!instance) {
            try {
                instance = new T();
            } catch (...) {
                if (lock)
                    lock->signal();
                throw;
            }
            m_instance.store(instance, std::memory_order_release);
        }
        if (lock)
            lock->signal();
        return instance;
    }

    static void freeInstance() { delete m_instance.exchange(nullptr, std::memory_order_acq_rel); }

    static bool hasInstance() noexcept { return m_instance.load(std::memory_order_acquire) != nullptr; }

private:
    static std::atomic<T*> m_instance;
};

template <class T, sync::LockObject** Lock>
std::atomic<T*> Singleton<T, Lock>::m_instance{nullptr};

} // namespace util
} // namespace qv

#endif
