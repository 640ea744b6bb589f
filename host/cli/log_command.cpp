#include "host/cli/log_command.h"

#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>

#include <csignal>

#include "host/cli/progress.h"
#include "host/cli/run_view.h"
#include "host/cli/value_lines.h"
#include "host/log/csv_log.h"
#include "host/log/log_export.h"
#include "host/log/sqlite_log.h"
#include "host/numeric_value.h"
#include "host/value_codec.h"

namespace plc {
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
    // A limit on the size of files is to be told like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    QString error;
    m_writer = openWriter(&error);
    if (!m_writer)
        complain(error);
    return m_writer != nullptr;
}

std::unique_ptr<LogWriter> LogCommand::openWriter(QString* error) const
{
    const LogOptions& log = options().log;
    if (isDatabase(log.output))
        return SqliteLog::open(log.output, error);
    const LogRotation rotation{log.rotateSize, log.rotateEvery, log.keep};
    std::unique_ptr<CsvLog> writer = CsvLog::open(log.output, rotation, error);
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

void LogCommand::linkChanged(LinkState state, const QString& reason, int retryDelay)
{
    CyclicCommand::linkChanged(state, reason, retryDelay);
    if (state == LinkState::Down && retryDelay >= 0)
        complain(linkText(state, peer(), reason, retryDelay));
}

void LogCommand::requestSettled()
{
    collectChanges();
}

void LogCommand::collectChanges()
{
    if (options().log.every > 0)
        return;
    const qint64 time = QDateTime::currentMSecsSinceEpoch();
    for (int row : m_changes.take(runtime().values(), link().now()))
        collect(row, time);
}

void LogCommand::collectAll()
{
    const ValueTable& values = runtime().values();
    const qint64 now = link().now();
    const qint64 time = QDateTime::currentMSecsSinceEpoch();
    for (int row = 0; row < values.size(); ++row) {
        // Nothing is known of a value that is not read yet, nor waited for too long.
        if (values.wasRead(row) || values.isStale(row, now))
            collect(row, time);
    }
}

void LogCommand::collect(int row, qint64 time)
{
    const ValueTable& values = runtime().values();
    const DataPoint& point = values.point(row);
    LogRecord record;
    record.time = time;
    record.label = point.text;
    record.isStale = values.isStale(row, link().now());
    if (values.wasRead(row)) {
        const QVector<Value> elements = decodeValues(point, values.bytes(row));
        record.value = pointText(point, elements);
        if (elements.size() == 1)
            record.number = numericValue(elements.first());
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
    std::optional<Progress> progress;
    const auto show = [&](qint64 done, qint64 total) {
        if (!progress)
            progress.emplace(QStringLiteral("exporting"), QStringLiteral("records"), total, 0);
        progress->advance(done, clock.elapsed());
    };
    const std::optional<qint64> records =
        exportLog(options.log.exported, options.log.output, show, &error);
    progress.reset();
    if (!records) {
        complain(error);
        return kExitUsage;
    }
    printResult(options, *records, clock.elapsed());
    return kExitDone;
}

} // namespace plc
