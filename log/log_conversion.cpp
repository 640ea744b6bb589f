#include "log/log_conversion.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>

#include "log/log_record.h"
#include "log/recorder_log.h"
#include "log/sqlite_log.h"
#include "values/csv.h"

namespace plc::log {
namespace {

/// Changes that are recorded at once.
constexpr int kBatch = 20000;
/// Records of one writing are not in the order of time; beyond this the clock was set back.
constexpr qint64 kDisorder = 10000; // ms

using TakeRecord = std::function<Expected<void>(const LogRecord&)>;

Error atLine(const QString& path, int line, const char* what)
{
    return {QStringLiteral("%1: line %2: %3").arg(path).arg(line).arg(QLatin1String(what))};
}

Expected<LogRecord> recordOf(const QStringList& fields)
{
    LogRecord record;
    const std::optional<qint64> time = parseLogTime(fields.value(0));
    const std::optional<LogState> state = parseLogState(fields.value(3));
    if (!time || !state)
        return Error{QStringLiteral("not a record of a log")};
    record.time = *time;
    record.label = fields[1];
    record.value = fields[2];
    record.state = *state;
    record.plc = fields.value(4);
    return record;
}

/// A record is one line, so that a log of any size is read line by line.
Expected<void> readCsv(const QString& path, const QString& plc, const TakeRecord& take)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("%1: %2").arg(path, file.errorString())};
    QStringList columns;
    for (int line = 1;; ++line) {
        const QByteArray bytes = file.readLine();
        if (file.error() != QFileDevice::NoError)
            return Error{QStringLiteral("%1: %2").arg(path, file.errorString())};
        // Half a line is what a killed program leaves.
        if (!bytes.endsWith('\n'))
            break;
        const Expected<QVector<values::csv::Record>> parsed =
            values::csv::parse(QString::fromUtf8(bytes));
        const QStringList fields =
            parsed && parsed->size() == 1 ? parsed->first().fields : QStringList();
        if (line == 1) {
            columns = fields;
            if (columns == columnsOfSeveralPlcs() && !plc.isEmpty())
                return atLine(path, line, "the log has a PLC for each record; name none");
            if (columns != logColumns() && columns != columnsOfSeveralPlcs())
                return atLine(path, line, "the file is no log");
            continue;
        }
        const Expected<LogRecord> record = recordOf(fields);
        if (!record || fields.size() != columns.size())
            return atLine(path, line, "not a record of a log");
        if (const Expected<void> taken = take(*record); !taken)
            return taken.error();
    }
    return {};
}

Expected<void> readDatabase(const QString& path, const TakeRecord& take)
{
    database::SqliteDatabase database;
    if (const Expected<void> opened = openLogDatabase(path, &database); !opened)
        return opened.error();
    database::SqliteStatement rows(database, "SELECT time, label, value, state FROM log");
    if (!rows.isPrepared())
        return Error{database.error()};
    database::SqliteStatement::Step step = rows.step();
    for (; step == database::SqliteStatement::Row; step = rows.step()) {
        const Expected<LogRecord> record =
            recordOf({rows.text(0), rows.text(1), rows.text(2), rows.text(3)});
        if (!record)
            return Error{QStringLiteral("%1: %2").arg(path, record.error().text)};
        if (const Expected<void> taken = take(*record); !taken)
            return taken.error();
    }
    if (step == database::SqliteStatement::Failed)
        return Error{database.error()};
    return {};
}

/// Records what a log has, with gaps where it was begun anew.
class Conversion {
public:
    Conversion(recorder::Recorder* recorder, qint64 every, const QString& plc)
        : m_recorder(recorder), m_every(every), m_plc(plc)
    {
    }

    Expected<void> take(const LogRecord& record)
    {
        const int series = seriesOf(record);
        const bool isSetBack = m_records > 0 && record.time + kDisorder < m_now;
        const bool isNewRun = m_records > 0 && isBehindGap(series, record);
        if (isSetBack || isNewRun || m_changes.size() >= kBatch) {
            if (const Expected<void> flushed = flush(); !flushed)
                return flushed.error();
        }
        if (isNewRun) {
            if (const Expected<void> ended = m_recorder->end(m_now); !ended)
                return ended.error();
            m_last.clear();
        }
        m_now = isSetBack || m_records == 0 ? record.time : qMax(m_now, record.time);
        m_changes.append({series, {record.time, qualityOf(record.state), record.value.toUtf8()}});
        m_last.insert(series, record);
        ++m_records;
        return {};
    }
    Expected<void> finish()
    {
        const Expected<void> flushed = flush();
        return flushed ? m_recorder->end(m_now) : flushed;
    }
    qint64 records() const { return m_records; }

private:
    int seriesOf(const LogRecord& record)
    {
        recorder::SeriesDescription series;
        series.source = record.plc.isEmpty() ? m_plc : record.plc;
        series.label = record.label;
        return m_recorder->series(series);
    }
    bool isBehindGap(int series, const LogRecord& record) const
    {
        const auto last = m_last.constFind(series);
        if (last == m_last.constEnd())
            return false;
        if (m_every > 0)
            return record.time - last->time > m_every + m_every / 2;
        return last->value == record.value && last->state == record.state;
    }
    Expected<void> flush()
    {
        if (m_changes.isEmpty())
            return {};
        Expected<void> appended = m_recorder->append(m_changes, m_now);
        m_changes.clear();
        return appended;
    }

    recorder::Recorder* const m_recorder;
    const qint64 m_every;
    const QString m_plc;
    QVector<recorder::Change> m_changes;
    QHash<int, LogRecord> m_last; ///< By series, since the log was begun.
    qint64 m_now = 0;
    qint64 m_records = 0;
};

Expected<qint64> convertTo(const QString& path, const QString& oldPath, qint64 every,
                           const QString& plc, const ExportProgress& progress,
                           bool* isMediumFailing)
{
    std::unique_ptr<recorder::Recorder> recorder;
    std::optional<Conversion> conversion;
    const auto take = [&](const LogRecord& record) -> Expected<void> {
        if (!recorder) {
            Expected<std::unique_ptr<recorder::Recorder>> opened =
                recorder::Recorder::open(path, recorder::Limits(), record.time, isMediumFailing);
            if (!opened)
                return opened.error();
            recorder = std::move(*opened);
            conversion.emplace(recorder.get(), every, plc);
        }
        Expected<void> taken = conversion->take(record);
        *isMediumFailing = !taken;
        progress(conversion->records(), 0);
        return taken;
    };
    const bool isCsv = oldPath.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
    if (const Expected<void> read =
            isCsv ? readCsv(oldPath, plc, take) : readDatabase(oldPath, take);
        !read)
        return read.error();
    if (!recorder)
        return Error{QStringLiteral("%1: the log has no records").arg(oldPath)};
    if (const Expected<void> finished = conversion->finish(); !finished) {
        *isMediumFailing = true;
        return finished.error();
    }
    return conversion->records();
}

} // namespace

Expected<qint64> convertLog(const QString& oldPath, const QString& newPath, qint64 every,
                            const QString& plc, const ExportProgress& progress,
                            bool* isMediumFailing)
{
    bool ignored = false;
    if (!isMediumFailing)
        isMediumFailing = &ignored;
    *isMediumFailing = false;
    if (QFileInfo::exists(newPath))
        return Error{QStringLiteral("%1 exists; remove it or name another file").arg(newPath)};
    const QString temporary = newPath + QStringLiteral(".part");
    const auto remove = [&temporary] {
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(temporary + QLatin1String(suffix));
    };
    remove();
    Expected<qint64> records = convertTo(temporary, oldPath, every, plc, progress, isMediumFailing);
    // Closed, the recording is one file.
    if (records && !QFile::rename(temporary, newPath))
        records = Error{QStringLiteral("%1: cannot be renamed to %2").arg(temporary, newPath)};
    if (!records)
        remove();
    return records;
}

} // namespace plc::log
