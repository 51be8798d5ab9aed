#ifndef QV_NET_SOCKETERROR_H
#define QV_NET_SOCKETERROR_H

#include <qv/core/Export.h>
#include <qvcore3/qvcore3.h>

#include <cstdint>

// The socket error family: 0, 0x80004005 for errors the family does not know,
// and 0x8BE30000 plus the Windows Sockets (or resolver) error number. Being
// negative, every failure member is also a failing result code.
enum ENUM_QV_E_SOCKET : int32_t {
    QV_E_SOCKET_OK = 0,
    QV_E_SOCKET_FAIL = static_cast<int32_t>(0x80004005u),
    QV_E_SOCKET_EAI_MEMORY = static_cast<int32_t>(0x8BE307D8u),
    QV_E_SOCKET_EINTR = static_cast<int32_t>(0x8BE32714u),
    QV_E_SOCKET_EBADF = static_cast<int32_t>(0x8BE32719u),
    QV_E_SOCKET_EACCES = static_cast<int32_t>(0x8BE3271Du),
    QV_E_SOCKET_EFAULT = static_cast<int32_t>(0x8BE3271Eu),
    QV_E_SOCKET_EINVAL = static_cast<int32_t>(0x8BE32726u),
    QV_E_SOCKET_EMFILE = static_cast<int32_t>(0x8BE32728u),
    QV_E_SOCKET_EWOULDBLOCK = static_cast<int32_t>(0x8BE32733u),
    QV_E_SOCKET_EINPROGRESS = static_cast<int32_t>(0x8BE32734u),
    QV_E_SOCKET_EALREADY = static_cast<int32_t>(0x8BE32735u),
    QV_E_SOCKET_ENOTSOCK = static_cast<int32_t>(0x8BE32736u),
    QV_E_SOCKET_EDESTADDRREQ = static_cast<int32_t>(0x8BE32737u),
    QV_E_SOCKET_EMSGSIZE = static_cast<int32_t>(0x8BE32738u),
    QV_E_SOCKET_EPROTOTYPE = static_cast<int32_t>(0x8BE32739u),
    QV_E_SOCKET_ENOPROTOOPT = static_cast<int32_t>(0x8BE3273Au),
    QV_E_SOCKET_EPROTONOSUPPORT = static_cast<int32_t>(0x8BE3273Bu),
    QV_E_SOCKET_ESOCKTNOSUPPORT = static_cast<int32_t>(0x8BE3273Cu),
    QV_E_SOCKET_EOPNOTSUPP = static_cast<int32_t>(0x8BE3273Du),
    QV_E_SOCKET_EPFNOSUPPORT = static_cast<int32_t>(0x8BE3273Eu),
    QV_E_SOCKET_EAFNOSUPPORT = static_cast<int32_t>(0x8BE3273Fu),
    QV_E_SOCKET_EADDRINUSE = static_cast<int32_t>(0x8BE32740u),
    QV_E_SOCKET_EADDRNOTAVAIL = static_cast<int32_t>(0x8BE32741u),
    QV_E_SOCKET_ENETDOWN = static_cast<int32_t>(0x8BE32742u),
    QV_E_SOCKET_ENETUNREACH = static_cast<int32_t>(0x8BE32743u),
    QV_E_SOCKET_ENETRESET = static_cast<int32_t>(0x8BE32744u),
    QV_E_SOCKET_ECONNABORTED = static_cast<int32_t>(0x8BE32745u),
    QV_E_SOCKET_ECONNRESET = static_cast<int32_t>(0x8BE32746u),
    QV_E_SOCKET_ENOBUFS = static_cast<int32_t>(0x8BE32747u),
    QV_E_SOCKET_EISCONN = static_cast<int32_t>(0x8BE32748u),
    QV_E_SOCKET_ENOTCONN = static_cast<int32_t>(0x8BE32749u),
    QV_E_SOCKET_ESHUTDOWN = static_cast<int32_t>(0x8BE3274Au),
    QV_E_SOCKET_ETOOMANYREFS = static_cast<int32_t>(0x8BE3274Bu),
    QV_E_SOCKET_ETIMEDOUT = static_cast<int32_t>(0x8BE3274Cu),
    QV_E_SOCKET_ECONNREFUSED = static_cast<int32_t>(0x8BE3274Du),
    QV_E_SOCKET_ELOOP = static_cast<int32_t>(0x8BE3274Eu),
    QV_E_SOCKET_ENAMETOOLONG = static_cast<int32_t>(0x8BE3274Fu),
    QV_E_SOCKET_EHOSTDOWN = static_cast<int32_t>(0x8BE32750u),
    QV_E_SOCKET_EHOSTUNREACH = static_cast<int32_t>(0x8BE32751u),
    QV_E_SOCKET_ENOTEMPTY = static_cast<int32_t>(0x8BE32752u),
    QV_E_SOCKET_EPROCLIM = static_cast<int32_t>(0x8BE32753u),
    QV_E_SOCKET_EUSERS = static_cast<int32_t>(0x8BE32754u),
    QV_E_SOCKET_EDQUOT = static_cast<int32_t>(0x8BE32755u),
    QV_E_SOCKET_ESTALE = static_cast<int32_t>(0x8BE32756u),
    QV_E_SOCKET_EREMOTE = static_cast<int32_t>(0x8BE32757u),
    QV_E_SOCKET_SYSNOTREADY = static_cast<int32_t>(0x8BE3276Bu),
    QV_E_SOCKET_VERNOTSUPPORTED = static_cast<int32_t>(0x8BE3276Cu),
    QV_E_SOCKET_NOTINITIALISED = static_cast<int32_t>(0x8BE3276Du),
    QV_E_SOCKET_EDISCON = static_cast<int32_t>(0x8BE32775u),
    QV_E_SOCKET_ENOMORE = static_cast<int32_t>(0x8BE32776u),
    QV_E_SOCKET_ECANCELLED = static_cast<int32_t>(0x8BE32777u),
    QV_E_SOCKET_EINVALIDPROCTABLE = static_cast<int32_t>(0x8BE32778u),
    QV_E_SOCKET_EINVALIDPROVIDER = static_cast<int32_t>(0x8BE32779u),
    QV_E_SOCKET_EPROVIDERFAILEDINIT = static_cast<int32_t>(0x8BE3277Au),
    QV_E_SOCKET_SYSCALLFAILURE = static_cast<int32_t>(0x8BE3277Bu),
    QV_E_SOCKET_SERVICE_NOT_FOUND = static_cast<int32_t>(0x8BE3277Cu),
    QV_E_SOCKET_TYPE_NOT_FOUND = static_cast<int32_t>(0x8BE3277Du),
    QV_E_SOCKET__E_NO_MORE = static_cast<int32_t>(0x8BE3277Eu),
    QV_E_SOCKET__E_CANCELLED = static_cast<int32_t>(0x8BE3277Fu),
    QV_E_SOCKET_EREFUSED = static_cast<int32_t>(0x8BE32780u),
    QV_E_SOCKET_HOST_NOT_FOUND = static_cast<int32_t>(0x8BE32AF9u),
    QV_E_SOCKET_TRY_AGAIN = static_cast<int32_t>(0x8BE32AFAu),
    QV_E_SOCKET_NO_RECOVERY = static_cast<int32_t>(0x8BE32AFBu),
    QV_E_SOCKET_NO_DATA = static_cast<int32_t>(0x8BE32AFCu),
    QV_E_SOCKET_EAI_BADFLAGS = static_cast<int32_t>(0x8BE32EF6u),
    QV_E_SOCKET_EAI_SOCKTYPE = static_cast<int32_t>(0x8BE32F0Cu),
    QV_E_SOCKET_EAI_FAMILY = static_cast<int32_t>(0x8BE32F0Fu),
    QV_E_SOCKET_EAI_SERVICE = static_cast<int32_t>(0x8BE32F4Du),
    QV_E_SOCKET_EAI_NONAME = static_cast<int32_t>(0x8BE332C9u),
    QV_E_SOCKET_EAI_AGAIN = static_cast<int32_t>(0x8BE332CAu),
    QV_E_SOCKET_EAI_FAIL = static_cast<int32_t>(0x8BE332CBu),
    QV_E_SOCKET_EAI_NODATA = static_cast<int32_t>(0x8BE336B1u),
};

extern "C" {
// A native sockets error number (Windows Sockets numbering) as a family member.
QV_EXPORT ENUM_QV_E_SOCKET QV_E_SOCKETFromNativeSocketError(int32_t nativeError) noexcept;
// A resolver error number as a family member; sockets numbers are understood too.
QV_EXPORT ENUM_QV_E_SOCKET QV_E_SOCKETFromNativeEaiSocketError(int32_t nativeError) noexcept;
// QVLastNativeSocketError(), the calling thread's last sockets error in the
// Windows Sockets numbering, comes from the platform layer.
// The member's constant description ("OK", "FAIL" or the table's text); never null.
QV_EXPORT const char16_t* QVGetDescriptionFromQV_E_SOCKET(int32_t code) noexcept;
}

#endif
