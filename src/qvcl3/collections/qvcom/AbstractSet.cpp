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
    return compareContainers<Set>(*this, other);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
