#ifndef PLC_GATEWAY_CONFIG_DEVICE_POINTS_H
#define PLC_GATEWAY_CONFIG_DEVICE_POINTS_H

#include <QtCore/QStringList>

#include "gateway/config/settings.h"
#include "gateway/model/metric.h"
#include "host/points/data_point.h"
#include "project/project.h"

namespace plc::gateway {

/// Values of one device at most: its birth tells them all.
constexpr int kMostMetrics = 10000;

struct DevicePoints {
    Device device;
    QStringList warnings; ///< What consumers may stumble over; one line each.
};

/// What the configuration publishes of a PLC: each value once, in the order in which the labels are
/// listed, with deadbands and limits. `points` are those of this project. An error is one line that
/// names the device: of a label or pattern that fits nothing, of values that consumers could not
/// tell apart, of a limit that makes no sense.
Expected<DevicePoints> devicePoints(const DeviceSettings& settings, const project::Project& project,
                                    const host::DataPointFinder& points);

} // namespace plc::gateway

#endif
