#include "bench/gateway/consumer.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>

#include "gateway/sparkplug/sparkplug_payload.pb.h"

namespace plc::bench {
namespace {

constexpr qint64 kDay = 24 * 60 * 60 * 1000; // ms
constexpr int kOldest = 60000;               // ms; what is older counts as that old
constexpr quint64 kSequenceNumbers = 256;

} // namespace

Consumer::Consumer(quint16 port)
    : m_broker(QStringLiteral("bench-consumer"), 30, this), m_ages(kOldest + 1)
{
    gateway::BrokerSettings settings;
    settings.host = QStringLiteral("127.0.0.1");
    settings.port = port;
    m_broker.open(settings, {}, {{QStringLiteral("spBv1.0/#"), 0}});
}

void Consumer::begin()
{
    m_ages.assign(kOldest + 1, 0);
    m_messages = m_values = m_historical = m_missing = m_repeated = m_sequenceHoles = m_losses = 0;
}

void Consumer::brokerLost(const QString& reason)
{
    qFatal("the consumer lost its broker: %s", qPrintable(reason));
}

/// spBv1.0/GROUP/TYPE/NODE/DEVICE
void Consumer::messageArrived(const gateway::Message& message)
{
    const qint64 timeOfDay = QDateTime::currentMSecsSinceEpoch() % kDay;
    const QStringList levels = message.topic.split(QLatin1Char('/'));
    const QString type = levels.value(2);
    gateway::wire::Payload payload;
    if (!payload.ParseFromArray(message.payload.constData(), int(message.payload.size())))
        qFatal("a message on %s makes no sense", qPrintable(message.topic));
    ++m_messages;
    if (type == QLatin1String("NDEATH") || type == QLatin1String("DDEATH"))
        ++m_losses;
    if (payload.has_seq())
        takeSequence(levels.value(3), type == QLatin1String("NBIRTH"), payload.seq());
    if (levels.size() < 5)
        return;
    Device& device = m_devices[levels.value(3) + QLatin1Char('/') + levels.value(4)];
    for (const gateway::wire::Metric& metric : payload.metrics()) {
        if (metric.is_historical())
            ++m_historical;
        else if (metric.value_case() == gateway::wire::Metric::kIntValue ||
                 metric.value_case() == gateway::wire::Metric::kLongValue)
            takeValue(
                &device, metric.alias(),
                metric.has_int_value() ? qint64(metric.int_value()) : qint64(metric.long_value()),
                timeOfDay);
    }
}

void Consumer::takeSequence(const QString& node, bool isBirth, quint64 number)
{
    const auto last = m_lastSequences.constFind(node);
    if (!isBirth && last != m_lastSequences.constEnd() && number != (*last + 1) % kSequenceNumbers)
        ++m_sequenceHoles;
    m_lastSequences.insert(node, number);
}

void Consumer::takeValue(Device* device, quint64 alias, qint64 value, qint64 timeOfDay)
{
    ++m_values;
    const qint64 age = qBound(qint64(0), (timeOfDay - value + kDay) % kDay, qint64(kOldest));
    ++m_ages[size_t(age)];
    const auto last = device->lastByAlias.constFind(alias);
    if (last != device->lastByAlias.constEnd()) {
        const qint64 steps = (value - *last + kDay) % kDay / kStep;
        m_missing += steps > 1 ? quint64(steps - 1) : 0;
        m_repeated += steps == 0 ? 1 : 0;
    }
    device->lastByAlias.insert(alias, value);
}

int Consumer::agePercentile(double share) const
{
    quint64 seen = 0;
    for (size_t age = 0; age < m_ages.size(); ++age) {
        seen += m_ages[age];
        if (double(seen) >= share * double(m_values))
            return int(age);
    }
    return kOldest;
}

} // namespace plc::bench
