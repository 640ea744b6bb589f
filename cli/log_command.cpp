#include "cli/log_command.h"

#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>

#include "cli/progress.h"
#include "cli/run_view.h"
#include "cli/value_lines.h"
#include "host/points/value_codec.h"
#include "log/csv_log.h"
#include "log/log_export.h"
#include "log/sqlite_log.h"
#include "values/numeric_value.h"

namespace plc::cli {
namespace {

constexpr int kWriteInterval = 1000; // ms

void printResult(const Options& options, qint64 records, qint64 duration)
{
    const QString seconds = QString::number(double(duration) / 1000, 'f', 1);
    if (!options.json) {
        print(QStringLiteral("%1: %2 records in %3 s")
                  .arg(options.log.output)
                  .arg(records)
                  .arg(seconds));
        return;
    }
    JsonLine line;
    line.add("output", options.log.output);
    line.add("records", records);
    print(line.add("duration", duration).text());
}

} // namespace

bool LogCommand::prepare()
{
    if (!CyclicCommand::prepare())
        return false;
    QString error;
    bool isMediumFailing = false;
    m_writer = openWriter(&error, &isMediumFailing);
    if (m_writer)
        return true;
    complain(error);
    if (isMediumFailing)
        setPreparationCode(kExitRefused);
    return false;
}

std::unique_ptr<log::LogWriter> LogCommand::openWriter(QString* error, bool* isMediumFailing) const
{
    const LogOptions& log = options().log;
    if (isDatabase(log.output))
        return log::SqliteLog::open(log.output, error, isMediumFailing);
    const log::LogRotation rotation{log.rotateSize, log.rotateEvery, log.keep};
    std::unique_ptr<log::CsvLog> writer =
        log::CsvLog::open(log.output, rotation, error, isMediumFailing);
    if (writer && writer->cutBytes() > 0) {
        complain(QStringLiteral("%1 ended in half a line, which was cut off: %2 bytes")
                     .arg(log.output)
                     .arg(writer->cutBytes()));
    }
    return writer;
}

void LogCommand::begin()
{
    QObject::connect(&m_writing, &QTimer::timeout, &m_writing, [this] { write(); });
    m_writing.start(kWriteInterval);
    QObject::connect(&m_sampling, &QTimer::timeout, &m_sampling, [this] { collectAll(); });
    m_sampling.setTimerType(Qt::PreciseTimer);
    if (options().log.every > 0)
        m_sampling.start(options().log.every);
    CyclicCommand::begin();
}

void LogCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    CyclicCommand::linkChanged(state, reason, retryDelay);
    if (state == host::LinkState::Down && retryDelay >= 0)
        complain(linkText(state, peer(), reason, retryDelay));
}

void LogCommand::requestSettled()
{
    if (options().log.every > 0)
        collectFirst();
    else
        collectChanges();
}

/// Told at once, and part of the log. Between two samples it is a record of its own.
void LogCommand::valueRefused(int row)
{
    const host::ValueTable& values = runtime().values();
    complain(refusedValueText(values.point(row), values.refusalStatus(row)));
    if (options().log.every > 0)
        collect(row);
}

void LogCommand::valueGivenAgain(int row)
{
    complain(QStringLiteral("the PLC gives %1 again").arg(runtime().values().point(row).text));
}

void LogCommand::collectChanges()
{
    if (options().log.every > 0)
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
            m_sampling.start(options().log.every);
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
    if (values.wasRead(row)) {
        const QVector<values::Value> elements = host::decodeValues(point, values.bytes(row));
        record.value = host::pointText(point, elements);
        if (elements.size() == 1)
            record.number = values::numericValue(elements.first());
    }
    m_records.append(record);
}

/// A log with a gap that nobody knows of is worse than one that ends: the first failure ends it.
void LogCommand::write()
{
    if (!m_writer)
        return;
    collectChanges();
    QString error;
    if (m_writer->write(m_records, &error)) {
        m_written += m_records.size();
        m_records.clear();
        return;
    }
    m_writer.reset();
    complain(QStringLiteral("%1; the log ends here and what it holds can be read; begin again with "
                            "the same file when there is room")
                 .arg(error));
    end(kExitRefused);
}

void LogCommand::ended()
{
    printResult(options(), m_written, link().now());
}

int exportDatabase(const Options& options)
{
    QElapsedTimer clock;
    clock.start();
    QString error;
    bool isMediumFailing = false;
    std::optional<Progress> progress;
    const auto show = [&](qint64 done, qint64 total) {
        if (!progress)
            progress.emplace(QStringLiteral("exporting"), QStringLiteral("records"), total, 0);
        progress->advance(done, clock.elapsed());
    };
    const std::optional<qint64> records =
        log::exportLog(options.log.exported, options.log.output, show, &error, &isMediumFailing);
    progress.reset();
    if (!records) {
        complain(error);
        return isMediumFailing ? kExitRefused : kExitUsage;
    }
    printResult(options, *records, clock.elapsed());
    return kExitDone;
}

} // namespace plc::cli
