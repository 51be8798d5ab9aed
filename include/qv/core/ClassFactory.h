#ifndef QV_CORE_CLASSFACTORY_H
#define QV_CORE_CLASSFACTORY_H

#include <qv/core/Boundary.h>
#include <qv/core/ComObject.h>
#include <qv/core/Module.h>

namespace qv {
namespace qvcom {

// The component model's class-factory interface: creates instances of one
// class and locks the module that serves it.
class IQVClassFactory : public IQVUnknown {
public:
    static constexpr GUID iid = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    virtual Result CreateInstance(IQVUnknown* outer, const GUID& iid, void** ppv) const = 0;
    virtual Result LockServer(short lock) = 0;

protected:
    ~IQVClassFactory() = default;
};

// The creating function a factory calls: (context, outer, iid, ppv).
typedef Result (*CreateInstanceFunction)(void* context, IQVUnknown* outer, const GUID& iid, void** ppv);

// A class factory over a creating function. It is not counted in its
// module's lock count (a cached factory would otherwise keep the module
// loaded for ever); LockServer is how a client keeps the module.
class QV_EXPORT ClassFactory : public ComObject, public IQVClassFactory {
public:
    ClassFactory(Module* module, CreateInstanceFunction creator, void* context) noexcept;
    ~ClassFactory() override;

    // The factory-creating function of ClassData rows: context is the
    // class's CreateInstanceFunction, and the module is the context the
    // factory hands to it.
    static Result CreateFactory(Module* module, uintptr_t context, const GUID& iid, void** ppv);

    // 0x80004003 for a null ppv; with an outer object only the unknown
    // interface may be asked for (0x80070057 otherwise); then the creating
    // function's result.
    Result CreateInstance(IQVUnknown* outer, const GUID& iid, void** ppv) const override;
    // Non-zero raises the module's lock count, zero lowers it; always 0.
    Result LockServer(short lock) override;

    Module* GetModule() const noexcept { return m_pModule; }

    QV_DECLARE_INTERFACE_MAP()

private:
    Module* m_pModule;
    CreateInstanceFunction m_creator;
    void* m_context;
};

// The creating function of a component class T with a default constructor:
// the object belongs to the module given as context (so it counts in its
// lock count) and is answered for iid. Aggregation is refused (0x80040110).
template <class T>
struct ComCreator {
    static Result CreateInstance(void* context, IQVUnknown* outer, const GUID& iid, void** ppv)
    {
        if (!ppv)
            return results::POINTER;
        *ppv = nullptr;
        if (outer)
            return results::NOAGGREGATION;
        return guardBoundary([&] {
            T* object = new T();
            object->SetComModule(static_cast<Module*>(context));
            object->AddRef();
            const Result result = object->QueryInterface(iid, ppv);
            object->Release();
            return result;
        });
    }
};

} // namespace qvcom
} // namespace qv

// A ClassData row for component class Class with identifier clsid; the class
// supplies GetComProgID, GetComVersionIndependentProgID, GetComDescription and
// GetComObjectVersion (ComObject's give none).
#define QV_CLASS_DATA_ENTRY(Class, clsid)                                                                              \
    {                                                                                                                  \
        &(clsid), reinterpret_cast<uintptr_t>(&::qv::qvcom::ComCreator<Class>::CreateInstance),                        \
            &::qv::qvcom::ClassFactory::CreateFactory, &Class::GetComProgID, &Class::GetComVersionIndependentProgID,   \
            &Class::GetComDescription, &Class::GetComObjectVersion, nullptr                                            \
    }
#define QV_CLASS_DATA_END                                                                                              \
    {                                                                                                                  \
        nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr                                               \
    }

#endif
