#ifndef PLC_IEC_DESCRIPTION_H
#define PLC_IEC_DESCRIPTION_H

#include "iec/token.h"

namespace plc::iec {

/// The comments that stand directly above `token` or before it in its line, as one text. What
/// stands behind another declaration belongs to that one, and an empty line separates.
QString descriptionAbove(const Token& token);

/// The comments that begin in `line`, as one text; `comments` are those behind a declaration.
QString descriptionBehind(const QVector<Comment>& comments, int line);

/// The text of comments without what only decorates them. Directives of programming systems, which
/// begin with @, are left out.
QString plainText(const QVector<Comment>& comments);

/// The unit at the end of a description, "%" of "Filling level [%]", or nothing; the description
/// then loses it.
QString takeUnit(QString* description);

} // namespace plc::iec

#endif
