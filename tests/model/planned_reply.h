#ifndef PLC_TESTS_MODEL_PLANNED_REPLY_H
#define PLC_TESTS_MODEL_PLANNED_REPLY_H

#include "model/driver_model.h"
#include "model/steps.h"

namespace plc::model {

/// The bytes that the plan makes of the request that waits in `model`. `lastReply` is what came
/// before.
Bytes plannedReply(const ReplyPlan& plan, const DriverModel& model, const Bytes& lastReply);

} // namespace plc::model

#endif
