#ifndef QV_COLLECTIONS_QVCOM_LINKEDLIST_H
#define QV_COLLECTIONS_QVCOM_LINKEDLIST_H

#include <qv/collections/qvcom/AbstractList.h>

namespace qv {
namespace collections {
namespace qvcom {

class LinkedListIterator;

// A doubly linked list: constant time at both ends, so it serves as a queue
// (addLast to enqueue, removeFirst to dequeue) or a stack. Positions are
// reached by walking from the nearer end. The end operations on an empty
// list throw IllegalStateException.
class QV_EXPORT LinkedList final : public AbstractList {
public:
    explicit LinkedList(const IQVComparator* comparator = nullptr);
    explicit LinkedList(const Collection& other, const IQVComparator* comparator = nullptr);
    explicit LinkedList(const AbstractCollection& other, const IQVComparator* comparator = nullptr)
        : LinkedList(other.asCollection(), comparator)
    {}
    LinkedList(const LinkedList& other);
    LinkedList& operator=(const LinkedList&) = delete;
    ~LinkedList() override;

    int32_t getSize() const override { return m_size; }

    void addFirst(IQVUnknown* element);
    void addLast(IQVUnknown* element);
    Reference<IQVUnknown> getFirst() const;
    Reference<IQVUnknown> getLast() const;
    Reference<IQVUnknown> removeFirst();
    Reference<IQVUnknown> removeLast();

    bool add(IQVUnknown* element) override;
    Reference<IQVUnknown> get(int32_t index) const override;
    Reference<IQVUnknown> set(int32_t index, IQVUnknown* element) override;
    void insert(int32_t index, IQVUnknown* element) override;
    Reference<IQVUnknown> removeAt(int32_t index) override;
    void clear() override;

    // Steps in constant time each way; reaching the start index walks from
    // the nearer end.
    Reference<AbstractListIterator> createListIterator(int32_t index = 0) override;
    Reference<AbstractListIterator> createConstListIterator(int32_t index = 0) const override;

private:
    friend class LinkedListIterator;

    struct Link {
        Link* prev;
        Link* next;
    };
    struct Node : Link {
        explicit Node(IQVUnknown* value) noexcept : Link{nullptr, nullptr}, element(value) {}
        Reference<IQVUnknown> element;
    };

    Node* nodeAt(int32_t index) const;
    void linkBefore(Link* at, IQVUnknown* element);
    Reference<IQVUnknown> unlink(Node* node);
    [[noreturn]] static void throwEmpty();
    void appendAll(const Collection& other);

    // The ring's anchor: m_header.next is the first node, m_header.prev the last.
    Link m_header;
    int32_t m_size = 0;
};

// The list iterator of a LinkedList: it keeps the link after the cursor and
// the cursor's position, so each step, set, add and remove is constant time.
class QV_EXPORT LinkedListIterator final : public AbstractListIterator {
public:
    LinkedListIterator(LinkedList* list, int32_t index, bool readOnly);
    ~LinkedListIterator() override;

    bool hasNext() override { return m_expectedModCount != m_list->getModCount() || m_next != &m_list->m_header; }
    Reference<IQVUnknown> next() override;
    // next() without a reference of the caller's own: the element stays
    // valid until the list changes. Same checks and failures as next().
    // Inline, so that a walk costs about what a std::list walk does.
    IQVUnknown* nextBorrowed()
    {
        if (m_expectedModCount != m_list->getModCount() || m_next == &m_list->m_header)
            throwCannotStep();
        m_lastReturned = m_next;
        m_next = m_next->next;
        ++m_nextIndex;
        return static_cast<LinkedList::Node*>(m_lastReturned)->element.get();
    }
    void remove() override;
    bool hasPrevious() override;
    Reference<IQVUnknown> previous() override;
    int32_t nextIndex() const override { return m_nextIndex; }
    Reference<IQVUnknown> set(IQVUnknown* element) override;
    void add(IQVUnknown* element) override;

private:
    void checkForChange() const;
    void checkWritable() const;
    [[noreturn]] void throwCannotStep() const;

    CollectionHold<LinkedList> m_list;
    int32_t m_expectedModCount;
    LinkedList::Link* m_next;
    int32_t m_nextIndex;
    LinkedList::Link* m_lastReturned = nullptr;
    bool m_readOnly;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
