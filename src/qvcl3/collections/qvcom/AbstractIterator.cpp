#include <qv/collections/qvcom/AbstractIterator.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

namespace qv {
namespace collections {
namespace qvcom {

QV_BEGIN_INTERFACE_MAP(AbstractIterator)
QV_INTERFACE_ENTRY(AbstractIterator, Iterator)
QV_INTERFACE_ENTRY(AbstractIterator, ConstIterator)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AbstractIterator::~AbstractIterator() = default;

void AbstractIterator::remove()
{
    throw UnsupportedOperationException(QV_STR(u"this iterator cannot remove elements"));
}

Result AbstractIterator::HasNext(bool* result)
{
    if (!result)
        return results::POINTER;
    *result = false;
    return ::qv::qvcom::guardBoundary([&] { *result = hasNext(); });
}

Result AbstractIterator::Next(IQVUnknown** element)
{
    if (!element)
        return results::POINTER;
    *element = nullptr;
    return ::qv::qvcom::guardBoundary([&] { *element = next().detach(); });
}

Result AbstractIterator::Remove()
{
    return ::qv::qvcom::guardBoundary([&] { remove(); });
}

} // namespace qvcom
} // namespace collections
} // namespace qv
