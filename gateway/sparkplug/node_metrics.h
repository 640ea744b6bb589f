#ifndef PLC_GATEWAY_SPARKPLUG_NODE_METRICS_H
#define PLC_GATEWAY_SPARKPLUG_NODE_METRICS_H

#include <QtCore/QString>

#include "gateway/model/publisher.h"
#include "gateway/sparkplug/sparkplug_payload.pb.h"

namespace plc::gateway {

/// The number of a session, by which a death is known to be that of a birth; always by its name.
void addSessionNumber(int number, qint64 time, wire::Payload* payload);

/// All metrics of the node but the session number.
void addNodeMetrics(const NodeState& state, qint64 time, wire::Payload* payload);

/// Those that differ.
void addNodeChanges(const NodeState& before, const NodeState& now, qint64 time,
                    wire::Payload* payload);

/// How a write ended that belongs to no device that has begun.
void addNodeOutcome(const QString& json, qint64 time, wire::Payload* payload);

/// The metric of this name that node and devices have: how a write ended. In births it is null.
const QString& outcomeName();

/// By which a host asks for all births again.
const char* rebirthName();

/// The first alias that no metric of the node has.
constexpr quint64 kFirstFreeAlias = 5;

} // namespace plc::gateway

#endif
