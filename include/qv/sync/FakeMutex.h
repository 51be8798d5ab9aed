#ifndef QV_SYNC_FAKEMUTEX_H
#define QV_SYNC_FAKEMUTEX_H

#include <qv/sync/LockObject.h>

namespace qv {
namespace sync {

// The lock to plug into lock-parameterised code that needs no locking.
class QV_EXPORT FakeMutex : public LockObject {
public:
    explicit FakeMutex(const char* name = nullptr, unsigned flags = 0) noexcept;
    ~FakeMutex() override;

    void wait() override;
    bool tryWait() override;
    void signal() override;
};

} // namespace sync
} // namespace qv

#endif
