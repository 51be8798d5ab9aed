#ifndef QVCL3_TESTS_LOGTESTSUPPORT_H
#define QVCL3_TESTS_LOGTESTSUPPORT_H

#include <qv/qvcl3.h>

#include "ChildProcess.h"

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace logtest {

using qvtest::readFile;
using TempDirectory = qvtest::TempDir;

// An Object that also implements Face, answering QueryInterface as Object
// does: the reference counting both faces need, written once.
template <class Face>
class ObjectWith : public qv::Object, public Face {
public:
    qv::Result QueryInterface(const GUID& iid, void** ppv) override { return qv::Object::QueryInterface(iid, ppv); }
    uint32_t AddRef() const override { return qv::ComObject::AddRef(); }
    uint32_t Release() const override { return qv::ComObject::Release(); }
};

// The text of a field, or "<absent>".
inline std::string field(const qv::log::ILogEntry* entry, const qv::String& name)
{
    qv::Reference<const qv::Object> value = entry->getField(name);
    return value ? value->toString().toUtf8() : std::string("<absent>");
}

using Fields = std::map<std::string, std::string>;

// Every field of the entry by name.
inline Fields fields(const qv::log::ILogEntry* entry)
{
    Fields all;
    const qv::Reference<const qv::collections::Set<qv::String>> names = entry->getFieldNames();
    for (const qv::String& name : *names)
        all[name.toUtf8()] = field(entry, name);
    return all;
}

// Keeps every entry it receives (a reference each), in arrival order.
class CollectingProcessor : public ObjectWith<qv::log::ILogProcessor> {
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
    // One field of every entry, in arrival order.
    std::vector<std::string> values(const char16_t* name)
    {
        std::vector<std::string> all;
        for (const auto& entry : entries())
            all.push_back(field(entry.get(), name));
        return all;
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

inline std::vector<std::string> names(const qv::log::ILogEntry* entry)
{
    std::vector<std::string> result;
    const qv::Reference<const qv::collections::Set<qv::String>> all = entry->getFieldNames();
    for (const qv::String& name : *all)
        result.push_back(name.toUtf8());
    return result;
}

// Polls done every 5 ms for up to the given seconds (workers on a loaded
// machine).
inline bool waitFor(const std::function<bool()>& done, int seconds = 10)
{
    for (int i = 0; i < seconds * 200; ++i) {
        if (done())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
}

// The text a BasicLogWriter puts after each entry.
inline const std::string kRule = "-------------------------\n";

// The entries of a BasicLogWriter text, each as its name=value lines; text
// after the last rule, or a line without '=', fails the test.
inline std::vector<Fields> basicEntries(const std::string& text)
{
    std::vector<Fields> entries;
    size_t at = 0;
    for (size_t end; (end = text.find(kRule, at)) != std::string::npos; at = end + kRule.size()) {
        Fields& entry = entries.emplace_back();
        std::istringstream lines(text.substr(at, end - at));
        for (std::string line; std::getline(lines, line);) {
            const size_t equals = line.find('=');
            if (equals == std::string::npos)
                ADD_FAILURE() << "not a field: " << line;
            else
                entry[line.substr(0, equals)] = line.substr(equals + 1);
        }
    }
    if (at != text.size())
        ADD_FAILURE() << "partial entry: " << text.substr(at);
    return entries;
}

// stem0, stem1, ... for the numbers from up to (not including) to.
inline std::vector<std::string> numbered(const char* stem, int from, int to)
{
    std::vector<std::string> texts;
    for (int i = from; i < to; ++i)
        texts.push_back(stem + std::to_string(i));
    return texts;
}

inline STRUCT_QV_TIME timeOf(uint16_t year, uint16_t month, uint16_t day, uint16_t hour, uint16_t minute,
                             uint16_t second, uint16_t ms)
{
    return STRUCT_QV_TIME{year, month, 0, day, hour, minute, second, ms};
}

} // namespace logtest

#endif
