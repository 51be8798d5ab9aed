#include "core/ClassTable.h"

#include <qv/legacy/CQVAbstractConnector.h>
#include <qv/net/ITcpConnectionHandler.h>
#include <qv/net/ITransport.h>
#include <qv/net/InetAddress.h>
#include <qv/net/InetSocketAddress.h>
#include <qv/net/MemoryTransport.h>
#include <qv/net/NetworkPath.h>
#include <qv/net/SocketException.h>
#include <qv/net/SocketStreams.h>
#include <qv/net/SocketTransport.h>
#include <qv/net/TcpClientSocket.h>
#include <qv/net/TcpServer.h>
#include <qv/net/TcpServerSocket.h>
#include <qv/net/TcpSocket.h>
#include <qv/net/TcpWorkerSocket.h>
#include <qv/net/URI.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_netClassRows[] = {
    QV_CLASS_ROW(net::InetAddress),
    QV_CLASS_ROW(net::InetSocketAddress),
    QV_CLASS_ROW(net::SocketException),
    QV_CLASS_ROW(net::URI),
    QV_CLASS_ROW(net::URISyntaxException),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
