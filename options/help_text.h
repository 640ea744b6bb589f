#ifndef PLC_OPTIONS_HELP_TEXT_H
#define PLC_OPTIONS_HELP_TEXT_H

#include "options/option.h"

namespace plc::options {

/// An indented name with its explanation beside it, or below if the name is long; lines of at most
/// 80 characters, without an end.
QString helpItem(const QString& name, const QString& help);

/// Words in lines of at most 80 characters, without an end.
QString paragraph(const QString& text);

/// Half a sentence, as help has it, as a whole one.
QString sentence(const char* help);

/// One item for each option, each with the end of a line.
QString helpText(const Table& table);

} // namespace plc::options

#endif
