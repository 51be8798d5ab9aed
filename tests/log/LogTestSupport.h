#ifndef QVCL3_TESTS_LOGTESTSUPPORT_H
#define QVCL3_TESTS_LOGTESTSUPPORT_H

#include <qv/qvcl3.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

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

inline STRUCT_QV_TIME timeOf(uint16_t year, uint16_t month, uint16_t day, uint16_t hour, uint16_t minute,
                             uint16_t second, uint16_t ms)
{
    STRUCT_QV_TIME t{};
    t.wYear = year;
    t.wMonth = month;
    t.wDay = day;
    t.wHour = hour;
    t.wMinute = minute;
    t.wSecond = second;
    t.wMilliseconds = ms;
    return t;
}

inline std::string tempPath(const char* stem)
{
    return std::string("/tmp/qvcl3_log_") + stem + "_" + std::to_string(getpid());
}

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
}

// A fresh directory for a test's files, removed with them afterwards.
class TempDirectory {
public:
    TempDirectory()
    {
        std::string pattern = tempPath("dir") + "_XXXXXX";
        m_path = mkdtemp(&pattern[0]) ? pattern : "";
    }
    ~TempDirectory() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

} // namespace logtest

#endif
