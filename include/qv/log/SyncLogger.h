#ifndef QV_LOG_SYNCLOGGER_H
#define QV_LOG_SYNCLOGGER_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/log/ILogger.h>
#include <qv/sync/Mutex.h>

namespace qv {
namespace log {

// Serialises every call to its target under the mutex
// "qv::log::SyncLogger::m_lock", so that entries are built, numbered and
// processed one at a time. The lock is released also when the target
// throws.
class QV_EXPORT SyncLogger : public Object, public ILevelLogger {
    QV_DECLARE_INTERFACE_MAP()

public:
    // ResultException 0x80070057 for a null target.
    explicit SyncLogger(ILevelLogger* target);
    ~SyncLogger() override;
    SyncLogger(const SyncLogger&) = delete;
    SyncLogger& operator=(const SyncLogger&) = delete;

    static Reference<SyncLogger> create(ILevelLogger* target);

    void log(int level, const String& text) override;

private:
    Reference<ILevelLogger> m_target;
    sync::Mutex m_lock;
};

} // namespace log
} // namespace qv

#endif
