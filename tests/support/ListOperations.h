#ifndef QVCL3_TESTS_LISTOPERATIONS_H
#define QVCL3_TESTS_LISTOPERATIONS_H

// A differential driver shared by the collections tests and the list fuzz
// target: a byte stream picks operations on a library list, on one live
// sublist of it and on one list iterator (over the list or over the
// sublist), and the same operations run on a std::vector model that knows
// which views a change invalidates. The driver returns a description of the
// first disagreement, or null.

#include <qv/collections/qvcom/AbstractList.h>
#include <qv/core/Exception.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace qvtest {

class ListOperations {
public:
    // elements: the values the operations insert, chosen by the stream.
    ListOperations(qv::collections::qvcom::AbstractList& list, std::vector<IQVUnknown*> elements)
        : m_list(list), m_elements(std::move(elements))
    {
        for (int32_t i = 0; i < list.getSize(); ++i)
            m_model.push_back(list.get(i).get());
    }

    const char* run(const uint8_t* data, size_t size)
    {
        for (size_t i = 0; i + 1 < size && !m_failure; i += 2)
            step(data[i], data[i + 1]);
        if (!m_failure)
            checkWhole();
        return m_failure;
    }

private:
    using AbstractList = qv::collections::qvcom::AbstractList;
    using AbstractListIterator = qv::collections::qvcom::AbstractListIterator;
    static constexpr int32_t MAX_SIZE = 48;

    int32_t size() const { return static_cast<int32_t>(m_model.size()); }
    void fail(const char* what)
    {
        if (!m_failure)
            m_failure = what;
    }
    // A position that is sometimes one outside the valid range on either side.
    static int32_t positionIn(int32_t bound, uint8_t argument) { return argument % (bound + 3) - 1; }
    IQVUnknown* elementFor(uint8_t argument) const { return m_elements[argument % m_elements.size()]; }

    template <class Exception, class Operation>
    void expectThrow(Operation operation, const char* what)
    {
        try {
            operation();
        } catch (const Exception&) {
            return;
        } catch (...) {
            fail(what);
            return;
        }
        fail(what);
    }

    template <class Operation>
    bool succeeds(Operation operation, const char* what)
    {
        try {
            operation();
            return true;
        } catch (...) {
            fail(what);
            return false;
        }
    }

    // A structural change made through the list itself (or through the
    // iterator over it) invalidates the sublist, and the iterator unless it
    // made the change.
    void listChanged(bool byIterator)
    {
        m_subValid = false;
        if (!byIterator)
            m_iteratorValid = false;
    }
    void subChanged(bool byIterator)
    {
        if (!byIterator || !m_iteratorOnSub)
            m_iteratorValid = false;
    }
    bool iteratorUsable() const { return m_iteratorValid && (!m_iteratorOnSub || m_subValid); }
    int32_t targetSize() const { return m_iteratorOnSub ? m_subSize : size(); }
    int32_t targetOffset() const { return m_iteratorOnSub ? m_subOffset : 0; }

    void checkWhole()
    {
        if (m_list.getSize() != size())
            return fail("list size differs from the model");
        qv::Reference<AbstractListIterator> it = m_list.createConstListIterator(0);
        for (IQVUnknown* expected : m_model) {
            if (it->next().get() != expected)
                return fail("list element differs from the model");
        }
        if (m_sub && m_subValid) {
            if (m_sub->getSize() != m_subSize)
                return fail("sublist size differs from the model");
            for (int32_t i = 0; i < m_subSize; ++i) {
                if (m_sub->get(i).get() != m_model[static_cast<size_t>(m_subOffset + i)])
                    return fail("sublist element differs from the model");
            }
        }
    }

    void step(uint8_t op, uint8_t argument)
    {
        switch (op % 16) {
        case 0: return insertInto(false, true, argument);
        case 1: return insertInto(false, false, argument);
        case 2: return removeFrom(false, argument);
        case 3: return setIn(false, argument);
        case 4: return makeSub(argument, op);
        case 5: return insertInto(true, false, argument);
        case 6: return removeFrom(true, argument);
        case 7: return setIn(true, argument);
        case 8: return makeIterator(argument, op);
        case 9: return iteratorNext();
        case 10: return iteratorPrevious();
        case 11: return iteratorSet(argument);
        case 12: return iteratorAdd(argument);
        case 13: return iteratorRemove();
        case 14: return subClear();
        default: return checkWhole();
        }
    }

    void makeSub(uint8_t argument, uint8_t op)
    {
        const int32_t from = positionIn(size() + 1, argument);
        const int32_t to = from + (op >> 4) % 8 - 1;
        if (from < 0 || to < from || to > size())
            return expectThrow<qv::RangeErrorException>([&] { m_list.subList(from, to); },
                                                        "subList out of range did not throw RangeErrorException");
        if (!succeeds([&] { m_sub = m_list.subList(from, to); }, "subList failed"))
            return;
        if (m_iteratorOnSub)
            m_iterator = nullptr;
        m_subOffset = from;
        m_subSize = to - from;
        m_subValid = true;
    }

    // Every use of a sublist whose list changed behind it must throw.
    bool subUsable(const char* what)
    {
        if (!m_sub)
            return false;
        if (!m_subValid) {
            expectThrow<qv::IllegalStateException>([&] { m_sub->getSize(); }, what);
            return false;
        }
        return true;
    }

    // The list or the sublist as the target of insert, removeAt and set;
    // false when the sublist is missing or stale (its failure checked).
    bool target(bool onSub, AbstractList*& list, int32_t& offset, int32_t& bound)
    {
        if (onSub && !subUsable("a stale sublist did not throw IllegalStateException"))
            return false;
        list = onSub ? m_sub.get() : &m_list;
        offset = onSub ? m_subOffset : 0;
        bound = onSub ? m_subSize : size();
        return true;
    }
    void changed(bool onSub, int32_t sizeChange, bool byIterator = false)
    {
        if (onSub) {
            m_subSize += sizeChange;
            subChanged(byIterator);
        } else {
            listChanged(byIterator);
        }
    }

    void insertInto(bool onSub, bool append, uint8_t argument)
    {
        AbstractList* list = nullptr;
        int32_t offset = 0;
        int32_t bound = 0;
        if (!target(onSub, list, offset, bound) || size() >= MAX_SIZE)
            return;
        const int32_t at = append ? bound : positionIn(bound + 1, argument);
        IQVUnknown* element = elementFor(argument / 5u);
        if (at < 0 || at > bound)
            return expectThrow<qv::RangeErrorException>([&] { list->insert(at, element); },
                                                        "insert out of range did not throw RangeErrorException");
        if (succeeds([&] { list->insert(at, element); }, "insert failed")) {
            m_model.insert(m_model.begin() + offset + at, element);
            changed(onSub, 1);
        }
    }

    void removeFrom(bool onSub, uint8_t argument)
    {
        AbstractList* list = nullptr;
        int32_t offset = 0;
        int32_t bound = 0;
        if (!target(onSub, list, offset, bound))
            return;
        const int32_t at = positionIn(bound, argument);
        if (at < 0 || at >= bound)
            return expectThrow<qv::RangeErrorException>([&] { list->removeAt(at); },
                                                        "removeAt out of range did not throw RangeErrorException");
        qv::Reference<IQVUnknown> removed;
        if (succeeds([&] { removed = list->removeAt(at); }, "removeAt failed")) {
            if (removed.get() != m_model[static_cast<size_t>(offset + at)])
                fail("removeAt returned another element");
            m_model.erase(m_model.begin() + offset + at);
            changed(onSub, -1);
        }
    }

    // Replacing goes through to the list and is not a structural change.
    void setIn(bool onSub, uint8_t argument)
    {
        AbstractList* list = nullptr;
        int32_t offset = 0;
        int32_t bound = 0;
        if (!target(onSub, list, offset, bound))
            return;
        const int32_t at = positionIn(bound, argument);
        IQVUnknown* element = elementFor(argument / 7u);
        if (at < 0 || at >= bound)
            return expectThrow<qv::RangeErrorException>([&] { list->set(at, element); },
                                                        "set out of range did not throw RangeErrorException");
        qv::Reference<IQVUnknown> previous;
        if (succeeds([&] { previous = list->set(at, element); }, "set failed")) {
            const size_t index = static_cast<size_t>(offset + at);
            if (previous.get() != m_model[index])
                fail("set returned another element");
            m_model[index] = element;
            if (m_list.get(static_cast<int32_t>(index)).get() != element)
                fail("set did not reach the list");
        }
    }

    void subClear()
    {
        if (!subUsable("a stale sublist did not throw IllegalStateException"))
            return;
        if (succeeds([&] { m_sub->clear(); }, "sublist clear failed") && m_subSize > 0) {
            m_model.erase(m_model.begin() + m_subOffset, m_model.begin() + m_subOffset + m_subSize);
            m_subSize = 0;
            subChanged(false);
        }
    }

    void makeIterator(uint8_t argument, uint8_t op)
    {
        const bool onSub = (op & 0x10) != 0 && m_sub && m_subValid;
        AbstractList& target = onSub ? *m_sub : m_list;
        const int32_t bound = onSub ? m_subSize : size();
        const int32_t at = positionIn(bound + 1, argument);
        if (at < 0 || at > bound)
            return expectThrow<qv::RangeErrorException>([&] { target.createListIterator(at); },
                                                        "list iterator start out of range did not throw");
        if (!succeeds([&] { m_iterator = target.createListIterator(at); }, "createListIterator failed"))
            return;
        m_iteratorOnSub = onSub;
        m_iteratorValid = true;
        m_cursor = at;
        m_lastReturned = -1;
    }

    bool iteratorReady()
    {
        if (!m_iterator)
            return false;
        if (!iteratorUsable()) {
            // hasNext answers true, or (over a sublist whose list changed)
            // reports the sublist's failure at once.
            bool more = false;
            try {
                more = m_iterator->hasNext();
            } catch (const qv::IllegalStateException&) {
                more = true;
            } catch (...) {
            }
            if (!more)
                fail("a stale iterator's hasNext answered false");
            expectThrow<qv::IllegalStateException>([&] { m_iterator->next(); },
                                                   "a stale iterator did not throw IllegalStateException");
            return false;
        }
        if (m_iterator->nextIndex() != m_cursor)
            fail("nextIndex differs from the model");
        return true;
    }

    void iteratorNext()
    {
        if (!iteratorReady())
            return;
        if (m_cursor >= targetSize())
            return expectThrow<qv::IllegalStateException>([&] { m_iterator->next(); },
                                                          "next past the end did not throw");
        qv::Reference<IQVUnknown> element;
        if (succeeds([&] { element = m_iterator->next(); }, "next failed")) {
            if (element.get() != m_model[static_cast<size_t>(targetOffset() + m_cursor)])
                fail("next returned another element");
            m_lastReturned = m_cursor++;
        }
    }

    void iteratorPrevious()
    {
        if (!iteratorReady())
            return;
        if (m_cursor <= 0)
            return expectThrow<qv::IllegalStateException>([&] { m_iterator->previous(); },
                                                          "previous before the start did not throw");
        qv::Reference<IQVUnknown> element;
        if (succeeds([&] { element = m_iterator->previous(); }, "previous failed")) {
            if (element.get() != m_model[static_cast<size_t>(targetOffset() + m_cursor - 1)])
                fail("previous returned another element");
            m_lastReturned = --m_cursor;
        }
    }

    void iteratorSet(uint8_t argument)
    {
        if (!iteratorReady())
            return;
        IQVUnknown* element = elementFor(argument);
        if (m_lastReturned < 0)
            return expectThrow<qv::IllegalStateException>([&] { m_iterator->set(element); },
                                                          "set without a returned element did not throw");
        if (succeeds([&] { m_iterator->set(element); }, "iterator set failed"))
            m_model[static_cast<size_t>(targetOffset() + m_lastReturned)] = element;
    }

    void iteratorAdd(uint8_t argument)
    {
        if (!iteratorReady() || size() >= MAX_SIZE)
            return;
        IQVUnknown* element = elementFor(argument);
        if (!succeeds([&] { m_iterator->add(element); }, "iterator add failed"))
            return;
        m_model.insert(m_model.begin() + targetOffset() + m_cursor, element);
        ++m_cursor;
        m_lastReturned = -1;
        changed(m_iteratorOnSub, 1, true);
    }

    void iteratorRemove()
    {
        if (!iteratorReady())
            return;
        if (m_lastReturned < 0)
            return expectThrow<qv::IllegalStateException>([&] { m_iterator->remove(); },
                                                          "remove without a returned element did not throw");
        if (!succeeds([&] { m_iterator->remove(); }, "iterator remove failed"))
            return;
        m_model.erase(m_model.begin() + targetOffset() + m_lastReturned);
        if (m_lastReturned < m_cursor)
            --m_cursor;
        m_lastReturned = -1;
        changed(m_iteratorOnSub, -1, true);
    }

    AbstractList& m_list;
    std::vector<IQVUnknown*> m_elements;
    std::vector<IQVUnknown*> m_model;
    const char* m_failure = nullptr;

    qv::Reference<AbstractList> m_sub;
    int32_t m_subOffset = 0;
    int32_t m_subSize = 0;
    bool m_subValid = false;

    qv::Reference<AbstractListIterator> m_iterator;
    bool m_iteratorOnSub = false;
    bool m_iteratorValid = false;
    int32_t m_cursor = 0;
    int32_t m_lastReturned = -1;
};

} // namespace qvtest

#endif
