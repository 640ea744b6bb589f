#ifndef PLC_VALUES_VALUE_CHECK_H
#define PLC_VALUES_VALUE_CHECK_H

#include <QtCore/QString>

#include "values/expected.h"
#include "values/iec_types.h"
#include "values/value_text.h"

namespace plc::values {

/// Whether the type can hold the value as it is: an integer of either kind in the range of an
/// integer type, TIME in milliseconds; a float of a REAL, a double of an LREAL; a text of so many
/// characters as there is room for. Nothing is rounded or cut. The error says what does not fit.
Expected<void> checkValue(const IecType& type, int stringLength, const Value& value);

/// The same of the characters of a text type. The error goes on behind the name of the text.
Expected<void> checkCharacters(const IecType& type, int stringLength, const QString& characters);

/// The largest number that fits into the bits of an integer type.
quint64 largestUnsigned(const IecType& type);

/// "TEXT is outside the range of INT, -32768 to 32767"
Error outOfRange(const IecType& type, const QString& text);

} // namespace plc::values

#endif
