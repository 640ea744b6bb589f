#ifndef PLC_HOST_DRIVER_REQUEST_RECORDS_H
#define PLC_HOST_DRIVER_REQUEST_RECORDS_H

namespace plc::host {

// What the host writes into the records that it hands to the driver.

/// RW_VAR::category of the host's own requests. The numbers that DataCom() gives for failures are
/// shifted by it.
constexpr int kCyclicCategory = 0;
constexpr int kWriteCategory = 1;
constexpr int kOneShotCategory = 2;
/// Of the read that is queued only to be given up.
constexpr int kForgetLoginCategory = 3;
/// Of reads that look for refused values, and of those that show whether replies fit their
/// requests.
constexpr int kProbeCategory = 4;
constexpr int kInStepCategory = 5;

} // namespace plc::host

#endif
