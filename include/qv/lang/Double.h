#ifndef QV_LANG_DOUBLE_H
#define QV_LANG_DOUBLE_H

#include <qv/lang/Number.h>

namespace qv {

// Boxed double; three-way compare, NaN compares as greater.
QV_DECLARE_BOXED_NUMBER(Double, double, Number)

} // namespace qv

#endif
