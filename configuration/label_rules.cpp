#include "configuration/label_rules.h"

#include <cmath>

#include "configuration/field_readers.h"

namespace plc::configuration {

using project::JsonNode;

namespace {

std::optional<double> readBound(const JsonNode& object, const char* key)
{
    return object.has(key) ? std::optional(object.member(key).number()) : std::nullopt;
}

} // namespace

QString readLabels(const JsonNode& node)
{
    return readNonEmpty(node, QStringLiteral("a label or a pattern"));
}

DeadbandRule readDeadband(const JsonNode& node)
{
    node.checkKeys({"labels", "deadband"}, {});
    DeadbandRule rule;
    rule.labels = readLabels(node.member("labels"));
    rule.deadband = node.member("deadband").number();
    if (!(rule.deadband >= 0) || std::isinf(rule.deadband))
        node.member("deadband").failExpecting(QStringLiteral("a number of at least 0"));
    return rule;
}

WritableRule readWritable(const JsonNode& node)
{
    WritableRule rule;
    if (node.value().isText()) {
        rule.labels = readLabels(node);
        return rule;
    }
    if (!node.value().isObject()) {
        node.failExpecting(QStringLiteral("a label or an object with the key \"labels\""));
        return rule;
    }
    node.checkKeys({"labels"}, {"lowest", "highest"});
    rule.labels = readLabels(node.member("labels"));
    rule.lowest = readBound(node, "lowest");
    rule.highest = readBound(node, "highest");
    if (rule.lowest && rule.highest && *rule.lowest > *rule.highest) {
        node.fail(QStringLiteral("found a lowest value of %1, expected at most the highest one, %2")
                      .arg(*rule.lowest)
                      .arg(*rule.highest));
    }
    return rule;
}

} // namespace plc::configuration
