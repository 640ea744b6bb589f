#ifndef PLC_HOST_CLI_ASSIGNMENT_H
#define PLC_HOST_CLI_ASSIGNMENT_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "host/data_point.h"
#include "host/value_text.h"

namespace plc {

/// A value for a data point.
struct Assignment {
    DataPoint point;
    QVector<Value> values;
};

/// Reads "LABEL=VALUE". On failure returns nothing and sets `error`.
std::optional<Assignment> parseAssignment(const DataPointFinder& points, const QString& text,
                                          QString* error);

} // namespace plc

#endif
