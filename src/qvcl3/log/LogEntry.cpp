#include <qv/log/LogEntry.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>

#include "core/RecycledBlocks.h"

#include <typeinfo>

namespace qv {
namespace log {

namespace {

constexpr int32_t kBuckets = 101;
constexpr float kLoad = 0.75f;
// The size at which a StringHashMap of 101 buckets and load 0.75 grows.
constexpr size_t kMostBeforeGrowth = static_cast<size_t>(kLoad * kBuckets);

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

LogEntry::Field::Field(const String& name, bool lasting, uint32_t hash, IQVUnknown* value,
                       const Object* object) noexcept
    : hash(hash), value(value), object(object), m_name(lasting ? &name : new (m_own) String(name))
{}

LogEntry::Field::Field(const Field& other) noexcept
    : hash(other.hash), value(other.value), object(other.object),
      m_name(other.m_name == reinterpret_cast<const String*>(other.m_own) ? new (m_own) String(*other.m_name)
                                                                          : other.m_name)
{}

LogEntry::Field::~Field()
{
    if (m_name == reinterpret_cast<const String*>(m_own))
        m_name->~String();
}

LogEntry::LogEntry() = default;

LogEntry::~LogEntry()
{
    if (m_more.empty())
        clearInline();
}

void* LogEntry::operator new(size_t size)
{
    return detail::allocateRecycled<LogEntry>(size);
}

void LogEntry::operator delete(void* block, size_t size) noexcept
{
    detail::releaseRecycled<LogEntry>(block, size);
}

Reference<LogEntry> LogEntry::create()
{
    return Reference<LogEntry>(new LogEntry());
}

void LogEntry::clearInline() noexcept
{
    Field* const inlined = reinterpret_cast<Field*>(m_inline);
    for (size_t i = m_count; i > 0; --i)
        inlined[i - 1].~Field();
}

LogEntry::Field* LogEntry::find(const String& name, uint32_t hash) const
{
    Field* const all = fields();
    for (size_t i = 0; i < m_count; ++i) {
        if (all[i].hash == hash && all[i].name() == name)
            return &all[i];
    }
    return nullptr;
}

void LogEntry::put(const String& name, uint32_t hash, bool lasting, IQVUnknown* value, const Object* object)
{
    if (m_map) {
        m_map->put(name, value);
        return;
    }
    if (Field* field = find(name, hash)) {
        field->value = Reference<IQVUnknown>(value);
        field->object = object;
        return;
    }
    if (m_count < INLINE_FIELDS) {
        new (reinterpret_cast<Field*>(m_inline) + m_count) Field(name, lasting, hash, value, object);
        ++m_count;
        return;
    }
    if (m_count < kMostBeforeGrowth) {
        if (m_more.empty()) {
            std::vector<Field> more;
            more.reserve(2 * INLINE_FIELDS);
            const Field* const inlined = reinterpret_cast<const Field*>(m_inline);
            for (size_t i = 0; i < m_count; ++i)
                more.push_back(inlined[i]);
            more.emplace_back(name, lasting, hash, value, object);
            clearInline();
            m_more.swap(more);
        } else {
            m_more.emplace_back(name, lasting, hash, value, object);
        }
        ++m_count;
        return;
    }
    // Set in the same order, the map makes the same chains and grows at the
    // same point as if it had held the fields from the start.
    std::unique_ptr<collections::StringHashMap> map(new collections::StringHashMap(kBuckets, kLoad));
    const Field* const all = fields();
    for (size_t i = 0; i < m_count; ++i)
        map->put(all[i].name(), all[i].value.get());
    map->put(name, value);
    m_map = std::move(map);
    std::vector<Field>().swap(m_more);
    m_count = 0;
}

void LogEntry::setField(const String& name, const Object* value)
{
    put(name, collections::StringKeyTraits::hash(name), false,
        value ? const_cast<Object*>(value)->GetUnknown() : nullptr, value);
}

void LogEntry::setLastingField(const String& name, uint32_t hash, const Object* value)
{
    put(name, hash, true, value ? const_cast<Object*>(value)->GetUnknown() : nullptr, value);
}

void LogEntry::addLastingField(const String& name, uint32_t hash, Reference<Object>&& value)
{
    if (m_map || m_count >= INLINE_FIELDS) {
        setLastingField(name, hash, value.get());
        return;
    }
    // The field takes the caller's reference instead of one of its own: a
    // logger's new value is counted once, not up twice and down once, and
    // each count is an atomic operation on a box the worker will free.
    Object* const object = value.detach();
    IQVUnknown* const unknown = object ? object->GetUnknown() : nullptr;
    Field* const field = new (reinterpret_cast<Field*>(m_inline) + m_count) Field(name, true, hash, nullptr, object);
    field->value.attach(unknown);
    ++m_count;
}

Reference<IQVUnknown> LogEntry::lookup(const String& name) const
{
    if (m_map)
        return m_map->get(name);
    const Field* field = find(name, collections::StringKeyTraits::hash(name));
    return field ? field->value : Reference<IQVUnknown>();
}

Reference<const Object> LogEntry::getField(const String& name) const
{
    if (!m_map) {
        const Field* field = find(name, collections::StringKeyTraits::hash(name));
        return Reference<const Object>(field ? field->object : nullptr);
    }
    Reference<IQVUnknown> value = m_map->get(name);
    // A value stored through the component face need not be an Object.
    return Reference<const Object>(dynamic_cast<const Object*>(value.get()));
}

bool LogEntry::hasField(const String& name) const
{
    return m_map ? m_map->containsKey(name) : find(name, collections::StringKeyTraits::hash(name)) != nullptr;
}

void LogEntry::mapOrder(size_t* order) const noexcept
{
    // The map's walk: from the highest bucket down, each chain newest first.
    const size_t count = m_count;
    const Field* const all = fields();
    for (size_t i = 0; i < count; ++i) {
        // Insertion, newest first, behind every field of a bucket as high.
        const size_t index = count - 1 - i;
        const uint32_t bucket = all[index].hash % kBuckets;
        size_t at = i;
        for (; at > 0 && all[order[at - 1]].hash % kBuckets < bucket; --at)
            order[at] = order[at - 1];
        order[at] = index;
    }
}

Reference<const collections::Set<String>> LogEntry::getFieldNames() const
{
    Reference<collections::Set<String>> names(new collections::Set<String>());
    if (m_map) {
        auto it = m_map->createIterator();
        while (it.hasNext())
            names->add(it.next().getKey());
        return names;
    }
    size_t order[kMostBeforeGrowth];
    mapOrder(order);
    const Field* const all = fields();
    for (size_t i = 0; i < m_count; ++i)
        names->add(all[order[i]].name());
    return names;
}

void LogEntry::visitFields(FieldVisitor& visitor) const
{
    // A subclass may answer getFieldNames() or getField() differently from
    // the storage: writers must then see what those calls give.
    if (typeid(*this) != typeid(LogEntry)) {
        log::ILogEntry::visitFields(visitor);
        return;
    }
    if (m_map) {
        auto it = m_map->createIterator();
        while (it.hasNext()) {
            const auto& field = it.next();
            // As getField: a value set through the component face need not be an Object.
            visitor.visit(field.getKey(), dynamic_cast<const Object*>(field.getValue().get()));
        }
        return;
    }
    size_t order[kMostBeforeGrowth];
    mapOrder(order);
    const size_t count = m_count;
    const Field* const all = fields();
    for (size_t i = 0; i < count; ++i) {
        // Fail fast, as the map's own walk does, if the visitor added a
        // field: the storage may have moved under the walk.
        if (m_map || m_count != count || fields() != all)
            throw Exception();
        visitor.visit(all[order[i]].name(), all[order[i]].object);
    }
}

Result LogEntry::SetField(const char16_t* name, IQVUnknown* value)
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!name)
            return results::POINTER;
        const String key(name);
        put(key, collections::StringKeyTraits::hash(key), false, value, dynamic_cast<const Object*>(value));
        return results::OK;
    });
}

Result LogEntry::GetField(const char16_t* name, const GUID& iid, void** out) const
{
    return ::qv::qvcom::guardBoundary([&] {
        if (!name || !out)
            return results::POINTER;
        *out = nullptr;
        Reference<IQVUnknown> value = lookup(String(name));
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
        return hasField(String(name)) ? results::OK : results::FALSE_;
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
