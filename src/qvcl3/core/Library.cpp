#include <qv/core/Library.h>

#include <qv/core/Boundary.h>
#include <qv/core/ClassManagerBase.h>
#include <qv/net/SocketError.h>
#include <qv/sync/Mutex.h>
#include <qv/text/charset/CodecManager.h>
#include <qvcore3/qvcore3.h>

#include "core/ClassTable.h"
#include "text/charset/CodecTables.h"
#include "text/charset/EncodingInfo.h"

#include <clocale>

namespace qv {

sync::LockObject* g_pGlobalLock = nullptr;

namespace {

// Start and stop are serialised by the loader (or by the caller), so the
// counter is a plain integer.
int32_t g_startCount = 0;
QVNewHandler g_previousNewHandler = nullptr;
QVHANDLE g_moduleHandle = QV_INVALID_HANDLE;

[[noreturn]] void throwOutOfMemory()
{
    throw OutOfMemoryException();
}

void registerStaticClasses()
{
    ClassManagerBase* registry = ClassManager::getInstance();
    for (const detail::ClassTableRow* const* fragment = detail::g_classTableFragments; *fragment; ++fragment)
        for (const detail::ClassTableRow* row = *fragment; row->type; ++row)
            registry->registerClass(row->name, row->type, row->creator, row->instanceTest);
}

void registerStaticCodecs()
{
    text::charset::CodecManager* codecs = text::charset::CodecManager::getInstance();
    for (const text::charset::detail::CodecTableRow* row = text::charset::detail::g_codecTable; row->name; ++row)
        codecs->registerCodec(row->name, row->encoderClassName, row->decoderClassName);
}

Result start()
{
    if (++g_startCount != 1)
        return results::OK;
    // Nothing done so far is undone when a step fails; the counter stays up.
    return qvcom::guardBoundary([] {
        std::setlocale(LC_ALL, "");
        g_previousNewHandler = QVSetNewHandler(&throwOutOfMemory);
        g_pGlobalLock = new sync::Mutex("QVCL::g_pGlobalLock", 0);
        registerStaticClasses();
        // The codec table names its converters by class, so it comes second.
        registerStaticCodecs();
        text::charset::detail::buildEncodingInfo();
    });
}

Result stop()
{
    if (g_startCount <= 0)
        return results::FAIL;
    if (g_startCount-- != 1)
        return results::OK;
    return qvcom::guardBoundary([] {
        text::charset::detail::freeEncodingInfo();
        text::charset::CodecManager::freeInstance();
        ClassManager::freeInstance();
        int32_t socketError = QVSocketLayerShutdown();
        if (socketError != 0) {
            // The lock and the new-handler stay in place on this path.
            String message(u"QVCLLibUninit ");
            message += QVGetDescriptionFromQV_E_SOCKET(QV_E_SOCKETFromNativeSocketError(socketError));
            throw Exception(message);
        }
        delete g_pGlobalLock;
        g_pGlobalLock = nullptr;
        QVSetNewHandler(g_previousNewHandler);
        g_previousNewHandler = nullptr;
    });
}

// Runs the first start when the shared library is loaded and the last stop
// when it is unloaded; their results are deliberately ignored here.
struct LibraryLoad {
    LibraryLoad() noexcept
    {
        QVModuleGetHandle(this, &g_moduleHandle);
        start();
        QVModuleSetInitialized(g_moduleHandle, 1);
    }
    ~LibraryLoad()
    {
        QVModuleSetInitialized(g_moduleHandle, 0);
        stop();
    }
};

LibraryLoad g_libraryLoad;

} // namespace

QVHANDLE libraryModuleHandle() noexcept
{
    return g_moduleHandle;
}

} // namespace qv

extern "C" qv::Result QVCLLibInit() noexcept
{
    return qv::start();
}

extern "C" qv::Result QVCLLibUninit() noexcept
{
    return qv::stop();
}
