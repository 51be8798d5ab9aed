#ifndef QV_SYNC_LOCKOBJECT_H
#define QV_SYNC_LOCKOBJECT_H

#include <qv/sync/Object.h>

namespace qv {
namespace sync {

// A lock: wait() takes it, signal() gives it back.
class QV_EXPORT LockObject : public Object {
public:
    LockObject() noexcept = default;
    LockObject(const LockObject& other) noexcept = default;
    LockObject& operator=(const LockObject& other) noexcept = default;
    ~LockObject() noexcept(false) override;

    virtual void signal() = 0;
};

} // namespace sync
} // namespace qv

#endif
