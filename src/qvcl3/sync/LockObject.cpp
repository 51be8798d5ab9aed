#include <qv/sync/LockObject.h>

namespace qv {
namespace sync {

LockObject::~LockObject() noexcept(false) = default;

} // namespace sync
} // namespace qv
