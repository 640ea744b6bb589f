#ifndef PLC_GATEWAY_MODEL_METRIC_NAME_H
#define PLC_GATEWAY_MODEL_METRIC_NAME_H

#include <QtCore/QString>

#include "host/points/data_point.h"

namespace plc::gateway {

/// The name under which consumers find a data point, a path of folders: Plant.tank[1].level is
/// "Plant/tank/1/level", a[1,2] is "a/1/2", and three elements from a[4] on are "a/4..6".
QString metricName(const host::DataPoint& point);

/// What the bytes of a data point depend on: "INT", "REAL*3", "STRING(20)*2".
QString typeText(const host::DataPoint& point);

} // namespace plc::gateway

#endif
