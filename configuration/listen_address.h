#ifndef PLC_CONFIGURATION_LISTEN_ADDRESS_H
#define PLC_CONFIGURATION_LISTEN_ADDRESS_H

#include <QtCore/QString>

#include <optional>

namespace plc::configuration {

/// Where a program listens.
struct ListenAddress {
    QString address; ///< IPv4 or IPv6, without brackets.
    quint16 port = 0;
};

/// "127.0.0.1:9108" or "[::1]:9108"; nothing: it is no address with a port. The address is not
/// looked at further.
std::optional<ListenAddress> parseListenAddress(const QString& text);

/// Whether only this machine reaches the address. False for what is no address.
bool isLoopback(const QString& address);

} // namespace plc::configuration

#endif
