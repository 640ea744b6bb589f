#include "panel/api/recorded_labels.h"

#include <QtCore/QHash>

#include <algorithm>

#include "panel/api/json_text.h"
#include "panel/plants/label_spelling.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

using recorder::Series;
using recorder::SeriesDescription;

/// Labels that lead to nothing, of which so many are told at once: each is compared with all names
/// that there are.
constexpr int kMostTold = 20;

bool isAlike(SeriesDescription a, const SeriesDescription& b)
{
    a.deadband = b.deadband;
    return a == b;
}

/// What the series of one label are, in the order in which they were begun.
QVector<RecordedLabel> groupsOf(const QVector<Series>& all)
{
    QVector<RecordedLabel> groups;
    for (const Series& series : all) {
        const auto group =
            std::find_if(groups.begin(), groups.end(), [&series](const RecordedLabel& one) {
                return isAlike(one.description, series.description);
            });
        if (group != groups.end())
            group->ids.append(series.id);
        else
            groups.append({series.description, {series.id}, {}, {}});
    }
    return groups;
}

/// The group that was recorded last, by the last runs of all series.
RecordedLabel latestOf(const QVector<RecordedLabel>& groups, const QMap<int, qint64>& lastRuns)
{
    const auto lastRun = [&lastRuns](const RecordedLabel& group) {
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
    RecordedLabel found = groups[latest];
    for (int i = 0; i < int(groups.size()); ++i) {
        if (i != latest)
            found.others.append(groups[i].description);
    }
    return found;
}

/// Looks up one label after the other.
class LabelSearch {
public:
    LabelSearch(recorder::Reader* reader, const AskedLabels& asked)
        : m_reader(reader), m_asked(asked)
    {
        if (asked.program)
            m_program.emplace(*asked.program);
    }

    RecordedLabels run();

private:
    Expected<void> load();
    QString nameOf(const QString& label);
    Expected<RecordedLabel> find(const QString& label);
    Expected<RecordedLabel> recordedAs(const QString& label, const QVector<Series>& series);
    void miss(const QString& label, const QString& reason);
    Response missingPlc() const;
    Response missingLabels() const;

    recorder::Reader* const m_reader;
    const AskedLabels& m_asked;
    std::optional<project::LabelFinder> m_program;
    QHash<QString, QVector<Series>> m_byLabel; ///< Of the PLC.
    QStringList m_recordedPlcs;
    QHash<QString, QStringList> m_recordedOf; ///< By labels, the names of PLCs that there are not.
    std::optional<QMap<int, qint64>> m_lastRuns;
    QStringList m_missing;
    QString m_reason; ///< Why the first of them leads to nothing.
};

Expected<void> LabelSearch::load()
{
    const Expected<QVector<Series>> all = m_reader->series();
    if (!all)
        return all.error();
    for (const Series& series : *all) {
        const QString& plc = series.description.source;
        if (plc == m_asked.plc) {
            m_byLabel[series.description.label].append(series);
            continue;
        }
        if (!m_recordedPlcs.contains(plc))
            m_recordedPlcs.append(plc);
        // What was recorded of a PLC that there is, is of that one.
        if (m_asked.plcs.contains(plc))
            continue;
        QStringList& names = m_recordedOf[series.description.label];
        if (!names.contains(plc))
            names.append(plc);
    }
    return {};
}

RecordedLabels LabelSearch::run()
{
    if (const Expected<void> isLoaded = load(); !isLoaded)
        return {{}, historyFailure(isLoaded.error())};
    if (!m_program && m_byLabel.isEmpty())
        return {{}, missingPlc()};
    RecordedLabels found;
    for (const QString& label : m_asked.labels) {
        const Expected<RecordedLabel> one = find(label);
        if (!one)
            return {{}, historyFailure(one.error())};
        found.labels.append(*one);
        if (m_missing.size() == kMostTold)
            break;
    }
    if (!m_missing.isEmpty())
        found.problem = missingLabels();
    return found;
}

/// By which the label was recorded, or would have been: its own spelling, or that of the program.
QString LabelSearch::nameOf(const QString& label)
{
    if (m_byLabel.contains(label))
        return label;
    QString reason;
    if (m_program) {
        const Expected<QString> text = textInProgram(*m_program, label);
        if (text)
            return *text;
        reason = text.error().text;
    } else {
        reason = label + values::nearestNameHint(label, m_byLabel.keys());
    }
    if (m_recordedOf.value(label).isEmpty())
        miss(label, reason);
    return label;
}

Expected<RecordedLabel> LabelSearch::find(const QString& label)
{
    RecordedLabel found;
    found.description.source = m_asked.plc;
    found.description.label = label;
    const QString name = nameOf(label);
    if (const auto series = m_byLabel.constFind(name); series != m_byLabel.constEnd()) {
        const Expected<RecordedLabel> recorded = recordedAs(label, *series);
        if (!recorded)
            return recorded.error();
        found = *recorded;
    }
    found.recordedOf = m_recordedOf.value(name);
    return found;
}

Expected<RecordedLabel> LabelSearch::recordedAs(const QString& label, const QVector<Series>& series)
{
    const QVector<RecordedLabel> groups = groupsOf(series);
    if (groups.size() > 1 && !m_lastRuns) {
        const Expected<QMap<int, qint64>> runs = m_reader->lastRuns();
        if (!runs)
            return runs.error();
        m_lastRuns = *runs;
    }
    RecordedLabel found = latestOf(groups, m_lastRuns.value_or(QMap<int, qint64>()));
    found.description.label = label;
    return found;
}

void LabelSearch::miss(const QString& label, const QString& reason)
{
    if (m_missing.isEmpty())
        m_reason = reason;
    m_missing.append(label);
}

Response LabelSearch::missingPlc() const
{
    return Response::error(
        404, QStringLiteral("there is no PLC %1%2, and none of this name was recorded")
                 .arg(values::quoted(m_asked.plc),
                      values::nearestNameHint(m_asked.plc, m_asked.plcs + m_recordedPlcs)));
}

Response LabelSearch::missingLabels() const
{
    QString sentence =
        m_program ? QStringLiteral("%1, and nothing was recorded by this name").arg(m_reason)
                  : QStringLiteral("nothing was recorded by the name of %1, and there is no PLC %2")
                        .arg(m_reason, values::quoted(m_asked.plc));
    if (m_missing.size() > 1)
        sentence += QStringLiteral("; nor is there %1")
                        .arg(m_missing.size() == 2 ? m_missing[1]
                                                   : QStringLiteral("what else is in \"labels\""));
    QByteArray json = "{\"error\":";
    appendText(sentence, &json);
    appendKey("labels", &json);
    appendTexts(m_missing, &json);
    return Response::json(json.append("}\n"), 404);
}

} // namespace

RecordedLabels recordedLabels(recorder::Reader* reader, const AskedLabels& asked)
{
    return LabelSearch(reader, asked).run();
}

Response historyFailure(const Error& error)
{
    return Response::error(503, QStringLiteral("the recording cannot be read: %1").arg(error.text));
}

} // namespace plc::panel
