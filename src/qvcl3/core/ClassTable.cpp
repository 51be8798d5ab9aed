#include "core/ClassTable.h"

#include <qv/core/ExternalException.h>

namespace qv {
namespace detail {

// The three Int...Exception classes are listed a second time on purpose, as
// the library always registered them: these later rows, without a creating
// function, lose to the first registration.
const ClassTableRow g_repeatedClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(IntDivByZeroException),
    QV_CLASS_ROW_NO_CREATOR(IntErrorException),
    QV_CLASS_ROW_NO_CREATOR(IntOverflowException),
    QV_CLASS_TABLE_END,
};

// A new area appends its fragment before the repeated rows. The CQV names
// come first: they sort before every "qv::" name.
// clang-format off
const ClassTableRow* const g_classTableFragments[] = {
    g_legacyClassRows,
    g_coreClassRows,
    g_langClassRows,
    g_mathClassRows,
    g_collectionsClassRows,
    g_syncClassRows,
    g_utilClassRows,
    g_ioClassRows,
    g_charsetClassRows,
    g_execClassRows,
    g_ipcClassRows,
    g_i18nClassRows,
    g_cryptoClassRows,
    g_netClassRows,
    g_logClassRows,
    g_repeatedClassRows,
    nullptr,
};
// clang-format on

} // namespace detail
} // namespace qv
