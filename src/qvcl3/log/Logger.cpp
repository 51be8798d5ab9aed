#include <qv/log/Logger.h>

#include <qv/collections/StringHashMap.h>
#include <qv/exec/Thread.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/UInteger32.h>
#include <qv/log/LogEntry.h>
#include <qv/log/TimeStamp.h>

#include <memory>
#include <utility>

namespace qv {
namespace log {

namespace {

const char16_t* const g_fieldKeys[Logger::FIELD_COUNT] = {u"sequence",  u"thread", u"name",
                                                          u"timestamp", u"level",  u"text"};

struct FieldKey {
    String name;
    uint32_t hash;
};

// The keys as Strings made once and never destroyed, with their hashes: an
// entry borrows them instead of copying or counting them for every field of
// every entry, and entries dropped during the process's exit may still name
// them.
const FieldKey& fieldKey(int field)
{
    static const FieldKey* const keys = [] {
        std::unique_ptr<FieldKey[]> made(new FieldKey[Logger::FIELD_COUNT]);
        for (int i = 0; i < Logger::FIELD_COUNT; ++i) {
            made[i].name = String(g_fieldKeys[i]);
            made[i].hash = collections::StringKeyTraits::hash(made[i].name);
        }
        return made.release();
    }();
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
    // Each value is owned by a Reference from the moment it is made: the
    // field key a call looks up may be built on first use and fail.
    const auto setStandardField = [&entry](int field, Reference<Object>&& value) {
        const FieldKey& key = fieldKey(field);
        entry->addLastingField(key.name, key.hash, std::move(value));
    };
    if (m_fields[LEVEL])
        setStandardField(LEVEL, Reference<Object>(new Integer32(level)));
    if (m_fields[TEXT])
        setStandardField(TEXT, Reference<Object>(new String(text)));
    if (m_fields[SEQUENCE])
        setStandardField(SEQUENCE, Reference<Object>(new Integer32(m_sequence.load(std::memory_order_relaxed))));
    if (m_fields[THREAD])
        setStandardField(THREAD, Reference<Object>(new UInteger32(exec::Thread::getCurrentID())));
    if (m_fields[TIMESTAMP])
        setStandardField(TIMESTAMP, Reference<Object>(new TimeStamp(true)));
    if (m_fields[NAME])
        setStandardField(NAME, Reference<Object>(new String(m_name)));
    // Handed over, not shared: the count of a new entry is not touched again.
    return Reference<ILogEntry>(std::move(entry));
}

void Logger::log(const ILogEntry* entry)
{
    m_processors->process(entry);
}

void Logger::addCustomFields(ILogEntry*) {}

} // namespace log
} // namespace qv
