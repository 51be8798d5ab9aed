#ifndef QV_COLLECTIONS_QVCOM_LISTITERATOR_H
#define QV_COLLECTIONS_QVCOM_LISTITERATOR_H

#include <qv/collections/qvcom/Iterator.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// A walk over a list in either direction. The cursor sits between two
// elements: Next returns the one after it, Previous the one before it. Set
// and Remove act on the element returned last by Next or Previous; Add
// inserts before the cursor (so a following Next is not affected).
class ListIterator : public Iterator {
public:
    static constexpr GUID iid = {0x45C06579, 0xB594, 0x4EEB, {0xA2, 0xF8, 0xBD, 0x86, 0x02, 0xD3, 0x91, 0xEA}};

    virtual Result HasPrevious(bool* result) = 0;
    virtual Result Previous(IQVUnknown** element) = 0;
    // The position of the element Next would return (the size at the end).
    virtual Result NextIndex(int32_t* index) = 0;
    // The position of the element Previous would return (-1 at the start).
    virtual Result PreviousIndex(int32_t* index) = 0;
    // previous may be null.
    virtual Result Set(IQVUnknown* element, IQVUnknown** previous) = 0;
    virtual Result Add(IQVUnknown* element) = 0;

protected:
    ~ListIterator() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
