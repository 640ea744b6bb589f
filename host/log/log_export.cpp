#include "host/log/log_export.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

#include "host/csv.h"
#include "host/log/log_record.h"
#include "host/log/sqlite_log.h"

namespace plc {
namespace {

bool writeRow(QSaveFile* file, const QStringList& fields)
{
    const QByteArray line = csv::row(fields).toUtf8() + '\n';
    return file->write(line) == line.size();
}

/// Returns the number of records written, also after a failure of either side.
qint64 writeRows(SqliteStatement* rows, SqliteStatement::Step* last, QSaveFile* file, qint64 total,
                 const ExportProgress& progress)
{
    qint64 done = 0;
    while ((*last = rows->step()) == SqliteStatement::Row) {
        if (!writeRow(file, {rows->text(0), rows->text(1), rows->text(2), rows->text(3)}))
            break;
        progress(++done, total);
    }
    return done;
}

} // namespace

std::optional<qint64> exportLog(const QString& databasePath, const QString& csvPath,
                                const ExportProgress& progress, QString* error)
{
    SqliteDatabase database;
    if (!openLogDatabase(databasePath, &database, error))
        return {};
    if (QFileInfo::exists(csvPath)) {
        *error = QStringLiteral("%1 exists; remove it or name another file").arg(csvPath);
        return {};
    }
    const std::optional<qint64> total = database.number("SELECT count(*) FROM sample");
    SqliteStatement rows(database, "SELECT time, label, value, state FROM log");
    if (!total || !rows.isPrepared()) {
        *error = database.error();
        return {};
    }
    QSaveFile file(csvPath);
    bool isWritten = file.open(QIODevice::WriteOnly) && writeRow(&file, logColumns());
    SqliteStatement::Step last = SqliteStatement::Done;
    const qint64 done = isWritten ? writeRows(&rows, &last, &file, *total, progress) : 0;
    if (last == SqliteStatement::Failed) {
        *error = database.error();
        return {};
    }
    isWritten = isWritten && last == SqliteStatement::Done && file.commit();
    if (!isWritten) {
        *error = QStringLiteral("%1: cannot be written: %2").arg(csvPath, file.errorString());
        return {};
    }
    return done;
}

} // namespace plc
