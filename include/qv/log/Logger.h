#ifndef QV_LOG_LOGGER_H
#define QV_LOG_LOGGER_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>
#include <qv/log/ILogEntry.h>
#include <qv/log/ILogProcessor.h>
#include <qv/log/ILogger.h>
#include <qv/log/MultiProcessor.h>

#include <atomic>
#include <cstdint>

namespace qv {
namespace log {

// Turns log(level, text) into a LogEntry and hands it to its processors.
// Levels are never filtered; the only switch is the enabled flag. The
// standard fields put into an entry are chosen by enableField. No lock is
// taken: entries built at the same time by two threads may carry the same
// sequence number (wrap the logger in a SyncLogger to prevent that).
class QV_EXPORT Logger : public Object, public ILogger, public ILevelLogger {
    QV_DECLARE_INTERFACE_MAP()

public:
    // Switch indexes of the standard fields.
    enum Field { SEQUENCE = 0, THREAD = 1, NAME = 2, TIMESTAMP = 3, LEVEL = 4, TEXT = 5, FIELD_COUNT = 6 };

    // Fields "level" and "text" only.
    Logger();
    // As Logger() plus the field "name".
    explicit Logger(const String& name);
    // The narrow forms read their text in the default encoding, as
    // String(const char*) does.
    explicit Logger(const char* name) : Logger(String(name)) {}
    ~Logger() override;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    static Reference<Logger> create();
    static Reference<Logger> create(const String& name);
    // A factory hook that returns an empty reference for every name.
    static Reference<ILogProcessor> createProcessor(const String& name);
    static Reference<ILogProcessor> createProcessor(const char* name) { return createProcessor(String(name)); }

    void log(int level, const String& text) override;
    // log(defaultLevel, text).
    void log(const String& text) override;
    void log(int level, const char* text) { log(level, String(text)); }
    void log(const char* text) { log(String(text)); }

    void setDefaultLevel(int level) noexcept { m_defaultLevel.store(level, std::memory_order_relaxed); }
    void setEnabled(bool enabled) noexcept { m_enabled.store(enabled, std::memory_order_relaxed); }
    // Switches the standard field whose key equals key, ignoring case
    // ("sequence", "thread", "name", "timestamp", "level", "text"); any other
    // key changes nothing.
    virtual void enableField(const String& key, bool on);
    void enableField(const char* key, bool on) { enableField(String(key), on); }
    // Entries then go to every processor added, in that order.
    void addProcessor(ILogProcessor* processor);
    // Replaces all processors by this one.
    void setProcessor(ILogProcessor* processor);

    const String& getName() const noexcept { return m_name; }

protected:
    bool isEnabled() const noexcept { return m_enabled.load(std::memory_order_relaxed); }
    // Builds the entry with the switched-on standard fields, in the order
    // "level", "text", "sequence", "thread", "timestamp", "name".
    Reference<ILogEntry> getLogEntry(int level, const String& text) const;
    // Hands a ready entry to the processors.
    void log(const ILogEntry* entry);
    // Hook for subclasses that add their own fields; does nothing here.
    virtual void addCustomFields(ILogEntry* entry);

private:
    String m_name;
    std::atomic<bool> m_enabled{true};
    Reference<MultiProcessor> m_processors;
    std::atomic<int32_t> m_defaultLevel{0};
    bool m_fields[FIELD_COUNT];
    std::atomic<int32_t> m_sequence{0};
};

} // namespace log
} // namespace qv

#endif
