#include <qv/collections/qvcom/SubList.h>

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

namespace qv {
namespace collections {
namespace qvcom {

SubList::SubList(AbstractList* list, int32_t from, int32_t to)
    : AbstractList(list->getComparator()), m_list(list), m_outer(dynamic_cast<const SubList*>(list)), m_offset(from),
      m_size(to - from), m_expectedModCount(list->getModCount())
{
    checkForChange();
    const int32_t size = m_list->getSize();
    if (from < 0 || from > to || to > size) {
        String message;
        message.format(u"sublist [{0}, {1}) outside [0, {2}]", -1, String::valueOf(from), String::valueOf(to),
                       String::valueOf(size));
        throw RangeErrorException(message);
    }
}

SubList::~SubList() = default;

void SubList::checkForChange() const
{
    if (m_outer)
        m_outer->checkForChange();
    if (m_expectedModCount != m_list->getModCount())
        throw IllegalStateException(QV_STR(u"the backing list changed behind the sublist"));
}

void SubList::checkIndex(int32_t index) const
{
    checkForChange();
    if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(m_size))
        throwBadIndex(index, m_size);
}

void SubList::followStructuralChange(int32_t sizeChange) noexcept
{
    m_size += sizeChange;
    m_expectedModCount = m_list->getModCount();
    structuralChange();
}

int32_t SubList::getSize() const
{
    checkForChange();
    return m_size;
}

Reference<IQVUnknown> SubList::get(int32_t index) const
{
    checkIndex(index);
    return m_list->get(m_offset + index);
}

Reference<IQVUnknown> SubList::set(int32_t index, IQVUnknown* element)
{
    checkIndex(index);
    return m_list->set(m_offset + index, element);
}

void SubList::insert(int32_t index, IQVUnknown* element)
{
    checkForChange();
    if (index < 0 || index > m_size)
        throwBadPosition(index, m_size);
    m_list->insert(m_offset + index, element);
    followStructuralChange(1);
}

Reference<IQVUnknown> SubList::removeAt(int32_t index)
{
    checkIndex(index);
    Reference<IQVUnknown> removed = m_list->removeAt(m_offset + index);
    followStructuralChange(-1);
    return removed;
}

void SubList::clear()
{
    checkForChange();
    // From the end, so that an array list moves only its tail beyond the view.
    while (m_size > 0)
        removeAt(m_size - 1);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
