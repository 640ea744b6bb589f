#ifndef PLC_GATEWAY_OPERATION_STATUS_TABLE_H
#define PLC_GATEWAY_OPERATION_STATUS_TABLE_H

#include "gateway/operation/statistics.h"

namespace plc::gateway {

/// The statistics for a reader: a few lines on broker and store, then a table of the devices. Each
/// line ends.
QString statusTable(const GatewayStatistics& statistics);

} // namespace plc::gateway

#endif
