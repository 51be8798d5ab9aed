#ifndef QV_LOG_LOCKHOLDER_H
#define QV_LOG_LOCKHOLDER_H

#include <qv/sync/LockObject.h>

namespace qv {
namespace log {

// Holds a lock for a scope, released also when the scope is left by an
// exception.
class LockHolder {
public:
    explicit LockHolder(sync::LockObject& lock) : m_lock(lock) { m_lock.wait(); }
    ~LockHolder() noexcept(false) { m_lock.signal(); }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

private:
    sync::LockObject& m_lock;
};

} // namespace log
} // namespace qv

#endif
