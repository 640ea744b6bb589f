#ifndef PLC_VALUES_NEAREST_NAME_H
#define PLC_VALUES_NEAREST_NAME_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "values/export.h"

namespace plc::values {

/// The candidate that `name` is most probably a misspelling of, or an empty string.
PLC_HOST_EXPORT QString nearestName(const QString& name, const QStringList& candidates);

/// ` (did you mean "…"?)` for error texts, or an empty string.
PLC_HOST_EXPORT QString nearestNameHint(const QString& name, const QStringList& candidates);

/// `text` in double quotes for an error line: control characters escaped, long texts shortened.
PLC_HOST_EXPORT QString quoted(const QString& text);

} // namespace plc::values

#endif
