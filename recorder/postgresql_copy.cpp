#include <QtCore/QDateTime>
#include <QtCore/QHash>

#include "recorder/elements.h"
#include "recorder/handover.h"
#include "values/utc_time.h"

namespace plc::recorder {
namespace {

constexpr char kBegin[] =
    "BEGIN;\n"
    "SET LOCAL client_encoding = 'UTF8';\n"
    "CREATE TABLE IF NOT EXISTS plc_value(\n"
    "    time timestamptz NOT NULL,\n"
    "    source text NOT NULL,\n"
    "    label text NOT NULL,\n"
    "    element integer NOT NULL,\n"
    "    type text NOT NULL,\n"
    "    unit text NOT NULL,\n"
    "    quality text NOT NULL,\n"
    "    integer numeric(20, 0),\n"
    "    real double precision,\n"
    "    boolean boolean,\n"
    "    text text);\n"
    "COPY plc_value FROM stdin;\n";
constexpr char kEnd[] = "\\.\nCOMMIT;\n";

QByteArray column(const QString& text)
{
    QByteArray escaped;
    for (char character : text.toUtf8()) {
        switch (character) {
            case '\\':
                escaped += "\\\\";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            case '\t':
                escaped += "\\t";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

QByteArray realColumn(double number)
{
    const QByteArray text = numberText(number);
    return text == "nan" ? "NaN" : text == "inf" ? "Infinity" : text == "-inf" ? "-Infinity" : text;
}

/// The columns integer, real, boolean and text.
QByteArray valueColumns(const values::Value& value)
{
    if (const bool* const flag = std::get_if<bool>(&value))
        return *flag ? "\\N\t\\N\tt\t\\N" : "\\N\t\\N\tf\t\\N";
    if (const qint64* const number = std::get_if<qint64>(&value))
        return QByteArray::number(*number) + "\t\\N\t\\N\t\\N";
    if (const quint64* const number = std::get_if<quint64>(&value))
        return QByteArray::number(*number) + "\t\\N\t\\N\t\\N";
    if (const QString* const text = std::get_if<QString>(&value))
        return "\\N\t\\N\t\\N\t" + column(*text);
    return "\\N\t" + realColumn(doubleOf(value).value_or(0)) + "\t\\N\t\\N";
}

QByteArray rowsOf(const SeriesDescription& series, const Sample& sample, qint64* count)
{
    const QVector<values::Value> elements = knownElements(series, sample);
    const QByteArray begin = values::utcTimeText(sample.time).toLatin1() + '\t' +
                             column(series.source) + '\t' + column(series.label) + '\t';
    const QByteArray end = '\t' + QByteArray(series.type ? series.type->name : "") + '\t' +
                           column(series.unit) + '\t' + qualityWord(sample.quality) + '\t';
    QByteArray rows;
    for (int i = 0; i < std::max(1, series.elements); ++i) {
        rows += begin + QByteArray::number(i) + end;
        rows += i < elements.size() ? valueColumns(elements[i]) : "\\N\t\\N\t\\N\t\\N";
        rows += '\n';
        ++*count;
    }
    return rows;
}

} // namespace

Expected<Handover> writePostgresqlCopy(Reader* reader, const TimeRange& range, const TakeText& take)
{
    const Expected<QVector<Series>> series = reader->series();
    if (!series)
        return series.error();
    const QHash<int, SeriesDescription> byId = seriesById(*series);
    Handover handover;
    take(kBegin);
    const Expected<void> done = reader->forEachChange(range, [&](const Change& change) {
        return take(rowsOf(byId[change.series], change.sample, &handover.rows));
    });
    take(kEnd);
    if (!done)
        return done.error();
    return handover;
}

} // namespace plc::recorder
