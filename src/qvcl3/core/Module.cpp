#include <qv/core/Boundary.h>
#include <qv/core/Module.h>
#include <qv/util/Guid.h>
#include <qv/util/RegistryKey.h>

#include <string>

namespace qv {
namespace qvcom {

namespace {

bool hasText(const char16_t* text) noexcept
{
    return text && *text;
}

const char16_t* textOf(ClassTextFunction function)
{
    return function ? function() : nullptr;
}

std::u16string classKeyPath(const ClassData* row)
{
    const String text = util::Guid(*row->pclsid).toString();
    return u"CLSID\\" + std::u16string(text.getData(), static_cast<size_t>(text.getLength()));
}

void setDefault(const util::RegistryKey& root, const std::u16string& path, const char16_t* value)
{
    root.createKey(path.c_str()).setValue(nullptr, String(value));
}

// A ProgID key goes with the class only while it still names the class:
// another module may have taken the ProgID over since.
void deleteProgIdKey(const util::RegistryKey& root, const char16_t* progId, const GUID& clsid)
{
    if (!hasText(progId) || !root.hasKey(progId))
        return;
    const util::RegistryKey key = root.openKey(progId);
    if (!key.hasKey(u"CLSID"))
        return;
    util::Guid named;
    if (util::Guid::tryParse(key.openKey(u"CLSID").getValue(nullptr).getData(), named) && named == util::Guid(clsid))
        root.deleteKey(progId);
}

} // namespace

Module::Module(ClassData* table) : m_classTable(table), m_lock("qv::qvcom::Module::m_lock", 0) {}

Module::~Module()
{
    for (ClassData* row = m_classTable; row && row->pclsid; ++row) {
        if (IQVUnknown* factory = row->pFactory.exchange(nullptr))
            factory->Release();
    }
}

Result Module::GetClassObject(const GUID& clsid, const GUID& iid, void** ppv)
{
    if (!ppv)
        return results::POINTER;
    *ppv = nullptr;
    if (!m_classTable || !m_classTable->pclsid)
        return results::CLASSNOTAVAILABLE;
    Result result = results::CLASSNOTAVAILABLE;
    for (ClassData* row = m_classTable; row->pclsid; ++row) {
        result = TryGetClassObject(clsid, iid, ppv, row);
        if (result >= 0)
            break;
    }
    return result;
}

Result Module::TryGetClassObject(const GUID& clsid, const GUID& iid, void** ppv, ClassData* row)
{
    if (clsid != *row->pclsid)
        return results::CLASSNOTAVAILABLE;
    IQVUnknown* factory = row->pFactory.load(std::memory_order_acquire);
    if (!factory) {
        Result result = results::FAIL;
        const Result locked = guardBoundary([&] {
            m_lock.wait();
            factory = row->pFactory.load(std::memory_order_acquire);
            if (!factory && row->pfnCreateFactory) {
                void* made = nullptr;
                result = row->pfnCreateFactory(this, row->context, IQVUnknown::iid, &made);
                if (result >= 0 && made) {
                    factory = static_cast<IQVUnknown*>(made);
                    row->pFactory.store(factory, std::memory_order_release);
                }
            }
            m_lock.signal();
        });
        if (locked < 0)
            return locked;
        if (!factory)
            return result < 0 ? result : results::FAIL;
    }
    return factory->QueryInterface(iid, ppv);
}

Result Module::RegisterClassEntry(ClassData* row, const char16_t*)
{
    return guardBoundary([&] {
        const util::RegistryKey root = util::RegistryKey::classesRoot();
        const String clsidText = util::Guid(*row->pclsid).toString();
        const char16_t* progId = textOf(row->pfnGetProgID);
        const char16_t* independent = textOf(row->pfnGetVersionIndependentProgID);
        const char16_t* description = textOf(row->pfnGetDescription);
        const char16_t* version = textOf(row->pfnGetObjectVersion);
        const std::u16string classKey = classKeyPath(row);

        if (hasText(progId)) {
            const util::RegistryKey key = root.createKey(progId);
            if (hasText(description))
                key.setValue(nullptr, String(description));
            key.createKey(u"CLSID").setValue(nullptr, clsidText);
        }
        const util::RegistryKey key = root.createKey(classKey.c_str());
        if (hasText(description))
            key.setValue(nullptr, String(description));
        // The class key names both ProgIDs even when they are empty, so that a
        // reader finds the same layout for every registered class.
        setDefault(root, classKey + u"\\ProgID", hasText(progId) ? progId : u"");
        setDefault(root, classKey + u"\\VersionIndependentProgID", hasText(independent) ? independent : u"");
        if (hasText(version))
            setDefault(root, classKey + u"\\Version", version);
        if (hasText(independent)) {
            const util::RegistryKey viKey = root.createKey(independent);
            if (hasText(description))
                viKey.setValue(nullptr, String(description));
            viKey.createKey(u"CLSID").setValue(nullptr, clsidText);
            if (hasText(progId))
                viKey.createKey(u"CurVer").setValue(nullptr, String(progId));
        }
    });
}

Result Module::UnregisterClassEntry(ClassData* row)
{
    return guardBoundary([&] {
        const util::RegistryKey root = util::RegistryKey::classesRoot();
        deleteProgIdKey(root, textOf(row->pfnGetProgID), *row->pclsid);
        deleteProgIdKey(root, textOf(row->pfnGetVersionIndependentProgID), *row->pclsid);
        const std::u16string classKey = classKeyPath(row);
        if (root.hasKey(classKey.c_str()))
            root.deleteKey(classKey.c_str());
    });
}

Result Module::RegisterServer(const char16_t* modulePath)
{
    for (ClassData* row = m_classTable; row && row->pclsid; ++row) {
        const Result result = RegisterClassEntry(row, modulePath);
        if (result < 0)
            return result;
    }
    return results::OK;
}

Result Module::UnregisterServer()
{
    Result first = results::OK;
    for (ClassData* row = m_classTable; row && row->pclsid; ++row) {
        const Result result = UnregisterClassEntry(row);
        if (result < 0 && first >= 0)
            first = result;
    }
    return first;
}

Result Module::CanUnloadNow() const
{
    return GetLockCount() == 0 ? 0 : 1;
}

Result Module::RegisterServer(const unsigned short* modulePath)
{
    return RegisterServer(reinterpret_cast<const char16_t*>(modulePath));
}

Result Module::RegisterServer(QVHANDLE moduleHandle)
{
    int32_t length = 0;
    Result result = QVModuleGetFileName(moduleHandle, nullptr, 0, &length);
    if (result != results::BUFFER_TOO_SMALL)
        return result < 0 ? result : results::FAIL;
    return guardBoundary([&] {
        std::u16string path(static_cast<size_t>(length) + 1, u'\0');
        throwIfFailed(QVModuleGetFileName(moduleHandle, &path[0], length + 1, &length));
        return RegisterServer(path.c_str());
    });
}

} // namespace qvcom
} // namespace qv
