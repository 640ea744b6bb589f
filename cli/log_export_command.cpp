#include "cli/log_export_command.h"

#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>

#include "cli/console.h"
#include "cli/progress.h"
#include "cli/run_view.h"
#include "cli/value_lines.h"
#include "log/log_conversion.h"
#include "log/sqlite_log.h"
#include "recorder/recording_file.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

const struct {
    const char* name;
    log::ExportFormat format;
} kFormats[] = {{"csv", log::ExportFormat::Csv},
                {"influx", log::ExportFormat::InfluxLines},
                {"postgresql", log::ExportFormat::PostgresqlCopy},
                {"openmetrics", log::ExportFormat::OpenMetrics},
                {"prometheus", log::ExportFormat::Prometheus}};

std::optional<log::ExportFormat> formatNamed(const QString& name)
{
    if (name.isEmpty())
        return log::ExportFormat::Csv;
    for (const auto& format : kFormats) {
        if (name == QLatin1String(format.name))
            return format.format;
    }
    return {};
}

struct NamedOption {
    bool isGiven;
    const char* name;
};

Expected<void> expectNone(const QVector<NamedOption>& others, const char* with)
{
    for (const NamedOption& other : others) {
        if (other.isGiven) {
            return Error{QStringLiteral("--%1 has no meaning %2")
                             .arg(QLatin1String(other.name), QLatin1String(with))};
        }
    }
    return {};
}

Expected<qint64> timeOf(const char* option, const QString& text, qint64 otherwise)
{
    if (text.isEmpty())
        return otherwise;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    // Without a distance from UTC it would be this computer's time, which the log does not know.
    if (!time.isValid() || time.timeSpec() == Qt::LocalTime) {
        return Error{QStringLiteral("--%1 takes a time such as 2026-11-21T06:00:00Z, not %2")
                         .arg(QLatin1String(option), values::quoted(text))};
    }
    return time.toMSecsSinceEpoch();
}

Expected<recorder::TimeRange> rangeOf(const LogOptions& options)
{
    recorder::TimeRange range;
    const Expected<qint64> from = timeOf("from", options.from, range.from);
    if (!from)
        return from.error();
    const Expected<qint64> to = timeOf("to", options.to, range.to);
    if (!to)
        return to.error();
    if (*to < *from)
        return Error{QStringLiteral("--to %1 is before --from %2").arg(options.to, options.from)};
    return recorder::TimeRange{*from, *to};
}

Expected<void> checkOutput(const LogOptions& options)
{
    const std::optional<log::ExportFormat> format = formatNamed(options.format);
    if (!format) {
        return Error{QStringLiteral("--format takes csv, influx, postgresql, openmetrics or "
                                    "prometheus, not %1")
                         .arg(values::quoted(options.format))};
    }
    const bool isCsv = options.output.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
    if (isDatabase(options.output) || (*format == log::ExportFormat::Csv && !isCsv)) {
        return Error{QStringLiteral("--export writes a .csv file, not %1")
                         .arg(values::quoted(options.output))};
    }
    const Expected<recorder::TimeRange> range = rangeOf(options);
    return range ? Expected<void>() : Expected<void>(range.error());
}

Expected<qint64> exportAs(const LogOptions& options, const log::ExportProgress& progress,
                          bool* isMediumFailing)
{
    const log::ExportFormat format = exportFormat(options);
    const bool isAll = options.from.isEmpty() && options.to.isEmpty();
    if (format == log::ExportFormat::Csv && isAll)
        return log::exportLog(options.exported, options.output, progress, isMediumFailing);
    if (log::isLogDatabase(options.exported)) {
        return Error{QStringLiteral("%1: only all of a log of version 1.0 can be exported, as CSV; "
                                    "make a database of it with --convert")
                         .arg(options.exported)};
    }
    const Expected<recorder::TimeRange> range = rangeOf(options);
    if (!range)
        return range.error();
    return log::exportRecording(options.exported, options.output, format, *range, progress,
                                isMediumFailing);
}

} // namespace

Expected<void> checkExport(const LogOptions& options)
{
    const bool exports = !options.exported.isEmpty();
    const bool converts = !options.converted.isEmpty();
    const QVector<NamedOption> ofExports{{!options.format.isEmpty(), "format"},
                                         {!options.from.isEmpty(), "from"},
                                         {!options.to.isEmpty(), "to"}};
    const QVector<NamedOption> ofLogs{{options.rotateSize > 0, "rotate-size"},
                                      {options.rotateEvery > 0, "rotate-every"},
                                      {options.keep > 0, "keep"}};
    if (!exports) {
        if (Expected<void> isGood = expectNone(ofExports, "without --export"); !isGood)
            return isGood;
    }
    if (!exports && !converts)
        return {};
    if (exports && converts)
        return Error{QStringLiteral("--export and --convert do not go together")};
    if (converts && !isDatabase(options.output)) {
        return Error{QStringLiteral("--convert makes a database, not %1")
                         .arg(values::quoted(options.output))};
    }
    if (!options.arguments.isEmpty()) {
        return Error{exports
                         ? QStringLiteral("--export takes the whole database; leave out the labels")
                         : QStringLiteral("--convert takes the whole log; leave out the labels")};
    }
    if (converts)
        return expectNone(ofLogs, "with --convert");
    if (Expected<void> isGood = checkOutput(options); !isGood)
        return isGood;
    return expectNone(QVector<NamedOption>{{options.every > 0, "every"}} + ofLogs, "with --export");
}

log::ExportFormat exportFormat(const LogOptions& options)
{
    return formatNamed(options.format).value_or(log::ExportFormat::Csv);
}

void printLogResult(const LogOptions& options, qint64 records, qint64 duration)
{
    const QString seconds = QString::number(double(duration) / 1000, 'f', 1);
    if (!options.json) {
        print(
            QStringLiteral("%1: %2 records in %3 s").arg(options.output).arg(records).arg(seconds));
        return;
    }
    JsonLine line;
    line.add("output", options.output);
    line.add("records", records);
    print(line.add("duration", duration).text());
}

int exportOrConvert(const LogOptions& options)
{
    QElapsedTimer clock;
    clock.start();
    bool isMediumFailing = false;
    const bool exports = !options.exported.isEmpty();
    std::optional<Progress> progress;
    const auto show = [&](qint64 done, qint64 total) {
        if (!progress) {
            progress.emplace(exports ? QStringLiteral("exporting") : QStringLiteral("converting"),
                             QStringLiteral("records"), total, 0);
        }
        progress->advance(done, clock.elapsed());
    };
    const Expected<qint64> records =
        exports ? exportAs(options, show, &isMediumFailing)
                : log::convertLog(options.converted, options.output, options.every, options.plc,
                                  show, &isMediumFailing);
    progress.reset();
    if (!records) {
        complain(records.error().text);
        return isMediumFailing ? kExitRefused : kExitUsage;
    }
    printLogResult(options, *records, clock.elapsed());
    return kExitDone;
}

} // namespace plc::cli
