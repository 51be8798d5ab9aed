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

// The same for an element a map's entry walk gave: ResultException
// 0x80004002 when it is not a MapEntry.
void readWalkedEntry(const IQVUnknown* element, Reference<IQVUnknown>& key, Reference<IQVUnknown>& value);

// Marks on the current thread that text, hash, equality or order of a
// collection (or of a pair of them) is being worked out, so that meeting the
// same work again through the elements (a list holding a map holding the
// list) is recognised instead of recursing without end. The guards of one
// thread form a chain through the stack, innermost first; nothing is
// allocated.
class CycleGuard {
public:
    enum Work { TEXT, HASH, EQUALS, ORDER };

    CycleGuard(Work work, const void* object, const void* other = nullptr) noexcept;
    CycleGuard(const CycleGuard&) = delete;
    CycleGuard& operator=(const CycleGuard&) = delete;
    ~CycleGuard();

    // True when an outer guard of this thread does the same work on the same
    // objects.
    bool isRepeat() const noexcept { return m_repeat; }

private:
    Work m_work;
    const void* m_object;
    const void* m_other;
    CycleGuard* m_outer;
    bool m_repeat = false;
};

// The text of an element inside a collection's text form.
void appendElementText(String& text, const IQVUnknown* element);

// Order of two unequal elements: by IQVComparable where the first has it,
// otherwise (or when that says 0) by address of their identities.
int orderOf(const IQVUnknown* a, const IQVUnknown* b);

// -1, 0 or 1 for two addresses.
int orderOfAddresses(const void* a, const void* b) noexcept;

// compareTo of a Set or a Map: equal contents are 0; otherwise the smaller
// size, then the smaller hash comes first, and a tie or an object of another
// kind falls back to the order Object gives.
template <typename Kind, typename Self>
int compareContainers(const Self& self, const Object& other)
{
    if (&other == &self)
        return 0;
    const Kind* same = dynamic_cast<const Kind*>(&other);
    if (!same)
        return self.Object::compareTo(other);
    if (self.equals(other))
        return 0;
    const int32_t mine = self.getSize();
    const int32_t theirs = sizeOf(*same);
    if (mine != theirs)
        return mine < theirs ? -1 : 1;
    const uint32_t myHash = self.hashCode();
    const uint32_t theirHash = other.hashCode();
    if (myHash != theirHash)
        return myHash < theirHash ? -1 : 1;
    return self.Object::compareTo(other);
}

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
