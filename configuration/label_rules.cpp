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

/// Numbers of a configuration are doubles, which hold integers up to 2^53.
bool isExact(const values::IecType& type, const WritableRule& rule)
{
    const auto isHeld = [](const std::optional<double>& bound) {
        return !bound || std::fabs(*bound) <= values::kExactIntegers;
    };
    return type.format == values::ValueFormat::Real ||
           (isHeld(rule.lowest) && isHeld(rule.highest));
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

Expected<void> checkLimits(const WritableRule& rule, const QString& label,
                           const values::IecType& type)
{
    if (rule.isLimited() && !values::isNumeric(type))
        return Error{
            QStringLiteral("%1 is a %2 and has no lowest or highest value; list it without")
                .arg(label, QLatin1String(type.name))};
    if (!isExact(type, rule))
        return Error{QStringLiteral("%1 is a %2, and a lowest or highest value beyond "
                                    "9007199254740992 is not exact")
                         .arg(label, QLatin1String(type.name))};
    return {};
}

} // namespace plc::configuration
