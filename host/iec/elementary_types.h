#ifndef PLC_HOST_IEC_ELEMENTARY_TYPES_H
#define PLC_HOST_IEC_ELEMENTARY_TYPES_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "host/project/iec_types.h"

namespace plc {
namespace iec {

/// The elementary type that a declaration names, in any letter case, or null. Dates and times that
/// a project file does not know are those that hold the same numbers: DATE is UDINT.
const IecType* findElementaryType(const QString& name);

/// What a pointer is to a project: the bits of an address.
const IecType* pointerType();

/// All names, for error texts.
QStringList elementaryTypeNames();

} // namespace iec
} // namespace plc

#endif
