#include "core/ClassTable.h"

#include <qv/log/AbstractLogWriter.h>
#include <qv/log/AsyncProcessor.h>
#include <qv/log/BasicLogWriter.h>
#include <qv/log/LevelFilterProcessor.h>
#include <qv/log/LogEntry.h>
#include <qv/log/Logger.h>
#include <qv/log/MultiProcessor.h>
#include <qv/log/StringBundleLogger.h>
#include <qv/log/SyncLogger.h>
#include <qv/log/SyslogLogProcessor.h>
#include <qv/log/TimeStamp.h>
#include <qv/log/XmlLogWriter.h>
#include <qv/log/qvcom/QvcomProcessor.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_logClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(log::AbstractLogWriter),
    QV_CLASS_ROW_NO_CREATOR(log::AsyncProcessor),
    QV_CLASS_ROW_NO_CREATOR(log::AsyncProcessorImpl),
    QV_CLASS_ROW_NO_CREATOR(log::BasicLogWriter),
    QV_CLASS_ROW_NO_CREATOR(log::LevelFilterProcessor),
    QV_CLASS_ROW(log::LogEntry),
    QV_CLASS_ROW(log::Logger),
    QV_CLASS_ROW(log::MultiProcessor),
    QV_CLASS_ROW_NO_CREATOR(log::StringBundleLogger),
    QV_CLASS_ROW_NO_CREATOR(log::SyncLogger),
    QV_CLASS_ROW_NO_CREATOR(log::SyslogLogProcessor),
    QV_CLASS_ROW(log::TimeStamp),
    QV_CLASS_ROW_NO_CREATOR(log::XmlLogWriter),
    QV_CLASS_ROW_NO_CREATOR(log::qvcom::QvcomProcessor),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
