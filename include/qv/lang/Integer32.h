#ifndef QV_LANG_INTEGER32_H
#define QV_LANG_INTEGER32_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 32-bit signed; compares by a wrapping 32-bit difference.
QV_DECLARE_BOXED_NUMBER(Integer32, int32_t, SignedInteger)

} // namespace qv

#endif
