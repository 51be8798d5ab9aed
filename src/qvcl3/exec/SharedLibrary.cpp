#include <qv/core/Library.h>
#include <qv/exec/SharedLibrary.h>
#include <qvcore3/qvcore3.h>

#include "exec/PlatformFailure.h"

namespace qv {
namespace exec {

namespace {

QVHANDLE openLibrary(const char16_t* path)
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    throwIfFailed(QVModuleLibOpen(libraryModuleHandle(), path, &handle), strLit(u"Failed to open shared library."));
    return handle;
}

} // namespace

SharedLibrary::SharedLibrary(const char16_t* path) : m_handle(openLibrary(path)) {}

SharedLibrary::~SharedLibrary() noexcept(false)
{
    qvcom::throwIfFailed(QVModuleLibClose(m_handle));
}

void* SharedLibrary::getSymbol(const char16_t* name) const
{
    void* address = nullptr;
    throwIfFailed(QVLibGetSymbol(m_handle, name, &address), strLit(u"Failed to get symbol."));
    return address;
}

} // namespace exec
} // namespace qv
