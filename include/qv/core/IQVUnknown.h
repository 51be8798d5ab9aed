#ifndef QV_CORE_IQVUNKNOWN_H
#define QV_CORE_IQVUNKNOWN_H

#include <qv/core/Guid.h>
#include <qv/core/Result.h>

#include <cstdint>

// The root of every component interface. Its identifier and operation layout
// are the component model's unknown interface. Operations never throw.
class IQVUnknown {
public:
    static constexpr GUID iid = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    virtual qv::Result QueryInterface(const GUID& iid, void** ppv) = 0;
    virtual uint32_t AddRef() const = 0;
    virtual uint32_t Release() const = 0;

protected:
    // Objects are destroyed by their last Release, never through an interface.
    ~IQVUnknown() = default;
};

// Comparison and hashing through the component boundary.
class IQVComparable : public IQVUnknown {
public:
    static constexpr GUID iid = {0x72038029, 0xFA65, 0x4255, {0xA9, 0x16, 0x1C, 0x56, 0x80, 0xAC, 0xFE, 0xBF}};

    virtual qv::Result CompareTo(const IQVUnknown* other, int* result) const = 0;
    virtual qv::Result HashCode(uint32_t* result) const = 0;

protected:
    ~IQVComparable() = default;
};

#endif
