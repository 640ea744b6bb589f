#ifndef PLC_CLI_LABEL_COLUMN_H
#define PLC_CLI_LABEL_COLUMN_H

#include <QtCore/QStringList>

namespace plc::cli {

/// Each of these labels in exactly `width` cells. Of a label that is too long the end is shown,
/// which tells more. Where different labels would then look equal, they are shortened in the middle
/// instead, so that what they differ in is in sight, as far as the width allows.
QStringList labelColumn(const QStringList& labels, int width);

} // namespace plc::cli

#endif
