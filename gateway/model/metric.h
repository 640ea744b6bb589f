#ifndef PLC_GATEWAY_MODEL_METRIC_H
#define PLC_GATEWAY_MODEL_METRIC_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "host/points/data_point.h"
#include "values/value_range.h"

namespace plc::gateway {

/// A value of a PLC as consumers know it.
struct Metric {
    host::DataPoint point;
    QString name;          ///< "Plant/tank/1/level", see metricName().
    double deadband = 0.0; ///< Changes of less than this are not told; 0: each is.
    bool isWritable = false;
    values::ValueRange limits; ///< Of what may be written, beside those of the type.
};

/// A PLC as consumers know it.
struct Device {
    QString name;
    QVector<Metric> metrics;
};

enum class Quality {
    Good,
    Stale, ///< Too old to be relied on, or never read.
    Bad    ///< The PLC refuses to give the value.
};

/// What is known of a metric from one moment on.
struct Sample {
    int metric = 0; ///< Its place in Device::metrics.
    /// Milliseconds since 1970-01-01T00:00:00Z: of a good value when the PLC was asked for it, else
    /// when it was found to be not good.
    qint64 time = 0;
    Quality quality = Quality::Stale;
    /// Whether the quality is another one than that of the sample before.
    bool isQualityNew = true;
    QByteArray bytes; ///< As GetRegisterData() gives them; empty if the value was never read.
};

} // namespace plc::gateway

#endif
