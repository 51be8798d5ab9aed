#ifndef QV_LANG_UINTEGER32_H
#define QV_LANG_UINTEGER32_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 32-bit unsigned; compares by a wrapping 32-bit difference.
QV_DECLARE_BOXED_NUMBER(UInteger32, uint32_t, UnsignedInteger)

} // namespace qv

#endif
