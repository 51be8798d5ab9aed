#include <qv/log/LogEntry.h>

#include <qv/core/Boundary.h>

namespace qv {
namespace log {

namespace {

// Hands out the names of a snapshot of the entry's field names.
class FieldIterator final : public Object, public qvcom::IFieldIterator {
    QV_DECLARE_INTERFACE_MAP()

public:
    explicit FieldIterator(Reference<const collections::Set<String>> names) : m_names(std::move(names)) {}

    Result HasNext() const override { return m_index < m_names->size() ? results::OK : results::FALSE_; }
    Result Next(const char16_t** name, int32_t* length) override
    {
        if (!name || !length)
            return results::POINTER;
        if (m_index >= m_names->size()) {
            *name = nullptr;
            *length = 0;
            return results::FALSE_;
        }
        const String& next = m_names->get(m_index++);
        *name = next.getData();
        *length = next.getLength();
        return results::OK;
    }
    Result Reset() override
    {
        m_index = 0;
        return results::OK;
    }

private:
    Reference<const collections::Set<String>> m_names;
    int32_t m_index = 0;
};

} // namespace

QV_BEGIN_INTERFACE_MAP(FieldIterator)
QV_INTERFACE_ENTRY(FieldIterator, qvcom::IFieldIterator)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

QV_BEGIN_INTERFACE_MAP(LogEntry)
QV_INTERFACE_ENTRY(LogEntry, log::ILogEntry)
QV_INTERFACE_ENTRY(LogEntry, qvcom::ILogEntry)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

LogEntry::LogEntry() : m_fields(101, 0.75f) {}

LogEntry::~LogEntry() = default;

Reference<LogEntry> LogEntry::create()
{
    return Reference<LogEntry>(new LogEntry());
}

void LogEntry::setField(const String& name, const Object* value)
{
    m_fields.put(name, value ? const_cast<Object*>(value)->GetUnknown() : nullptr);
}

Reference<const Object> LogEntry::getField(const String& name) const
{
    Reference<IQVUnknown> value = m_fields.get(name);
    // A value stored through the component face need not be an Object.
    return Reference<const Object>(dynamic_cast<const Object*>(value.get()));
}

bool LogEntry::hasField(const String& name) const
{
    return m_fields.containsKey(name);
}

Reference<const collections::Set<String>> LogEntry::getFieldNames() const
{
    Reference<collections::Set<String>> names(new collections::Set<String>());
    auto it = m_fields.createIterator();
    while (it.hasNext())
        names->add(it.next().getKey());
    return names;
}

Result LogEntry::SetField(const char16_t* name, IQVUnknown* value)
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!name)
            return results::POINTER;
        m_fields.put(String(name), value);
        return results::OK;
    });
}

Result LogEntry::GetField(const char16_t* name, const GUID& iid, void** out) const
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!name || !out)
            return results::POINTER;
        *out = nullptr;
        Reference<IQVUnknown> value = m_fields.get(String(name));
        if (!value)
            return results::FALSE_;
        return value->QueryInterface(iid, out);
    });
}

Result LogEntry::HasField(const char16_t* name) const
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!name)
            return results::POINTER;
        return m_fields.containsKey(String(name)) ? results::OK : results::FALSE_;
    });
}

Result LogEntry::GetFieldIterator(qvcom::IFieldIterator** out) const
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!out)
            return results::POINTER;
        *out = nullptr;
        Reference<FieldIterator> iterator(new FieldIterator(getFieldNames()));
        *out = iterator.detach();
        return results::OK;
    });
}

} // namespace log
} // namespace qv
