#include "core/ClassTable.h"

#include <qv/i18n/BundleFormatException.h>
#include <qv/i18n/ComponentStringBundle.h>
#include <qv/i18n/ListStringBundle.h>
#include <qv/i18n/Locale.h>
#include <qv/i18n/LocaleFormat.h>
#include <qv/i18n/MissingResourceException.h>
#include <qv/i18n/StringBundle.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_i18nClassRows[] = {
    QV_CLASS_ROW(i18n::BundleFormatException),
    QV_CLASS_ROW_NO_CREATOR(i18n::ComponentStringBundle),
    QV_CLASS_ROW(i18n::ListStringBundle),
    QV_CLASS_ROW(i18n::Locale),
    QV_CLASS_ROW(i18n::LocaleFormat),
    QV_CLASS_ROW(i18n::MissingResourceException),
    QV_CLASS_ROW_NO_CREATOR(i18n::StringBundle),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
