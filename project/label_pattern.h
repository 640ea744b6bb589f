#ifndef PLC_PROJECT_LABEL_PATTERN_H
#define PLC_PROJECT_LABEL_PATTERN_H

#include <QtCore/QString>

#include "values/export.h"

namespace plc::project {

/// Whether `text` has a * or a ?, which stand for other characters.
PLC_HOST_EXPORT bool hasWildcard(const QString& text);

/// A pattern for labels, in which * stands for any characters, also for none, and ? for one. Letter
/// case does not count. Prepared once, compared with many labels.
class PLC_HOST_EXPORT LabelPattern {
public:
    enum class Place {
        Whole, ///< The pattern stands for all of the label.
        Inside ///< It is to be found anywhere in the label.
    };

    LabelPattern(const QString& pattern, Place place);

    bool matches(const QString& label) const;

private:
    QString m_pattern; ///< Folded; for Place::Inside between two stars.
};

} // namespace plc::project

#endif
