#ifndef PLC_OPTIONS_COMPLETION_TEXT_H
#define PLC_OPTIONS_COMPLETION_TEXT_H

#include "options/option.h"

namespace plc::options {

/// The branches of bash's `case $prev in` that complete the values of these options and return,
/// each line indented by so many characters.
QString completionCases(const Table& table, int indent);

/// "--project --json …": the long names.
QString completionNames(const Table& table);

} // namespace plc::options

#endif
