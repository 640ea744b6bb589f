#include "gateway/service/split_files.h"

#include <QtCore/QFileInfo>

#include "streams/input_file.h"
#include "values/visible_text.h"

namespace plc::gateway {
namespace {

constexpr streams::InputFileKind kList = {"a file", qint64(32) * 1024 * 1024, ""};

QString reportOf(const UnitChanges& changes)
{
    QStringList lines;
    const auto add = [&lines](const char* what, const QStringList& files) {
        for (const QString& file : files)
            lines.append(QLatin1String(what) + values::visibleText(file));
    };
    add("unchanged ", changes.unchanged);
    add("replaced  ", changes.replaced);
    add("added     ", changes.added);
    add("left over ", changes.leftOver);
    if (!changes.leftOver.isEmpty())
        lines.append(QStringLiteral(
            "What is left over is of a longer list; end its service and remove it."));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

Expected<QString> splitFiles(const SplitFiles& files)
{
    const Expected<QByteArray> pattern = streams::readInputFile(files.pattern, kList);
    if (!pattern)
        return pattern.error();
    const Expected<QByteArray> list = streams::readInputFile(files.list, kList);
    if (!list)
        return list.error();
    SplitTask task;
    task.pattern = *pattern;
    task.patternName = files.pattern;
    task.list = QString::fromUtf8(*list);
    task.listName = files.list;
    task.devices = files.devices;
    task.patternFolder = QFileInfo(files.pattern).absolutePath();
    task.folder = files.folder;
    const Expected<QVector<UnitConfiguration>> units = splitUnits(task);
    if (!units)
        return units.error();
    const Expected<UnitChanges> changes = writeUnits(*units, files.folder, files.replaces);
    if (!changes)
        return changes.error();
    return reportOf(*changes);
}

} // namespace plc::gateway
