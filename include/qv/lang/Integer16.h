#ifndef QV_LANG_INTEGER16_H
#define QV_LANG_INTEGER16_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 16-bit signed; compares by difference.
QV_DECLARE_BOXED_NUMBER(Integer16, int16_t, SignedInteger)

} // namespace qv

#endif
