#ifndef PLC_GATEWAY_SPARKPLUG_METRIC_WRITER_H
#define PLC_GATEWAY_SPARKPLUG_METRIC_WRITER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "gateway/model/metric.h"
#include "gateway/sparkplug/sparkplug_payload.pb.h"

namespace plc::gateway {

/// What a birth tells beside the value: name, type, unit and description.
void describe(const Metric& metric, wire::Metric* target);

/// Time and value of a sample, and its quality where it is not good or became good just now.
void writeSample(const Metric& metric, const Sample& sample, wire::Metric* target);

/// A value of the gateway itself. An empty `name` leaves it to the alias, an alias of 0 to the
/// name; the type goes where the name goes.
wire::Metric* addBoolean(const QString& name, bool value, qint64 time, wire::Payload* payload);
wire::Metric* addNumber(const QString& name, quint64 alias, quint64 value, qint64 time,
                        wire::Payload* payload);
/// A null text is told as null.
wire::Metric* addText(const QString& name, quint64 alias, const QString& text, qint64 time,
                      wire::Payload* payload);

QByteArray serialized(const wire::Payload& payload);

} // namespace plc::gateway

#endif
