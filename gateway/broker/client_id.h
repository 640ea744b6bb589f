#ifndef PLC_GATEWAY_BROKER_CLIENT_ID_H
#define PLC_GATEWAY_BROKER_CLIENT_ID_H

#include <QtCore/QString>

#include "gateway/config/settings.h"

namespace plc::gateway {

/// As which client a gateway comes to brokers: another one for each pair of names, since a broker
/// ends the connection of a client when another comes with its id.
inline QString clientId(const QString& group, const QString& node)
{
    // Names have no slash.
    return QStringLiteral("plc-gateway/") + group + QLatin1Char('/') + node;
}

/// At one broker: a cluster keeps what a client subscribes on the node to which it came first, and
/// refuses it at the others while that one is down.
inline QString clientId(const QString& client, const BrokerSettings& broker)
{
    return client + QLatin1Char('/') + broker.host + QLatin1Char('/') +
           QString::number(broker.port);
}

} // namespace plc::gateway

#endif
