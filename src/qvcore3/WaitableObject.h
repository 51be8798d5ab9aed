#ifndef QVCORE3_SRC_WAITABLEOBJECT_H
#define QVCORE3_SRC_WAITABLEOBJECT_H

#include "SyncCommon.h"

namespace qvcore3 {

// A lock and a monotonic condition around a state of the derived class: the
// common body of gates and events.
class WaitableObject : public SyncObject {
public:
    WaitableObject(Kind kind, const char* name) noexcept : SyncObject(kind, name) {}
    ~WaitableObject() override;

    QVRESULT init() noexcept;

    // Waits until ready() (called under the lock) is true, then runs taken()
    // under the lock. QV_E_TIMEOUT when the time runs out first; 0 ms only
    // looks.
    template <typename Ready, typename Taken>
    QVRESULT wait(uint32_t milliseconds, Ready ready, Taken taken) noexcept
    {
        pthread_mutex_lock(&m_mutex);
        int error = 0;
        if (milliseconds == kWaitForever) {
            while (!ready()) {
                pthread_cond_wait(&m_condition, &m_mutex);
            }
        } else if (milliseconds != 0) {
            const timespec deadline = MonotonicDeadline(milliseconds);
            while (!ready() && error != ETIMEDOUT) {
                error = pthread_cond_timedwait(&m_condition, &m_mutex, &deadline);
            }
        }
        const bool isReady = ready();
        if (isReady) {
            taken();
        }
        pthread_mutex_unlock(&m_mutex);
        return isReady ? QV_S_OK : QV_E_TIMEOUT;
    }

    // Runs change() under the lock, then wakes one waiter or all.
    template <typename Change>
    void update(Change change, bool wakeAll) noexcept
    {
        pthread_mutex_lock(&m_mutex);
        change();
        if (wakeAll) {
            pthread_cond_broadcast(&m_condition);
        } else {
            pthread_cond_signal(&m_condition);
        }
        pthread_mutex_unlock(&m_mutex);
    }

private:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    bool m_mutexReady = false;
    bool m_conditionReady = false;
};

} // namespace qvcore3

#endif
