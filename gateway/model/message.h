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
    /// None of it may be missed: where more comes than can be taken, the connection ends, and the
    /// next one begins with what the broker keeps.
    bool isVital = false;
};

} // namespace plc::gateway

#endif
