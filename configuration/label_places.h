#ifndef PLC_CONFIGURATION_LABEL_PLACES_H
#define PLC_CONFIGURATION_LABEL_PLACES_H

#include <QtCore/QHash>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "project/label_expansion.h"
#include "values/expected.h"

namespace plc::configuration {

/// A list of values by their labels, and which of them a rule of a configuration means.
class LabelPlaces {
public:
    /// `project` must outlive this.
    explicit LabelPlaces(const project::Symbols& project) : m_expander(project) {}

    /// Behind the others. Each label stands once.
    void append(const QString& label);
    bool hasLabel(const QString& label) const { return m_places.contains(label); }

    /// The places of the values that a text fits: a value as it stands, a range, a pattern. Part of
    /// a value is none: who may write one element must not write the others. An error where it fits
    /// none.
    Expected<QVector<int>> fitting(const QString& text);

private:
    project::LabelExpander m_expander;
    QStringList m_labels;
    QHash<QString, int> m_places;
};

} // namespace plc::configuration

#endif
