#include <qv/net/ITransport.h>

namespace qv {
namespace net {

ITransport::~ITransport() noexcept(false) = default;

} // namespace net
} // namespace qv
