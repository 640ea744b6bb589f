#ifndef PLC_RECORDER_HANDOVER_H
#define PLC_RECORDER_HANDOVER_H

#include <QtCore/QByteArray>

#include <functional>

#include "recorder/reader.h"

namespace plc::recorder {

/// Takes text; false when it cannot be written, which ends the work with success.
using TakeText = std::function<bool(const QByteArray&)>;

struct Handover {
    qint64 rows = 0;    ///< Lines, rows or samples that were written.
    qint64 leftOut = 0; ///< Texts, which the other side has no place for.
};

// An array is as many values, told apart by "element" from 0. Of what is not known, from stale
// values to gaps, the quality is told and no value.

/// InfluxDB line protocol with times in ns: one measurement `plc_value`, tags `source`, `label`,
/// `unit` and `element`, fields `quality` and one of `real`, `integer`, `boolean`, `text`. What an
/// InfluxDB 1 has no number for is a text: infinities and NaN, and integers above 2^63-1. Changes
/// within one ms have times that differ by 1 ns.
Expected<Handover> writeInfluxLines(Reader* reader, const TimeRange& range, const TakeText& take);

/// A script for psql that makes the table plc_value, unless there is one, and fills it by COPY in
/// one transaction.
Expected<Handover> writePostgresqlCopy(Reader* reader, const TimeRange& range,
                                       const TakeText& take);

/// OpenMetrics with times, to be taken in by `promtool tsdb create-blocks-from openmetrics`:
/// `plc_value`, and `plc_good`, which is 1 while the value is known and 0 while it is not. It is
/// the history of the series; of several changes in one ms it has the last. Texts are left out.
Expected<Handover> writeOpenMetrics(Reader* reader, const TimeRange& range, const TakeText& take);

/// The last value of a series.
struct LastValue {
    SeriesDescription series;
    Sample sample;
};
/// Values as Prometheus reads them, metrics as with OpenMetrics. `handover`, unless null, counts.
QByteArray expositionText(const QVector<LastValue>& values, Handover* handover);

/// The last values that are recorded, in the same form.
Expected<Handover> writeExposition(Reader* reader, const TakeText& take);

} // namespace plc::recorder

#endif
