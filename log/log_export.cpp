#include "log/log_export.h"

#include <QtCore/QFileInfo>

#include <algorithm>

#include "log/log_record.h"
#include "log/recorder_log.h"
#include "log/sqlite_log.h"
#include "recorder/elements.h"
#include "recorder/handover.h"
#include "recorder/recording_file.h"
#include "streams/file_replacement.h"
#include "values/csv.h"
#include "values/utc_time.h"

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

bool isOfSeveralPlcs(const QVector<recorder::Series>& series)
{
    return std::any_of(series.begin(), series.end(), [&](const recorder::Series& one) {
        return one.description.source != series.first().description.source;
    });
}

Expected<recorder::Handover> writeCsv(recorder::Reader* reader, const recorder::TimeRange& range,
                                      const recorder::TakeText& take)
{
    const Expected<QVector<recorder::Series>> all = reader->series();
    if (!all)
        return all.error();
    const QHash<int, recorder::SeriesDescription> series = recorder::seriesById(*all);
    const bool tellsPlc = isOfSeveralPlcs(*all);
    recorder::Handover handover;
    take(values::csv::row(tellsPlc ? columnsOfSeveralPlcs() : logColumns()).toUtf8() + '\n');
    const Expected<void> done = reader->forEachChange(range, [&](const recorder::Change& change) {
        const recorder::SeriesDescription described = series.value(change.series);
        QStringList fields{values::utcTimeText(change.sample.time), described.label,
                           recorder::seriesText(described, change.sample.bytes),
                           logStateWord(stateOf(change.sample.quality))};
        if (tellsPlc)
            fields << described.source;
        ++handover.rows;
        return take(values::csv::row(fields).toUtf8() + '\n');
    });
    if (!done)
        return done.error();
    return handover;
}

Expected<recorder::Handover> writeAs(ExportFormat format, recorder::Reader* reader,
                                     const recorder::TimeRange& range,
                                     const recorder::TakeText& take)
{
    switch (format) {
        case ExportFormat::Csv:
            return writeCsv(reader, range, take);
        case ExportFormat::InfluxLines:
            return recorder::writeInfluxLines(reader, range, take);
        case ExportFormat::PostgresqlCopy:
            return recorder::writePostgresqlCopy(reader, range, take);
        case ExportFormat::OpenMetrics:
            return recorder::writeOpenMetrics(reader, range, take);
        case ExportFormat::Prometheus:
            break;
    }
    return recorder::writeExposition(reader, take);
}

Error existsAlready(const QString& path)
{
    return {QStringLiteral("%1 exists; remove it or name another file").arg(path)};
}

} // namespace

Expected<qint64> exportRecording(const QString& recordingPath, const QString& outputPath,
                                 ExportFormat format, const recorder::TimeRange& range,
                                 const ExportProgress& progress, bool* isMediumFailing)
{
    bool ignored = false;
    bool& isFailing = isMediumFailing ? *isMediumFailing : ignored;
    isFailing = false;
    const Expected<std::unique_ptr<recorder::Reader>> reader =
        recorder::Reader::open(recordingPath);
    if (!reader)
        return reader.error();
    if (QFileInfo::exists(outputPath))
        return existsAlready(outputPath);
    const qint64 total = (*reader)->countChanges().valueOr(0);
    streams::FileReplacement file(outputPath);
    if (const Expected<void> opened = file.open(); !opened)
        return opened.error();
    qint64 done = 0;
    const Expected<recorder::Handover> handover =
        writeAs(format, reader->get(), range, [&](const QByteArray& text) {
            progress(++done, total);
            return file.write(text);
        });
    if (!handover)
        return handover.error();
    const Expected<void> committed = file.commit();
    isFailing = !committed;
    if (!committed)
        return committed.error();
    return handover->rows;
}

Expected<qint64> exportLog(const QString& databasePath, const QString& csvPath,
                           const ExportProgress& progress, bool* isMediumFailing)
{
    bool ignored = false;
    if (!isMediumFailing)
        isMediumFailing = &ignored;
    if (recorder::isRecording(databasePath)) {
        return exportRecording(databasePath, csvPath, ExportFormat::Csv, recorder::TimeRange(),
                               progress, isMediumFailing);
    }
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
        return existsAlready(csvPath);
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
