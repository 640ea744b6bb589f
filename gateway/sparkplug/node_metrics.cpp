#include "gateway/sparkplug/node_metrics.h"

#include "gateway/sparkplug/data_type.h"
#include "gateway/sparkplug/metric_writer.h"

namespace plc::gateway {
namespace {

enum NodeAlias : quint64 {
    kVersionAlias = 1,
    kStoredAlias,
    kDroppedAlias,
    kNodeOutcomeAlias,
};
static_assert(kNodeOutcomeAlias + 1 == kFirstFreeAlias);

} // namespace

const QString& outcomeName()
{
    static const QString name = QStringLiteral("Gateway/Write Outcome");
    return name;
}

const char* rebirthName()
{
    return "Node Control/Rebirth";
}

void addSessionNumber(int number, qint64 time, wire::Payload* payload)
{
    addNumber(QStringLiteral("bdSeq"), 0, quint64(number), time, payload)
        ->set_datatype(quint32(DataType::Int64));
}

void addNodeMetrics(const NodeState& state, qint64 time, wire::Payload* payload)
{
    addBoolean(QString::fromLatin1(rebirthName()), false, time, payload);
    addText(QStringLiteral("Gateway/Version"), kVersionAlias, state.version, time, payload);
    addNumber(QStringLiteral("Gateway/Stored Changes"), kStoredAlias, state.stored, time, payload);
    addNumber(QStringLiteral("Gateway/Dropped Changes"), kDroppedAlias, state.dropped, time,
              payload);
    addText(outcomeName(), kNodeOutcomeAlias, QString(), time, payload)->set_is_transient(true);
}

void addNodeChanges(const NodeState& before, const NodeState& now, qint64 time,
                    wire::Payload* payload)
{
    if (before.version != now.version)
        addText(QString(), kVersionAlias, now.version, time, payload);
    if (before.stored != now.stored)
        addNumber(QString(), kStoredAlias, now.stored, time, payload);
    if (before.dropped != now.dropped)
        addNumber(QString(), kDroppedAlias, now.dropped, time, payload);
}

void addNodeOutcome(const QString& json, qint64 time, wire::Payload* payload)
{
    addText(QString(), kNodeOutcomeAlias, json, time, payload)->set_is_transient(true);
}

} // namespace plc::gateway
