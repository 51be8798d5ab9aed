#include <qv/net/SocketError.h>

#include <algorithm>
#include <iterator>

namespace {

struct SocketErrorRow {
    int32_t number;
    const char16_t* description;
};

// Ascending by number. Texts are kept exactly as the library always printed
// them, trailing spaces included: callers compare and concatenate them.
const SocketErrorRow kSocketErrors[] = {
    {2008, u"EAI_MEMORY Memory allocation failure."},
    {10004, u"EINTR A blocking operation was interrupted by a call to WSACancelBlockingCall."},
    {10009, u"EBADF The file handle supplied is not valid."},
    {10013, u"EACCES An attempt was made to access a socket in a way forbidden by its access permissions. "},
    {10014,
     u"EFAULT The system detected an invalid pointer address in attempting to use a pointer argument in a call. "},
    {10022, u"EINVAL An invalid argument was supplied. "},
    {10024, u"EMFILE Too many open sockets. "},
    {10035, u"EWOULDBLOCK A non-blocking socket operation could not be completed immediately. "},
    {10036, u"EINPROGRESS A blocking operation is currently executing. "},
    {10037,
     u"EALREADY An operation was attempted on a non-blocking socket that already had an operation in progress. "},
    {10038, u"ENOTSOCK An operation was attempted on something that is not a socket. "},
    {10039, u"EDESTADDRREQ A required address was omitted from an operation on a socket. "},
    {10040, u"EMSGSIZE A message sent on a datagram socket was larger than the internal message buffer or some other "
            u"network limit, or the buffer used to receive a datagram into was smaller than the datagram itself."},
    {10041, u"EPROTOTYPE A protocol was specified in the socket function call that does not support the semantics of "
            u"the socket type requested. "},
    {10042, u"ENOPROTOOPT An unknown, invalid, or unsupported option or level was specified in a getsockopt or "
            u"setsockopt call. "},
    {10043, u"EPROTONOSUPPORT The requested protocol has not been configured into the system, or no implementation for "
            u"it exists. "},
    {10044, u"ESOCKTNOSUPPORT The support for the specified socket type does not exist in this address family. "},
    {10045, u"EOPNOTSUPP The attempted operation is not supported for the type of object referenced. "},
    {10046,
     u"EPFNOSUPPORT The protocol family has not been configured into the system or no implementation for it exists. "},
    {10047, u"EAFNOSUPPORT An address incompatible with the requested protocol was used. "},
    {10048,
     u"EADDRINUSE Only one usage of each socket address (protocol/network address/port) is normally permitted. "},
    {10049, u"EADDRNOTAVAIL The requested address is not valid in its context. "},
    {10050, u"ENETDOWN A socket operation encountered a dead network. "},
    {10051, u"ENETUNREACH A socket operation was attempted to an unreachable network. "},
    {10052, u"ENETRESET The connection has been broken due to keep-alive activity detecting a failure while the "
            u"operation was in progress. "},
    {10053, u"ECONNABORTED An established connection was aborted by the software in your host machine. "},
    {10054, u"ECONNRESET An existing connection was forcibly closed by the remote host. "},
    {10055, u"ENOBUFS An operation on a socket could not be performed because the system lacked sufficient buffer "
            u"space or because a queue was full."},
    {10056, u"EISCONN A connect request was made on an already connected socket. "},
    {10057, u"ENOTCONN A request to send or receive data was disallowed because the socket is not connected and (when "
            u"sending on a datagram socket using a sendto call) no address was supplied. "},
    {10058, u"ESHUTDOWN A request to send or receive data was disallowed because the socket had already been shut down "
            u"in that direction with a previous shutdown call. "},
    {10059, u"ETOOMANYREFS Too many references to some kernel object. "},
    {10060, u"ETIMEDOUT A connection attempt failed because the connected party did not properly respond after a "
            u"period of time, or established connection failed because connected host has failed to respond. "},
    {10061, u"ECONNREFUSED No connection could be made because the target machine actively refused it. "},
    {10062, u"ELOOP Cannot translate name. "},
    {10063, u"ENAMETOOLONG Name component or name was too long. "},
    {10064, u"EHOSTDOWN A socket operation failed because the destination host was down. "},
    {10065, u"EHOSTUNREACH A socket operation was attempted to an unreachable host. "},
    {10066, u"ENOTEMPTY Cannot remove a directory that is not empty. "},
    {10067, u"EPROCLIM A Windows Sockets implementation may have a limit on the number of applications that may use it "
            u"simultaneously. "},
    {10068, u"EUSERS Ran out of quota. "},
    {10069, u"EDQUOT Ran out of disk quota. "},
    {10070, u"ESTALE File handle reference is no longer available. "},
    {10071, u"EREMOTE Item is not available locally. "},
    {10091, u"SYSNOTREADY WSAStartup cannot function at this time because the underlying system it uses to provide "
            u"network services is currently unavailable. "},
    {10092, u"VERNOTSUPPORTED The Windows Sockets version requested is not supported. "},
    {10093, u"NOTINITIALISED Either the application has not called WSAStartup, or WSAStartup failed. "},
    {10101, u"EDISCON Returned by WSARecv or WSARecvFrom to indicate the remote party has initiated a graceful "
            u"shutdown sequence. "},
    {10102, u"ENOMORE No more results can be returned by WSALookupServiceNext. "},
    {10103, u"ECANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has "
            u"been canceled. "},
    {10104, u"EINVALIDPROCTABLE The procedure call table is invalid. "},
    {10105, u"EINVALIDPROVIDER The requested service provider is invalid. "},
    {10106, u"EPROVIDERFAILEDINIT The requested service provider could not be loaded or initialized. "},
    {10107, u"SYSCALLFAILURE A system call that should never fail has failed. "},
    {10108, u"SERVICE_NOT_FOUND No such service is known. The service cannot be found in the specified name space. "},
    {10109, u"TYPE_NOT_FOUND The specified class was not found. "},
    {10110, u"_E_NO_MORE No more results can be returned by WSALookupServiceNext. "},
    {10111, u"_E_CANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has "
            u"been canceled. "},
    {10112, u"EREFUSED A database query failed because it was actively refused. "},
    {11001, u"HOST_NOT_FOUND No such host is known. "},
    {11002, u"TRY_AGAIN This is usually a temporary error during hostname resolution and means that the local server "
            u"did not receive a response from an authoritative server."},
    {11003, u"NO_RECOVERY A non-recoverable error occurred during a database lookup. "},
    {11004, u"NO_DATA The requested name is valid and was found in the database, but it does not have the correct "
            u"associated data being resolved for. "},
    {12022, u"EAI_BADFLAGS Invalid value for 'ai_flags' field."},
    {12044, u"EAI_SOCKTYPE 'ai_socktype' not supported."},
    {12047, u"EAI_FAMILY 'ai_family' not supported."},
    {12109, u"EAI_SERVICE SERVICE not supported for 'ai_socktype'."},
    {13001, u"EAI_NONAME NAME or SERVICE is unknown."},
    {13002, u"EAI_AGAIN Temporary failure in name resolution."},
    {13003, u"EAI_FAIL Non-recoverable failure in name res."},
    {14001, u"EAI_NODATA No address associated with NAME."},
};

constexpr int32_t kFamilyBase = static_cast<int32_t>(0x8BE30000u);

bool isResolverNumber(int32_t n)
{
    switch (n) {
    case 2008:
    case 12022:
    case 12044:
    case 12047:
    case 12109:
    case 13001:
    case 13002:
    case 13003:
    case 14001: return true;
    default: return false;
    }
}

const SocketErrorRow* findRow(int32_t number)
{
    auto it = std::lower_bound(std::begin(kSocketErrors), std::end(kSocketErrors), number,
                               [](const SocketErrorRow& row, int32_t n) { return row.number < n; });
    return it != std::end(kSocketErrors) && it->number == number ? it : nullptr;
}

} // namespace

extern "C" ENUM_QV_E_SOCKET QV_E_SOCKETFromNativeSocketError(int32_t nativeError) noexcept
{
    if (nativeError == 0)
        return QV_E_SOCKET_OK;
    // Only the sockets and host-resolution rows; resolver numbers go through
    // the EAI mapping.
    if (nativeError >= 10004 && nativeError <= 11004 && findRow(nativeError))
        return static_cast<ENUM_QV_E_SOCKET>(kFamilyBase + nativeError);
    return QV_E_SOCKET_FAIL;
}

extern "C" ENUM_QV_E_SOCKET QV_E_SOCKETFromNativeEaiSocketError(int32_t nativeError) noexcept
{
    if (nativeError == 0)
        return QV_E_SOCKET_OK;
    if (isResolverNumber(nativeError))
        return static_cast<ENUM_QV_E_SOCKET>(kFamilyBase + nativeError);
    return QV_E_SOCKETFromNativeSocketError(nativeError);
}

extern "C" const char16_t* QVGetDescriptionFromQV_E_SOCKET(int32_t code) noexcept
{
    if (code == 0)
        return u"OK";
    if ((static_cast<uint32_t>(code) & 0xFFFF0000u) == 0x8BE30000u) {
        if (const SocketErrorRow* row = findRow(static_cast<int32_t>(static_cast<uint32_t>(code) & 0xFFFFu)))
            return row->description;
    }
    return u"FAIL";
}
