#include "configuration/label_places.h"

#include "project/label_pattern.h"
#include "values/nearest_name.h"

namespace plc::configuration {

void LabelPlaces::append(const QString& label)
{
    m_places.insert(label, int(m_labels.size()));
    m_labels.append(label);
}

Expected<QVector<int>> LabelPlaces::fitting(const QString& text)
{
    QVector<int> places;
    const bool isPattern = project::hasWildcard(text) && !m_places.contains(text);
    if (isPattern) {
        const project::LabelPattern pattern(text, project::LabelPattern::Place::Whole);
        for (int i = 0; i < int(m_labels.size()); ++i) {
            if (pattern.matches(m_labels[i]))
                places.append(i);
        }
    } else {
        const Expected<QStringList> labels = m_expander.expand(text);
        if (!labels)
            return labels.error();
        for (const QString& label : *labels) {
            const auto place = m_places.constFind(label);
            if (place == m_places.constEnd())
                return Error{QStringLiteral("%1 is none of its values%2")
                                 .arg(label, values::nearestNameHint(label, m_labels))};
            places.append(*place);
        }
    }
    if (places.isEmpty())
        return Error{QStringLiteral("%1 fits none of its values").arg(text)};
    return places;
}

} // namespace plc::configuration
