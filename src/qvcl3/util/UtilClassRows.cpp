#include "core/ClassTable.h"

#include <qv/util/BasicBuffer.h>
#include <qv/util/CmdLineException.h>
#include <qv/util/CmdLineParser.h>
#include <qv/util/FilePath.h>
#include <qv/util/IniFile.h>
#include <qv/util/IniFileIterator.h>
#include <qv/util/PropertiesFormat.h>
#include <qv/util/Property.h>
#include <qv/util/PropertySet.h>
#include <qv/util/StringTokenizer.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_utilClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(util::AbstractByteBuffer),
    QV_CLASS_ROW_NO_CREATOR(util::AbstractCharBuffer),
    QV_CLASS_ROW(util::CmdLineException),
    QV_CLASS_ROW(util::CmdLineParser),
    QV_CLASS_ROW(util::FilePath),
    QV_CLASS_ROW_NO_CREATOR(util::IniFile),
    QV_CLASS_ROW_NO_CREATOR(util::IniFileIteratorBase),
    QV_CLASS_ROW_NO_CREATOR(util::IniFileKeyIterator),
    QV_CLASS_ROW_NO_CREATOR(util::IniFileSetIterator),
    QV_CLASS_ROW(util::MTByteBuffer),
    QV_CLASS_ROW(util::MTCharBuffer),
    QV_CLASS_ROW(util::PropertiesFormatException),
    QV_CLASS_ROW(util::Property),
    QV_CLASS_ROW(util::PropertySet),
    QV_CLASS_ROW(util::ROByteBuffer),
    QV_CLASS_ROW(util::ROCharBuffer),
    QV_CLASS_ROW(util::RWByteBuffer),
    QV_CLASS_ROW(util::RWCharBuffer),
    QV_CLASS_ROW_NO_CREATOR(util::StringTokenizer),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
