#include <qvcore3/qvcore3.h>

#include <cerrno>

extern "C" QVRESULT QVResultFromNative(int32_t nativeError) noexcept
{
    switch (nativeError) {
    case 0: return QV_S_OK;
    case ENOENT: return QV_E_FILE_NOT_FOUND;
    case ENOMEM: return QV_E_OUTOFMEMORY;
    case EINVAL: return QV_E_INVALIDARG;
    case EACCES: return QV_E_ACCESSDENIED;
    case EEXIST: return QV_E_ALREADY_EXISTS;
    case ETIMEDOUT: return QV_E_TIMEOUT;
    default: return static_cast<QVRESULT>(0x80070000u | (static_cast<uint32_t>(nativeError) & 0xFFFFu));
    }
}

extern "C" int32_t QVLastNativeError(void) noexcept
{
    return errno;
}
