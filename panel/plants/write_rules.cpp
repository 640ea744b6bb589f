#include "panel/plants/write_rules.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "project/label_expansion.h"
#include "values/value_range.h"

namespace plc::panel {
namespace {

using configuration::WritableRule;

/// Bytes of the longest number and of the words of a bit.
constexpr quint32 kLongestNumber = 8;

QString outOf(const values::ValueRange& limits)
{
    return QStringLiteral("out of the limits %1").arg(limits.text());
}

/// Why the values must not be written; empty: they may be.
QString outside(const WritableRule& rule, const QVector<values::Value>& values)
{
    const values::ValueRange limits = rule.limits();
    const bool isInside =
        std::all_of(values.begin(), values.end(),
                    [&limits](const values::Value& value) { return limits.contains(value); });
    return isInside ? QString() : outOf(limits);
}

/// One element of a point of numbers or bits.
host::DataPoint elementOf(const host::DataPoint& point, int index)
{
    host::DataPoint element = point;
    element.elements = 1;
    element.address += index * (values::isBit(*point.type) ? 1 : point.type->size);
    return element;
}

auto placeOf(const host::DataPoint& element)
{
    return std::make_tuple(element.station, element.area, element.address, element.type);
}

auto startOf(const host::DataPoint& point, const host::ByteRange& bytes)
{
    return std::make_tuple(point.station, bytes.area, bytes.start);
}

} // namespace

/// Which limits each number has in the end: a rule takes the place of those before it for the
/// values that it fits, and for no others.
class WriteRules::Builder {
public:
    Builder(const project::Symbols& symbols, const host::DataPointFinder& points)
        : m_points(points), m_expander(symbols)
    {
    }

    Expected<void> add(const WritableRule& settings)
    {
        const Expected<QStringList> labels = m_expander.expand(settings.labels);
        if (!labels)
            return labels.error();
        Rule rule;
        rule.settings = settings;
        if (project::hasWildcard(settings.labels) && labels->value(0) != settings.labels)
            rule.pattern.emplace(settings.labels, project::LabelPattern::Place::Whole);
        for (const QString& label : *labels) {
            const Expected<host::DataPoint> point = m_points.find(label);
            if (!point)
                return point.error();
            if (!rule.pattern)
                rule.labels.insert(point->text);
            const Expected<void> checked =
                configuration::checkLimits(settings, point->text, *point->type);
            if (!checked)
                return checked.error();
            limit(*point, settings);
        }
        m_result.m_rules.push_back(std::move(rule));
        return {};
    }

    WriteRules take()
    {
        m_result.m_isOpen = false;
        for (const auto& [place, limited] : m_limited)
            m_result.m_limited.insert(m_result.m_limited.end(), limited.begin(), limited.end());
        std::sort(m_result.m_limited.begin(), m_result.m_limited.end(),
                  [](const Limited& a, const Limited& b) {
                      return startOf(a.point, a.bytes) < startOf(b.point, b.bytes);
                  });
        return std::move(m_result);
    }

private:
    /// Who names a list does not speak of its elements by themselves, nor the other way round.
    void limit(const host::DataPoint& point, const WritableRule& settings)
    {
        if (!settings.isLimited()) {
            m_limited.erase({placeOf(point), point.elements});
            return;
        }
        std::vector<Limited>& limited = m_limited[{placeOf(point), point.elements}];
        limited.clear();
        for (int i = 0; i < point.elements; ++i) {
            const host::DataPoint element = elementOf(point, i);
            limited.push_back({element, host::valueBytes(element), settings.limits()});
        }
    }

    using Place = decltype(placeOf(std::declval<host::DataPoint>()));

    const host::DataPointFinder& m_points;
    project::LabelExpander m_expander;
    std::map<std::pair<Place, int>, std::vector<Limited>> m_limited; ///< And the elements.
    WriteRules m_result;
};

Expected<WriteRules> WriteRules::make(const QVector<WritableRule>& rules,
                                      const project::Symbols& symbols,
                                      const host::DataPointFinder& points)
{
    Builder builder(symbols, points);
    for (const WritableRule& rule : rules) {
        if (const Expected<void> added = builder.add(rule); !added)
            return Error{QStringLiteral("writable: %1").arg(added.error().text)};
    }
    return builder.take();
}

bool WriteRules::fits(const Rule& rule, const host::DataPoint& point)
{
    return rule.pattern ? rule.pattern->matches(point.text) : rule.labels.contains(point.text);
}

const WriteRules::Rule* WriteRules::findRule(const host::DataPoint& point) const
{
    const auto found = std::find_if(m_rules.rbegin(), m_rules.rend(),
                                    [&point](const Rule& rule) { return fits(rule, point); });
    return found == m_rules.rend() ? nullptr : &*found;
}

bool WriteRules::isWritable(const host::DataPoint& point) const
{
    return m_isOpen || findRule(point);
}

QString WriteRules::obstacle(const Limited& limited, const host::DataPoint& point,
                             const QVector<values::Value>& values)
{
    const int distance = limited.point.address - point.address;
    const int size = limited.point.type->size;
    if (point.type == limited.point.type && distance >= 0 && distance % size == 0 &&
        distance / size < int(values.size()))
        return limited.limits.contains(values[distance / size]) ? QString() : outOf(limited.limits);
    return QStringLiteral("it lies over %1, which has limits").arg(limited.point.text);
}

QString WriteRules::obstacle(const host::DataPoint& point,
                             const QVector<values::Value>& values) const
{
    if (m_isOpen)
        return {};
    const Rule* const rule = findRule(point);
    if (!rule)
        return QStringLiteral("the configuration does not list it as writable");
    QString obstacle = outside(rule->settings, values);
    const host::ByteRange bytes = host::valueBytes(point);
    host::ByteRange first = bytes;
    first.start -= std::min(bytes.start, kLongestNumber);
    auto limited = std::lower_bound(m_limited.begin(), m_limited.end(), startOf(point, first),
                                    [](const Limited& each, const auto& start) {
                                        return startOf(each.point, each.bytes) < start;
                                    });
    for (; limited != m_limited.end() && obstacle.isEmpty(); ++limited) {
        const bool isInArea =
            limited->point.station == point.station && limited->bytes.area == bytes.area;
        if (!isInArea || limited->bytes.start >= bytes.end())
            break;
        if (limited->bytes.end() > bytes.start)
            obstacle = WriteRules::obstacle(*limited, point, values);
    }
    return obstacle;
}

} // namespace plc::panel
