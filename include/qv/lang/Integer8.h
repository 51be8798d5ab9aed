#ifndef QV_LANG_INTEGER8_H
#define QV_LANG_INTEGER8_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 8-bit signed; compares by difference.
QV_DECLARE_BOXED_NUMBER(Integer8, int8_t, SignedInteger)

} // namespace qv

#endif
