#ifndef QV_LANG_UINTEGER64_H
#define QV_LANG_UINTEGER64_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed 64-bit unsigned; three-way compare.
QV_DECLARE_BOXED_NUMBER(UInteger64, uint64_t, UnsignedInteger)

} // namespace qv

#endif
