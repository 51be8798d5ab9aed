#ifndef QV_LANG_UINTEGER16_H
#define QV_LANG_UINTEGER16_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 16-bit unsigned; compares by difference.
QV_DECLARE_BOXED_NUMBER(UInteger16, uint16_t, UnsignedInteger)

} // namespace qv

#endif
