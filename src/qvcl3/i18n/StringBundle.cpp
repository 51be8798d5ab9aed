#include <qv/i18n/StringBundle.h>

namespace qv {
namespace i18n {

StringBundle::StringBundle() = default;

StringBundle::~StringBundle() = default;

} // namespace i18n
} // namespace qv
