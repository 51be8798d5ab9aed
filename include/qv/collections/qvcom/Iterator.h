#ifndef QV_COLLECTIONS_QVCOM_ITERATOR_H
#define QV_COLLECTIONS_QVCOM_ITERATOR_H

#include <qv/core/IQVUnknown.h>

namespace qv {
namespace collections {
namespace qvcom {

// A walk over the elements of a collection that cannot change it.
class ConstIterator : public IQVUnknown {
public:
    static constexpr GUID iid = {0x1F5B46C2, 0x9C80, 0x4D42, {0xAA, 0x21, 0x7F, 0xE9, 0x59, 0x57, 0xEB, 0xA7}};

    virtual Result HasNext(bool* result) = 0;
    // The next element with a reference taken for the caller (an element may
    // be null). A failure when the collection changed behind the iterator's
    // back or the walk is over.
    virtual Result Next(IQVUnknown** element) = 0;

protected:
    ~ConstIterator() = default;
};

// The same, able to remove the element that Next returned last.
class Iterator : public ConstIterator {
public:
    static constexpr GUID iid = {0x882D5856, 0x0327, 0x4DE6, {0x80, 0xB4, 0x6D, 0x3D, 0x4F, 0x3F, 0xFB, 0xDF}};

    virtual Result Remove() = 0;

protected:
    ~Iterator() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
