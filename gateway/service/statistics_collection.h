#ifndef PLC_GATEWAY_SERVICE_STATISTICS_COLLECTION_H
#define PLC_GATEWAY_SERVICE_STATISTICS_COLLECTION_H

#include "gateway/operation/statistics.h"
#include "gateway/service/gateway.h"

namespace plc::gateway {

/// What the gateway does at this moment. `started` and `time` are milliseconds since
/// 1970-01-01T00:00:00Z.
GatewayStatistics collectStatistics(const Gateway& gateway, const QString& version, qint64 started,
                                    qint64 time);

} // namespace plc::gateway

#endif
