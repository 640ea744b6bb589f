#ifndef PLC_OPTIONS_MANUAL_TEXT_H
#define PLC_OPTIONS_MANUAL_TEXT_H

#include "options/option.h"

namespace plc::options {

/// A text with what stands out between backquotes, in the mdoc language: options, placeholders and
/// `commands` in their own faces, all else as literal text.
QString manualText(const QString& text, const QStringList& commands);

/// The list of these options in the mdoc language.
QString manualList(const Table& table, const QStringList& commands);

} // namespace plc::options

#endif
