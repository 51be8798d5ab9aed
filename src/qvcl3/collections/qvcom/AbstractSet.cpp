#include <qv/collections/qvcom/AbstractSet.h>

#include "collections/qvcom/Elements.h"

namespace qv {
namespace collections {
namespace qvcom {

QV_BEGIN_INTERFACE_MAP(AbstractSet)
QV_INTERFACE_ENTRY(AbstractSet, Set)
QV_INTERFACE_CHAIN(AbstractCollection)
QV_END_INTERFACE_MAP()

AbstractSet::~AbstractSet() = default;

bool AbstractSet::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const Set* set = dynamic_cast<const Set*>(&other);
    return set && sizeOf(*set) == getSize() && containsAll(*set);
}

uint32_t AbstractSet::hashCode() const
{
    uint32_t hash = 0;
    Reference<AbstractIterator> it = createConstIterator();
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        if (!isSelf(element.get()))
            hash += elementHash(element.get());
    }
    return hash;
}

int AbstractSet::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const Set* set = dynamic_cast<const Set*>(&other);
    if (!set)
        return Object::compareTo(other);
    if (equals(other))
        return 0;
    const int32_t mine = getSize();
    const int32_t theirs = sizeOf(*set);
    if (mine != theirs)
        return mine < theirs ? -1 : 1;
    const uint32_t myHash = hashCode();
    const uint32_t theirHash = other.hashCode();
    if (myHash != theirHash)
        return myHash < theirHash ? -1 : 1;
    return Object::compareTo(other);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
