#ifndef PLC_GATEWAY_EXCHANGE_OUTCOME_JSON_H
#define PLC_GATEWAY_EXCHANGE_OUTCOME_JSON_H

#include <QtCore/QString>

#include "gateway/model/write_request.h"

namespace plc::gateway {

/// How a write ended, for consumers:
///
///     {"id":"7","device":"pump","name":"Plant/speed","value":"300","outcome":"refused",
///      "reason":"…","time":"2026-11-22T08:44:00.123Z"}
///
/// without what is empty.
QString outcomeJson(const WriteOutcome& outcome, const QString& device);

} // namespace plc::gateway

#endif
