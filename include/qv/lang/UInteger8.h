#ifndef QV_LANG_UINTEGER8_H
#define QV_LANG_UINTEGER8_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 8-bit unsigned; compares by difference.
QV_DECLARE_BOXED_NUMBER(UInteger8, uint8_t, UnsignedInteger)

} // namespace qv

#endif
