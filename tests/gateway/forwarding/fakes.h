#ifndef PLC_TESTS_GATEWAY_FORWARDING_FAKES_H
#define PLC_TESTS_GATEWAY_FORWARDING_FAKES_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>

#include "gateway/broker/broker.h"
#include "gateway/model/change_store.h"
#include "gateway/model/publisher.h"

namespace plc::test {

/// Publishes texts that a test can read: "open", "begin a x=1 y=?", "a x=1@1000", "old a x=1@1000",
/// "end a". What is not good has its quality's letter before the value.
class TextPublisher : public gateway::Publisher {
public:
    void addDevice(int number, const gateway::Device& device) override
    {
        m_devices[number] = device;
    }
    void removeDevice(int number) override { m_devices.remove(number); }
    std::optional<gateway::Message> nextWill(qint64) override { return {}; }
    QVector<gateway::Subscription> subscriptions() const override { return {}; }
    void connected() override {}
    void disconnected() override {}
    bool mayPublish() const override { return mayPublishNow; }
    bool isToLeave() const override { return false; }
    QVector<gateway::Message> opening(const gateway::NodeState& state, qint64) override
    {
        opened = state;
        return {message(QStringLiteral("open"))};
    }
    QVector<gateway::Message> nodeChanges(const gateway::NodeState&, qint64) override { return {}; }
    QVector<gateway::Message> deviceBegins(int number, const QVector<gateway::Sample>& samples,
                                           qint64) override
    {
        return {message(QStringLiteral("begin ") + text(number, samples, hasTimesInBirths))};
    }
    QVector<gateway::Message> changes(int number, const QVector<gateway::Sample>& samples,
                                      qint64) override
    {
        return {message(text(number, samples, true))};
    }
    QVector<gateway::Message> history(int number, const QVector<gateway::Sample>& samples,
                                      qint64) override
    {
        return {message(QStringLiteral("old ") + text(number, samples, true))};
    }
    QVector<gateway::Message> deviceEnds(int number, qint64) override
    {
        return {message(QStringLiteral("end ") + m_devices[number].name)};
    }
    QVector<gateway::Message> outcome(const gateway::WriteOutcome& outcome, qint64) override
    {
        return {message(QStringLiteral("outcome ") + outcome.id)};
    }
    QVector<gateway::Message> closing(qint64) override { return {}; }
    bool isKept(const QString& topic) const override { return !strangers.contains(topic); }
    gateway::Received received(const gateway::Message&, qint64) override { return {}; }

    gateway::NodeState opened; ///< What the last opening told of the gateway.
    bool mayPublishNow = true;
    QSet<QString> strangers; ///< Topics that are not to be kept.
    bool hasTimesInBirths = false;

private:
    static gateway::Message message(const QString& text)
    {
        return {QStringLiteral("t"), text.toUtf8(), 0, false};
    }
    QString text(int number, const QVector<gateway::Sample>& samples, bool hasTimes) const
    {
        const gateway::Device& device = m_devices[number];
        QString result = device.name;
        for (const gateway::Sample& sample : samples) {
            result += QLatin1Char(' ') + device.metrics[sample.metric].name + QLatin1Char('=');
            if (sample.quality != gateway::Quality::Good)
                result += QLatin1Char(sample.quality == gateway::Quality::Stale ? '~' : '!');
            result +=
                sample.bytes.isEmpty() ? QStringLiteral("?") : QString::fromLatin1(sample.bytes);
            if (hasTimes)
                result += QStringLiteral("@%1").arg(sample.time);
        }
        return result;
    }

    QMap<int, gateway::Device> m_devices;
};

/// A broker whose consumers see a message when it is delivered, and which confirms when it is told.
class HandBroker : public gateway::Broker {
public:
    void open(const gateway::BrokerSettings&, const std::optional<gateway::Message>&,
              const QVector<gateway::Subscription>&) override
    {
    }
    void publish(const gateway::Message& message) override
    {
        published.append(QString::fromUtf8(message.payload));
    }
    void askConfirmation(quint64 mark) override
    {
        marks.append(mark);
        publishedAtMark.append(int(published.size()));
    }
    void close() override {}
    void drop(const QString&) override {}

    /// All that was published since the last call.
    QStringList take() { return std::exchange(published, {}); }

    QStringList published;
    QVector<quint64> marks;
    QVector<int> publishedAtMark;
};

/// A store in memory, with a limit, that can be made to fail.
class MemoryStore : public gateway::ChangeStore {
public:
    Expected<void> append(const QVector<gateway::StoredChange>& changes) override
    {
        if (isFailing)
            return Error{QStringLiteral("disk full")};
        for (gateway::StoredChange change : changes) {
            change.number = ++m_last;
            m_changes.append(change);
        }
        while (m_changes.size() > limit) {
            droppedChanges.append(m_changes.takeFirst());
            ++m_dropped;
        }
        return {};
    }
    QVector<gateway::StoredChange> oldest(qint64 behind, int count) override
    {
        QVector<gateway::StoredChange> result;
        for (const gateway::StoredChange& change : m_changes) {
            if (change.number > behind && int(result.size()) < count)
                result.append(change);
        }
        return result;
    }
    void removeUpTo(qint64 number) override
    {
        while (!m_changes.isEmpty() && m_changes.first().number <= number)
            m_changes.removeFirst();
    }
    void removeRange(qint64 first, qint64 last) override
    {
        const auto isAway = [=](const gateway::StoredChange& change) {
            return change.number >= first && change.number <= last;
        };
        m_changes.erase(std::remove_if(m_changes.begin(), m_changes.end(), isAway),
                        m_changes.end());
    }
    qint64 last() const override { return m_last; }
    quint64 size() const override { return quint64(m_changes.size()); }
    void countDropped(quint64 changes) override { m_dropped += changes; }
    quint64 dropped() const override { return m_dropped; }
    int takeSessionNumber() override { return 0; }

    bool isFailing = false;
    int limit = 1000000;
    QVector<gateway::StoredChange> droppedChanges;

private:
    QVector<gateway::StoredChange> m_changes;
    qint64 m_last = 0;
    quint64 m_dropped = 0;
};

} // namespace plc::test

#endif
