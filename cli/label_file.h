#ifndef PLC_CLI_LABEL_FILE_H
#define PLC_CLI_LABEL_FILE_H

#include <QtCore/QStringList>

#include "project/project.h"
#include "values/expected.h"

namespace plc::cli {

/// The labels of a CSV file, those in the first column; a first line that begins with "label" is
/// taken for the names of the columns. Labels may be all that the command line takes. A file that
/// cannot be read, has no label or one that the project does not know is an error, which then has
/// the line.
Expected<QStringList> readLabels(const QString& path, const project::Project& project);

} // namespace plc::cli

#endif
