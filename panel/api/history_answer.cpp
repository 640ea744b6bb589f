#include "panel/api/history_answer.h"

#include <QtCore/QHash>

#include <algorithm>
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

/// What a label was recorded as.
struct Recorded {
    SeriesDescription description;
    QVector<int> ids; ///< Of the series that differ in nothing but the deadband; none: none.
    /// What it was recorded as, too: with another type or unit its numbers are other numbers.
    QVector<SeriesDescription> others;
};

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

void appendHead(const Recorded& recorded, QByteArray* json)
{
    const SeriesDescription& series = recorded.description;
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("plc", series.source, json);
    appendMember("label", series.label, json);
    appendType(series, json);
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

bool isAlike(SeriesDescription a, const SeriesDescription& b)
{
    a.deadband = b.deadband;
    return a == b;
}

/// In the order in which they were begun.
QVector<Recorded> groupsOf(const QVector<Series>& all, const QString& plc, const QString& label)
{
    QVector<Recorded> groups;
    for (const Series& series : all) {
        if (series.description.source != plc || series.description.label != label)
            continue;
        const auto group =
            std::find_if(groups.begin(), groups.end(), [&series](const Recorded& one) {
                return isAlike(one.description, series.description);
            });
        if (group != groups.end())
            group->ids.append(series.id);
        else
            groups.append({series.description, {series.id}, {}});
    }
    return groups;
}

/// The group that was recorded last, by the last runs of all series.
Recorded latestOf(const QVector<Recorded>& groups, const QMap<int, qint64>& lastRuns)
{
    const auto lastRun = [&lastRuns](const Recorded& group) {
        qint64 run = -1;
        for (const int id : group.ids)
            run = std::max(run, lastRuns.value(id, -1));
        return run;
    };
    int latest = 0;
    for (int i = 1; i < int(groups.size()); ++i) {
        if (lastRun(groups[i]) >= lastRun(groups[latest]))
            latest = i;
    }
    Recorded found = groups[latest];
    for (int i = 0; i < int(groups.size()); ++i) {
        if (i != latest)
            found.others.append(groups[i].description);
    }
    return found;
}

/// In the order of the labels.
Expected<QVector<Recorded>> recordedOf(recorder::Reader* reader, const HistoryQuestion& question)
{
    const Expected<QVector<Series>> all = reader->series();
    if (!all)
        return all.error();
    QHash<QString, QVector<Series>> byLabel;
    for (const Series& series : *all)
        byLabel[series.description.label].append(series);
    std::optional<QMap<int, qint64>> lastRuns;
    QVector<Recorded> found;
    for (const QString& label : question.labels) {
        const QVector<Recorded> groups = groupsOf(byLabel.value(label), question.plc, label);
        if (groups.size() > 1 && !lastRuns) {
            const Expected<QMap<int, qint64>> runs = reader->lastRuns();
            if (!runs)
                return runs.error();
            lastRuns = *runs;
        }
        Recorded none;
        none.description.source = question.plc;
        none.description.label = label;
        found.append(groups.isEmpty() ? none
                                      : latestOf(groups, lastRuns.value_or(QMap<int, qint64>())));
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

    Problem forEachSeries(Problem (Answer::*append)(const Recorded&));
    Problem appendSeries(const Recorded& recorded);
    Problem appendAggregatesOf(const Recorded& recorded);
    Problem appendRows(const Recorded& recorded);
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

Answer::Problem Answer::forEachSeries(Problem (Answer::*append)(const Recorded&))
{
    const Expected<QVector<Recorded>> asked = recordedOf(m_reader, m_question);
    if (!asked)
        return historyFailure(asked.error());
    QVector<int> ids;
    for (const Recorded& recorded : *asked)
        ids += recorded.ids;
    Problem problem;
    const Expected<void> isRead = m_reader->inOneState(ids, [&] {
        for (auto one = asked->begin(); one != asked->end() && !problem; ++one) {
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

Answer::Problem Answer::appendSeries(const Recorded& recorded)
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

Answer::Problem Answer::appendAggregatesOf(const Recorded& recorded)
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

Answer::Problem Answer::appendRows(const Recorded& recorded)
{
    if (recorded.ids.isEmpty())
        return {};
    const Expected<recorder::History> changes =
        m_reader->changes(recorded.ids, m_question.from, m_question.to, m_rowsLeft, bytesLeft());
    if (!changes)
        return historyFailure(changes.error());
    if (changes->isCut)
        return tooMuch(QStringLiteral("more than %1 changes or %2 bytes")
                           .arg(m_limits.rows)
                           .arg(m_limits.bytes));
    appendCsvRow(recorded.description, changes->before, m_question.from, &m_text);
    for (auto sample = changes->samples.begin();
         sample != changes->samples.end() && bytesLeft() >= 0; ++sample)
        appendCsvRow(recorded.description, *sample, sample->time, &m_text);
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
