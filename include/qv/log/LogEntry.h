#ifndef QV_LOG_LOGENTRY_H
#define QV_LOG_LOGENTRY_H

#include <qv/collections/StringHashMap.h>
#include <qv/core/Object.h>
#include <qv/log/ILogEntry.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace qv {
namespace log {

// The bag of named fields a logger builds. Names come out in the order of a
// StringHashMap of 101 buckets (load 0.75), not in the order they were set.
// No locks: an entry is filled by one thread and only read afterwards.
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
    struct Field {
        String name;
        uint32_t hash;
        Reference<IQVUnknown> value;
    };
    // Finds name's value slot among the fields, or null.
    Reference<IQVUnknown>* find(const String& name, uint32_t hash) const;
    Reference<IQVUnknown> lookup(const String& name) const;
    void put(const String& name, IQVUnknown* value);

    // The fields in the order they were first set, while they are few
    // enough for a StringHashMap of 101 buckets not to grow; the names are
    // handed out in that map's order (highest bucket first, newest first in
    // a bucket), computed from the hashes. Most entries hold two to six
    // fields: this spares each the map's bucket array and nodes. Up to six
    // (all a logger sets) live in the entry itself; from the seventh, all of
    // them are in m_more.
    static constexpr size_t INLINE_FIELDS = 6;
    Field* fields() const { return m_more.empty() ? m_inline : m_more.data(); }
    mutable Field m_inline[INLINE_FIELDS];
    mutable std::vector<Field> m_more;
    size_t m_count = 0;
    // Past that size the fields move, in the order they were set, into the
    // map itself, which then orders them after its growth.
    std::unique_ptr<collections::StringHashMap> m_map;
};

} // namespace log
} // namespace qv

#endif
