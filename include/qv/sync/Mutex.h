#ifndef QV_SYNC_MUTEX_H
#define QV_SYNC_MUTEX_H

#include <qv/sync/LockObject.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// A mutual-exclusion lock, recursive for its owning thread. name labels the
// lock for diagnostics (null: unnamed).
class QV_EXPORT Mutex : public LockObject {
public:
    explicit Mutex(const char* name = nullptr, unsigned flags = 0);
    // Throws ResultException when the platform fails to destroy the lock.
    ~Mutex() noexcept(false) override;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void wait() override;
    bool tryWait() override;
    void signal() override;

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
