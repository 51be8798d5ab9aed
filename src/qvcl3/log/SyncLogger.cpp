#include <qv/log/SyncLogger.h>

#include <qv/core/Exception.h>

#include "LockHolder.h"

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(SyncLogger)
QV_INTERFACE_ENTRY(SyncLogger, ILevelLogger)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

SyncLogger::SyncLogger(ILevelLogger* target) : m_target(target), m_lock("qv::log::SyncLogger::m_lock")
{
    if (!target)
        throw ResultException(results::INVALIDARG);
}

SyncLogger::~SyncLogger() = default;

Reference<SyncLogger> SyncLogger::create(ILevelLogger* target)
{
    return Reference<SyncLogger>(new SyncLogger(target));
}

void SyncLogger::log(int level, const String& text)
{
    LockHolder hold(m_lock);
    m_target->log(level, text);
}

} // namespace log
} // namespace qv
