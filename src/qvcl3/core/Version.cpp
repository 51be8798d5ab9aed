#include <qv/core/Version.h>

#define QVCL3_STRINGIFY2(x) #x
#define QVCL3_STRINGIFY(x) QVCL3_STRINGIFY2(x)

extern "C" const char* QVCL3Version() noexcept
{
    return QVCL3_STRINGIFY(QVCL3_VERSION_MAJOR) "." QVCL3_STRINGIFY(QVCL3_VERSION_MINOR) "." QVCL3_STRINGIFY(
        QVCL3_VERSION_PATCH);
}
