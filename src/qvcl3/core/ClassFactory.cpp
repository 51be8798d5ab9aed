#include <qv/core/ClassFactory.h>

namespace qv {
namespace qvcom {

QV_BEGIN_INTERFACE_MAP(ClassFactory)
QV_INTERFACE_ENTRY(ClassFactory, IQVClassFactory)
QV_INTERFACE_CHAIN(ComObject)
QV_END_INTERFACE_MAP()

ClassFactory::ClassFactory(Module* module, CreateInstanceFunction creator, void* context) noexcept
    : m_pModule(module), m_creator(creator), m_context(context)
{}

ClassFactory::~ClassFactory() = default;

Result ClassFactory::CreateFactory(Module* module, uintptr_t context, const GUID& iid, void** ppv)
{
    if (!ppv)
        return results::POINTER;
    *ppv = nullptr;
    if (!context)
        return results::INVALIDARG;
    return guardBoundary([&] {
        ClassFactory* factory = new ClassFactory(module, reinterpret_cast<CreateInstanceFunction>(context), module);
        factory->AddRef();
        const Result result = factory->QueryInterface(iid, ppv);
        factory->Release();
        return result;
    });
}

Result ClassFactory::CreateInstance(IQVUnknown* outer, const GUID& iid, void** ppv) const
{
    if (!ppv)
        return results::POINTER;
    if (outer && iid != IQVUnknown::iid) {
        *ppv = nullptr;
        return results::INVALIDARG;
    }
    return m_creator(m_context, outer, iid, ppv);
}

Result ClassFactory::LockServer(short lock)
{
    if (m_pModule) {
        if (lock)
            m_pModule->Lock();
        else
            m_pModule->Unlock();
    }
    return results::OK;
}

} // namespace qvcom
} // namespace qv
