#ifndef QV_CORE_COMOBJECT_H
#define QV_CORE_COMOBJECT_H

#include <qv/core/Export.h>
#include <qv/core/IQVUnknown.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qv {

class ComObject;

namespace qvcom {

class Module;

// A lookup function of an interface map: (object, identifier, output, row value).
typedef Result (*InterfaceLookup)(void* pThis, const GUID& iid, void** ppv, uintptr_t dw);

// One row of a class's static interface map.
//  piid: the interface identifier, or null for a chaining row;
//  pfn:  OFFSET_ROW (an interface at byte offset dw in the object), the address
//        of a lookup function called with dw, or 0 in the terminating row.
struct InterfaceData {
    const GUID* piid;
    uintptr_t pfn;
    uintptr_t dw;
};

constexpr uintptr_t OFFSET_ROW = 1;

// Answers a QueryInterface from a map. The unknown identifier always yields
// the object itself; otherwise rows are tried in order and the first match
// wins (see the .cpp for the failure rules of function rows).
QV_EXPORT Result QueryInterfaceMap(const InterfaceData* map, ComObject* pThis, const GUID& iid, void** ppv);

// The function of a chaining row: asks Base's map for the same object.
template <class Base>
Result chainInterfaceMap(void* pThis, const GUID& iid, void** ppv, uintptr_t)
{
    return QueryInterfaceMap(Base::GetComIntfMap(), static_cast<ComObject*>(pThis), iid, ppv);
}

// Byte offset of the Interface base inside a Class object.
template <class Class, class Interface>
uintptr_t interfaceOffset() noexcept
{
    // Any suitably aligned non-null address works; the cast only adjusts it.
    alignas(Class) static char probe[sizeof(Class)];
    Class* object = reinterpret_cast<Class*>(probe);
    return static_cast<uintptr_t>(reinterpret_cast<char*>(static_cast<Interface*>(object)) - probe);
}

} // namespace qvcom

// Base of every reference-counted object. The count starts at 0: whoever
// creates the object takes the first reference, and the last Release
// destroys it.
class QV_EXPORT ComObject : public IQVUnknown {
public:
    ComObject() noexcept = default;
    // Kept as is: a copy starts with its source's count and module, so code
    // that copies component objects by value manages the copy's lifetime
    // with its own AddRef/Release discipline.
    ComObject(const ComObject& other) noexcept;
    ComObject& operator=(const ComObject& other) noexcept;
    // Potentially throwing so that the wrappers of platform objects can report
    // a failed destroy from their destructors.
    virtual ~ComObject() noexcept(false);

    Result QueryInterface(const GUID& iid, void** ppv) override;
    // Inline, with the rare first and last reference out of line: every
    // interface query takes a reference and its caller drops it again.
    uint32_t AddRef() const override
    {
        int32_t n = InternalAddRef();
        if (n == 1 && m_module)
            lockModule();
        return static_cast<uint32_t>(n);
    }
    uint32_t Release() const override
    {
        int32_t n = InternalRelease();
        if (n == 0)
            destroy();
        return static_cast<uint32_t>(n);
    }

    int32_t GetRefCount() const noexcept { return m_refCount.load(std::memory_order_relaxed); }
    IQVUnknown* GetUnknown() noexcept { return this; }
    const IQVUnknown* GetUnknown() const noexcept { return this; }
    Result NonDelegatingQueryInterface(const GUID& interfaceId, void** ppv) { return QueryInterface(interfaceId, ppv); }
    void SetComModule(qvcom::Module* module) noexcept { m_module = module; }
    qvcom::Module* GetComModule() const noexcept { return m_module; }
    // Aggregation is refused by the base class; always 0x80040110.
    Result SetOuterUnknown(IQVUnknown* outer) noexcept;

    static const qvcom::InterfaceData* GetComIntfMap();
    // Registration texts of a creatable class; the base class has none.
    static const char16_t* GetComDescription() noexcept { return nullptr; }
    static const char16_t* GetComProgID() noexcept { return nullptr; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return nullptr; }
    static const char16_t* GetComObjectVersion() noexcept { return nullptr; }

protected:
    int32_t InternalAddRef() const noexcept { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    int32_t InternalRelease() const noexcept { return m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    // The module is counted on the first reference, not at construction: an
    // object built and destroyed unreferenced never touches it.
    void lockModule() const;
    void destroy() const;

    mutable std::atomic<int32_t> m_refCount{0};
    qvcom::Module* m_module = nullptr;
};

} // namespace qv

// Declares, inside a class body, the class's interface map and the three
// IQVUnknown operations answered from it. Needed by every class that adds an
// interface base, so that all of its interface tables share one count.
#define QV_DECLARE_INTERFACE_MAP()                                                                                     \
public:                                                                                                                \
    static const ::qv::qvcom::InterfaceData* GetComIntfMap();                                                          \
    ::qv::Result QueryInterface(const GUID& iid_, void** ppv_) override                                                \
    {                                                                                                                  \
        return ::qv::qvcom::QueryInterfaceMap(GetComIntfMap(), static_cast<::qv::ComObject*>(this), iid_, ppv_);       \
    }                                                                                                                  \
    uint32_t AddRef() const override                                                                                   \
    {                                                                                                                  \
        return ::qv::ComObject::AddRef();                                                                              \
    }                                                                                                                  \
    uint32_t Release() const override                                                                                  \
    {                                                                                                                  \
        return ::qv::ComObject::Release();                                                                             \
    }

// Defines a map in a source file:
//   QV_BEGIN_INTERFACE_MAP(Class)
//       QV_INTERFACE_ENTRY(Class, IInterface)
//       QV_INTERFACE_CHAIN(Base)
//   QV_END_INTERFACE_MAP()
#define QV_BEGIN_INTERFACE_MAP(Class)                                                                                  \
    const ::qv::qvcom::InterfaceData* Class::GetComIntfMap()                                                           \
    {                                                                                                                  \
        typedef Class MapOwner_;                                                                                       \
        static const ::qv::qvcom::InterfaceData map_[] = {
#define QV_INTERFACE_ENTRY(Class, Interface)                                                                           \
    {&Interface::iid, ::qv::qvcom::OFFSET_ROW, ::qv::qvcom::interfaceOffset<Class, Interface>()},
#define QV_INTERFACE_ENTRY_IID(Iid, Class, Interface)                                                                  \
    {&(Iid), ::qv::qvcom::OFFSET_ROW, ::qv::qvcom::interfaceOffset<Class, Interface>()},
#define QV_INTERFACE_CHAIN(Base) {nullptr, reinterpret_cast<uintptr_t>(&::qv::qvcom::chainInterfaceMap<Base>), 0},
#define QV_END_INTERFACE_MAP()                                                                                         \
    {                                                                                                                  \
        nullptr, 0, 0                                                                                                  \
    }                                                                                                                  \
    }                                                                                                                  \
    ;                                                                                                                  \
    (void)sizeof(MapOwner_);                                                                                           \
    return map_;                                                                                                       \
    }

#endif
