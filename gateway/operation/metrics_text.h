#ifndef PLC_GATEWAY_OPERATION_METRICS_TEXT_H
#define PLC_GATEWAY_OPERATION_METRICS_TEXT_H

#include <QtCore/QByteArray>

#include "gateway/operation/statistics.h"

namespace plc::gateway {

/// The statistics in the text format of Prometheus.
QByteArray metricsText(const GatewayStatistics& statistics);

} // namespace plc::gateway

#endif
