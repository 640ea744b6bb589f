#include "panel/plants/label_spelling.h"

#include "project/label_syntax.h"

namespace plc::panel {
namespace {

QString speltLabel(const QString& label)
{
    const Expected<QVector<project::LabelPart>> parts = project::parseLabel(label);
    if (!parts || project::isPattern(*parts))
        return label;
    const Expected<QStringList> labels = project::expandPattern(*parts, 1);
    return labels ? labels->value(0, label) : label;
}

} // namespace

QString spelt(const QString& text)
{
    const QString label = project::takeCountOff(text).label;
    return speltLabel(label) + text.mid(label.size());
}

Expected<QString> textInProgram(const project::LabelFinder& program, const QString& text)
{
    const project::CountedLabel counted = project::takeCountOff(text);
    if (counted.elements < 1)
        return Error{QStringLiteral("%1: a number of elements is expected behind the *").arg(text)};
    const QString label = speltLabel(counted.label);
    const Expected<project::LabelTarget> target = program.find(label);
    if (!target)
        return Error{QStringLiteral("%1: %2").arg(label, target.error().text)};
    if (counted.elements > target->elements)
        return Error{QStringLiteral("%1: only %2 element(s) of the array are left from there on")
                         .arg(text)
                         .arg(target->elements)};
    return counted.elements == 1 ? label : QStringLiteral("%1*%2").arg(label).arg(counted.elements);
}

} // namespace plc::panel
