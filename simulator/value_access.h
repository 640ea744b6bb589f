#ifndef PLC_SIMULATOR_VALUE_ACCESS_H
#define PLC_SIMULATOR_VALUE_ACCESS_H

#include <QtCore/QString>

#include "project/label_lookup.h"
#include "simulator/plc_memory.h"

namespace plc::simulator {

/// The number at `place`, which must not be a text; 64-bit integers as near as a double comes.
double loadNumber(const PlcMemory& memory, const project::LabelTarget& place);

/// Stores the number of the type's range that is nearest to `number`. A truth value is true from
/// one half on.
void storeNumber(PlcMemory* memory, const project::LabelTarget& place, double number);

/// The value at `place` as users read it.
QString loadText(const PlcMemory& memory, const project::LabelTarget& place);

/// Stores what a user entered. Returns false and sets `error` if it is no value of the type.
bool storeText(PlcMemory* memory, const project::LabelTarget& place, const QString& text,
               QString* error);

} // namespace plc::simulator

#endif
