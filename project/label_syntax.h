#ifndef PLC_PROJECT_LABEL_SYNTAX_H
#define PLC_PROJECT_LABEL_SYNTAX_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "values/expected.h"

#include "values/export.h"

namespace plc::project {

/// One subscript, or in a pattern a range of them; both ends inclusive.
struct SubscriptRange {
    qint64 from = 0;
    qint64 to = 0;
};

/// One dot-separated part of a label: `tank[3]` or, in a pattern, `tank[1..6]`.
struct LabelPart {
    QString name;
    QVector<SubscriptRange> subscripts;
};

/// Takes a label or a pattern apart: `Scope.variable[1,2].member`. An error if it does
/// not have that form.
PLC_HOST_EXPORT Expected<QVector<LabelPart>> parseLabel(const QString& label);

/// Whether a subscript stands for more than one number.
PLC_HOST_EXPORT bool isPattern(const QVector<LabelPart>& parts);

/// The labels that a pattern stands for, the last range running fastest. An error if they are
/// more than `limit`.
PLC_HOST_EXPORT Expected<QStringList> expandPattern(const QVector<LabelPart>& parts, int limit);

/// "LABEL*N", a label and how many elements of its array are meant from there on, taken apart.
struct CountedLabel {
    QString label;    ///< What stands before the last *; all where there is none.
    QString count;    ///< What stands behind it; empty where there is none.
    int elements = 1; ///< 0 where `count` is no whole number from 1 on.
};

/// Takes the number of elements off a text. Whether the rest is a label is another question.
PLC_HOST_EXPORT CountedLabel takeCountOff(const QString& text);

/// Whether `name` can stand in a label: not empty, nothing that labels or command lines use as a
/// separator, no blanks and no control characters.
PLC_HOST_EXPORT bool isLabelName(const QString& name);

} // namespace plc::project

#endif
