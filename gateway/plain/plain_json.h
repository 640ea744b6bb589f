#ifndef PLC_GATEWAY_PLAIN_PLAIN_JSON_H
#define PLC_GATEWAY_PLAIN_PLAIN_JSON_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

#include "gateway/model/metric.h"
#include "gateway/model/publisher.h"
#include "gateway/model/write_request.h"

namespace plc::gateway {

/// A value as consumers get it:
///
///     {"value":21.5,"unit":"°C","time":"2026-11-22T08:44:00.123Z","quality":"good"}
///
/// null where nothing was ever read, "unit" where there is one, "historical":true behind the
/// quality where it is no live value.
QByteArray valueMessage(const Metric& metric, const Sample& sample, bool isHistorical);

/// {"online":true,"time":"…"}, of a device or of a gateway that is closed.
QByteArray stateMessage(bool isOnline, qint64 time);
/// Without a time: a broker that tells it for a gateway that was lost has none.
QByteArray nodeLostMessage();
/// {"online":true,"version":"1.0","stored":0,"dropped":0,"time":"…"}
QByteArray nodeStateMessage(const NodeState& state, qint64 time);

/// What a consumer writes to a metric: a value or a list of values, or an object of it and an id:
/// {"value":…,"id":…}. Only `id`, `values` and `error` of the request are filled in.
WriteRequest readWrite(const Metric& metric, const QByteArray& payload);

} // namespace plc::gateway

#endif
