#ifndef QV_LANG_INTEGER64_H
#define QV_LANG_INTEGER64_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 64-bit signed; three-way compare.
QV_DECLARE_BOXED_NUMBER(Integer64, int64_t, SignedInteger)

} // namespace qv

#endif
