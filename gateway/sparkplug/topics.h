#ifndef PLC_GATEWAY_SPARKPLUG_TOPICS_H
#define PLC_GATEWAY_SPARKPLUG_TOPICS_H

#include <QtCore/QString>

#include <optional>

namespace plc::gateway {

/// The topics of an edge node: spBv1.0/GROUP/KIND/NODE, and for its devices
/// spBv1.0/GROUP/KIND/NODE/DEVICE.
class Topics {
public:
    Topics(const QString& group, const QString& node) : m_group(group), m_node(node) {}

    /// `kind` is "NBIRTH", "NDATA", "NDEATH" or "NCMD".
    QString ofNode(const char* kind) const;
    /// `kind` is "DBIRTH", "DDATA", "DDEATH" or "DCMD".
    QString ofDevice(const char* kind, const QString& device) const;
    /// Where a host tells whether it is there.
    static QString ofHost(const QString& host);
    /// Whether it is that topic, also as RabbitMQ 3 writes topics of messages that it has kept:
    /// with slashes in the place of dots.
    static bool isOfHost(const QString& topic, const QString& host);

    /// The device to which a topic carries commands; nothing if it is no such topic of this node.
    std::optional<QString> commandedDevice(const QString& topic) const;

private:
    const QString m_group;
    const QString m_node;
};

} // namespace plc::gateway

#endif
