#ifndef QVCL3_COLLECTIONS_QVCOM_ELEMENTS_H
#define QVCL3_COLLECTIONS_QVCOM_ELEMENTS_H

#include <qv/collections/qvcom/AbstractCollection.h>
#include <qv/collections/qvcom/AbstractMap.h>
#include <qv/core/Reference.h>

namespace qv {
class String;

namespace collections {
namespace qvcom {

// A read-only walk over any Collection. The library's own collections are
// walked through their class operations, so what they throw keeps its type;
// others through the interface, failures thrown as ResultException.
class ElementWalk {
public:
    explicit ElementWalk(const Collection& collection);
    bool hasNext();
    Reference<IQVUnknown> next();

private:
    Reference<AbstractIterator> m_own;
    Reference<ConstIterator> m_foreign;
};

int32_t sizeOf(const Collection& collection);
int32_t sizeOf(const Map& map);

// The same over the entries of any Map, handing out keys and values.
class EntryWalk {
public:
    explicit EntryWalk(const Map& map);
    bool next(Reference<IQVUnknown>& key, Reference<IQVUnknown>& value);

private:
    Reference<AbstractIterator> m_own;
    Reference<ConstIterator> m_foreign;
};

// Key and value of an element that should be a MapEntry; false when it is not.
bool readEntry(const IQVUnknown* element, Reference<IQVUnknown>& key, Reference<IQVUnknown>& value);

// The text of an element inside a collection's text form.
void appendElementText(String& text, const IQVUnknown* element);

// Order of two unequal elements: by IQVComparable where the first has it,
// otherwise (or when that says 0) by address of their identities.
int orderOf(const IQVUnknown* a, const IQVUnknown* b);

// -1, 0 or 1 for two addresses.
int orderOfAddresses(const void* a, const void* b) noexcept;

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
