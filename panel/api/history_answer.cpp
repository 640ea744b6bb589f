#include "panel/api/history_answer.h"

#include <QtCore/QHash>

#include <optional>

#include "panel/api/json_text.h"
#include "values/csv.h"

namespace plc::panel {
namespace {

using recorder::Sample;
using recorder::Series;
using recorder::SeriesDescription;

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

/// In the order of the labels. Of several series of a label the one that was begun last: another
/// type is another value. What was not recorded has the number -1.
QVector<Series> seriesOf(const QVector<Series>& all, const HistoryQuestion& question)
{
    QHash<QString, Series> byLabel;
    for (const Series& series : all) {
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

/// An answer in the making, one series after the other.
class Answer {
public:
    Answer(recorder::Reader* reader, const HistoryQuestion& question, const HistoryLimits& limits)
        : m_reader(reader), m_question(question), m_limits(limits), m_rowsLeft(limits.rows)
    {
    }

    Response series()
    {
        m_text = "{";
        appendMember("from", m_question.from, &m_text);
        appendMember("to", m_question.to, &m_text);
        m_text.append(",\"series\":[");
        const std::optional<Response> problem = forEachSeries(&Answer::appendSeries);
        return problem ? *problem : Response::json(m_text.append("]}\n"));
    }
    Response csv()
    {
        m_text = "time,plc,label,value,unit,quality\r\n";
        if (const std::optional<Response> problem = forEachSeries(&Answer::appendRows))
            return *problem;
        Response response;
        response.contentType = "text/csv; charset=utf-8; header=present";
        response.body = m_text;
        response.addHeader("Content-Disposition", "attachment; filename=\"history.csv\"");
        return response;
    }

private:
    /// Why there is no answer; nothing: it goes on.
    using Problem = std::optional<Response>;

    Problem forEachSeries(Problem (Answer::*append)(const Series&));
    Problem appendSeries(const Series& series);
    Problem appendAggregatesOf(const Series& series);
    Problem appendRows(const Series& series);
    Problem checkSize() const;
    static Response tooMuch(const QString& what)
    {
        return Response::error(400, QStringLiteral("%1; ask for less time").arg(what));
    }
    /// What else the answer may have.
    qint64 bytesLeft() const { return m_limits.bytes - m_text.size(); }

    recorder::Reader* const m_reader;
    const HistoryQuestion& m_question;
    const HistoryLimits& m_limits;
    qint64 m_rowsLeft;
    QByteArray m_text;
};

Answer::Problem Answer::forEachSeries(Problem (Answer::*append)(const Series&))
{
    const Expected<QVector<Series>> all = m_reader->series();
    if (!all)
        return historyFailure(all.error());
    const QVector<Series> asked = seriesOf(*all, m_question);
    QVector<int> ids;
    for (const Series& series : asked)
        ids.append(series.id);
    Problem problem;
    const Expected<void> isRead = m_reader->inOneState(ids, [&] {
        for (auto one = asked.begin(); one != asked.end() && !problem; ++one) {
            problem = (this->*append)(*one);
            if (!problem)
                problem = checkSize();
        }
    });
    return isRead ? problem : historyFailure(isRead.error());
}

Answer::Problem Answer::checkSize() const
{
    if (bytesLeft() >= 0)
        return {};
    return Response::error(400,
                           QStringLiteral("the answer has more than %1 bytes; ask for fewer labels,"
                                          " fewer points or less time")
                               .arg(m_limits.bytes));
}

Answer::Problem Answer::appendSeries(const Series& series)
{
    appendHead(series.description, &m_text);
    recorder::History history;
    history.before.quality = recorder::Quality::Gap;
    if (series.id < 0) {
        appendChanges(series.description, history, m_question.from, &m_text);
        return {};
    }
    const bool isNumber = series.description.type && recorder::isNumeric(series.description);
    const Expected<recorder::History> changes =
        m_reader->changes(series.id, m_question.from, m_question.to,
                          isNumber ? m_question.points : m_limits.changes, bytesLeft());
    if (!changes)
        return historyFailure(changes.error());
    if (changes->isCut && isNumber)
        return appendAggregatesOf(series);
    if (changes->isCut)
        return tooMuch(QStringLiteral("%1 has more than %2 changes or %3 bytes")
                           .arg(series.description.label)
                           .arg(m_limits.changes)
                           .arg(bytesLeft()));
    appendChanges(series.description, *changes, m_question.from, &m_text);
    return {};
}

Answer::Problem Answer::appendAggregatesOf(const Series& series)
{
    const qint64 step =
        (m_question.to - m_question.from + m_question.points - 1) / m_question.points;
    const auto aggregates = m_reader->aggregates(series.id, m_question.from, m_question.to, step);
    if (!aggregates)
        return historyFailure(aggregates.error());
    appendAggregates(series.description, *aggregates, step, &m_text);
    return {};
}

Answer::Problem Answer::appendRows(const Series& series)
{
    if (series.id < 0)
        return {};
    const Expected<recorder::History> changes =
        m_reader->changes(series.id, m_question.from, m_question.to, m_rowsLeft, bytesLeft());
    if (!changes)
        return historyFailure(changes.error());
    if (changes->isCut)
        return tooMuch(QStringLiteral("more than %1 changes or %2 bytes")
                           .arg(m_limits.rows)
                           .arg(m_limits.bytes));
    appendCsvRow(series.description, changes->before, m_question.from, &m_text);
    for (auto sample = changes->samples.begin();
         sample != changes->samples.end() && bytesLeft() >= 0; ++sample)
        appendCsvRow(series.description, *sample, sample->time, &m_text);
    m_rowsLeft -= changes->samples.size();
    return {};
}

} // namespace

Response seriesAnswer(recorder::Reader* reader, const HistoryQuestion& question,
                      const HistoryLimits& limits)
{
    return Answer(reader, question, limits).series();
}

Response csvAnswer(recorder::Reader* reader, const HistoryQuestion& question,
                   const HistoryLimits& limits)
{
    return Answer(reader, question, limits).csv();
}

Response historyFailure(const Error& error)
{
    return Response::error(503, QStringLiteral("the recording cannot be read: %1").arg(error.text));
}

} // namespace plc::panel
