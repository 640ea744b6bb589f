#include "panel/api/history_answer.h"

#include <optional>

#include "panel/api/json_text.h"
#include "values/csv.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

using recorder::Sample;
using recorder::SeriesDescription;

const char kRecordedLetters[] = "gsb-";
/// Of what held in the part of a step of which there is no mean.
const char kKnowledgeLetters[] = "gsb-n";
constexpr const char* kRecordedWords[] = {"good", "stale", "bad", "gap"};
/// Of a value that never was, and of one of which something was by a name that no PLC has.
constexpr char kNotRecorded[] = "not recorded";
constexpr char kNotOfThisPlc[] = "not recorded of this PLC";

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

void appendType(const SeriesDescription& series, QByteArray* json)
{
    appendMember("type", series.type ? QLatin1String(series.type->name) : QLatin1String(), json);
    appendMember("unit", series.unit, json);
}

void appendOthers(const RecordedLabel& recorded, QByteArray* json)
{
    if (recorded.others.isEmpty())
        return;
    json->append(",\"others\":[");
    for (const SeriesDescription& other : recorded.others) {
        json->append(json->endsWith('[') ? "{" : ",{");
        appendType(other, json);
        json->append('}');
    }
    json->append(']');
}

void appendHead(const RecordedLabel& recorded, QByteArray* json)
{
    const SeriesDescription& series = recorded.description;
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("plc", series.source, json);
    appendMember("label", series.label, json);
    appendType(series, json);
    if (recorded.ids.isEmpty())
        appendTruth("recorded", false, json);
    appendOthers(recorded, json);
    if (!recorded.recordedOf.isEmpty()) {
        appendKey("recordedOf", json);
        appendTexts(recorded.recordedOf, json);
    }
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

/// As a value of the series is written: of a REAL the digits of a REAL, of 64 bits a text of
/// digits.
void appendExtreme(const SeriesDescription& series, const recorder::ExactNumber& extreme,
                   QByteArray* json)
{
    if (series.type)
        appendValue(*series.type, recorder::valueOf(*series.type, extreme), json);
    else
        appendFiniteNumber(extreme.nearest, json);
}

void appendAggregates(const SeriesDescription& series,
                      const QVector<recorder::Aggregate>& aggregates, qint64 step, QByteArray* json)
{
    QByteArray columns[6];
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
        columns[5].append('"').append(kKnowledgeLetters[int(aggregate.rest)]).append('"');
    }
    json->append(",\"kind\":\"aggregates\"");
    appendMember("step", step, json);
    constexpr const char* kNames[] = {"times",   "mean",     "minimum",
                                      "maximum", "coverage", "qualities"};
    for (int i = 0; i < 6; ++i) {
        appendKey(kNames[i], json);
        json->append('[').append(columns[i]).append(']');
    }
    json->append('}');
}

QString wordOf(const Sample& sample)
{
    return QLatin1String(kRecordedWords[int(sample.quality)]);
}

void appendCsvRow(const SeriesDescription& series, const Sample& sample, qint64 time,
                  const QString& quality, QByteArray* csv)
{
    const QString value =
        sample.bytes.isEmpty() ? QString() : recorder::seriesText(series, sample.bytes);
    csv->append(values::csv::row({QString::number(time), series.source, series.label, value,
                                  series.unit, quality})
                    .toUtf8());
    csv->append("\r\n");
}

/// What a label was recorded as, too, and what the answer does not have.
QStringList leftOut(const RecordedLabel& recorded)
{
    QStringList notes;
    for (const SeriesDescription& other : recorded.others) {
        const QLatin1String type(other.type ? other.type->name : "text");
        notes.append(QStringLiteral("also recorded as ") + type);
        if (!other.unit.isEmpty())
            notes.last() += QStringLiteral(" [%1]").arg(other.unit);
    }
    for (const QString& plc : recorded.recordedOf)
        notes.append(plc.isEmpty()
                         ? QStringLiteral("also recorded without the name of a PLC")
                         : QStringLiteral("also recorded of %1").arg(values::quoted(plc)));
    return notes;
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

    Problem forEachSeries(Problem (Answer::*append)(const RecordedLabel&));
    Problem appendSeries(const RecordedLabel& recorded);
    Problem appendAggregatesOf(const RecordedLabel& recorded);
    Problem appendRows(const RecordedLabel& recorded);
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

Answer::Problem Answer::forEachSeries(Problem (Answer::*append)(const RecordedLabel&))
{
    const RecordedLabels asked = recordedLabels(m_reader, m_question.asked);
    if (asked.problem)
        return asked.problem;
    QVector<int> ids;
    for (const RecordedLabel& recorded : asked.labels)
        ids += recorded.ids;
    Problem problem;
    const Expected<void> isRead = m_reader->inOneState(ids, [&] {
        for (auto one = asked.labels.begin(); one != asked.labels.end() && !problem; ++one) {
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

Answer::Problem Answer::appendSeries(const RecordedLabel& recorded)
{
    const SeriesDescription& series = recorded.description;
    appendHead(recorded, &m_text);
    recorder::History history;
    history.before.quality = recorder::Quality::Gap;
    if (recorded.ids.isEmpty()) {
        appendChanges(series, history, m_question.from, &m_text);
        return {};
    }
    const bool isNumber = series.type && recorder::isNumeric(series);
    const Expected<recorder::History> changes =
        m_reader->changes(recorded.ids, m_question.from, m_question.to,
                          isNumber ? m_question.points : m_limits.changes, bytesLeft());
    if (!changes)
        return historyFailure(changes.error());
    if (changes->isCut && isNumber)
        return appendAggregatesOf(recorded);
    if (changes->isCut)
        return tooMuch(QStringLiteral("%1 has more than %2 changes or %3 bytes")
                           .arg(series.label)
                           .arg(m_limits.changes)
                           .arg(bytesLeft()));
    appendChanges(series, *changes, m_question.from, &m_text);
    return {};
}

Answer::Problem Answer::appendAggregatesOf(const RecordedLabel& recorded)
{
    const qint64 step =
        (m_question.to - m_question.from + m_question.points - 1) / m_question.points;
    const auto aggregates =
        m_reader->aggregates(recorded.ids, m_question.from, m_question.to, step);
    if (!aggregates)
        return historyFailure(aggregates.error());
    appendAggregates(recorded.description, *aggregates, step, &m_text);
    return {};
}

Answer::Problem Answer::appendRows(const RecordedLabel& recorded)
{
    if (recorded.ids.isEmpty()) {
        appendCsvRow(recorded.description, {}, m_question.from,
                     QLatin1String(recorded.recordedOf.isEmpty() ? kNotRecorded : kNotOfThisPlc),
                     &m_text);
        return {};
    }
    const Expected<recorder::History> changes =
        m_reader->changes(recorded.ids, m_question.from, m_question.to, m_rowsLeft, bytesLeft());
    if (!changes)
        return historyFailure(changes.error());
    if (changes->isCut)
        return tooMuch(QStringLiteral("more than %1 changes or %2 bytes")
                           .arg(m_limits.rows)
                           .arg(m_limits.bytes));
    // Before what held then, so that it counts for whoever goes by times.
    for (const QString& note : leftOut(recorded))
        appendCsvRow(recorded.description, {}, m_question.from, note, &m_text);
    appendCsvRow(recorded.description, changes->before, m_question.from, wordOf(changes->before),
                 &m_text);
    for (auto sample = changes->samples.begin();
         sample != changes->samples.end() && bytesLeft() >= 0; ++sample)
        appendCsvRow(recorded.description, *sample, sample->time, wordOf(*sample), &m_text);
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

} // namespace plc::panel
