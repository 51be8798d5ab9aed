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
// stores them. The bytes are decoded here, strictly, so that an encoding
// fault has its byte offset; the syntax is util::PropertiesFormat's. Throws
// BundleFormatException naming file.
void parseProperties(const char* data, size_t size, const String& file, std::vector<std::pair<String, String>>& out);

} // namespace detail
} // namespace i18n
} // namespace qv

#endif
