#ifndef PLC_IEC_ELEMENTARY_TYPES_H
#define PLC_IEC_ELEMENTARY_TYPES_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "values/iec_types.h"

namespace plc::iec {

/// The elementary type that a declaration names, in any letter case, or null. Dates and times that
/// a project file does not know are those that hold the same numbers: DATE is UDINT.
const values::IecType* findElementaryType(const QString& name);

/// What a pointer is to a project: the bits of an address.
const values::IecType* pointerType();

/// All names, for error texts.
QStringList elementaryTypeNames();

} // namespace plc::iec

#endif
