#ifndef QV_SRC_I18N_PROPERTIESPARSER_H
#define QV_SRC_I18N_PROPERTIESPARSER_H

#include <qv/lang/String.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace qv {
namespace i18n {
namespace detail {

// Reads a properties file (UTF-8, an optional byte-order mark) into key/text
// pairs in file order; a later key replaces an earlier one when the caller
// stores them. Throws BundleFormatException naming file. This is the only
// place bundle files are parsed, so a shared properties reader can replace
// it in one call.
void parseProperties(const char* data, size_t size, const String& file, std::vector<std::pair<String, String>>& out);

} // namespace detail
} // namespace i18n
} // namespace qv

#endif
