#include <qv/log/Logger.h>

#include <qv/exec/Thread.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/UInteger32.h>
#include <qv/log/LogEntry.h>
#include <qv/log/TimeStamp.h>

namespace qv {
namespace log {

namespace {

const char16_t* const g_fieldKeys[Logger::FIELD_COUNT] = {u"sequence",  u"thread", u"name",
                                                          u"timestamp", u"level",  u"text"};

// The keys as Strings made once and never destroyed: an entry borrows them
// instead of copying or counting them for every field of every entry.
const String& fieldKey(int field)
{
    // Entries dropped during the process's exit may still name them.
    static const String* const keys =
        new String[Logger::FIELD_COUNT]{String(g_fieldKeys[0]), String(g_fieldKeys[1]), String(g_fieldKeys[2]),
                                        String(g_fieldKeys[3]), String(g_fieldKeys[4]), String(g_fieldKeys[5])};
    return keys[field];
}

} // namespace

QV_BEGIN_INTERFACE_MAP(Logger)
QV_INTERFACE_ENTRY(Logger, ILogger)
QV_INTERFACE_ENTRY(Logger, ILevelLogger)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Logger::Logger() : m_processors(MultiProcessor::create()), m_fields{false, false, false, false, true, true} {}

Logger::Logger(const String& name)
    : m_name(name), m_processors(MultiProcessor::create()), m_fields{false, false, true, false, true, true}
{}

Logger::~Logger() = default;

Reference<Logger> Logger::create()
{
    return Reference<Logger>(new Logger());
}

Reference<Logger> Logger::create(const String& name)
{
    return Reference<Logger>(new Logger(name));
}

Reference<ILogProcessor> Logger::createProcessor(const String&)
{
    // Kept empty on purpose: no processor is creatable by name.
    return Reference<ILogProcessor>();
}

void Logger::log(int level, const String& text)
{
    if (!isEnabled())
        return;
    Reference<ILogEntry> entry = getLogEntry(level, text);
    addCustomFields(entry.get());
    m_sequence.fetch_add(1, std::memory_order_relaxed);
    log(entry.get());
}

void Logger::log(const String& text)
{
    static_cast<ILevelLogger*>(this)->log(m_defaultLevel.load(std::memory_order_relaxed), text);
}

void Logger::enableField(const String& key, bool on)
{
    for (int i = 0; i < FIELD_COUNT; ++i) {
        if (key.equals(g_fieldKeys[i], true)) {
            m_fields[i] = on;
            return;
        }
    }
}

void Logger::addProcessor(ILogProcessor* processor)
{
    m_processors->addProcessor(processor);
}

void Logger::setProcessor(ILogProcessor* processor)
{
    Reference<MultiProcessor> fresh = MultiProcessor::create();
    fresh->addProcessor(processor);
    m_processors = std::move(fresh);
}

Reference<ILogEntry> Logger::getLogEntry(int level, const String& text) const
{
    Reference<LogEntry> entry = LogEntry::create();
    if (m_fields[LEVEL]) {
        Reference<Integer32> value(new Integer32(level));
        entry->setLastingField(fieldKey(LEVEL), value.get());
    }
    if (m_fields[TEXT]) {
        Reference<String> value(new String(text));
        entry->setLastingField(fieldKey(TEXT), value.get());
    }
    if (m_fields[SEQUENCE]) {
        Reference<Integer32> value(new Integer32(m_sequence.load(std::memory_order_relaxed)));
        entry->setLastingField(fieldKey(SEQUENCE), value.get());
    }
    if (m_fields[THREAD]) {
        Reference<UInteger32> value(new UInteger32(exec::Thread::getCurrentID()));
        entry->setLastingField(fieldKey(THREAD), value.get());
    }
    if (m_fields[TIMESTAMP]) {
        Reference<TimeStamp> value(new TimeStamp(true));
        entry->setLastingField(fieldKey(TIMESTAMP), value.get());
    }
    if (m_fields[NAME]) {
        Reference<String> value(new String(m_name));
        entry->setLastingField(fieldKey(NAME), value.get());
    }
    return Reference<ILogEntry>(static_cast<ILogEntry*>(entry.get()));
}

void Logger::log(const ILogEntry* entry)
{
    m_processors->process(entry);
}

void Logger::addCustomFields(ILogEntry*) {}

} // namespace log
} // namespace qv
