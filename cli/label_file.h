#ifndef PLC_CLI_LABEL_FILE_H
#define PLC_CLI_LABEL_FILE_H

#include <QtCore/QStringList>

#include "project/project.h"

namespace plc::cli {

/// Appends the labels of a CSV file, those in the first column, to `labels`; a first line that
/// begins with "label" is taken for the names of the columns. Labels may be all that the command
/// line takes. Returns false and sets `error` when the file cannot be read, has no label or one
/// that the project does not know; the error then has the line.
bool appendLabels(const QString& path, const project::Project& project, QStringList* labels,
                  QString* error);

} // namespace plc::cli

#endif
