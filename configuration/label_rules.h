#ifndef PLC_CONFIGURATION_LABEL_RULES_H
#define PLC_CONFIGURATION_LABEL_RULES_H

#include <QtCore/QString>

#include <optional>

#include "project/json_node.h"

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
};

// Each reports what does not fit.

QString readLabels(const project::JsonNode& node);
DeadbandRule readDeadband(const project::JsonNode& node);
/// A label, or an object with the key "labels" and limits.
WritableRule readWritable(const project::JsonNode& node);

} // namespace plc::configuration

#endif
