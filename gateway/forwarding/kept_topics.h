#ifndef PLC_GATEWAY_FORWARDING_KEPT_TOPICS_H
#define PLC_GATEWAY_FORWARDING_KEPT_TOPICS_H

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QVector>

#include <functional>

#include "gateway/model/message.h"
#include "gateway/model/topic_record.h"

namespace plc::gateway {

/// The topics on which the connected broker keeps messages of this gateway, of former runs, too.
///
/// 1. A topic is in the record before the first message that is to be kept there is published.
/// 2. It leaves the record when the broker has confirmed its removal, an empty message, and nothing
///    has been published there since.
class KeptTopics {
public:
    /// `record` may be null: then nothing outlives the process.
    explicit KeptTopics(TopicRecord* record) : m_record(record) {}

    /// At another connection: removals that were not confirmed are made again.
    void begin(const QString& broker);
    /// These are about to be published.
    void note(const QVector<Message>& messages);
    /// Removes what is kept on topics that nobody wants any more: messages to be published.
    QVector<Message> removals(const std::function<bool(const QString&)>& isWanted);
    /// Of the last of all removals.
    quint64 lastRemoval() const { return m_lastRemoval; }
    /// The broker has the removals up to this one.
    void confirmed(quint64 removal);

private:
    TopicRecord* const m_record;
    QString m_broker;
    QSet<QString> m_topics;
    QHash<QString, quint64> m_removals; ///< Those on their way.
    quint64 m_lastRemoval = 0;
};

} // namespace plc::gateway

#endif
