#ifndef PLC_CLI_POINT_TEXT_H
#define PLC_CLI_POINT_TEXT_H

#include "cli/command_context.h"
#include "host/points/data_point.h"

namespace plc::cli {

/// "STRING(20)" of a text, else the name of the type.
QString typeText(const host::DataPoint& point);

/// "LABEL: TYPE, area 3 address 10, in rpm, Description", or the same as a JSON object.
void printPoint(const QString& label, const host::DataPoint& point, bool json);

/// Finds the project's labels, whose symbols it passes to the driver.
host::DataPointFinder finderFor(const CommandContext& context);
/// The same of these labels alone: of a large project few symbols are worth their memory.
host::DataPointFinder finderFor(const CommandContext& context, const QStringList& labels);

} // namespace plc::cli

#endif
