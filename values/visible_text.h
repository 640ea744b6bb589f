#ifndef PLC_VALUES_VISIBLE_TEXT_H
#define PLC_VALUES_VISIBLE_TEXT_H

#include <QtCore/QString>

#include "values/export.h"

namespace plc::values {

// Names, units and descriptions come from whoever wrote a project, texts from whoever writes to a
// PLC. What they hold is shown and never obeyed.

/// Whether a terminal obeys the code unit rather than showing it: it is a control character, ends a
/// line, or reorders the characters around it.
PLC_HOST_EXPORT bool isObeyed(ushort unit);

/// Whether the unit at `position` is half of a character whose other half is missing.
PLC_HOST_EXPORT bool isLoneSurrogate(const QString& text, int position);

/// `text` with an escape such as `\u001b` in the place of whatever is obeyed rather than shown, and
/// of halves of characters.
PLC_HOST_EXPORT QString visibleText(const QString& text);

} // namespace plc::values

#endif
