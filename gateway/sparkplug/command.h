#ifndef PLC_GATEWAY_SPARKPLUG_COMMAND_H
#define PLC_GATEWAY_SPARKPLUG_COMMAND_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "gateway/model/metric.h"
#include "gateway/sparkplug/sparkplug_payload.pb.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::gateway {

// What one command may hold. More is refused before anything of it is kept.
constexpr int kMostBytesOfCommand = 1024 * 1024;
constexpr int kMostMetricsOfCommand = 1000;

/// Reads a payload from anyone.
Expected<wire::Command> parseCommand(const QByteArray& payload);

/// The value for a metric, element by element, each in the range of its type. It must be what the
/// metric's birth said, in the field that is for this type; signed numbers in two's complement.
Expected<QVector<values::Value>> commandedValues(const Metric& metric,
                                                 const wire::CommandMetric& command);

} // namespace plc::gateway

#endif
