#ifndef PLC_CLI_ASSIGNMENT_H
#define PLC_CLI_ASSIGNMENT_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "host/points/data_point.h"
#include "values/value_text.h"

namespace plc::cli {

/// A value for a data point.
struct Assignment {
    host::DataPoint point;
    QVector<values::Value> values;
};

/// Reads "LABEL=VALUE". On failure returns nothing and sets `error`.
std::optional<Assignment> parseAssignment(const host::DataPointFinder& points, const QString& text,
                                          QString* error);

} // namespace plc::cli

#endif
