#ifndef PLC_GATEWAY_CONFIG_CONFIG_TEXT_H
#define PLC_GATEWAY_CONFIG_CONFIG_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>

namespace plc::gateway {

/// A configuration as text: keys in the order in which the documents describe them, one line for
/// each key of the whole, each broker and each device.
QByteArray configText(const QJsonObject& configuration);

} // namespace plc::gateway

#endif
