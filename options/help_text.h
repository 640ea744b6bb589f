#ifndef PLC_OPTIONS_HELP_TEXT_H
#define PLC_OPTIONS_HELP_TEXT_H

#include "options/command_line.h"
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

/// What a program without commands prints instead of doing its work: its help, which begins with
/// `usage`, or its version. Empty where neither is asked for.
QString informationText(const CommandLine& line, const QString& program, const QString& usage,
                        const Table& table);

/// "plc 1.0.0"
QString versionText(const QString& program);

} // namespace plc::options

#endif
