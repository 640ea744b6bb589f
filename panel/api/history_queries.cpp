#include "panel/api/history_queries.h"

#include <QtCore/QHash>

#include "panel/api/json_text.h"
#include "values/csv.h"

namespace plc::panel {
namespace {

using recorder::Sample;
using recorder::Series;
using recorder::SeriesDescription;

/// Of what no aggregate is made of.
constexpr int kMostChanges = 100000;
const char kRecordedLetters[] = "gsb-";
constexpr const char* kRecordedWords[] = {"good", "stale", "bad", "gap"};

host::DataPoint pointOf(const SeriesDescription& series)
{
    host::DataPoint point;
    point.text = series.label;
    point.type = series.type;
    point.elements = series.elements;
    point.stringLength = series.stringLength;
    point.unit = series.unit;
    return point;
}

void appendSampleValue(const SeriesDescription& series, const Sample& sample, QByteArray* json)
{
    if (sample.bytes.isEmpty())
        json->append("null");
    else if (!series.type)
        appendText(QString::fromUtf8(sample.bytes), json);
    else
        appendValue(pointOf(series), sample.bytes, json);
}

void appendHead(const SeriesDescription& series, QByteArray* json)
{
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("plc", series.source, json);
    appendMember("label", series.label, json);
    appendMember("type", series.type ? QLatin1String(series.type->name) : QLatin1String(), json);
    appendMember("unit", series.unit, json);
}

/// What held at `from` comes first.
void appendChanges(const SeriesDescription& series, const recorder::History& history, qint64 from,
                   QByteArray* json)
{
    QByteArray times;
    QByteArray values;
    QByteArray qualities;
    const auto add = [&](const Sample& sample, qint64 time) {
        if (!times.isEmpty()) {
            times.append(',');
            values.append(',');
            qualities.append(',');
        }
        appendNumber(time, &times);
        appendSampleValue(series, sample, &values);
        qualities.append('"').append(kRecordedLetters[int(sample.quality)]).append('"');
    };
    add(history.before, from);
    for (const Sample& sample : history.samples)
        add(sample, sample.time);
    json->append(",\"kind\":\"changes\",\"times\":[").append(times);
    json->append("],\"values\":[").append(values);
    json->append("],\"qualities\":[").append(qualities).append("]}");
}

/// As a value of the series is written: of a REAL the digits of a REAL.
void appendExtreme(const SeriesDescription& series, double number, QByteArray* json)
{
    const bool isReal = series.type && series.type->format == values::ValueFormat::Real &&
                        series.type->size == int(sizeof(float));
    if (isReal)
        appendFiniteNumber(float(number), json);
    else
        appendFiniteNumber(number, json);
}

void appendAggregates(const SeriesDescription& series,
                      const QVector<recorder::Aggregate>& aggregates, qint64 step, QByteArray* json)
{
    QByteArray columns[5];
    for (const recorder::Aggregate& aggregate : aggregates) {
        for (QByteArray& column : columns) {
            if (!column.isEmpty())
                column.append(',');
        }
        appendNumber(aggregate.begin, &columns[0]);
        if (aggregate.coverage > 0) {
            appendFiniteNumber(aggregate.mean, &columns[1]);
            appendExtreme(series, aggregate.minimum, &columns[2]);
            appendExtreme(series, aggregate.maximum, &columns[3]);
        } else {
            for (int i : {1, 2, 3})
                columns[i].append("null");
        }
        appendFiniteNumber(aggregate.coverage, &columns[4]);
    }
    json->append(",\"kind\":\"aggregates\"");
    appendMember("step", step, json);
    constexpr const char* kNames[] = {"times", "mean", "minimum", "maximum", "coverage"};
    for (int i = 0; i < 5; ++i) {
        appendKey(kNames[i], json);
        json->append('[').append(columns[i]).append(']');
    }
    json->append('}');
}

Response failure(const Error& error)
{
    return Response::error(503, QStringLiteral("the recording cannot be read: %1").arg(error.text));
}

void appendCsvRow(const SeriesDescription& series, const Sample& sample, qint64 time,
                  QByteArray* csv)
{
    const QString value =
        sample.bytes.isEmpty() ? QString() : recorder::seriesText(series, sample.bytes);
    csv->append(values::csv::row({QString::number(time), series.source, series.label, value,
                                  series.unit, QLatin1String(kRecordedWords[int(sample.quality)])})
                    .toUtf8());
    csv->append("\r\n");
}

} // namespace

HistoryQueries::HistoryQueries(const QString& file) : m_file(file)
{
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(-1);
}

HistoryQueries::~HistoryQueries()
{
    m_pool.waitForDone();
}

void HistoryQueries::readSeries(const HistoryQuestion& question, const Responder& respond)
{
    submit(respond, [this, question] { return seriesResponse(question); });
}

void HistoryQueries::readCsv(const HistoryQuestion& question, const Responder& respond)
{
    submit(respond, [this, question] { return csvResponse(question); });
}

void HistoryQueries::submit(const Responder& respond, std::function<Response()> work)
{
    if (m_waiting >= kMostWaiting) {
        respond(Response::error(503, QStringLiteral("too many questions about the past wait")));
        return;
    }
    ++m_waiting;
    m_pool.start([this, respond, work = std::move(work)] {
        respond(work());
        --m_waiting;
    });
}

Expected<recorder::Reader*> HistoryQueries::reader()
{
    if (!m_reader) {
        Expected<std::unique_ptr<recorder::Reader>> opened = recorder::Reader::open(m_file);
        if (!opened)
            return opened.error();
        m_reader = std::move(*opened);
    }
    return m_reader.get();
}

/// In the order of the labels. Of several series of a label the one that was begun last: another
/// type is another value. What was not recorded has the number -1.
Expected<QVector<Series>> HistoryQueries::seriesOf(const HistoryQuestion& question)
{
    const Expected<recorder::Reader*> reader = this->reader();
    if (!reader)
        return reader.error();
    const Expected<QVector<Series>> all = (*reader)->series();
    if (!all)
        return all.error();
    QHash<QString, Series> byLabel;
    for (const Series& series : *all) {
        if (series.description.source == question.plc)
            byLabel.insert(series.description.label, series);
    }
    QVector<Series> found;
    for (const QString& label : question.labels) {
        Series none;
        none.id = -1;
        none.description.source = question.plc;
        none.description.label = label;
        found.append(byLabel.value(label, none));
    }
    return found;
}

Response HistoryQueries::seriesResponse(const HistoryQuestion& question)
{
    const Expected<QVector<Series>> series = seriesOf(question);
    if (!series)
        return failure(series.error());
    QByteArray json = "{";
    appendMember("from", question.from, &json);
    appendMember("to", question.to, &json);
    json.append(",\"series\":[");
    for (const Series& each : *series) {
        appendHead(each.description, &json);
        recorder::History history;
        history.before.quality = recorder::Quality::Gap;
        if (each.id >= 0) {
            const bool isNumber = each.description.type && recorder::isNumeric(each.description);
            const Expected<recorder::History> changes = m_reader->changes(
                each.id, question.from, question.to, isNumber ? question.points : kMostChanges);
            if (!changes)
                return failure(changes.error());
            if (changes->isCut && !isNumber)
                return Response::error(
                    400, QStringLiteral("%1 has more than %2 changes; ask for less time")
                             .arg(each.description.label)
                             .arg(kMostChanges));
            if (changes->isCut) {
                const qint64 step =
                    (question.to - question.from + question.points - 1) / question.points;
                const auto aggregates =
                    m_reader->aggregates(each.id, question.from, question.to, step);
                if (!aggregates)
                    return failure(aggregates.error());
                appendAggregates(each.description, *aggregates, step, &json);
                continue;
            }
            history = *changes;
        }
        appendChanges(each.description, history, question.from, &json);
    }
    return Response::json(json.append("]}\n"));
}

Response HistoryQueries::csvResponse(const HistoryQuestion& question)
{
    const Expected<QVector<Series>> series = seriesOf(question);
    if (!series)
        return failure(series.error());
    QByteArray csv = "time,plc,label,value,unit,quality\r\n";
    qint64 left = kMostRows;
    for (const Series& each : *series) {
        if (each.id < 0)
            continue;
        const Expected<recorder::History> changes =
            m_reader->changes(each.id, question.from, question.to, left);
        if (!changes)
            return failure(changes.error());
        if (changes->isCut)
            return Response::error(
                400, QStringLiteral("more than %1 changes; ask for less time").arg(kMostRows));
        appendCsvRow(each.description, changes->before, question.from, &csv);
        for (const Sample& sample : changes->samples)
            appendCsvRow(each.description, sample, sample.time, &csv);
        left -= changes->samples.size();
    }
    Response response;
    response.contentType = "text/csv; charset=utf-8; header=present";
    response.body = csv;
    response.addHeader("Content-Disposition", "attachment; filename=\"history.csv\"");
    return response;
}

} // namespace plc::panel
