#ifndef QV_COLLECTIONS_QVCOM_SUBLIST_H
#define QV_COLLECTIONS_QVCOM_SUBLIST_H

#include <qv/collections/qvcom/AbstractList.h>

namespace qv {
namespace collections {
namespace qvcom {

// The live view AbstractList::subList hands out: a run of positions of a
// backing list, which may itself be a sublist. Every operation first checks
// that the backing list has seen no structural change other than through
// this view; if it has, the view throws IllegalStateException (the failure
// of the fail-fast iterators) and stays unusable, since its positions no
// longer mean anything. Positions are checked against the view's own size.
class QV_EXPORT SubList final : public AbstractList {
public:
    // RangeErrorException unless 0 <= from <= to <= the list's size.
    SubList(AbstractList* list, int32_t from, int32_t to);
    ~SubList() override;

    int32_t getSize() const override;
    Reference<IQVUnknown> get(int32_t index) const override;
    Reference<IQVUnknown> set(int32_t index, IQVUnknown* element) override;
    void insert(int32_t index, IQVUnknown* element) override;
    Reference<IQVUnknown> removeAt(int32_t index) override;
    void clear() override;

private:
    void checkForChange() const;
    void checkIndex(int32_t index) const;
    void followStructuralChange(int32_t sizeChange) noexcept;

    CollectionHold<AbstractList> m_list;
    // The list when it is a sublist itself: its own check comes first, so
    // that a change below it reaches every view stacked on it.
    const SubList* m_outer;
    int32_t m_offset;
    int32_t m_size;
    int32_t m_expectedModCount;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
