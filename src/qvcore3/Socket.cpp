#include <qvcore3/qvcore3.h>

#include "FaultInjection.h"

#include <netdb.h>

#include <cerrno>

// Numbers outside both tables come back unchanged: the class library's table
// does not know them and reports a general failure.

extern "C" int32_t QVSocketErrorFromErrno(int32_t error) noexcept
{
    switch (error) {
    case EINTR: return 10004;
    case EBADF: return 10009;
    case EACCES: return 10013;
    case EFAULT: return 10014;
    case EINVAL: return 10022;
    case EMFILE: return 10024;
    case EAGAIN: return 10035; // EWOULDBLOCK is the same number here
    case EINPROGRESS: return 10036;
    case EALREADY: return 10037;
    case ENOTSOCK: return 10038;
    case EDESTADDRREQ: return 10039;
    case EMSGSIZE: return 10040;
    case EPROTOTYPE: return 10041;
    case ENOPROTOOPT: return 10042;
    case EPROTONOSUPPORT: return 10043;
    case ESOCKTNOSUPPORT: return 10044;
    case EOPNOTSUPP: return 10045; // and ENOTSUP
    case EPFNOSUPPORT: return 10046;
    case EAFNOSUPPORT: return 10047;
    case EADDRINUSE: return 10048;
    case EADDRNOTAVAIL: return 10049;
    case ENETDOWN: return 10050;
    case ENETUNREACH: return 10051;
    case ENETRESET: return 10052;
    case ECONNABORTED: return 10053;
    case ECONNRESET: return 10054;
    case ENOBUFS: return 10055;
    case EISCONN: return 10056;
    case ENOTCONN: return 10057;
    case ESHUTDOWN: return 10058;
    case ETOOMANYREFS: return 10059;
    case ETIMEDOUT: return 10060;
    case ECONNREFUSED: return 10061;
    case ELOOP: return 10062;
    case ENAMETOOLONG: return 10063;
    case EHOSTDOWN: return 10064;
    case EHOSTUNREACH: return 10065;
    case ENOTEMPTY: return 10066;
    case EUSERS: return 10068;
    case EDQUOT: return 10069;
    case ESTALE: return 10070;
    case EREMOTE: return 10071;
    case ECANCELED: return 10103;
    default: return error;
    }
}

// EAI_SYSTEM means the reason is in errno.
extern "C" int32_t QVSocketErrorFromEai(int32_t eaiError) noexcept
{
    switch (eaiError) {
    case EAI_MEMORY: return 2008;
    case EAI_BADFLAGS: return 12022;
    case EAI_SOCKTYPE: return 12044;
    case EAI_FAMILY: return 12047;
    case EAI_SERVICE: return 12109;
    case EAI_NONAME: return 13001;
    case EAI_AGAIN: return 13002;
    case EAI_FAIL: return 13003;
    case EAI_NODATA: return 14001;
    case EAI_SYSTEM: return QVSocketErrorFromErrno(errno);
    default: return eaiError;
    }
}

namespace {

// Resolver calls report through their return value, not errno. A recorded
// resolver error is parked here and errno is set to a value no system call
// produces, so that the next failing system call (which overwrites errno)
// supersedes it, as on a platform with one last-error slot per thread.
constexpr int kRecordedSocketErrno = 0x7A5E;
thread_local int32_t t_recordedSocketError = 0;

} // namespace

extern "C" int32_t QVLastNativeSocketError(void) noexcept
{
    if (errno == kRecordedSocketErrno)
        return t_recordedSocketError;
    return QVSocketErrorFromErrno(errno);
}

extern "C" void QVSetLastNativeSocketError(int32_t nativeError) noexcept
{
    t_recordedSocketError = nativeError;
    errno = nativeError == 0 ? 0 : kRecordedSocketErrno;
}

extern "C" int32_t QVRecordResolverError(int32_t eaiError) noexcept
{
    const int32_t number = QVSocketErrorFromEai(eaiError);
    QVSetLastNativeSocketError(number);
    return number;
}

// BSD sockets need no start or stop; the calls exist so the class library's
// start-up and shut-down keep their shape (and tests can make them fail).
extern "C" QVRESULT QVSocketLayerStartup(void) noexcept
{
    QV_FAULT_POINT(QVSocketLayerStartup);
    return QV_S_OK;
}

// Returns 0 or a sockets error number; an injected failure's code stands for
// that number.
extern "C" int32_t QVSocketLayerShutdown(void) noexcept
{
    QV_FAULT_POINT(QVSocketLayerShutdown);
    return 0;
}
