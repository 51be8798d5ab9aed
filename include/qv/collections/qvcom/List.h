#ifndef QV_COLLECTIONS_QVCOM_LIST_H
#define QV_COLLECTIONS_QVCOM_LIST_H

#include <qv/collections/qvcom/Collection.h>
#include <qv/collections/qvcom/ListIterator.h>

namespace qv {
namespace collections {
namespace qvcom {

// An ordered collection reached by position, 0 to size - 1. A position
// outside that range (size itself included, except for InsertAt) fails
// without changing the list.
class List : public Collection {
public:
    static constexpr GUID iid = {0x3054B1B8, 0xF0B2, 0x4609, {0xBF, 0xBC, 0x00, 0x33, 0xCB, 0x02, 0x62, 0x4D}};

    virtual Result GetAt(int32_t index, IQVUnknown** element) const = 0;
    // previous may be null.
    virtual Result SetAt(int32_t index, IQVUnknown* element, IQVUnknown** previous) = 0;
    // index may equal the size: the element is appended.
    virtual Result InsertAt(int32_t index, IQVUnknown* element) = 0;
    // removed may be null.
    virtual Result RemoveAt(int32_t index, IQVUnknown** removed) = 0;
    // -1 when absent.
    virtual Result IndexOf(const IQVUnknown* element, int32_t* index) const = 0;
    virtual Result LastIndexOf(const IQVUnknown* element, int32_t* index) const = 0;
    // A list iterator whose first Next returns the element at index (0 to
    // the size).
    virtual Result CreateListIterator(int32_t index, ListIterator** iterator) = 0;
    // A live view of the positions [from, to) (see AbstractList::subList).
    virtual Result CreateSubList(int32_t from, int32_t to, List** view) = 0;

protected:
    ~List() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
