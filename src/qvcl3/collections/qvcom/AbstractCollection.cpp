#include <qv/collections/qvcom/AbstractCollection.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <vector>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::guardBoundary;
using ::qv::qvcom::throwIfFailed;

namespace {

// The mutators report through an optional flag whether they changed the
// collection; it reads false for every failure, a null argument included.
template <typename Change>
Result reportChange(bool* changed, bool argumentGiven, Change change)
{
    if (changed)
        *changed = false;
    if (!argumentGiven)
        return results::POINTER;
    return guardBoundary([&] {
        const bool result = change();
        if (changed)
            *changed = result;
    });
}

} // namespace

QV_BEGIN_INTERFACE_MAP(AbstractCollection)
QV_INTERFACE_ENTRY(AbstractCollection, Collection)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AbstractCollection::AbstractCollection(const IQVComparator* comparator)
    : m_comparator(comparator ? comparator : GetDefaultComparator())
{}

AbstractCollection::AbstractCollection(const AbstractCollection& other)
    : Object(), Collection(), m_comparator(other.m_comparator)
{}

AbstractCollection::~AbstractCollection() = default;

bool AbstractCollection::elementsEqual(const IQVUnknown* a, const IQVUnknown* b) const
{
    bool equal = false;
    throwIfFailed(m_comparator->Equals(a, b, &equal));
    return equal;
}

uint32_t AbstractCollection::elementHash(const IQVUnknown* element) const
{
    uint32_t hash = 0;
    throwIfFailed(m_comparator->HashCode(element, &hash));
    return hash;
}

bool AbstractCollection::contains(const IQVUnknown* element) const
{
    Reference<AbstractIterator> it = createConstIterator();
    while (it->hasNext()) {
        if (elementsEqual(element, it->next().get()))
            return true;
    }
    return false;
}

bool AbstractCollection::add(IQVUnknown*)
{
    throw UnsupportedOperationException(QV_STR(u"this collection cannot add elements"));
}

bool AbstractCollection::remove(const IQVUnknown* element)
{
    Reference<AbstractIterator> it = createIterator();
    while (it->hasNext()) {
        if (elementsEqual(element, it->next().get())) {
            it->remove();
            return true;
        }
    }
    return false;
}

void AbstractCollection::clear()
{
    Reference<AbstractIterator> it = createIterator();
    while (it->hasNext()) {
        it->next();
        it->remove();
    }
}

bool AbstractCollection::containsAll(const Collection& other) const
{
    ElementWalk walk(other);
    while (walk.hasNext()) {
        if (!contains(walk.next().get()))
            return false;
    }
    return true;
}

bool AbstractCollection::addAll(const Collection& other)
{
    std::vector<Reference<IQVUnknown>> snapshot;
    snapshot.reserve(static_cast<size_t>(sizeOf(other)));
    ElementWalk walk(other);
    while (walk.hasNext())
        snapshot.push_back(walk.next());
    bool changed = false;
    for (const Reference<IQVUnknown>& element : snapshot)
        changed = add(element.get()) || changed;
    return changed;
}

bool AbstractCollection::removeAll(const Collection& other)
{
    bool changed = false;
    Reference<AbstractIterator> it = createIterator();
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        bool found = false;
        throwIfFailed(other.Contains(element.get(), &found));
        if (found) {
            it->remove();
            changed = true;
        }
    }
    return changed;
}

bool AbstractCollection::retainAll(const Collection& other)
{
    bool changed = false;
    Reference<AbstractIterator> it = createIterator();
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        bool found = false;
        throwIfFailed(other.Contains(element.get(), &found));
        if (!found) {
            it->remove();
            changed = true;
        }
    }
    return changed;
}

String AbstractCollection::toString()
{
    CycleGuard guard(CycleGuard::TEXT, this);
    if (guard.isRepeat())
        return String(u"(this collection)");
    String text(u"[");
    Reference<AbstractIterator> it = createConstIterator();
    bool first = true;
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        if (!first)
            text += u", ";
        first = false;
        appendElementText(text, element.get());
    }
    text += u']';
    return text;
}

Result AbstractCollection::GetSize(int32_t* size) const
{
    if (!size)
        return results::POINTER;
    *size = 0;
    return guardBoundary([&] { *size = getSize(); });
}

Result AbstractCollection::Contains(const IQVUnknown* element, bool* result) const
{
    if (!result)
        return results::POINTER;
    *result = false;
    return guardBoundary([&] { *result = contains(element); });
}

Result AbstractCollection::ContainsAll(const Collection* other, bool* result) const
{
    if (!result || !other)
        return results::POINTER;
    *result = false;
    return guardBoundary([&] { *result = containsAll(*other); });
}

Result AbstractCollection::Add(IQVUnknown* element, bool* changed)
{
    return reportChange(changed, true, [&] { return add(element); });
}

Result AbstractCollection::AddAll(const Collection* other, bool* changed)
{
    return reportChange(changed, other != nullptr, [&] { return addAll(*other); });
}

Result AbstractCollection::Remove(const IQVUnknown* element, bool* changed)
{
    return reportChange(changed, true, [&] { return remove(element); });
}

Result AbstractCollection::RemoveAll(const Collection* other, bool* changed)
{
    return reportChange(changed, other != nullptr, [&] { return removeAll(*other); });
}

Result AbstractCollection::RetainAll(const Collection* other, bool* changed)
{
    return reportChange(changed, other != nullptr, [&] { return retainAll(*other); });
}

Result AbstractCollection::Clear()
{
    return guardBoundary([&] { clear(); });
}

Result AbstractCollection::CreateIterator(Iterator** iterator)
{
    if (!iterator)
        return results::POINTER;
    *iterator = nullptr;
    return guardBoundary([&] { *iterator = createIterator().detach(); });
}

Result AbstractCollection::CreateConstIterator(ConstIterator** iterator) const
{
    if (!iterator)
        return results::POINTER;
    *iterator = nullptr;
    return guardBoundary([&] { *iterator = createConstIterator().detach(); });
}

} // namespace qvcom
} // namespace collections
} // namespace qv
