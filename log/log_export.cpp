#include "log/log_export.h"

#include <QtCore/QFileInfo>

#include "log/log_record.h"
#include "log/sqlite_log.h"
#include "streams/file_replacement.h"
#include "values/csv.h"

namespace plc::log {
namespace {

bool writeRow(streams::FileReplacement* file, const QStringList& fields)
{
    return file->write(values::csv::row(fields).toUtf8() + '\n');
}

/// Returns the number of records written, also after a failure of either side.
qint64 writeRows(database::SqliteStatement* rows, database::SqliteStatement::Step* last,
                 streams::FileReplacement* file, qint64 total, const ExportProgress& progress)
{
    qint64 done = 0;
    while ((*last = rows->step()) == database::SqliteStatement::Row) {
        if (!writeRow(file, {rows->text(0), rows->text(1), rows->text(2), rows->text(3)}))
            break;
        progress(++done, total);
    }
    return done;
}

} // namespace

Expected<qint64> exportLog(const QString& databasePath, const QString& csvPath,
                           const ExportProgress& progress, bool* isMediumFailing)
{
    bool ignored = false;
    if (!isMediumFailing)
        isMediumFailing = &ignored;
    database::SqliteDatabase database;
    const auto databaseFailure = [&] {
        *isMediumFailing = database.isMediumFailing();
        return Error{database.error()};
    };
    *isMediumFailing = false;
    if (const Expected<void> opened = openLogDatabase(databasePath, &database); !opened) {
        *isMediumFailing = database.isMediumFailing();
        return opened.error();
    }
    if (QFileInfo::exists(csvPath))
        return Error{QStringLiteral("%1 exists; remove it or name another file").arg(csvPath)};
    const std::optional<qint64> total = database.number("SELECT count(*) FROM sample");
    database::SqliteStatement rows(database, "SELECT time, label, value, state FROM log");
    if (!total || !rows.isPrepared())
        return databaseFailure();
    streams::FileReplacement file(csvPath);
    if (const Expected<void> opened = file.open(); !opened)
        return opened.error();
    writeRow(&file, logColumns());
    database::SqliteStatement::Step last = database::SqliteStatement::Done;
    const qint64 done = writeRows(&rows, &last, &file, *total, progress);
    if (last == database::SqliteStatement::Failed)
        return databaseFailure();
    const Expected<void> committed = file.commit();
    *isMediumFailing = !committed;
    if (!committed)
        return committed.error();
    return done;
}

} // namespace plc::log
