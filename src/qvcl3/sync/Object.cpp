#include <qv/sync/Object.h>

namespace qv {
namespace sync {

Object::~Object() noexcept(false) = default;

} // namespace sync
} // namespace qv
