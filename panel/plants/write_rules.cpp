#include "panel/plants/write_rules.h"

#include <algorithm>

#include "host/points/value_layout.h"
#include "project/label_expansion.h"
#include "values/value_range.h"

namespace plc::panel {
namespace {

using configuration::WritableRule;

values::ValueRange limitsOf(const WritableRule& rule)
{
    return {rule.lowest, rule.highest};
}

/// Why the values must not be written; empty: they may be.
QString outside(const WritableRule& rule, const QVector<values::Value>& values)
{
    const values::ValueRange limits = limitsOf(rule);
    const bool isInside =
        std::all_of(values.begin(), values.end(),
                    [&limits](const values::Value& value) { return limits.contains(value); });
    return isInside ? QString() : QStringLiteral("out of the limits %1").arg(limits.text());
}

bool overlap(const host::DataPoint& a, const host::DataPoint& b)
{
    const host::ByteRange first = host::valueBytes(a);
    const host::ByteRange second = host::valueBytes(b);
    return first.area == second.area && qint64(first.start) < qint64(second.start) + second.size &&
           qint64(second.start) < qint64(first.start) + first.size;
}

} // namespace

Expected<WriteRules> WriteRules::make(const QVector<WritableRule>& rules,
                                      const project::Symbols& symbols,
                                      const host::DataPointFinder& points)
{
    WriteRules result;
    result.m_isOpen = false;
    project::LabelExpander expander(symbols);
    for (const WritableRule& settings : rules) {
        const Expected<QStringList> labels = expander.expand(settings.labels);
        if (!labels)
            return Error{QStringLiteral("writable: %1").arg(labels.error().text)};
        Rule rule;
        rule.settings = settings;
        if (project::hasWildcard(settings.labels) && labels->value(0) != settings.labels)
            rule.pattern.emplace(settings.labels, project::LabelPattern::Place::Whole);
        for (const QString& label : *labels) {
            const Expected<host::DataPoint> point = points.find(label);
            if (!point)
                return Error{QStringLiteral("writable: %1").arg(point.error().text)};
            if (!rule.pattern)
                rule.labels.insert(point->text);
            if (settings.lowest || settings.highest)
                rule.points.append(*point);
        }
        result.m_rules.push_back(std::move(rule));
    }
    return result;
}

bool WriteRules::fits(const Rule& rule, const host::DataPoint& point)
{
    return rule.pattern ? rule.pattern->matches(point.text) : rule.labels.contains(point.text);
}

std::size_t WriteRules::behindFitting(const host::DataPoint& point) const
{
    for (std::size_t i = m_rules.size(); i > 0; --i) {
        if (fits(m_rules[i - 1], point))
            return i;
    }
    return 0;
}

bool WriteRules::isWritable(const host::DataPoint& point) const
{
    return m_isOpen || behindFitting(point) > 0;
}

QString WriteRules::obstacle(const host::DataPoint& point,
                             const QVector<values::Value>& values) const
{
    if (m_isOpen)
        return {};
    const std::size_t behind = behindFitting(point);
    if (behind == 0)
        return QStringLiteral("the configuration does not list it as writable");
    QString obstacle = outside(m_rules[behind - 1].settings, values);
    for (std::size_t i = behind; i < m_rules.size() && obstacle.isEmpty(); ++i) {
        const Rule& rule = m_rules[i];
        const bool isTouched =
            std::any_of(rule.points.begin(), rule.points.end(),
                        [&point](const host::DataPoint& other) { return overlap(point, other); });
        if (isTouched)
            obstacle = outside(rule.settings, values);
    }
    return obstacle;
}

} // namespace plc::panel
