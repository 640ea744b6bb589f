#ifndef PLC_CONFIGURATION_LABEL_RULES_H
#define PLC_CONFIGURATION_LABEL_RULES_H

#include <QtCore/QString>

#include <optional>

#include "project/json_node.h"
#include "values/expected.h"
#include "values/iec_types.h"
#include "values/value_range.h"

namespace plc::configuration {

// Labels, also as a pattern, and what applies to them.

struct DeadbandRule {
    QString labels;
    double deadband = 0.0;
};

struct WritableRule {
    QString labels;
    std::optional<double> lowest;
    std::optional<double> highest;

    values::ValueRange limits() const { return {lowest, highest}; }
    bool isLimited() const { return lowest || highest; }
};

// Each reports what does not fit.

QString readLabels(const project::JsonNode& node);
DeadbandRule readDeadband(const project::JsonNode& node);
/// A label, or an object with the key "labels" and limits.
WritableRule readWritable(const project::JsonNode& node);

/// Whether its limits make sense for a value of this type. `label` is for the error.
Expected<void> checkLimits(const WritableRule& rule, const QString& label,
                           const values::IecType& type);

} // namespace plc::configuration

#endif
