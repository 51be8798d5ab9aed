#ifndef QV_LOG_LOGENTRY_H
#define QV_LOG_LOGENTRY_H

#include <qv/collections/StringHashMap.h>
#include <qv/core/Object.h>
#include <qv/log/ILogEntry.h>

namespace qv {
namespace log {

// The bag of named fields a logger builds. Names are kept in a StringHashMap
// of 101 buckets (load 0.75), so names come out in the map's order, not in
// the order they were set. No locks: an entry is filled by one thread and
// only read afterwards.
class QV_EXPORT LogEntry : public Object, public ILogEntry, public qvcom::ILogEntry {
    QV_DECLARE_INTERFACE_MAP()

public:
    LogEntry();
    ~LogEntry() override;
    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;

    static Reference<LogEntry> create();

    void setField(const String& name, const Object* value) override;
    Reference<const Object> getField(const String& name) const override;
    bool hasField(const String& name) const override;
    Reference<const collections::Set<String>> getFieldNames() const override;

    Result SetField(const char16_t* name, IQVUnknown* value) override;
    Result GetField(const char16_t* name, const GUID& iid, void** out) const override;
    Result HasField(const char16_t* name) const override;
    Result GetFieldIterator(qvcom::IFieldIterator** out) const override;
    using qvcom::ILogEntry::GetField;
    using qvcom::ILogEntry::HasField;
    using qvcom::ILogEntry::SetField;

private:
    mutable collections::StringHashMap m_fields;
};

} // namespace log
} // namespace qv

#endif
