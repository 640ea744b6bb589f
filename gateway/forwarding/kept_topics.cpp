#include "gateway/forwarding/kept_topics.h"

#include <algorithm>

namespace plc::gateway {
namespace {

// The loss of a removal would leave an old value that looks like one of now.
constexpr int kRemovalQos = 1;

} // namespace

void KeptTopics::begin(const QString& broker)
{
    m_broker = broker;
    m_removals.clear();
    m_topics.clear();
    if (!m_record)
        return;
    const QStringList topics = m_record->topics(broker);
    m_topics = QSet<QString>(topics.begin(), topics.end());
}

void KeptTopics::note(const QVector<Message>& messages)
{
    QStringList news;
    for (const Message& message : messages) {
        if (!message.isRetained || message.payload.isEmpty())
            continue;
        m_removals.remove(message.topic);
        if (m_topics.contains(message.topic))
            continue;
        m_topics.insert(message.topic);
        news.append(message.topic);
    }
    if (m_record && !news.isEmpty())
        m_record->add(m_broker, news);
}

QVector<Message> KeptTopics::removals(const std::function<bool(const QString&)>& isWanted)
{
    QStringList strangers;
    for (const QString& topic : std::as_const(m_topics)) {
        if (!m_removals.contains(topic) && !isWanted(topic))
            strangers.append(topic);
    }
    // A set has no order; that of the names is as good as any, and always the same.
    std::sort(strangers.begin(), strangers.end());
    QVector<Message> messages;
    for (const QString& topic : std::as_const(strangers)) {
        m_removals.insert(topic, ++m_lastRemoval);
        messages.append({topic, {}, kRemovalQos, true});
    }
    return messages;
}

void KeptTopics::confirmed(quint64 removal)
{
    QStringList gone;
    for (auto each = m_removals.begin(); each != m_removals.end();) {
        if (each.value() > removal) {
            ++each;
            continue;
        }
        gone.append(each.key());
        m_topics.remove(each.key());
        each = m_removals.erase(each);
    }
    if (m_record && !gone.isEmpty())
        m_record->remove(m_broker, gone);
}

} // namespace plc::gateway
