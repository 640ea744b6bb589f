#ifndef PLC_SIMULATOR_VALUE_ACCESS_H
#define PLC_SIMULATOR_VALUE_ACCESS_H

#include "project/label_lookup.h"
#include "simulator/plc_memory.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::simulator {

/// The number at `place`, which must not be a text; 64-bit integers as near as a double comes.
double loadNumber(const PlcMemory& memory, const project::LabelTarget& place);

/// Stores the number of the type's range that is nearest to `number`. A truth value is true from
/// one half on.
void storeNumber(PlcMemory* memory, const project::LabelTarget& place, double number);

values::Value loadValue(const PlcMemory& memory, const project::LabelTarget& place);

/// Stores a value of the type at `place`; a text must fit.
void storeValue(PlcMemory* memory, const project::LabelTarget& place, const values::Value& value);

/// The value at `place` as users write it: TRUE, 16#00FF, T#1m30s, 'text'.
QString loadText(const PlcMemory& memory, const project::LabelTarget& place);

/// Stores what a user wrote, if it is a value of the type.
Expected<void> storeText(PlcMemory* memory, const project::LabelTarget& place, const QString& text);

} // namespace plc::simulator

#endif
