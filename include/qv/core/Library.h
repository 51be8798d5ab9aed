#ifndef QV_CORE_LIBRARY_H
#define QV_CORE_LIBRARY_H

#include <qv/core/Export.h>
#include <qv/core/Result.h>

namespace qv {

namespace sync {
class LockObject;
}

// The process-wide lock ("QVCL::g_pGlobalLock"), guarding the lazy creation of
// the library's singletons. Null while the library is stopped.
extern QV_EXPORT sync::LockObject* g_pGlobalLock;

// The platform's handle of libqvcl3 itself, known once the library is loaded.
QV_EXPORT int32_t libraryModuleHandle() noexcept;

} // namespace qv

extern "C" {
// Counted start and stop of the library; loading libqvcl3 runs the first start
// and unloading it the last stop. Only the outermost pair does the work. Not
// to be called concurrently.
QV_EXPORT qv::Result QVCLLibInit() noexcept;
QV_EXPORT qv::Result QVCLLibUninit() noexcept;
}

#endif
