#include "core/ClassTable.h"

#include <qv/legacy/CQVAbstractByteBuffer.h>
#include <qv/legacy/CQVAbstractConnector.h>
#include <qv/legacy/CQVByteBuffer.h>
#include <qv/legacy/CQVCmdLineParser.h>
#include <qv/legacy/CQVProperty.h>
#include <qv/legacy/CQVPropertySet.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_legacyClassRows[] = {
    QV_CLASS_ROW_GLOBAL_NO_CREATOR(CQVAbstractByteBuffer),
    QV_CLASS_ROW_GLOBAL_NO_CREATOR(CQVAbstractConnector),
    QV_CLASS_ROW_GLOBAL(CQVByteBuffer),
    QV_CLASS_ROW_GLOBAL(CQVCmdLineParser),
    QV_CLASS_ROW_GLOBAL(CQVProperty),
    QV_CLASS_ROW_GLOBAL(CQVPropertySet),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
