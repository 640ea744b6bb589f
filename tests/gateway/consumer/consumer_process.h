#ifndef PLC_TESTS_GATEWAY_CONSUMER_CONSUMER_PROCESS_H
#define PLC_TESTS_GATEWAY_CONSUMER_CONSUMER_PROCESS_H

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include "e2e/line_process.h"
#include "gateway/model/message.h"

namespace plc::test {

/// consumer.js, which has its own description of what it takes and gives.
class ConsumerProcess {
public:
    explicit ConsumerProcess(const QStringList& arguments)
        : m_process(QStringLiteral(PLC_NODE), QStringList{QStringLiteral(PLC_CONSUMER)} + arguments)
    {
    }

    void send(const QJsonObject& request)
    {
        m_process.send(QString::fromUtf8(QJsonDocument(request).toJson(QJsonDocument::Compact)));
    }

    /// With --decode.
    void send(const gateway::Message& message)
    {
        send(QJsonObject{{QStringLiteral("topic"), message.topic},
                         {QStringLiteral("hex"), QString::fromLatin1(message.payload.toHex())}});
    }

    /// With a broker: has it published by this consumer.
    void publish(const gateway::Message& message)
    {
        send(QJsonObject{{QStringLiteral("publish"), message.topic},
                         {QStringLiteral("hex"), QString::fromLatin1(message.payload.toHex())},
                         {QStringLiteral("qos"), message.qos},
                         {QStringLiteral("retain"), message.isRetained}});
    }

    QJsonObject next()
    {
        const QString line = m_process.nextLine();
        EXPECT_FALSE(line.isEmpty()) << m_process.errors().toStdString();
        return QJsonDocument::fromJson(line.toUtf8()).object();
    }

    /// What it makes of a message, with --decode.
    QJsonObject decoded(const gateway::Message& message)
    {
        send(message);
        return next();
    }

    /// The message that a request becomes, with --encode.
    gateway::Message encoded(const QJsonObject& request)
    {
        send(request);
        const QJsonObject line = next();
        return gateway::Message{
            line[QStringLiteral("topic")].toString(),
            QByteArray::fromHex(line[QStringLiteral("hex")].toString().toLatin1()), 0, false};
    }

private:
    LineProcess m_process;
};

/// What is wrong with a message, in one text.
inline QString problems(const QJsonObject& message)
{
    QStringList list;
    for (const QJsonValue& problem : message[QStringLiteral("problems")].toArray())
        list.append(problem.toString());
    return list.join(QStringLiteral("; "));
}

/// The metric of this name; empty if there is none.
inline QJsonObject metric(const QJsonObject& message, const char* name)
{
    for (const QJsonValue& value : message[QStringLiteral("metrics")].toArray()) {
        const QJsonObject metric = value.toObject();
        if (metric[QStringLiteral("name")].toString() == QString::fromUtf8(name))
            return metric;
    }
    return {};
}

/// A value as JSON text without blanks: -1, "text", [1,2].
inline QString jsonOf(const QJsonValue& value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

} // namespace plc::test

#endif
