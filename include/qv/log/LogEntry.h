#ifndef QV_LOG_LOGENTRY_H
#define QV_LOG_LOGENTRY_H

#include <qv/collections/StringHashMap.h>
#include <qv/core/Object.h>
#include <qv/core/RecycledAllocation.h>
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
    // Walks the fields in place: no Set of names, no lookup per name.
    void visitFields(FieldVisitor& visitor) const override;

    Result SetField(const char16_t* name, IQVUnknown* value) override;
    Result GetField(const char16_t* name, const GUID& iid, void** out) const override;
    Result HasField(const char16_t* name) const override;
    Result GetFieldIterator(qvcom::IFieldIterator** out) const override;
    using qvcom::ILogEntry::GetField;
    using qvcom::ILogEntry::HasField;
    using qvcom::ILogEntry::SetField;

    // Entries are mostly made by one thread and dropped by another (a
    // queue's worker); their memory is recycled between the two instead of
    // going through the allocator's locks each time.
    QV_RECYCLED_ALLOCATION

private:
    friend class Logger;

    // A field's name is either borrowed, when it outlives every entry (the
    // logger's own keys: no reference count shared by every thread to touch),
    // or the entry's own share of the caller's text.
    class Field {
    public:
        Field(const String& name, bool lasting, uint32_t hash, IQVUnknown* value, const Object* object) noexcept;
        Field(const Field& other) noexcept;
        ~Field();
        Field& operator=(const Field&) = delete;

        const String& name() const noexcept { return *m_name; }

        uint32_t hash;
        Reference<IQVUnknown> value;
        // The value as the Object it was set as; null when it is not one.
        const Object* object;

    private:
        const String* m_name;
        alignas(String) unsigned char m_own[sizeof(String)];
    };
    // Finds name's field, or null.
    Field* find(const String& name, uint32_t hash) const;
    Reference<IQVUnknown> lookup(const String& name) const;
    void put(const String& name, uint32_t hash, bool lasting, IQVUnknown* value, const Object* object);
    // setField for a name that outlives every entry, whose hash (as the
    // map's, String::hashCode(false)) the caller knows.
    void setLastingField(const String& name, uint32_t hash, const Object* value);
    // setLastingField for a name this entry does not hold yet (a logger's
    // standard fields, set once each on a new entry): no search for it. The
    // caller's reference to value is handed over to the field.
    void addLastingField(const String& name, uint32_t hash, Reference<Object>&& value);

    // The fields in the order they were first set, while they are few
    // enough for a StringHashMap of 101 buckets not to grow; the names are
    // handed out in that map's order (highest bucket first, newest first in
    // a bucket), computed from the hashes. Most entries hold two to six
    // fields: this spares each the map's bucket array and nodes. Up to six
    // (all a logger sets) live in the entry itself, built only when set;
    // from the seventh, all of them are in m_more.
    static constexpr size_t INLINE_FIELDS = 6;
    Field* fields() const
    {
        return m_more.empty() ? reinterpret_cast<Field*>(m_inline) : const_cast<Field*>(m_more.data());
    }
    void clearInline() noexcept;
    // Fills order with the indexes into fields() in the map's order (m_count
    // of them; only while there is no m_map).
    void mapOrder(size_t* order) const noexcept;
    alignas(Field) mutable unsigned char m_inline[INLINE_FIELDS * sizeof(Field)];
    std::vector<Field> m_more;
    size_t m_count = 0;
    // Past that size the fields move, in the order they were set, into the
    // map itself, which then orders them after its growth.
    std::unique_ptr<collections::StringHashMap> m_map;
};

} // namespace log
} // namespace qv

#endif
