#ifndef PLC_PANEL_PLANTS_WRITE_RULES_H
#define PLC_PANEL_PLANTS_WRITE_RULES_H

#include <QtCore/QSet>
#include <QtCore/QVector>

#include <optional>
#include <vector>

#include "configuration/label_rules.h"
#include "host/points/data_point.h"
#include "host/points/value_layout.h"
#include "project/label_pattern.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::panel {

/// Which values of a PLC may be written, and within which limits.
///
/// 1. A label is looked for in all rules; the last that fits counts. Part of a value is none: who
///    may write one element must not write the others. Nor does a rule for a list take the place
///    of those for its elements.
/// 2. Limits of a value hold for whatever is written over its bytes: as an element of a list it is
///    judged by them, whatever rule lets the list be written, and what lies over it by another type
///    or cuts it is not written at all.
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
        QSet<QString> labels; ///< Of a rule that is no pattern.
    };
    /// A value with limits, of which a list of such values has several.
    struct Limited {
        host::DataPoint point; ///< One element; its text may be that of the list.
        host::ByteRange bytes;
        values::ValueRange limits;
    };
    class Builder;

    static bool fits(const Rule& rule, const host::DataPoint& point);
    /// The last that fits; null: none does.
    const Rule* findRule(const host::DataPoint& point) const;
    /// Why these values of the point must not be written over this one; empty: they may be.
    static QString obstacle(const Limited& limited, const host::DataPoint& point,
                            const QVector<values::Value>& values);

    bool m_isOpen = true;
    std::vector<Rule> m_rules;
    std::vector<Limited> m_limited; ///< By their places in memory.
};

} // namespace plc::panel

#endif
