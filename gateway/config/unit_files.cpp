#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <optional>

#include "gateway/config/unit_split.h"
#include "streams/file_replacement.h"

namespace plc::gateway {
namespace {

/// Nothing: there is no such file.
std::optional<QByteArray> contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

/// Files that are named as these, but for the number.
QStringList numberedFiles(const QVector<UnitConfiguration>& units, const QDir& folder)
{
    const QRegularExpression number(QStringLiteral("-[0-9]+\\.json$"));
    const QString first = units.first().fileName;
    const QString name = first.left(first.indexOf(number));
    QStringList files;
    for (const QString& file : folder.entryList(QDir::Files, QDir::Name)) {
        const int place = int(file.indexOf(number));
        if (place >= 0 && file.left(place) == name)
            files.append(file);
    }
    return files;
}

UnitChanges compare(const QVector<UnitConfiguration>& units, const QDir& folder)
{
    UnitChanges changes;
    changes.leftOver = numberedFiles(units, folder);
    for (const UnitConfiguration& unit : units) {
        changes.leftOver.removeAll(unit.fileName);
        const std::optional<QByteArray> content = contentOf(folder.filePath(unit.fileName));
        QStringList* list = &changes.replaced;
        if (!content)
            list = &changes.added;
        else if (*content == unit.json)
            list = &changes.unchanged;
        list->append(unit.fileName);
    }
    return changes;
}

Expected<void> writeFile(const QString& path, const QByteArray& content)
{
    streams::FileReplacement file(path);
    const Expected<void> opened = file.open();
    if (!opened)
        return opened.error();
    file.write(content);
    return file.commit();
}

} // namespace

Expected<UnitChanges> writeUnits(const QVector<UnitConfiguration>& units, const QString& folder,
                                 bool replaces)
{
    const QDir directory(folder);
    if (!directory.exists())
        return Error{QStringLiteral("%1: is no folder").arg(folder)};
    if (units.isEmpty())
        return UnitChanges();
    UnitChanges changes = compare(units, directory);
    if (!changes.replaced.isEmpty() && !replaces)
        return Error{QStringLiteral("%1: holds %2 with other content; nothing is written")
                         .arg(folder, changes.replaced.join(QLatin1String(", ")))};
    for (const UnitConfiguration& unit : units) {
        if (changes.unchanged.contains(unit.fileName))
            continue;
        const Expected<void> written = writeFile(directory.filePath(unit.fileName), unit.json);
        if (!written)
            return written.error();
    }
    return changes;
}

} // namespace plc::gateway
