#ifndef PLC_TESTS_FAULTS_TOLD_LINES_H
#define PLC_TESTS_FAULTS_TOLD_LINES_H

#include <QtCore/QByteArray>

#include <optional>

#include "faults/truth_judge.h"

namespace plc::faults {

// What `plc` prints and logs about kStampedArrays; nothing for lines that tell no value.

/// A line of `plc run --json`. The value is from the time of the line, less its age.
std::optional<ToldValue> toldByRun(const QByteArray& line);
/// A line of `plc read --json`, whose value is from `startedAt` or later.
std::optional<ToldValue> toldByRead(const QByteArray& line, qint64 startedAt);
/// A record of `plc log` as CSV.
std::optional<ToldValue> toldByLog(const QByteArray& line);

} // namespace plc::faults

#endif
