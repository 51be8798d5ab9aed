#ifndef QVCL3_I18N_FILLCHARBUFFER_H
#define QVCL3_I18N_FILLCHARBUFFER_H

#include <qv/core/Boundary.h>
#include <qv/lang/String.h>
#include <qv/util/ICharBuffer.h>

namespace qv {
namespace i18n {
namespace detail {

// The body of a component-face text query: the text query() returns is
// copied into out, and whatever it throws becomes the result code.
template <class Query>
Result fillCharBuffer(util::ICharBuffer* out, Query&& query) noexcept
{
    return qvcom::guardBoundary([&] {
        if (!out)
            return results::POINTER;
        String text = query();
        return QVCopyCharBuffer(out, &text);
    });
}

} // namespace detail
} // namespace i18n
} // namespace qv

#endif
