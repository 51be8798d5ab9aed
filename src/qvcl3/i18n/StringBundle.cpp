#include <qv/i18n/StringBundle.h>

#include <qv/i18n/ComponentStringBundle.h>
#include <qv/i18n/ListStringBundle.h>
#include <qv/i18n/Locale.h>
#include <qv/i18n/MissingResourceException.h>
#include <qv/sync/Mutex.h>

#include "i18n/FillCharBuffer.h"
#include "i18n/PropertiesParser.h"

#include <qvcore3/qvcore3.h>

#include <map>
#include <string>
#include <vector>

namespace qv {
namespace i18n {

namespace {

// Everything below is guarded by lock(). Loading happens under the lock
// too, so two threads asking for the same bundle read its file once.
struct BundleCache {
    String searchPath;
    // (base name, level) -> the level's bundle, or null when no file exists.
    std::map<std::pair<String, String>, Reference<const StringBundle>> levels;
};

sync::Mutex& lock()
{
    // Never destroyed: bundles may be asked for from static destructors.
    static sync::Mutex* mutex = new sync::Mutex("qv::i18n::StringBundle::s_cacheLock");
    return *mutex;
}

BundleCache& cache()
{
    static BundleCache* instance = new BundleCache();
    return *instance;
}

class Guard {
public:
    explicit Guard(sync::Mutex& mutex) : m_mutex(mutex) { m_mutex.wait(); }
    ~Guard() { m_mutex.signal(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    sync::Mutex& m_mutex;
};

void splitPath(const std::string& list, std::vector<std::string>& directories)
{
    size_t start = 0;
    while (start <= list.size()) {
        size_t end = list.find(':', start);
        if (end == std::string::npos)
            end = list.size();
        if (end > start)
            directories.push_back(list.substr(start, end - start));
        start = end + 1;
    }
}

std::vector<std::string> searchDirectories(const String& callerPath)
{
    std::vector<std::string> directories;
    splitPath(callerPath.toUtf8(), directories);
    int32_t length = 0;
    std::string environment(256, '\0');
    Result result = QVGetEnvironmentVariable("QV_BUNDLE_PATH", &environment[0], 256, &length);
    if (result == results::BUFFER_TOO_SMALL) {
        environment.assign(static_cast<size_t>(length) + 1, '\0');
        result = QVGetEnvironmentVariable("QV_BUNDLE_PATH", &environment[0], length + 1, &length);
    }
    if (result == results::OK) {
        environment.resize(static_cast<size_t>(length));
        splitPath(environment, directories);
    }
    return directories;
}

// The file's bytes, or false when it does not exist.
bool readFile(const std::string& path, std::string& bytes)
{
    int32_t fd = -1;
    const Result opened = QVFileOpen(path.c_str(), QV_FILE_READ, &fd);
    if (opened == results::FILE_NOT_FOUND)
        return false;
    if (failed(opened))
        throw ResultException(opened, String(u"cannot open bundle file ").append(String(path.c_str(), -1, u"UTF-8")));
    bytes.clear();
    char buffer[16384];
    for (;;) {
        uint32_t done = 0;
        const Result result = QVFileRead(fd, buffer, sizeof buffer, &done);
        if (failed(result)) {
            QVFileClose(fd);
            throw ResultException(result,
                                  String(u"cannot read bundle file ").append(String(path.c_str(), -1, u"UTF-8")));
        }
        if (done == 0)
            break;
        try {
            bytes.append(buffer, done);
        } catch (...) {
            QVFileClose(fd);
            throw;
        }
    }
    QVFileClose(fd);
    return true;
}

String bundleName(const String& baseName, const String& level)
{
    String name(baseName);
    if (level.getLength() > 0)
        name.append(u'_').append(level);
    return name;
}

// The level's bundle from the component registered for it, or null when no
// component is. A registered component that cannot be created is an error,
// not a missing level: quietly showing the root's texts instead would hide a
// broken installation.
Reference<const StringBundle> createLevel(const String& baseName, const String& level, const StringBundle* parent)
{
    String progId(u"Velmara.StringBundle.");
    progId.append(baseName);
    if (level.getLength() > 0)
        progId.append(u'.').append(level);
    // A name cut short at a U+0000 would ask for another component.
    if (progId.indexOf(u'\0') >= 0)
        return nullptr;
    GUID clsid;
    Result result = QVComClassIDFromProgID(progId.getData(), &clsid);
    if (result == results::CLASSNOTREG)
        return nullptr;
    void* object = nullptr;
    if (result >= 0)
        result = QVModuleComCreateObject(QV_INVALID_HANDLE, &clsid, nullptr, &IStringBundle::iid, &object);
    if (result >= 0 && object == nullptr)
        result = results::POINTER;
    if (result < 0) {
        if (result == results::OUTOFMEMORY)
            throw OutOfMemoryException();
        throw ResultException(result, String(u"cannot create string bundle component '").append(progId).append(u"'"));
    }
    Reference<IStringBundle> component;
    component.attach(static_cast<IStringBundle*>(object));
    return Reference<const StringBundle>(
        new ComponentStringBundle(bundleName(baseName, level), component.get(), parent));
}

// The level's bundle from the first directory that has its file, or null.
Reference<const StringBundle> loadLevel(const String& baseName, const String& level, const StringBundle* parent,
                                        const std::vector<std::string>& directories)
{
    const String name = bundleName(baseName, level);
    const std::string fileName = name.toUtf8() + ".properties";
    std::string bytes;
    for (const std::string& directory : directories) {
        const std::string path = directory + "/" + fileName;
        if (!readFile(path, bytes))
            continue;
        std::vector<std::pair<String, String>> entries;
        detail::parseProperties(bytes.data(), bytes.size(), String(path.c_str(), -1, u"UTF-8"), entries);
        Reference<ListStringBundle> bundle(new ListStringBundle(name, parent));
        for (const auto& entry : entries)
            bundle->put(entry.first, entry.second);
        return bundle;
    }
    return nullptr;
}

} // namespace

StringBundle::StringBundle() = default;

StringBundle::~StringBundle() = default;

QV_BEGIN_INTERFACE_MAP(StringBundle)
QV_INTERFACE_ENTRY(StringBundle, IStringBundle)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Result StringBundle::GetString(const char16_t* key, util::ICharBuffer* out) const
{
    if (key == nullptr)
        return results::POINTER;
    return detail::fillCharBuffer(out, [&] { return getString(String(key)); });
}

Result StringBundle::GetBundleName(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getBundleName(); });
}

Reference<const StringBundle> StringBundle::getBundle(const String& baseName, const Locale& locale)
{
    // Least specific first, so that each level can name its parent.
    std::vector<String> levels{String()};
    if (locale.getLanguage().getLength() > 0) {
        levels.push_back(locale.getLanguage());
        if (locale.getCountry().getLength() > 0)
            levels.push_back(String(locale.getLanguage()).append(u'_').append(locale.getCountry()));
        if (locale.getVariant().getLength() > 0)
            levels.push_back(locale.toString());
    }

    Guard guard(lock());
    BundleCache& state = cache();
    std::vector<std::string> directories;
    bool haveDirectories = false;
    Reference<const StringBundle> found;
    for (const String& level : levels) {
        const auto key = std::make_pair(baseName, level);
        auto cached = state.levels.find(key);
        if (cached == state.levels.end()) {
            if (!haveDirectories) {
                directories = searchDirectories(state.searchPath);
                haveDirectories = true;
            }
            // A component outranks a file of the same level, as compiled
            // bundles outrank properties files in Java.
            Reference<const StringBundle> loaded = createLevel(baseName, level, found.get());
            if (!loaded)
                loaded = loadLevel(baseName, level, found.get(), directories);
            cached = state.levels.emplace(key, loaded).first;
        }
        if (cached->second)
            found = cached->second;
    }
    if (!found) {
        const String name = bundleName(baseName, locale.toString());
        throw MissingResourceException(
            String(u"no bundle '").append(baseName).append(u"' for locale '").append(locale.toString()).append(u"'"),
            name, String());
    }
    return found;
}

Reference<const StringBundle> StringBundle::getBundle(const String& baseName)
{
    return getBundle(baseName, Locale::getDefault());
}

void StringBundle::setSearchPath(const String& directories)
{
    Guard guard(lock());
    cache().searchPath = directories;
    cache().levels.clear();
}

String StringBundle::getSearchPath()
{
    Guard guard(lock());
    return cache().searchPath;
}

void StringBundle::clearCache()
{
    Guard guard(lock());
    cache().levels.clear();
}

} // namespace i18n
} // namespace qv
