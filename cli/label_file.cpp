#include "cli/label_file.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include "project/label_expansion.h"
#include "project/label_lookup.h"
#include "project/label_pattern.h"
#include "project/label_syntax.h"
#include "values/csv.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

constexpr qint64 kLargestLabelFile = qint64(32) * 1024 * 1024;

/// What is wrong with a label, or nothing. Patterns are looked at when they are expanded.
QString problemOf(const QString& text, const project::LabelFinder& labels)
{
    // RFC 4180 wants quotes around what has a comma, and a subscript that lost its second half
    // shows that they are missing.
    if (text.count(QLatin1Char('[')) > text.count(QLatin1Char(']')))
        return QStringLiteral(
                   "%1 ends within its subscripts; a label with a comma stands in "
                   "quotes: \"Plant.table[1,2]\"")
            .arg(values::quoted(text));
    const bool isCount = project::isElementCount(text, labels);
    if (project::hasWildcard(text) && !isCount)
        return {};
    const QString label = isCount ? project::takeCountOff(text).label : text;
    const Expected<QVector<project::LabelPart>> parts = project::parseLabel(label);
    const Expected<project::LabelTarget> target =
        parts ? labels.find(*parts) : Expected<project::LabelTarget>(parts.error());
    if (!target)
        return QStringLiteral("label %1: %2").arg(values::quoted(label), target.error().text);
    return {};
}

Expected<QByteArray> readLabelFile(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        return Error{QStringLiteral("%1: cannot be read: %2; --labels takes a CSV file")
                         .arg(path, QFileInfo(path).isDir() ? QStringLiteral("it is a folder")
                                                            : file.errorString())};
    }
    QByteArray bytes = file.read(kLargestLabelFile + 1);
    if (bytes.size() > kLargestLabelFile) {
        return Error{QStringLiteral("%1: the file has more than %2 MiB; a list of labels has less")
                         .arg(path)
                         .arg(kLargestLabelFile / 1024 / 1024)};
    }
    return bytes;
}

bool isHeader(const QString& label)
{
    return label.compare(QLatin1String("label"), Qt::CaseInsensitive) == 0;
}

} // namespace

Expected<QStringList> readLabels(const QString& path, const project::Project& project)
{
    const Expected<QByteArray> bytes = readLabelFile(path);
    if (!bytes)
        return bytes.error();
    const Expected<QVector<values::csv::Record>> records =
        values::csv::parse(QString::fromUtf8(*bytes));
    if (!records)
        return Error{QStringLiteral("%1: %2").arg(path, records.error().text)};
    const project::LabelFinder finder(project);
    QStringList labels;
    for (const values::csv::Record& record : *records) {
        const QString label = record.fields.first().trimmed();
        if (&record == &records->first() && isHeader(label))
            continue;
        const QString problem = label.isEmpty()
                                    ? QStringLiteral("the first column is empty, expected a label")
                                    : problemOf(label, finder);
        if (!problem.isEmpty()) {
            return Error{QStringLiteral("%1: line %2: %3").arg(path).arg(record.line).arg(problem)};
        }
        labels.append(label);
    }
    if (labels.isEmpty()) {
        return Error{QStringLiteral("%1: has no labels; expected one a line, in the first column")
                         .arg(path)};
    }
    return labels;
}

} // namespace plc::cli
