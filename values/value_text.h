#ifndef PLC_VALUES_VALUE_TEXT_H
#define PLC_VALUES_VALUE_TEXT_H

#include <QtCore/QString>

#include <variant>

#include "values/expected.h"
#include "values/export.h"
#include "values/iec_types.h"

namespace plc::values {

/// One value of an elementary type, exact: signed and unsigned integers in 64 bits, REAL as float,
/// LREAL as double.
using Value = std::variant<bool, qint64, quint64, float, double, QString>;

/// The value as IEC 61131-3 writes it, which parseValue() takes back: TRUE, -5, 16#00FF, 1.5,
/// T#1m30s, 'text', "wide text", REAL#nan, LREAL#-inf.
PLC_HOST_EXPORT QString valueText(const IecType& type, const Value& value);

/// The value as JSON has it: bit strings and TIME (in milliseconds) as numbers, all digits of
/// 64-bit integers, and infinities and NaN as strings.
PLC_HOST_EXPORT QString valueJson(const Value& value);

/// `text` in double quotes with JSON's escapes, also for what a terminal would obey.
PLC_HOST_EXPORT QString jsonText(const QString& text);

/// Reads a value as users write it. Integers may have a base (`16#FF`, `8#17`, `2#1010`, `0xFF`)
/// and single underscores between digits; texts may stand without quotes. `stringLength` is the
/// capacity of a text. REAL and LREAL may have their type before them (REAL#1.5); nan and inf must
/// have it. An error begins with what was found.
PLC_HOST_EXPORT Expected<Value> parseValue(const IecType& type, int stringLength,
                                           const QString& text);

} // namespace plc::values

#endif
