#ifndef QVCL3_TESTS_LOGTESTSUPPORT_H
#define QVCL3_TESTS_LOGTESTSUPPORT_H

#include <qv/qvcl3.h>

#include <mutex>
#include <string>
#include <vector>

namespace logtest {

// Keeps every entry it receives (a reference each), in arrival order.
class CollectingProcessor : public qv::Object, public qv::log::ILogProcessor {
public:
    qv::Result QueryInterface(const GUID& iid, void** ppv) override
    {
        if (iid == qv::log::ILogProcessor::iid) {
            AddRef();
            *ppv = static_cast<qv::log::ILogProcessor*>(this);
            return qv::results::OK;
        }
        return qv::Object::QueryInterface(iid, ppv);
    }
    uint32_t AddRef() const override { return qv::ComObject::AddRef(); }
    uint32_t Release() const override { return qv::ComObject::Release(); }

    void process(const qv::log::ILogEntry* entry) override
    {
        std::lock_guard<std::mutex> hold(m_lock);
        m_entries.emplace_back(entry);
    }
    std::vector<qv::Reference<const qv::log::ILogEntry>> entries()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_entries;
    }
    size_t count()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_entries.size();
    }

private:
    std::mutex m_lock;
    std::vector<qv::Reference<const qv::log::ILogEntry>> m_entries;
};

inline std::string utf8(const qv::String& text)
{
    return text.toUtf8();
}

// The text of a field, or "<absent>".
inline std::string field(const qv::log::ILogEntry* entry, const char16_t* name)
{
    qv::Reference<const qv::Object> value = entry->getField(qv::String(name));
    return value ? value->toString().toUtf8() : std::string("<absent>");
}

inline std::vector<std::string> names(const qv::log::ILogEntry* entry)
{
    std::vector<std::string> result;
    const qv::Reference<const qv::collections::Set<qv::String>> all = entry->getFieldNames();
    for (const qv::String& name : *all)
        result.push_back(name.toUtf8());
    return result;
}

} // namespace logtest

#endif
