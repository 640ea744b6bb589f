#ifndef PLC_CLI_ASSIGNMENT_H
#define PLC_CLI_ASSIGNMENT_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::cli {

/// A value for a data point.
struct Assignment {
    host::DataPoint point;
    QVector<values::Value> values;
};

/// Reads "LABEL=VALUE".
Expected<Assignment> parseAssignment(const host::DataPointFinder& points, const QString& text);

} // namespace plc::cli

#endif
