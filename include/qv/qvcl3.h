#ifndef QV_QVCL3_H
#define QV_QVCL3_H

// Every public header of the class library.
#include <qvcore3/qvcore3.h>
#include <qv/core/Export.h>
#include <qv/core/Version.h>

#endif
