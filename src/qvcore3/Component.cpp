#include "RegistryStore.h"
#include "Utf.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace qvcore3 {

// The class-factory interface as every module's factories lay it out: the
// three operations of the unknown interface, then CreateInstance and
// LockServer. The platform layer only calls through it. Kept out of the
// anonymous namespace: the compiler must not conclude that no class in the
// program implements it.
class ClassFactoryFace {
public:
    virtual QVRESULT QueryInterface(const GUID& iid, void** object) = 0;
    virtual uint32_t AddRef() const = 0;
    virtual uint32_t Release() const = 0;
    virtual QVRESULT CreateInstance(void* outer, const GUID& iid, void** object) const = 0;
    virtual QVRESULT LockServer(short lock) = 0;

protected:
    ~ClassFactoryFace() = default;
};

} // namespace qvcore3

using namespace qvcore3;

namespace {

constexpr GUID kClassFactoryIid = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// Braced 8-4-4-4-12: the index in the text of each byte's two digits.
constexpr int kDigitAt[16] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};
constexpr int kTextLength = 38;

int HexValue(char16_t c) noexcept
{
    const int value = DigitValue(c);
    return value < 16 ? value : -1;
}

// The bytes of a GUID in text order (Data1..Data3 most significant first).
void ToBytes(const GUID& guid, uint8_t bytes[16]) noexcept
{
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<uint8_t>(guid.Data1 >> (24 - 8 * i));
    }
    bytes[4] = static_cast<uint8_t>(guid.Data2 >> 8);
    bytes[5] = static_cast<uint8_t>(guid.Data2);
    bytes[6] = static_cast<uint8_t>(guid.Data3 >> 8);
    bytes[7] = static_cast<uint8_t>(guid.Data3);
    std::memcpy(bytes + 8, guid.Data4, 8);
}

void FromBytes(const uint8_t bytes[16], GUID& guid) noexcept
{
    guid.Data1 = (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) | (uint32_t{bytes[2]} << 8) | bytes[3];
    guid.Data2 = static_cast<uint16_t>((bytes[4] << 8) | bytes[5]);
    guid.Data3 = static_cast<uint16_t>((bytes[6] << 8) | bytes[7]);
    std::memcpy(guid.Data4, bytes + 8, 8);
}

std::u16string GuidText(const GUID& guid)
{
    char16_t text[kTextLength + 1];
    QVComStringFromGUID(&guid, text, kTextLength + 1);
    return std::u16string(text, kTextLength);
}

// A module loaded for its classes; kept until QVComFreeUnusedLibraries finds
// it unused.
struct LoadedModule {
    std::u16string path;
    QVHANDLE library;
    QVDllGetClassObjectFunction getClassObject;
    QVDllCanUnloadNowFunction canUnloadNow;
};

// Recursive: a module's start-up code or a component's constructor may
// itself create components. Held across the calls into a module, so that no
// module is unloaded while one of its functions runs.
pthread_mutex_t g_loadedLock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
std::vector<LoadedModule>* g_loaded = nullptr;

class LoadedLock {
public:
    LoadedLock() noexcept { pthread_mutex_lock(&g_loadedLock); }
    ~LoadedLock() { pthread_mutex_unlock(&g_loadedLock); }
    LoadedLock(const LoadedLock&) = delete;
    LoadedLock& operator=(const LoadedLock&) = delete;
};

QVRESULT LoadModule(QVHANDLE asking, const std::u16string& path, LoadedModule*& found)
{
    if (!g_loaded) {
        // Lives as long as the process: modules stay loaded until freed.
        g_loaded = new std::vector<LoadedModule>();
    }
    for (LoadedModule& module : *g_loaded) {
        if (module.path == path) {
            found = &module;
            return QV_S_OK;
        }
    }
    // Everything that may allocate happens before the module is opened.
    g_loaded->reserve(g_loaded->size() + 1);
    LoadedModule entry{path, QV_INVALID_HANDLE, nullptr, nullptr};
    QVHANDLE library = QV_INVALID_HANDLE;
    QVRESULT result = QVModuleLibOpen(asking, path.c_str(), &library);
    if (QV_FAILED(result)) {
        return result;
    }
    void* getClassObject = nullptr;
    void* canUnloadNow = nullptr;
    // Running out of memory while looking a name up says nothing about the
    // module: it is reported as such, not as a missing export.
    result = QVLibGetSymbol(library, u"DllGetClassObject", &getClassObject);
    if (QV_SUCCEEDED(result) && !getClassObject) {
        result = QV_E_PROC_NOT_FOUND;
    }
    if (QV_SUCCEEDED(result) && QVLibGetSymbol(library, u"DllCanUnloadNow", &canUnloadNow) == QV_E_OUTOFMEMORY) {
        result = QV_E_OUTOFMEMORY;
    }
    if (QV_FAILED(result)) {
        QVModuleLibClose(library);
        return result == QV_E_OUTOFMEMORY ? result : QV_E_PROC_NOT_FOUND;
    }
    // A module that cannot say whether it may go is never unloaded.
    entry.library = library;
    entry.getClassObject = reinterpret_cast<QVDllGetClassObjectFunction>(getClassObject);
    entry.canUnloadNow = reinterpret_cast<QVDllCanUnloadNowFunction>(canUnloadNow);
    g_loaded->push_back(std::move(entry));
    found = &g_loaded->back();
    return QV_S_OK;
}

// Asks a module's class factory for an object and lets the factory go. The
// factory's own type is the module's, unknown here: the call goes by the
// interface's slot layout, which the vptr check of UBSan cannot follow.
__attribute__((no_sanitize("vptr"))) QVRESULT CreateThroughFactory(void* factory, void* outer, const GUID& iid,
                                                                   void** object)
{
    ClassFactoryFace* face = static_cast<ClassFactoryFace*>(factory);
    const QVRESULT result = face->CreateInstance(outer, iid, object);
    face->Release();
    return result;
}

// A registration that is missing, or whose names the store refuses, is a
// class that is not registered.
QVRESULT NotRegisteredIfMissing(QVRESULT result) noexcept
{
    return result == QV_E_FILE_NOT_FOUND || result == QV_E_INVALIDARG ? QV_E_CLASSNOTREG : result;
}

} // namespace

extern "C" QVRESULT QVComGUIDFromString(const char16_t* text, GUID* guid) noexcept
{
    if (!text || !guid) {
        return QV_E_POINTER;
    }
    for (int i = 0; i < kTextLength; ++i) {
        if (text[i] == 0) {
            return QV_E_INVALIDARG;
        }
    }
    if (text[kTextLength] != 0 || text[0] != u'{' || text[37] != u'}' || text[9] != u'-' || text[14] != u'-' ||
        text[19] != u'-' || text[24] != u'-') {
        return QV_E_INVALIDARG;
    }
    uint8_t bytes[16];
    for (int i = 0; i < 16; ++i) {
        const int high = HexValue(text[kDigitAt[i]]);
        const int low = HexValue(text[kDigitAt[i] + 1]);
        if (high < 0 || low < 0) {
            return QV_E_INVALIDARG;
        }
        bytes[i] = static_cast<uint8_t>((high << 4) | low);
    }
    FromBytes(bytes, *guid);
    return QV_S_OK;
}

extern "C" QVRESULT QVComStringFromGUID(const GUID* guid, char16_t* text, int32_t capacity) noexcept
{
    if (!guid || !text) {
        return QV_E_POINTER;
    }
    if (capacity < kTextLength + 1) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    uint8_t bytes[16];
    ToBytes(*guid, bytes);
    const char16_t kTemplate[] = u"{00000000-0000-0000-0000-000000000000}";
    std::memcpy(text, kTemplate, sizeof kTemplate);
    for (int i = 0; i < 16; ++i) {
        text[kDigitAt[i]] = kDigits[bytes[i] >> 4];
        text[kDigitAt[i] + 1] = kDigits[bytes[i] & 0xF];
    }
    return QV_S_OK;
}

extern "C" QVRESULT QVComCreateGUID(GUID* guid) noexcept
{
    if (!guid) {
        return QV_E_POINTER;
    }
    uint8_t bytes[16];
    size_t done = 0;
    while (done < sizeof bytes) {
        const ssize_t n = getrandom(bytes + done, sizeof bytes - done, 0);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return QVResultFromNative(errno);
        }
        done += static_cast<size_t>(n);
    }
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    FromBytes(bytes, *guid);
    return QV_S_OK;
}

extern "C" QVRESULT QVComClassIDFromProgID(const char16_t* progId, GUID* clsid) noexcept
{
    if (!progId || !clsid) {
        return QV_E_POINTER;
    }
    return GuardAllocation([&]() -> QVRESULT {
        const std::u16string name(progId);
        if (name.empty()) {
            return QV_E_CLASSNOTREG;
        }
        std::u16string text;
        std::u16string current;
        QVRESULT result = ReadClassesRootDefault(name + u"\\CurVer", current);
        if (QV_SUCCEEDED(result) && !current.empty()) {
            result = ReadClassesRootDefault(current + u"\\CLSID", text);
        }
        if (QV_FAILED(result) || text.empty()) {
            if (result == QV_E_INVALID_DATA) {
                return result;
            }
            if (QV_FAILED(result = ReadClassesRootDefault(name + u"\\CLSID", text))) {
                return NotRegisteredIfMissing(result);
            }
        }
        return QV_SUCCEEDED(QVComGUIDFromString(text.c_str(), clsid)) ? QV_S_OK : QV_E_INVALID_DATA;
    });
}

extern "C" QVRESULT QVModuleComCreateObject(QVHANDLE module, const GUID* clsid, void* outer, const GUID* iid,
                                            void** object) noexcept
{
    if (!clsid || !iid || !object) {
        return QV_E_POINTER;
    }
    *object = nullptr;
    return GuardAllocation([&]() -> QVRESULT {
        std::u16string path;
        QVRESULT result = ReadClassesRootDefault(u"CLSID\\" + GuidText(*clsid) + u"\\InprocServer32", path);
        if (QV_FAILED(result)) {
            return NotRegisteredIfMissing(result);
        }
        if (path.empty()) {
            return QV_E_CLASSNOTREG;
        }
        LoadedLock lock;
        LoadedModule* loaded = nullptr;
        if (QV_FAILED(result = LoadModule(module, path, loaded))) {
            return result;
        }
        void* factory = nullptr;
        if (QV_FAILED(result = loaded->getClassObject(clsid, &kClassFactoryIid, &factory))) {
            return result;
        }
        if (!factory) {
            return QV_E_FAIL;
        }
        return CreateThroughFactory(factory, outer, *iid, object);
    });
}

extern "C" QVRESULT QVComCreateObjectByProgID(const char16_t* progId, void* outer, const GUID* iid,
                                              void** object) noexcept
{
    if (!progId || !iid || !object) {
        return QV_E_POINTER;
    }
    *object = nullptr;
    GUID clsid;
    const QVRESULT result = QVComClassIDFromProgID(progId, &clsid);
    if (QV_FAILED(result)) {
        return result;
    }
    return QVModuleComCreateObject(QV_INVALID_HANDLE, &clsid, outer, iid, object);
}

extern "C" QVRESULT QVComFreeUnusedLibraries(uint32_t* freed) noexcept
{
    LoadedLock lock;
    uint32_t count = 0;
    if (g_loaded) {
        for (size_t i = 0; i < g_loaded->size();) {
            LoadedModule& module = (*g_loaded)[i];
            if (module.canUnloadNow && module.canUnloadNow() == QV_S_OK) {
                QVModuleLibClose(module.library);
                g_loaded->erase(g_loaded->begin() + static_cast<std::ptrdiff_t>(i));
                ++count;
            } else {
                ++i;
            }
        }
    }
    if (freed) {
        *freed = count;
    }
    return QV_S_OK;
}
