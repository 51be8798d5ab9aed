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
    CycleGuard guard(CycleGuard::EQUALS, this, &other);
    if (guard.isRepeat())
        return true;
    return set && sizeOf(*set) == getSize() && containsAll(*set);
}

uint32_t AbstractSet::hashCode() const
{
    CycleGuard guard(CycleGuard::HASH, this);
    if (guard.isRepeat())
        return 0;
    uint32_t hash = 0;
    Reference<AbstractIterator> it = createConstIterator();
    while (it->hasNext())
        hash += elementHash(it->next().get());
    return hash;
}

int AbstractSet::compareTo(const Object& other) const
{
    return compareContainers<Set>(*this, other);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
