#include "gateway/service/split_files.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include "values/visible_text.h"

namespace plc::gateway {
namespace {

constexpr qint64 kLargestFile = qint64(32) * 1024 * 1024;

Expected<QByteArray> contentOf(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir())
        return Error{QStringLiteral("%1: is a folder, expected a file").arg(path)};
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString())};
    const QByteArray content = file.read(kLargestFile + 1);
    if (content.size() > kLargestFile)
        return Error{QStringLiteral("%1: the file has more than %2 MiB")
                         .arg(path)
                         .arg(kLargestFile / 1024 / 1024)};
    return content;
}

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
    const Expected<QByteArray> pattern = contentOf(files.pattern);
    if (!pattern)
        return pattern.error();
    const Expected<QByteArray> list = contentOf(files.list);
    if (!list)
        return list.error();
    SplitTask task;
    task.pattern = *pattern;
    task.patternName = files.pattern;
    task.list = QString::fromUtf8(*list);
    task.listName = files.list;
    task.devices = files.devices;
    const Expected<QVector<UnitConfiguration>> units = splitUnits(task);
    if (!units)
        return units.error();
    const Expected<UnitChanges> changes = writeUnits(*units, files.folder, files.replaces);
    if (!changes)
        return changes.error();
    return reportOf(*changes);
}

} // namespace plc::gateway
