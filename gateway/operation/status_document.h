#ifndef PLC_GATEWAY_OPERATION_STATUS_DOCUMENT_H
#define PLC_GATEWAY_OPERATION_STATUS_DOCUMENT_H

#include <QtCore/QByteArray>

#include "gateway/operation/statistics.h"
#include "values/expected.h"

namespace plc::gateway {

/// The statistics, without their histogram, as one JSON document.
QByteArray statusDocument(const GatewayStatistics& statistics);

/// What statusDocument() wrote. Unknown keys are left out, missing ones have their defaults: the
/// process that wrote it may be of another version.
Expected<GatewayStatistics> parseStatus(const QByteArray& document);

} // namespace plc::gateway

#endif
