#ifndef PLC_PANEL_ACCESS_REQUEST_ORIGIN_H
#define PLC_PANEL_ACCESS_REQUEST_ORIGIN_H

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <optional>

namespace plc::panel {

/// A host as "Host" and "Origin" write it.
struct HostAndPort {
    QByteArray host; ///< In small letters, without brackets and a full stop at its end.
    int port = -1;   ///< -1: not said.
};

/// "panel.example:8080", "[::1]:8080". Nothing for what is no host.
std::optional<HostAndPort> parseHost(const QByteArray& text);

/// Names that this server goes by. Others lead a browser here only when somebody has their name
/// server point at this machine, so that its own pages may talk to it.
class HostNames {
public:
    /// localhost, 127.0.0.1 and ::1, and these. With "0.0.0.0" or "::", which stand for all
    /// addresses of this machine, any numeric address: behind one is no name that could point
    /// elsewhere.
    explicit HostNames(const QStringList& names);
    /// Any port: a tunnel has another one than this server.
    bool contains(const QByteArray& host) const;

private:
    QList<QByteArray> m_names;
    bool m_takesAddresses = false;
};

/// Whether a page of `origin` was served by this server, which the request calls `host`. The origin
/// of a server without TLS may be https, behind a proxy that has it.
bool isSameOrigin(const QByteArray& origin, const QByteArray& host, bool isEncrypted);

} // namespace plc::panel

#endif
