#ifndef QV_CORE_MODULE_H
#define QV_CORE_MODULE_H

#include <qv/core/Export.h>
#include <qv/core/IQVUnknown.h>
#include <qv/sync/Mutex.h>

#include <atomic>
#include <cstdint>

namespace qv {
namespace qvcom {

class Module;

// Makes the class factory of a row: (module, the row's context, interface
// wanted, output). ClassFactory::CreateFactory is the usual one.
typedef Result (*CreateFactoryFunction)(Module* module, uintptr_t context, const GUID& iid, void** ppv);
// One of the registration texts of a class (GetComProgID and friends); null
// or empty means "none".
typedef const char16_t* (*ClassTextFunction)();

// One creatable class of a module. A module's table is an array of rows
// ended by a row whose pclsid is null (QV_CLASS_DATA_END).
struct ClassData {
    const GUID* pclsid;
    // Passed unchanged to pfnCreateFactory: the class's own creating function.
    uintptr_t context;
    CreateFactoryFunction pfnCreateFactory;
    ClassTextFunction pfnGetProgID;
    ClassTextFunction pfnGetVersionIndependentProgID;
    // The class's description: the default value of its class key and of its
    // ProgID keys.
    ClassTextFunction pfnGetDescription;
    // The class's version: the default value of the class key's "Version"
    // subkey.
    ClassTextFunction pfnGetObjectVersion;
    // The class factory, made on first request and owned by the row from then
    // on. Read without the module lock once set, hence atomic.
    std::atomic<IQVUnknown*> pFactory;
};

// The unit that owns component classes: hands out their class factories,
// counts what keeps it loaded, and writes or removes its classes'
// registration under the classes root of the key store.
//
// The lock count is the number of live referenced objects and server locks:
// component objects raise it on their first reference and lower it on their
// last release; ClassFactory::LockServer raises and lowers it too.
class QV_EXPORT Module {
public:
    // table may be null: a module without classes.
    explicit Module(ClassData* table = nullptr);
    // Releases the class factories the rows have cached.
    virtual ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // The factory of class clsid asked for interface iid: 0x80004003 for a
    // null ppv, 0x80040111 when no row has the class. Each row's factory is
    // made once, under m_lock, and shared by every later request; a failed
    // making is not remembered.
    virtual Result GetClassObject(const GUID& clsid, const GUID& iid, void** ppv);

protected:
    virtual Result TryGetClassObject(const GUID& clsid, const GUID& iid, void** ppv, ClassData* row);
    // Writes one row's keys (see docs/modules.md for the layout).
    virtual Result RegisterClassEntry(ClassData* row, const char16_t* modulePath);
    // Removes the row's class key, and its ProgID keys while they still name
    // this class.
    virtual Result UnregisterClassEntry(ClassData* row);

public:
    // Every row in turn; stops at the first failure and returns its code.
    virtual Result RegisterServer(const char16_t* modulePath);
    // Every row, also past a failure; returns the first failure's code.
    virtual Result UnregisterServer();
    // 0 (may unload) exactly when the lock count is 0, otherwise 1.
    virtual Result CanUnloadNow() const;

    Result RegisterServer(const unsigned short* modulePath);
    // Registers with the file of a module handle (from QVModuleGetHandle).
    Result RegisterServer(QVHANDLE moduleHandle);

    int32_t Lock() noexcept { return m_lockCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    int32_t Unlock() noexcept { return m_lockCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    int32_t GetLockCount() const noexcept { return m_lockCount.load(std::memory_order_acquire); }
    ClassData* GetClassTable() const noexcept { return m_classTable; }

private:
    ClassData* m_classTable;
    std::atomic<int32_t> m_lockCount{0};
    sync::Mutex m_lock;
};

} // namespace qvcom
} // namespace qv

#endif
