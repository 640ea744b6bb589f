#include "cli/log_command.h"

#include <QtCore/QDateTime>

#include "cli/log_export_command.h"
#include "cli/run_view.h"
#include "cli/value_lines.h"
#include "host/points/value_codec.h"
#include "log/csv_log.h"
#include "log/recorder_log.h"
#include "log/sqlite_log.h"
#include "options/readers.h"
#include "values/nearest_name.h"
#include "values/numeric_value.h"

namespace plc::cli {
namespace {

constexpr char kLogDurationNote[] =
    "A DURATION is 500ms, 10s or 1m30s. Where a number alone is taken, it is in ms,\n"
    "for --for in seconds.";

constexpr int kWriteInterval = 1000;                    // ms
constexpr qint64 kLongestPeriod = 366LL * kLongestTime; // ms
const QLatin1String kCsvSuffix(".csv");

int logValues(const LogOptions& options)
{
    if (!options.exported.isEmpty() || !options.converted.isEmpty())
        return exportOrConvert(options);
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return LogCommand(options, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kLogCommand = {"log",
                             {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
                             "keep the project's cyclic labels, or these, in a CSV file or an "
                             "SQLite database: each change, or all at an interval",
                             {kLabelNote, kPatternNote, kLogDurationNote},
                             makeOptions<LogOptions>,
                             execute<LogOptions, logValues>};

options::Table LogOptions::table()
{
    return loggingTable() + conversionTable() + CyclicOptions::table();
}

options::Table LogOptions::loggingTable()
{
    using namespace options;
    return Table{
        {"-o, --output FILE",
         "the log: .csv, or a database: .sqlite, .sqlite3, .db; one that exists is "
         "continued",
         text(&output), kCompleteFile,
         "The log: CSV if the name ends in `.csv`, an SQLite database if it ends in "
         "`.sqlite`, `.sqlite3` or `.db`. A log that exists is continued."},
        {"--every DURATION", "log all values at this interval instead of changes",
         milliseconds(&every, {kNoPlainNumber, kAboveZero, kLongestTime}), kCompleteNothing,
         "Log all values at this interval, whether they change or not, starting with the "
         "first that are read."},
        {"--plc NAME",
         "what the PLC is called in the database (as the project's file, without ending)",
         text(&plc), kCompleteNothing,
         "Record the values as those of the PLC `NAME`, in a database. Without it the PLC "
         "is called as the project's file without its ending, as `plc-panel` does. With "
         "`--convert` the values are of no PLC unless it is given."},
        {"--rotate-size SIZE",
         "start a new CSV file before one grows beyond this size: 500k, 64M, 2G", size(&rotateSize),
         kCompleteNothing,
         "Start a new CSV file before one grows beyond `SIZE` bytes, such as `500k`, "
         "`64M` or `2G`. The name of the older file gets a number, which tells the order, "
         "and the time of its first record: `plant.000001.20261121T060000123Z.csv`."},
        {"--rotate-every DURATION", "start a new CSV file after this time: 1h, 1d",
         milliseconds(&rotateEvery, {kNoPlainNumber, kAboveZero, double(kLongestPeriod)}),
         kCompleteNothing,
         "Start a new CSV file when the first record of one is this old, such as `1h` or "
         "`1d`."},
        {"--keep N", "number of rotated files to keep; the oldest are removed (all)",
         integer(&keep, 1, std::numeric_limits<int>::max()), kCompleteNothing,
         "Keep `N` of the older files, those with the highest numbers; all if not given."},
    };
}

options::Table LogOptions::conversionTable()
{
    using namespace options;
    return Table{
        {"--export DATABASE", "turn this database into the file --output; needs no project",
         text(&exported), kCompleteFile,
         "Turn the log in a database into a new file `--output`; one that exists is an "
         "error. Needs neither a project nor a PLC."},
        {"--format FORMAT",
         "with --export: csv, influx, postgresql, openmetrics or prometheus (csv)", text(&format),
         kCompleteNothing,
         "What `--export` makes: `csv`; `influx`, line protocol; `postgresql`, a script for "
         "psql with COPY; `openmetrics`, for `promtool tsdb create-blocks-from`; or "
         "`prometheus`, the last values. A log of version 1.0 has to be converted first for "
         "all but CSV."},
        {"--from TIME", "with --export: from this time on, such as 2026-11-21T06:00:00Z",
         text(&from), kCompleteNothing,
         "Export from this time on, in UTC or with a distance from it: "
         "`2026-11-21T06:00:00Z`, `2026-11-21T07:00:00+01:00`."},
        {"--to TIME", "with --export: up to this time", text(&to), kCompleteNothing,
         "Export what is before this time."},
        {"--convert LOG",
         "make the database --output of this log, in CSV or of version 1.0; needs no "
         "project",
         text(&converted), kCompleteFile,
         "Make a new database `--output` of a log in CSV, or in a database of version 1.0. "
         "With `--every` of a log that was made so. Needs neither a project nor a PLC."},
    };
}

Expected<void> LogOptions::check()
{
    const bool rotates = rotateSize > 0 || rotateEvery > 0;
    if (output.isEmpty())
        return Error{QStringLiteral("plc log takes --output FILE, ending in .csv or .sqlite")};
    if (const Expected<void> isGood = checkExport(*this); !isGood)
        return isGood.error();
    const bool isForOthers = !exported.isEmpty() && exportFormat(*this) != log::ExportFormat::Csv;
    if (!isForOthers && !isDatabase(output) && !output.endsWith(kCsvSuffix, Qt::CaseInsensitive)) {
        return Error{QStringLiteral("--output takes a file that ends in .csv, .sqlite, .sqlite3 "
                                    "or .db, not %1")
                         .arg(values::quoted(output))};
    }
    if (rotates && isDatabase(output))
        return Error{QStringLiteral("--rotate-size and --rotate-every are for .csv files")};
    if (!plc.isEmpty() && !isDatabase(output))
        return Error{QStringLiteral("--plc is for databases")};
    if (keep > 0 && !rotates)
        return Error{QStringLiteral("--keep goes with --rotate-size or --rotate-every")};
    return CyclicOptions::check();
}

bool isDatabase(const QString& logFile)
{
    for (const char* suffix : {".sqlite", ".sqlite3", ".db"}) {
        if (logFile.endsWith(QLatin1String(suffix), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

bool LogCommand::prepare()
{
    if (!readCyclically(m_options.stationsOff))
        return false;
    bool isMediumFailing = false;
    Expected<std::unique_ptr<log::LogWriter>> writer = openWriter(&isMediumFailing);
    if (writer) {
        m_writer = std::move(*writer);
        return true;
    }
    complain(writer.error().text);
    if (isMediumFailing)
        setPreparationCode(kExitRefused);
    return false;
}

/// A log of version 1.0 goes on as it is.
Expected<std::unique_ptr<log::LogWriter>> LogCommand::openDatabase(bool* isMediumFailing)
{
    if (log::isLogDatabase(m_options.output)) {
        if (!m_options.plc.isEmpty()) {
            return Error{QStringLiteral("%1: a log of version 1.0 has no names of PLCs; make a "
                                        "database of it with --convert --plc")
                             .arg(m_options.output)};
        }
        Expected<std::unique_ptr<log::SqliteLog>> writer =
            log::SqliteLog::open(m_options.output, isMediumFailing);
        if (!writer)
            return writer.error();
        return std::unique_ptr<log::LogWriter>(std::move(*writer));
    }
    const QString plc =
        m_options.plc.isEmpty() ? project::plcName(m_options.projectFile) : m_options.plc;
    QHash<QString, recorder::SeriesDescription> series;
    const host::ValueTable& values = runtime().values();
    for (int row = 0; row < values.size(); ++row) {
        const host::DataPoint& point = values.point(row);
        series.insert(point.text, recorder::describe(point, plc));
    }
    Expected<std::unique_ptr<log::RecorderLog>> writer = log::RecorderLog::open(
        m_options.output, series, QDateTime::currentMSecsSinceEpoch, isMediumFailing);
    if (!writer)
        return writer.error();
    return std::unique_ptr<log::LogWriter>(std::move(*writer));
}

Expected<std::unique_ptr<log::LogWriter>> LogCommand::openWriter(bool* isMediumFailing)
{
    if (isDatabase(m_options.output))
        return openDatabase(isMediumFailing);
    const log::LogRotation rotation{m_options.rotateSize, m_options.rotateEvery, m_options.keep};
    Expected<std::unique_ptr<log::CsvLog>> writer =
        log::CsvLog::open(m_options.output, rotation, isMediumFailing);
    if (!writer)
        return writer.error();
    if ((*writer)->cutBytes() > 0) {
        complain(QStringLiteral("%1 ended in half a line, which was cut off: %2 bytes")
                     .arg(m_options.output)
                     .arg((*writer)->cutBytes()));
    }
    return std::unique_ptr<log::LogWriter>(std::move(*writer));
}

void LogCommand::aboutToBegin()
{
    QObject::connect(&m_writing, &QTimer::timeout, &m_writing, [this] { write(); });
    m_writing.start(kWriteInterval);
    QObject::connect(&m_sampling, &QTimer::timeout, &m_sampling, [this] { collectAll(); });
    m_sampling.setTimerType(Qt::PreciseTimer);
    if (m_options.every > 0)
        m_sampling.start(m_options.every);
}

void LogCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    if (state == host::LinkState::Down && retryDelay >= 0)
        complain(linkText(state, peer(), reason, retryDelay));
}

void LogCommand::requestSettled()
{
    if (m_options.every > 0)
        collectFirst();
    else
        collectChanges();
}

/// Told at once, and part of the log. Between two samples it is a record of its own.
void LogCommand::valueRefused(int row)
{
    const host::ValueTable& values = runtime().values();
    complain(refusedValueText(values.point(row), values.refusalStatus(row)));
    if (m_options.every > 0)
        collect(row);
}

void LogCommand::valueGivenAgain(int row)
{
    complain(QStringLiteral("the PLC gives %1 again").arg(runtime().values().point(row).text));
}

void LogCommand::collectChanges()
{
    if (m_options.every > 0)
        return;
    for (int row : m_changes.take(runtime().values(), link().now()))
        collect(row);
}

/// The log begins with the first values, not an interval behind them.
void LogCommand::collectFirst()
{
    const host::ValueTable& values = runtime().values();
    if (m_begun == values.size())
        return;
    m_hasBegun.resize(values.size());
    for (int row = 0; row < values.size(); ++row) {
        if (m_hasBegun[row] || !values.wasRead(row))
            continue;
        m_hasBegun[row] = true;
        if (m_begun++ == 0)
            m_sampling.start(m_options.every);
        collect(row);
    }
}

void LogCommand::collectAll()
{
    const host::ValueTable& values = runtime().values();
    const qint64 now = link().now();
    for (int row = 0; row < values.size(); ++row) {
        // Nothing is known of a value that is not read yet, nor waited for too long.
        if (!values.wasRead(row) && !values.isStale(row, now))
            continue;
        collect(row);
    }
}

/// A fresh record has the time of its value. That a value is stale is true of now.
void LogCommand::collect(int row)
{
    const host::ValueTable& values = runtime().values();
    const host::DataPoint& point = values.point(row);
    const qint64 now = link().now();
    log::LogRecord record;
    record.time = QDateTime::currentMSecsSinceEpoch();
    record.label = point.text;
    if (values.isRefused(row))
        record.state = log::LogState::Refused;
    else if (values.isStale(row, now))
        record.state = log::LogState::Stale;
    else
        record.time -= values.age(row, now);
    if (values.wasRead(row))
        record.bytes = values.bytes(row);
    if (values.wasRead(row) && m_writer && m_writer->needsTexts()) {
        const QVector<values::Value> elements = host::decodeValues(point, record.bytes);
        record.value = host::pointText(point, elements);
        if (elements.size() == 1)
            record.number = values::numericValue(elements.first());
    }
    m_records.append(record);
}

/// A log with a gap that nobody knows of is worse than one that ends: where the log cannot tell of
/// it, the first failure ends it.
void LogCommand::write()
{
    if (!m_writer)
        return;
    if (m_attention.wasLost(QDateTime::currentMSecsSinceEpoch()))
        m_writer->interrupt();
    collectChanges();
    const Expected<void> written = m_writer->write(m_records);
    if (const QString remark = m_writer->takeRemark(); !remark.isEmpty())
        complain(remark);
    if (written || m_writer->keepsTrying()) {
        m_given += m_records.size();
        m_records.clear();
        tellWriting(written);
        return;
    }
    m_writer.reset();
    complain(QStringLiteral("%1; the log ends here and what it holds can be read; begin again with "
                            "the same file when there is room")
                 .arg(written.error().text));
    end(kExitRefused);
}

void LogCommand::aboutToEnd()
{
    write();
    if (m_writer)
        m_writer->finish();
}

/// Each failure once, and that it is over.
void LogCommand::tellWriting(const Expected<void>& written)
{
    const QString failure = written ? QString() : written.error().text;
    if (failure == m_failure)
        return;
    m_failure = failure;
    if (written) {
        complain(QStringLiteral("%1: the log goes on").arg(m_options.output));
        return;
    }
    complain(QStringLiteral("%1; it is tried again each second, and what there is no room for "
                            "meanwhile will be a gap in the log")
                 .arg(failure));
}

void LogCommand::ended()
{
    const qint64 missing = m_writer ? m_writer->backlog().sum() : 0;
    if (missing > 0) {
        complain(
            QStringLiteral("%1 records are not known to be written; in their place %2 has a gap")
                .arg(missing)
                .arg(m_options.output));
    }
    printLogResult(m_options, m_given - missing, link().now());
}

} // namespace plc::cli
