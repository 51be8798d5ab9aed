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

    Reference<AbstractIterator> createIterator() override;
    Reference<AbstractIterator> createConstIterator() const override;

private:
    friend class LinkedListIterator;

    struct Link {
        Link* prev;
        Link* next;
    };
    struct Node;

    Node* nodeAt(int32_t index) const;
    void linkBefore(Link* at, IQVUnknown* element);
    Reference<IQVUnknown> unlink(Node* node);
    [[noreturn]] static void throwEmpty();
    void appendAll(const Collection& other);

    // The ring's anchor: m_header.next is the first node, m_header.prev the last.
    Link m_header;
    int32_t m_size = 0;
};

// The iterator of a LinkedList: fail-fast, throwing IllegalStateException
// from next() once the list has been changed other than through it.
class QV_EXPORT LinkedListIterator final : public AbstractIterator {
public:
    LinkedListIterator(LinkedList* list, bool readOnly);
    ~LinkedListIterator() override;

    // Also true once the list has changed behind the iterator's back, so that
    // the following next() reports it.
    bool hasNext() override;
    Reference<IQVUnknown> next() override;
    void remove() override;

private:
    CollectionHold<LinkedList> m_list;
    int32_t m_expectedModCount;
    LinkedList::Link* m_next;
    LinkedList::Link* m_lastReturned = nullptr;
    bool m_readOnly;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
