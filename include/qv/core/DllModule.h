#ifndef QV_CORE_DLLMODULE_H
#define QV_CORE_DLLMODULE_H

#include <qv/core/Module.h>

namespace qv {
namespace qvcom {

// The module of a shared object: registration also writes, under each
// class key, "InprocServer32" naming the shared object's file, so that
// QVModuleComCreateObject can load it.
class QV_EXPORT DllModule : public Module {
public:
    explicit DllModule(ClassData* table = nullptr);
    ~DllModule() override;

    using Module::RegisterServer;
    // Registers with the file that holds this module object. A null
    // modulePath in RegisterServer(const char16_t*) means the same.
    Result RegisterServer();
    Result RegisterServer(const char16_t* modulePath) override;

protected:
    Result RegisterClassEntry(ClassData* row, const char16_t* modulePath) override;
};

} // namespace qvcom
} // namespace qv

// Defines the four functions a component module exports, over a DllModule
// object with static storage. Use once, at namespace scope, in the module.
#define QV_DLL_MODULE_EXPORTS(module)                                                                                  \
    extern "C" QVCORE3_API QVRESULT DllGetClassObject(const GUID* clsid, const GUID* iid, void** ppv) noexcept         \
    {                                                                                                                  \
        if (!clsid || !iid)                                                                                            \
            return ::qv::results::POINTER;                                                                             \
        return (module).GetClassObject(*clsid, *iid, ppv);                                                             \
    }                                                                                                                  \
    extern "C" QVCORE3_API QVRESULT DllCanUnloadNow() noexcept                                                         \
    {                                                                                                                  \
        return (module).CanUnloadNow();                                                                                \
    }                                                                                                                  \
    extern "C" QVCORE3_API QVRESULT DllRegisterServer() noexcept                                                       \
    {                                                                                                                  \
        return (module).RegisterServer();                                                                              \
    }                                                                                                                  \
    extern "C" QVCORE3_API QVRESULT DllUnregisterServer() noexcept                                                     \
    {                                                                                                                  \
        return (module).UnregisterServer();                                                                            \
    }

#endif
