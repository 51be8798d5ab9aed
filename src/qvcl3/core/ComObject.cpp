#include <qv/core/ComObject.h>
#include <qv/core/Module.h>

namespace qv {

namespace qvcom {

Result QueryInterfaceMap(const InterfaceData* map, ComObject* pThis, const GUID& iid, void** ppv)
{
    if (!ppv)
        return results::POINTER;
    if (iid == IQVUnknown::iid) {
        // The unknown interface is always the object's primary one, never a row.
        pThis->AddRef();
        *ppv = static_cast<IQVUnknown*>(pThis);
        return results::OK;
    }
    for (const InterfaceData* row = map; row && row->pfn != 0; ++row) {
        if (row->piid && *row->piid != iid)
            continue;
        if (row->pfn == OFFSET_ROW) {
            IQVUnknown* found = reinterpret_cast<IQVUnknown*>(reinterpret_cast<char*>(pThis) + row->dw);
            found->AddRef();
            *ppv = found;
            return results::OK;
        }
        Result r = reinterpret_cast<InterfaceLookup>(row->pfn)(pThis, iid, ppv, row->dw);
        if (r == results::OK)
            return r;
        // A matching row that fails ends the walk; a chaining row that fails,
        // or any success code other than 0, lets it go on.
        if (row->piid && r < 0)
            return r;
    }
    *ppv = nullptr;
    return results::NOINTERFACE;
}

} // namespace qvcom

ComObject::ComObject(const ComObject& other) noexcept
    : IQVUnknown(), m_refCount(other.m_refCount.load(std::memory_order_relaxed)), m_module(other.m_module)
{}

ComObject& ComObject::operator=(const ComObject& other) noexcept
{
    if (this != &other) {
        m_refCount.store(other.m_refCount.load(std::memory_order_relaxed), std::memory_order_relaxed);
        m_module = other.m_module;
    }
    return *this;
}

ComObject::~ComObject() noexcept(false) = default;

Result ComObject::QueryInterface(const GUID& iid, void** ppv)
{
    return qvcom::QueryInterfaceMap(GetComIntfMap(), this, iid, ppv);
}

void ComObject::lockModule() const
{
    m_module->Lock();
}

void ComObject::destroy() const
{
    if (m_module)
        m_module->Unlock();
    delete this;
}

Result ComObject::SetOuterUnknown(IQVUnknown*) noexcept
{
    return results::NOAGGREGATION;
}

const qvcom::InterfaceData* ComObject::GetComIntfMap()
{
    static const qvcom::InterfaceData map[] = {
        {&IQVUnknown::iid, qvcom::OFFSET_ROW, 0},
        {nullptr, 0, 0},
    };
    return map;
}

} // namespace qv
