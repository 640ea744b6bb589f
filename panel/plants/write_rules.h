#ifndef PLC_PANEL_PLANTS_WRITE_RULES_H
#define PLC_PANEL_PLANTS_WRITE_RULES_H

#include <QtCore/QSet>
#include <QtCore/QVector>

#include <optional>
#include <vector>

#include "configuration/label_rules.h"
#include "host/points/data_point.h"
#include "project/label_pattern.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::panel {

/// Which values of a PLC may be written, and within which limits.
///
/// 1. A label is looked for in all rules; the last that fits counts. Part of a value is none: who
///    may write one element must not write the others.
/// 2. Limits of a value hold for whatever is written over its bytes, also as part of a list.
class WriteRules {
public:
    /// All may be written.
    WriteRules() = default;
    /// An error names the rule that fits nothing.
    static Expected<WriteRules> make(const QVector<configuration::WritableRule>& rules,
                                     const project::Symbols& symbols,
                                     const host::DataPointFinder& points);

    /// Whether the value may be written at all.
    bool isWritable(const host::DataPoint& point) const;
    /// Why these values must not be written; empty: they may be.
    QString obstacle(const host::DataPoint& point, const QVector<values::Value>& values) const;

private:
    struct Rule {
        configuration::WritableRule settings;
        std::optional<project::LabelPattern> pattern;
        QSet<QString> labels;            ///< Of a rule that is no pattern.
        QVector<host::DataPoint> points; ///< Of a rule with limits.
    };

    static bool fits(const Rule& rule, const host::DataPoint& point);
    /// Behind the last that fits; 0: none does.
    std::size_t behindFitting(const host::DataPoint& point) const;

    bool m_isOpen = true;
    std::vector<Rule> m_rules;
};

} // namespace plc::panel

#endif
