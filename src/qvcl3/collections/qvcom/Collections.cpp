#include <qv/collections/qvcom/Collections.h>
#include <qv/collections/qvcom/Unmodifiable.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::throwIfFailed;

namespace {

std::vector<Reference<IQVUnknown>> snapshotOf(const AbstractCollection& collection)
{
    std::vector<Reference<IQVUnknown>> elements;
    elements.reserve(static_cast<size_t>(collection.getSize()));
    Reference<AbstractIterator> it = collection.createConstIterator();
    while (it->hasNext())
        elements.push_back(it->next());
    return elements;
}

// Writes the elements back in the order given, one set per position through
// a list iterator (constant time per step on every list). Nothing here
// allocates once the iterator exists, so the list is rewritten whole or not
// at all.
template <class Element, class Project>
void writeBack(AbstractList& list, const std::vector<Element>& order, Project project)
{
    Reference<AbstractListIterator> it = list.createListIterator(0);
    for (const Element& element : order) {
        it->next();
        it->set(project(element));
    }
}

int32_t compareWith(const IQVOrdering* ordering, const IQVUnknown* a, const IQVUnknown* b)
{
    int32_t order = 0;
    throwIfFailed(ordering->Compare(a, b, &order));
    return order;
}

// An element beside its IQVComparable face, asked for once per element so
// that a natural-order sort pays no QueryInterface per comparison.
struct Comparable {
    IQVUnknown* element;
    IQVComparable* comparable;
};

bool naturallyBefore(const Comparable& a, const Comparable& b)
{
    if (!a.element || !b.element)
        return !a.element && b.element;
    int order = 0;
    throwIfFailed(a.comparable->CompareTo(b.element, &order));
    return order < 0;
}

uint64_t splitmix64(uint64_t& state) noexcept
{
    uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

Reference<IQVUnknown> extreme(const AbstractCollection& collection, const IQVOrdering* ordering, int32_t sign)
{
    if (!ordering)
        ordering = GetNaturalOrdering();
    Reference<AbstractIterator> it = collection.createConstIterator();
    if (!it->hasNext())
        throw IllegalStateException(QV_STR(u"the collection is empty"));
    Reference<IQVUnknown> best = it->next();
    while (it->hasNext()) {
        Reference<IQVUnknown> element = it->next();
        if (sign * compareWith(ordering, element.get(), best.get()) < 0)
            best = std::move(element);
    }
    return best;
}

} // namespace

void Collections::throwUnmodifiable()
{
    throw UnsupportedOperationException(QV_STR(u"this collection cannot be changed"));
}

void Collections::sort(AbstractList& list, const IQVOrdering* ordering)
{
    const std::vector<Reference<IQVUnknown>> elements = snapshotOf(list);
    if (elements.size() < 2)
        return;
    if (ordering) {
        std::vector<IQVUnknown*> order;
        order.reserve(elements.size());
        for (const Reference<IQVUnknown>& element : elements)
            order.push_back(element.get());
        std::stable_sort(order.begin(), order.end(), [ordering](const IQVUnknown* a, const IQVUnknown* b) {
            return compareWith(ordering, a, b) < 0;
        });
        writeBack(list, order, [](IQVUnknown* element) { return element; });
        return;
    }
    std::vector<Reference<IQVComparable>> faces(elements.size());
    std::vector<Comparable> order;
    order.reserve(elements.size());
    for (size_t i = 0; i < elements.size(); ++i) {
        IQVUnknown* element = elements[i].get();
        if (element && (element->QueryInterface(IQVComparable::iid, faces[i].putVoid()) < 0 || !faces[i]))
            throw ResultException(results::NOINTERFACE, QV_STR(u"an element to sort has no natural order"));
        order.push_back(Comparable{element, faces[i].get()});
    }
    std::stable_sort(order.begin(), order.end(), naturallyBefore);
    writeBack(list, order, [](const Comparable& slot) { return slot.element; });
}

int32_t Collections::binarySearch(const AbstractList& list, const IQVUnknown* key, const IQVOrdering* ordering)
{
    if (!ordering)
        ordering = GetNaturalOrdering();
    int32_t low = 0;
    int32_t high = list.getSize() - 1;
    while (low <= high) {
        const int32_t middle = low + (high - low) / 2;
        const int32_t order = compareWith(ordering, list.get(middle).get(), key);
        if (order < 0)
            low = middle + 1;
        else if (order > 0)
            high = middle - 1;
        else
            return middle;
    }
    return -(low + 1);
}

void Collections::reverse(AbstractList& list)
{
    std::vector<Reference<IQVUnknown>> elements = snapshotOf(list);
    std::reverse(elements.begin(), elements.end());
    writeBack(list, elements, [](const Reference<IQVUnknown>& element) { return element.get(); });
}

void Collections::shuffle(AbstractList& list, uint64_t seed)
{
    std::vector<Reference<IQVUnknown>> elements = snapshotOf(list);
    uint64_t state = seed;
    for (size_t i = elements.size(); i > 1; --i) {
        const size_t j = static_cast<size_t>(splitmix64(state) % i);
        elements[i - 1].swap(elements[j]);
    }
    writeBack(list, elements, [](const Reference<IQVUnknown>& element) { return element.get(); });
}

Reference<IQVUnknown> Collections::min(const AbstractCollection& collection, const IQVOrdering* ordering)
{
    return extreme(collection, ordering, 1);
}

Reference<IQVUnknown> Collections::max(const AbstractCollection& collection, const IQVOrdering* ordering)
{
    return extreme(collection, ordering, -1);
}

Reference<AbstractCollection> Collections::unmodifiableCollection(AbstractCollection& collection)
{
    return makeReference<UnmodifiableCollection>(&collection);
}

Reference<AbstractSet> Collections::unmodifiableSet(AbstractSet& set)
{
    return makeReference<UnmodifiableSet>(&set);
}

Reference<AbstractList> Collections::unmodifiableList(AbstractList& list)
{
    return makeReference<UnmodifiableList>(&list);
}

Reference<AbstractMap> Collections::unmodifiableMap(AbstractMap& map)
{
    return makeReference<UnmodifiableMap>(&map);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
