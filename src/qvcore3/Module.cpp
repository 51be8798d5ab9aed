#include "FaultInjection.h"
#include "HandleTable.h"
#include "RegistryStore.h"
#include "Utf.h"

#include <dlfcn.h>
#include <limits.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <string>

using namespace qvcore3;

namespace {

// The Windows codes a loader failure had on the original platform.
constexpr QVRESULT kBadExecutable = static_cast<QVRESULT>(0x800700C1); // ERROR_BAD_EXE_FORMAT

// One handle per loaded object, found again by the object's load address, so
// that the initialised flag belongs to the module rather than to a handle.
// Module handles live as long as the process. No reference on the object is
// kept: a library asking for its own handle must stay unloadable.
class ModuleObject : public HandleObject {
public:
    explicit ModuleObject(const void* base) noexcept : HandleObject(Kind::Module), m_base(base) {}

    const void* const m_base;
    std::atomic<int32_t> m_initialized{0};
    ModuleObject* m_next = nullptr; // guarded by g_modulesLock
    QVHANDLE m_handle = QV_INVALID_HANDLE;
};

pthread_mutex_t g_modulesLock = PTHREAD_MUTEX_INITIALIZER;
ModuleObject* g_modules = nullptr;

class LibraryObject : public HandleObject {
public:
    explicit LibraryObject(void* library) noexcept : HandleObject(Kind::Library), m_library(library) {}
    ~LibraryObject() override { closeResources(); }

    QVRESULT closeResources() noexcept override
    {
        void* library = m_library;
        m_library = nullptr;
        return library && dlclose(library) != 0 ? QV_E_FAIL : QV_S_OK;
    }

    void* m_library;
};

constexpr uint32_t kModuleMask = KindBit(Kind::Module);
constexpr uint32_t kLibraryMask = KindBit(Kind::Library);

bool HasSlash(const char* text) noexcept
{
    for (; *text; ++text) {
        if (*text == '/') {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" QVRESULT QVModuleGetHandle(const void* address, QVHANDLE* module) noexcept
{
    if (!address || !module) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVModuleGetHandle);
    Dl_info info{};
    if (dladdr(address, &info) == 0 || !info.dli_fbase) {
        return QV_E_INVALIDARG;
    }
    pthread_mutex_lock(&g_modulesLock);
    for (ModuleObject* known = g_modules; known; known = known->m_next) {
        if (known->m_base == info.dli_fbase) {
            *module = known->m_handle;
            pthread_mutex_unlock(&g_modulesLock);
            return QV_S_OK;
        }
    }
    ModuleObject* object = new (std::nothrow) ModuleObject(info.dli_fbase);
    QVRESULT result = QV_E_OUTOFMEMORY;
    if (object) {
        // Module handles are never closed, so the object outlives the list entry.
        result = HandleInsert(object, &object->m_handle);
    }
    if (QV_SUCCEEDED(result)) {
        object->m_next = g_modules;
        g_modules = object;
        *module = object->m_handle;
    }
    pthread_mutex_unlock(&g_modulesLock);
    return result;
}

extern "C" QVRESULT QVModuleSetInitialized(QVHANDLE module, int32_t initialized) noexcept
{
    HandleRef ref(module, kModuleMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVModuleSetInitialized);
    ref.as<ModuleObject>()->m_initialized.store(initialized != 0 ? 1 : 0, std::memory_order_release);
    return QV_S_OK;
}

// 0 for a handle that is not a module's, as for one not initialised.
extern "C" int32_t QVModuleIsInitialized(QVHANDLE module) noexcept
{
    HandleRef ref(module, kModuleMask);
    return ref ? ref.as<ModuleObject>()->m_initialized.load(std::memory_order_acquire) : 0;
}

// A path with a slash is opened as given; a bare name is searched the way
// dlopen searches. The reason for a failure is told by the file itself: not
// there (or not reachable) gives errno's code, there but not loadable
// ERROR_BAD_EXE_FORMAT.
extern "C" QVRESULT QVModuleLibOpen(QVHANDLE module, const char16_t* path, QVHANDLE* library) noexcept
{
    if (!path || !library) {
        return QV_E_POINTER;
    }
    if (*path == 0) {
        return QV_E_INVALIDARG;
    }
    if (module != QV_INVALID_HANDLE) {
        HandleRef asking(module, kModuleMask);
        if (!asking) {
            return QV_E_INVALIDARG;
        }
    }
    QV_FAULT_POINT(QVModuleLibOpen);
    Utf8String narrow;
    QVRESULT result = narrow.assign(path);
    if (QV_FAILED(result)) {
        return result;
    }
    void* opened = dlopen(narrow.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!opened) {
        if (!HasSlash(narrow.c_str())) {
            return QV_E_FILE_NOT_FOUND;
        }
        struct stat status;
        if (stat(narrow.c_str(), &status) != 0) {
            return QVResultFromNative(errno);
        }
        return S_ISDIR(status.st_mode) ? QVResultFromNative(EISDIR) : kBadExecutable;
    }
    LibraryObject* object = new (std::nothrow) LibraryObject(opened);
    if (!object) {
        dlclose(opened);
        return QV_E_OUTOFMEMORY;
    }
    return HandleInsert(object, library);
}

// A symbol whose value is null is found with a null address.
extern "C" QVRESULT QVLibGetSymbol(QVHANDLE library, const char16_t* name, void** address) noexcept
{
    if (!name || !address) {
        return QV_E_POINTER;
    }
    HandleRef ref(library, kLibraryMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVLibGetSymbol);
    Utf8String narrow;
    const QVRESULT result = narrow.assign(name);
    if (QV_FAILED(result)) {
        return result;
    }
    dlerror();
    void* symbol = dlsym(ref.as<LibraryObject>()->m_library, narrow.c_str());
    if (!symbol && dlerror() != nullptr) {
        return QV_E_PROC_NOT_FOUND;
    }
    *address = symbol;
    return QV_S_OK;
}

extern "C" QVRESULT QVModuleLibClose(QVHANDLE library) noexcept
{
    const QVRESULT result = HandleClose(library, kLibraryMask);
    if (QV_FAILED(result)) {
        return result;
    }
    const QVRESULT fault = FaultCheck(FaultOp::QVModuleLibClose);
    return fault != QV_S_OK ? fault : result;
}

// The path the object was loaded from, made absolute where it can be, so that
// a module registering itself names a file that other processes find.
extern "C" QVRESULT QVModuleGetFileName(QVHANDLE module, char16_t* path, int32_t capacity, int32_t* length) noexcept
{
    if (!path && capacity != 0) {
        return QV_E_POINTER;
    }
    HandleRef ref(module, kModuleMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    Dl_info info{};
    if (dladdr(ref.as<ModuleObject>()->m_base, &info) == 0 || !info.dli_fname) {
        return QV_E_FAIL;
    }
    char resolved[PATH_MAX];
    const char* name = info.dli_fname;
    if (*name == 0) {
        // The main program: dladdr does not name it.
        const ssize_t n = readlink("/proc/self/exe", resolved, sizeof resolved - 1);
        if (n < 0) {
            return QVResultFromNative(errno);
        }
        resolved[n] = 0;
        name = resolved;
    } else if (realpath(name, resolved)) {
        name = resolved;
    }
    return GuardAllocation([&] { return CopyOut(Utf16FromUtf8(name), path, capacity, length); });
}
