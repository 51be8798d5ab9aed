#ifndef QV_LANG_FLOAT_H
#define QV_LANG_FLOAT_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed float; three-way compare, NaN compares as greater.
QV_DECLARE_BOXED_NUMBER(Float, float, Number)

} // namespace qv

#endif
