#ifndef PLC_RECORDER_ELEMENTS_H
#define PLC_RECORDER_ELEMENTS_H

#include <QtCore/QByteArray>
#include <QtCore/QHash>

#include "recorder/change.h"
#include "recorder/series.h"

namespace plc::recorder {

/// The elements of a value that is known; none of one that is not. A number that somebody wrote is
/// a double.
QVector<values::Value> knownElements(const SeriesDescription& series, const Sample& sample);

/// Series by their numbers.
QHash<int, SeriesDescription> seriesById(const QVector<Series>& series);

/// "good", "stale", "bad" or "gap".
QByteArray qualityWord(Quality quality);

/// All digits that tell the number from others; "nan", "inf" and "-inf".
QByteArray numberText(double number);

/// The value as a double, whatever it is; nothing of a text.
std::optional<double> doubleOf(const values::Value& value);

} // namespace plc::recorder

#endif
