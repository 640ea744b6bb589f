#ifndef PLC_GATEWAY_MODEL_TOPIC_RECORD_H
#define PLC_GATEWAY_MODEL_TOPIC_RECORD_H

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc::gateway {

/// On which topics brokers keep messages of this gateway, beyond the end of the process: what it no
/// longer publishes has to be taken back from them. A broker has a name, "host:1883".
class TopicRecord {
public:
    virtual ~TopicRecord() = default;

    virtual QStringList topics(const QString& broker) const = 0;
    /// Called before messages are published there.
    virtual void add(const QString& broker, const QStringList& topics) = 0;
    /// The broker has confirmed that it keeps nothing there any more.
    virtual void remove(const QString& broker, const QStringList& topics) = 0;
};

} // namespace plc::gateway

#endif
