#include "io/StreamChecks.h"

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>

namespace qv {
namespace io {
namespace detail {

void throwStreamClosed()
{
    throw IoException(QV_STR(u"stream closed"));
}

void throwNoMark(int32_t markPos)
{
    if (markPos == -2)
        throw IoException(QV_STR(u"mark invalid"));
    throw IoException(QV_STR(u"stream not marked"));
}

void throwMarkNotSupported()
{
    throw IoException(QV_STR(u"mark/reset not supported"));
}

void throwNoData()
{
    throw IoException(QV_STR(u"stream returned no data"));
}

void requireArgument(bool valid)
{
    if (!valid)
        throw ResultException(results::INVALIDARG);
}

} // namespace detail
} // namespace io
} // namespace qv
