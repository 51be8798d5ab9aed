#include <qv/net/SocketError.h>

#include <gtest/gtest.h>

#include <cerrno>

#include <string>

namespace {

std::string narrow(const char16_t* text)
{
    std::string out;
    for (; *text; ++text)
        out += static_cast<char>(*text);
    return out;
}

struct Row {
    int32_t number;
    uint32_t code;
    const char* text;
};

// The published table, texts byte for byte (trailing spaces included).
const Row kTable[] = {
    {2008, 0x8BE307D8U, "EAI_MEMORY Memory allocation failure."},
    {10004, 0x8BE32714U, "EINTR A blocking operation was interrupted by a call to WSACancelBlockingCall."},
    {10009, 0x8BE32719U, "EBADF The file handle supplied is not valid."},
    {10013, 0x8BE3271DU,
     "EACCES An attempt was made to access a socket in a way forbidden by its access permissions. "},
    {10014, 0x8BE3271EU,
     "EFAULT The system detected an invalid pointer address in attempting to use a pointer argument in a call. "},
    {10022, 0x8BE32726U, "EINVAL An invalid argument was supplied. "},
    {10024, 0x8BE32728U, "EMFILE Too many open sockets. "},
    {10035, 0x8BE32733U, "EWOULDBLOCK A non-blocking socket operation could not be completed immediately. "},
    {10036, 0x8BE32734U, "EINPROGRESS A blocking operation is currently executing. "},
    {10037, 0x8BE32735U,
     "EALREADY An operation was attempted on a non-blocking socket that already had an operation in progress. "},
    {10038, 0x8BE32736U, "ENOTSOCK An operation was attempted on something that is not a socket. "},
    {10039, 0x8BE32737U, "EDESTADDRREQ A required address was omitted from an operation on a socket. "},
    {10040, 0x8BE32738U,
     "EMSGSIZE A message sent on a datagram socket was larger than the internal message buffer or some other network "
     "limit, or the buffer used to receive a datagram into was smaller than the datagram itself."},
    {10041, 0x8BE32739U,
     "EPROTOTYPE A protocol was specified in the socket function call that does not support the semantics of the "
     "socket type requested. "},
    {10042, 0x8BE3273AU,
     "ENOPROTOOPT An unknown, invalid, or unsupported option or level was specified in a getsockopt or setsockopt "
     "call. "},
    {10043, 0x8BE3273BU,
     "EPROTONOSUPPORT The requested protocol has not been configured into the system, or no implementation for it "
     "exists. "},
    {10044, 0x8BE3273CU,
     "ESOCKTNOSUPPORT The support for the specified socket type does not exist in this address family. "},
    {10045, 0x8BE3273DU, "EOPNOTSUPP The attempted operation is not supported for the type of object referenced. "},
    {10046, 0x8BE3273EU,
     "EPFNOSUPPORT The protocol family has not been configured into the system or no implementation for it exists. "},
    {10047, 0x8BE3273FU, "EAFNOSUPPORT An address incompatible with the requested protocol was used. "},
    {10048, 0x8BE32740U,
     "EADDRINUSE Only one usage of each socket address (protocol/network address/port) is normally permitted. "},
    {10049, 0x8BE32741U, "EADDRNOTAVAIL The requested address is not valid in its context. "},
    {10050, 0x8BE32742U, "ENETDOWN A socket operation encountered a dead network. "},
    {10051, 0x8BE32743U, "ENETUNREACH A socket operation was attempted to an unreachable network. "},
    {10052, 0x8BE32744U,
     "ENETRESET The connection has been broken due to keep-alive activity detecting a failure while the operation was "
     "in progress. "},
    {10053, 0x8BE32745U, "ECONNABORTED An established connection was aborted by the software in your host machine. "},
    {10054, 0x8BE32746U, "ECONNRESET An existing connection was forcibly closed by the remote host. "},
    {10055, 0x8BE32747U,
     "ENOBUFS An operation on a socket could not be performed because the system lacked sufficient buffer space or "
     "because a queue was full."},
    {10056, 0x8BE32748U, "EISCONN A connect request was made on an already connected socket. "},
    {10057, 0x8BE32749U,
     "ENOTCONN A request to send or receive data was disallowed because the socket is not connected and (when sending "
     "on a datagram socket using a sendto call) no address was supplied. "},
    {10058, 0x8BE3274AU,
     "ESHUTDOWN A request to send or receive data was disallowed because the socket had already been shut down in that "
     "direction with a previous shutdown call. "},
    {10059, 0x8BE3274BU, "ETOOMANYREFS Too many references to some kernel object. "},
    {10060, 0x8BE3274CU,
     "ETIMEDOUT A connection attempt failed because the connected party did not properly respond after a period of "
     "time, or established connection failed because connected host has failed to respond. "},
    {10061, 0x8BE3274DU, "ECONNREFUSED No connection could be made because the target machine actively refused it. "},
    {10062, 0x8BE3274EU, "ELOOP Cannot translate name. "},
    {10063, 0x8BE3274FU, "ENAMETOOLONG Name component or name was too long. "},
    {10064, 0x8BE32750U, "EHOSTDOWN A socket operation failed because the destination host was down. "},
    {10065, 0x8BE32751U, "EHOSTUNREACH A socket operation was attempted to an unreachable host. "},
    {10066, 0x8BE32752U, "ENOTEMPTY Cannot remove a directory that is not empty. "},
    {10067, 0x8BE32753U,
     "EPROCLIM A Windows Sockets implementation may have a limit on the number of applications that may use it "
     "simultaneously. "},
    {10068, 0x8BE32754U, "EUSERS Ran out of quota. "},
    {10069, 0x8BE32755U, "EDQUOT Ran out of disk quota. "},
    {10070, 0x8BE32756U, "ESTALE File handle reference is no longer available. "},
    {10071, 0x8BE32757U, "EREMOTE Item is not available locally. "},
    {10091, 0x8BE3276BU,
     "SYSNOTREADY WSAStartup cannot function at this time because the underlying system it uses to provide network "
     "services is currently unavailable. "},
    {10092, 0x8BE3276CU, "VERNOTSUPPORTED The Windows Sockets version requested is not supported. "},
    {10093, 0x8BE3276DU, "NOTINITIALISED Either the application has not called WSAStartup, or WSAStartup failed. "},
    {10101, 0x8BE32775U,
     "EDISCON Returned by WSARecv or WSARecvFrom to indicate the remote party has initiated a graceful shutdown "
     "sequence. "},
    {10102, 0x8BE32776U, "ENOMORE No more results can be returned by WSALookupServiceNext. "},
    {10103, 0x8BE32777U,
     "ECANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
     "canceled. "},
    {10104, 0x8BE32778U, "EINVALIDPROCTABLE The procedure call table is invalid. "},
    {10105, 0x8BE32779U, "EINVALIDPROVIDER The requested service provider is invalid. "},
    {10106, 0x8BE3277AU, "EPROVIDERFAILEDINIT The requested service provider could not be loaded or initialized. "},
    {10107, 0x8BE3277BU, "SYSCALLFAILURE A system call that should never fail has failed. "},
    {10108, 0x8BE3277CU,
     "SERVICE_NOT_FOUND No such service is known. The service cannot be found in the specified name space. "},
    {10109, 0x8BE3277DU, "TYPE_NOT_FOUND The specified class was not found. "},
    {10110, 0x8BE3277EU, "_E_NO_MORE No more results can be returned by WSALookupServiceNext. "},
    {10111, 0x8BE3277FU,
     "_E_CANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
     "canceled. "},
    {10112, 0x8BE32780U, "EREFUSED A database query failed because it was actively refused. "},
    {11001, 0x8BE32AF9U, "HOST_NOT_FOUND No such host is known. "},
    {11002, 0x8BE32AFAU,
     "TRY_AGAIN This is usually a temporary error during hostname resolution and means that the local server did not "
     "receive a response from an authoritative server."},
    {11003, 0x8BE32AFBU, "NO_RECOVERY A non-recoverable error occurred during a database lookup. "},
    {11004, 0x8BE32AFCU,
     "NO_DATA The requested name is valid and was found in the database, but it does not have the correct associated "
     "data being resolved for. "},
    {12022, 0x8BE32EF6U, "EAI_BADFLAGS Invalid value for 'ai_flags' field."},
    {12044, 0x8BE32F0CU, "EAI_SOCKTYPE 'ai_socktype' not supported."},
    {12047, 0x8BE32F0FU, "EAI_FAMILY 'ai_family' not supported."},
    {12109, 0x8BE32F4DU, "EAI_SERVICE SERVICE not supported for 'ai_socktype'."},
    {13001, 0x8BE332C9U, "EAI_NONAME NAME or SERVICE is unknown."},
    {13002, 0x8BE332CAU, "EAI_AGAIN Temporary failure in name resolution."},
    {13003, 0x8BE332CBU, "EAI_FAIL Non-recoverable failure in name res."},
    {14001, 0x8BE336B1U, "EAI_NODATA No address associated with NAME."},
};

bool isResolver(int32_t n)
{
    return n == 2008 || n >= 12000;
}

} // namespace

TEST(SocketError, EveryMemberMapsAndDescribesExactly)
{
    for (const Row& row : kTable) {
        SCOPED_TRACE(row.number);
        int32_t viaSockets = QV_E_SOCKETFromNativeSocketError(row.number);
        int32_t viaResolver = QV_E_SOCKETFromNativeEaiSocketError(row.number);
        EXPECT_EQ(static_cast<uint32_t>(viaResolver), row.code);
        EXPECT_EQ(static_cast<uint32_t>(viaSockets), isResolver(row.number) ? 0x80004005U : row.code);
        EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(static_cast<int32_t>(row.code))), row.text);
    }
}

TEST(SocketError, UnknownNumbersAndSpecialValues)
{
    EXPECT_EQ(QV_E_SOCKETFromNativeSocketError(0), QV_E_SOCKET_OK);
    EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(0), QV_E_SOCKET_OK);
    EXPECT_EQ(QV_E_SOCKETFromNativeSocketError(10010), QV_E_SOCKET_FAIL);
    EXPECT_EQ(QV_E_SOCKETFromNativeSocketError(13001), QV_E_SOCKET_FAIL);
    EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(13001), QV_E_SOCKET_EAI_NONAME);
    EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(11001), QV_E_SOCKET_HOST_NOT_FOUND);
    EXPECT_EQ(QV_E_SOCKETFromNativeEaiSocketError(-3), QV_E_SOCKET_FAIL);
    EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(0)), "OK");
    EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(static_cast<int32_t>(0x80004005U))), "FAIL");
    EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(static_cast<int32_t>(0x8BE30001U))), "FAIL");
    EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(12345)), "FAIL");
    // Same explanations, distinct members.
    EXPECT_NE(QV_E_SOCKET_ENOMORE, QV_E_SOCKET__E_NO_MORE);
    EXPECT_EQ(narrow(QVGetDescriptionFromQV_E_SOCKET(QV_E_SOCKET__E_CANCELLED)).substr(0, 13), "_E_CANCELLED ");
}

TEST(SocketError, LastNativeErrorIsTranslatedFromErrno)
{
    errno = ECONNREFUSED;
    EXPECT_EQ(QVLastNativeSocketError(), 10061);
    EXPECT_EQ(QV_E_SOCKETFromNativeSocketError(QVLastNativeSocketError()), QV_E_SOCKET_ECONNREFUSED);
    errno = EWOULDBLOCK;
    EXPECT_EQ(QV_E_SOCKETFromNativeSocketError(QVLastNativeSocketError()), QV_E_SOCKET_EWOULDBLOCK);
}
