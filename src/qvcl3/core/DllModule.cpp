#include <qv/core/Boundary.h>
#include <qv/core/DllModule.h>
#include <qv/util/Guid.h>
#include <qv/util/RegistryKey.h>

namespace qv {
namespace qvcom {

DllModule::DllModule(ClassData* table) : Module(table) {}

DllModule::~DllModule() = default;

Result DllModule::RegisterServer()
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    // This object lives in the shared object it registers.
    const Result result = QVModuleGetHandle(this, &handle);
    if (result < 0)
        return result;
    return Module::RegisterServer(handle);
}

Result DllModule::RegisterServer(const char16_t* modulePath)
{
    if (!modulePath)
        return RegisterServer();
    return Module::RegisterServer(modulePath);
}

Result DllModule::RegisterClassEntry(ClassData* row, const char16_t* modulePath)
{
    const Result result = Module::RegisterClassEntry(row, modulePath);
    if (result < 0)
        return result;
    return guardBoundary([&] {
        String path(u"CLSID\\");
        path.append(util::Guid(*row->pclsid).toString());
        path.append(u"\\InprocServer32");
        util::RegistryKey::classesRoot().createKey(path.getData()).setValue(nullptr, String(modulePath));
    });
}

} // namespace qvcom
} // namespace qv
