#ifndef PLC_VALUES_STRING_LITERAL_H
#define PLC_VALUES_STRING_LITERAL_H

#include <QtCore/QString>

#include "values/expected.h"

#include "values/export.h"

namespace plc::values {

/// `text` between quotes (' for STRING, " for WSTRING) with the $ escapes of IEC 61131-3.
PLC_HOST_EXPORT QString stringLiteral(const QString& text, QChar quote);

/// The text that a literal in either kind of quotes stands for, or `literal` itself when it does
/// not begin with a quote. An error for a literal that is not closed or has a bad escape.
PLC_HOST_EXPORT Expected<QString> parseStringLiteral(const QString& literal);

} // namespace plc::values

#endif
