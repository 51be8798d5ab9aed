#ifndef QV_SYNC_OBJECT_H
#define QV_SYNC_OBJECT_H

#include <qv/core/Object.h>

namespace qv {
namespace sync {

// Something a thread can wait for. Copying copies only the qv::Object part:
// no platform handle is shared or duplicated by the base classes.
class QV_EXPORT Object : public qv::Object {
public:
    Object() noexcept = default;
    Object(const Object& other) noexcept = default;
    Object& operator=(const Object& other) noexcept = default;
    ~Object() noexcept(false) override;

    virtual void wait() = 0;
    virtual bool tryWait() = 0;
};

} // namespace sync
} // namespace qv

#endif
