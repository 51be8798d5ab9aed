#ifndef QV_CORE_VERSION_H
#define QV_CORE_VERSION_H

#include <qv/core/Export.h>

#define QVCL3_VERSION_MAJOR 3
#define QVCL3_VERSION_MINOR 0
#define QVCL3_VERSION_PATCH 0

extern "C" {
// The version the shared library was built as, "major.minor.patch".
QV_EXPORT const char* QVCL3Version() noexcept;
}

#endif
