#ifndef PLC_PANEL_HTTP_SERVER_H
#define PLC_PANEL_HTTP_SERVER_H

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <memory>

#include "panel/http/guard.h"
#include "panel/http/route.h"
#include "values/expected.h"

namespace plc::panel {

/// Where a server listens, and what it bears. Times are in milliseconds.
struct ServerSettings {
    QString address = QStringLiteral("127.0.0.1"); ///< Empty: no TCP.
    quint16 port = 8080;                           ///< 0: any free one.
    QString certificate;                           ///< PEM file with its chain; empty: no TLS.
    QString key;                                   ///< PEM file.
    QString socket;                                ///< In the file system; empty: none.

    int mostConnections = 512;
    int mostConnectionsOfAddress = 400;
    int mostHeadBytes = 64 * 1024; ///< Request line and fields.
    int mostBodyBytes = 1024 * 1024;
    qint64 mostBytesOfBodies = qint64(64) * 1024 * 1024; ///< Of all requests under way.
    int idleTime = 20000;                                ///< Until the head of a request is there.
    int requestTime = 20000;                             ///< From there until its body is.
    int answerTime = 60000;                              ///< For a handler to answer.
    int sendTime = 60000; ///< For a client to read the next sendBytes, or what is left.
    int sendBytes = 256 * 1024;
};

/// Whether the files of the settings, if any, hold a certificate that TLS can be offered with.
Expected<void> checkCertificate(const ServerSettings& settings);

/// What a server does at the moment.
struct ServerStatistics {
    int connections = 0;
    int streams = 0;
    qint64 requests = 0;
    qint64 refused = 0; ///< Responses with 400 and above.
    qint64 cutOff = 0;  ///< Connections that were ended for want of time or room.
};

/// Serves routes over HTTP, on an address and on a socket in the file system.
class Server {
public:
    /// The guard outlives the server. An error names what cannot be listened on, which file cannot
    /// be read, or which route makes no sense. TCP without TLS is for loopback addresses alone.
    static Expected<std::unique_ptr<Server>> start(const ServerSettings& settings,
                                                   const QVector<Route>& routes, Guard* guard);
    /// Ends all connections; handlers that have not answered may still do so, to nobody.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// 0 without TCP.
    quint16 port() const;
    ServerStatistics statistics() const;
    /// Reads certificate and key again, for connections that come from here on; streams and other
    /// connections go on. After an error all is as it was. Returns when the certificate ends.
    Expected<QDateTime> readCertificate();

private:
    class Private;
    explicit Server(std::unique_ptr<Private> d);
    std::unique_ptr<Private> m_d;
};

} // namespace plc::panel

#endif
