#ifndef PLC_TESTS_SUPPORT_FREE_PORT_H
#define PLC_TESTS_SUPPORT_FREE_PORT_H

#include <QtNetwork/QTcpServer>

namespace plc::test {

/// A port that nobody listens on at this moment.
inline quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace plc::test

#endif
