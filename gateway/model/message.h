#ifndef PLC_GATEWAY_MODEL_MESSAGE_H
#define PLC_GATEWAY_MODEL_MESSAGE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::gateway {

/// A message as MQTT carries it.
struct Message {
    QString topic;
    QByteArray payload;
    int qos = 0;
    bool isRetained = false;
};

struct Subscription {
    QString topic;
    int qos = 1;
};

} // namespace plc::gateway

#endif
