#ifndef PLC_RECORDER_DEADBAND_H
#define PLC_RECORDER_DEADBAND_H

#include "recorder/change.h"
#include "recorder/series.h"

namespace plc::recorder {

/// Whether a sample differs from the one recorded last by the deadband of the series and more; in
/// quality, and where one of them is no number, by anything.
bool isOutsideDeadband(const SeriesDescription& series, const Sample& last, const Sample& sample);

} // namespace plc::recorder

#endif
