#ifndef PLC_TESTS_GATEWAY_E2E_WATCHER_H
#define PLC_TESTS_GATEWAY_E2E_WATCHER_H

#include <functional>

#include "gateway/consumer/consumer_process.h"

namespace plc::test {

/// A consumer that keeps all it gets, and finds a fault in each message that breaks the convention.
class Watcher {
public:
    using Condition = std::function<bool(const QJsonObject&)>;

    explicit Watcher(const QStringList& arguments) : m_process(arguments)
    {
        EXPECT_EQ("ready", m_process.next()[QStringLiteral("event")].toString());
    }

    void send(const QJsonObject& request) { m_process.send(request); }
    void wantRebirth()
    {
        send({{QStringLiteral("rebirth"), true}, {QStringLiteral("node"), QStringLiteral("hall")}});
    }
    /// Has one value written.
    void command(const char* device, const char* name, const char* type, const QJsonValue& value,
                 const char* id)
    {
        send({{QStringLiteral("node"), QStringLiteral("hall")},
              {QStringLiteral("device"), QString::fromUtf8(device)},
              {QStringLiteral("uuid"), QString::fromUtf8(id)},
              {QStringLiteral("dcmd"),
               QJsonArray{QJsonObject{{QStringLiteral("name"), QString::fromUtf8(name)},
                                      {QStringLiteral("type"), QString::fromLatin1(type)},
                                      {QStringLiteral("value"), value}}}}});
    }

    /// For one that comes into a session: what it sees before the node's next birth makes no sense.
    void skipToBirth()
    {
        QJsonObject message = m_process.next();
        while (!message.isEmpty() && !is(message, "NBIRTH"))
            message = m_process.next();
        m_messages.append(message);
    }

    /// Reads on to the first message that fulfils this; empty when none comes.
    QJsonObject await(const Condition& condition)
    {
        for (;;) {
            const QJsonObject message = m_process.next();
            if (message.isEmpty())
                return message;
            EXPECT_EQ("", problems(message)) << jsonOf(message).toStdString();
            m_messages.append(message);
            if (condition(message))
                return message;
        }
    }
    /// The next message of this kind, of this device.
    QJsonObject await(const char* kind, const char* device = nullptr)
    {
        return await([&](const QJsonObject& message) { return is(message, kind, device); });
    }
    /// The first message of this kind in which the metric has this value; empty when none comes.
    QJsonObject awaitValue(const char* kind, const char* device, const char* name,
                           const QJsonValue& value)
    {
        return await([&](const QJsonObject& message) {
            return is(message, kind, device) &&
                   metric(message, name)[QStringLiteral("value")] == value;
        });
    }
    /// The outcome with this id, of a device or of the node.
    QJsonObject awaitOutcome(const char* id)
    {
        QJsonObject outcome;
        await([&](const QJsonObject& message) {
            outcome = outcomeOf(message);
            return outcome[QStringLiteral("id")].toString() == QString::fromUtf8(id);
        });
        return outcome;
    }
    /// Reads all that the broker has got for it until now.
    void catchUp()
    {
        const QString mark = QStringLiteral("mark %1").arg(++m_marks);
        send({{QStringLiteral("publish"), QStringLiteral("spBv1.0/STATE/nobody")},
              {QStringLiteral("text"), mark}});
        await([&](const QJsonObject& line) { return line[QStringLiteral("text")] == mark; });
    }

    const QVector<QJsonObject>& messages() const { return m_messages; }
    int count(const char* kind, const char* device = nullptr) const
    {
        return int(std::count_if(m_messages.begin(), m_messages.end(),
                                 [&](const QJsonObject& each) { return is(each, kind, device); }));
    }

    static bool is(const QJsonObject& message, const char* kind, const char* device = nullptr)
    {
        return message[QStringLiteral("kind")].toString() == QLatin1String(kind) &&
               (!device ||
                message[QStringLiteral("device")].toString() == QString::fromUtf8(device));
    }
    static QJsonObject outcomeOf(const QJsonObject& message)
    {
        const QString text =
            metric(message, "Gateway/Write Outcome")[QStringLiteral("value")].toString();
        return QJsonDocument::fromJson(text.toUtf8()).object();
    }

private:
    ConsumerProcess m_process;
    QVector<QJsonObject> m_messages;
    int m_marks = 0;
};

} // namespace plc::test

#endif
