#ifndef QV_COLLECTIONS_QVCOM_COLLECTION_H
#define QV_COLLECTIONS_QVCOM_COLLECTION_H

#include <qv/collections/qvcom/Iterator.h>
#include <qv/core/IQVUnknown.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// A group of component-object elements held by reference count. The bool
// outputs named changed may be null when the caller does not care.
class Collection : public IQVUnknown {
public:
    static constexpr GUID iid = {0xE7A5CA7B, 0x8562, 0x42A5, {0x97, 0xEB, 0x3D, 0x83, 0x2A, 0xFA, 0x28, 0xB9}};

    virtual Result GetSize(int32_t* size) const = 0;
    virtual Result Contains(const IQVUnknown* element, bool* result) const = 0;
    virtual Result ContainsAll(const Collection* other, bool* result) const = 0;
    virtual Result Add(IQVUnknown* element, bool* changed) = 0;
    virtual Result AddAll(const Collection* other, bool* changed) = 0;
    virtual Result Remove(const IQVUnknown* element, bool* changed) = 0;
    virtual Result RemoveAll(const Collection* other, bool* changed) = 0;
    virtual Result RetainAll(const Collection* other, bool* changed) = 0;
    virtual Result Clear() = 0;
    virtual Result CreateIterator(Iterator** iterator) = 0;
    virtual Result CreateConstIterator(ConstIterator** iterator) const = 0;

protected:
    ~Collection() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
