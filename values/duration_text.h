#ifndef PLC_VALUES_DURATION_TEXT_H
#define PLC_VALUES_DURATION_TEXT_H

#include <QtCore/QString>

#include <optional>

#include "values/export.h"

namespace plc::values {

/// "T#1m30s" for 90000.
PLC_HOST_EXPORT QString durationText(quint64 milliseconds);

/// Milliseconds of a duration such as "T#1h30m", "T#1h_30m", "TIME#500ms" or "T#1.5s": units
/// descending, a fraction in the last one only, single underscores between units and digits.
/// Nothing if it has another form, is no whole number of milliseconds, or does not fit into 64
/// bits.
PLC_HOST_EXPORT std::optional<quint64> parseDuration(const QString& text);

} // namespace plc::values

#endif
