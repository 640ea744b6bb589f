#include "panel/alarms/alarm_engine.h"

#include <algorithm>

#include "panel/alarms/alarm_condition.h"

namespace plc::panel {
namespace {

bool isOpen(const std::optional<AlarmOccurrence>& occurrence)
{
    return occurrence && !occurrence->end;
}

} // namespace

QString alarmStateText(AlarmState state)
{
    switch (state) {
        case AlarmState::Normal:
            return QStringLiteral("normal");
        case AlarmState::Active:
            return QStringLiteral("active");
        case AlarmState::Ended:
            return QStringLiteral("ended");
        default:
            return QStringLiteral("unknown");
    }
}

AlarmEngine::AlarmEngine(const QVector<AlarmSettings>& alarms, const QVector<KeptOccurrence>& kept,
                         qint64 firstNumber, qint64 now)
    : m_alarms(alarms), m_watches(std::size_t(alarms.size())), m_nextNumber(firstNumber)
{
    for (int i = 0; i < int(alarms.size()); ++i) {
        Watch& added = watch(i);
        added.id = alarmId(alarms[i]);
        added.unknownSince = now;
        m_byId.insert(added.id, i);
        m_byLabel[{alarms[i].plc, alarms[i].label}].append(i);
        m_byPlc[alarms[i].plc].append(i);
    }
    for (const KeptOccurrence& occurrence : kept)
        restore(occurrence, now);
}

void AlarmEngine::restore(const KeptOccurrence& kept, qint64 now)
{
    AlarmOccurrence occurrence = kept.newest;
    const int alarm = find(occurrence.alarm);
    if (!occurrence.end) {
        occurrence.hasRestart = true;
        if (alarm < 0) {
            occurrence.end = std::max(occurrence.begin, now);
            occurrence.isEndUnseen = true;
            occurrence.isWatchLost = true;
        }
        keep(occurrence);
    }
    if (alarm < 0)
        return;
    watch(alarm).occurrence = occurrence;
    watch(alarm).unacknowledgedBefore = kept.unacknowledgedBefore;
}

AlarmStatus AlarmEngine::status(int alarm) const
{
    const Watch& found = m_watches[std::size_t(alarm)];
    AlarmStatus status;
    status.occurrence = found.occurrence;
    status.unacknowledgedBefore = found.unacknowledgedBefore;
    if (!found.isKnown) {
        status.unknownSince = found.unknownSince;
    } else if (!found.occurrence) {
        status.state = AlarmState::Normal;
    } else {
        status.state = found.occurrence->end ? AlarmState::Ended : AlarmState::Active;
    }
    return status;
}

void AlarmEngine::take(const QString& plc, const QString& label,
                       const AlarmObservation& observation)
{
    const QVector<int> concerned = m_byLabel.value({plc, label});
    for (const int alarm : concerned) {
        const AlarmSettings& settings = m_alarms[alarm];
        if (settings.condition == AlarmSettings::NotGood) {
            const bool isGood = observation.value.has_value();
            takeGood(alarm, {}, !isGood, isGood, observation.moment);
            continue;
        }
        const Verdict verdict =
            observation.value ? judge(settings, *observation.value) : Verdict::NotComparable;
        if (verdict == Verdict::NotComparable)
            loseValue(alarm, observation.moment.time);
        else
            takeGood(alarm, observation.value, verdict == Verdict::Holds, verdict == Verdict::Clear,
                     observation.moment);
    }
}

/// The condition holds, or the value is clear of it, or in between.
void AlarmEngine::takeGood(int alarm, const std::optional<values::Value>& value, bool holds,
                           bool isClear, const Moment& moment)
{
    Watch& found = watch(alarm);
    const bool wasUnknown = !found.isKnown;
    found.isKnown = true;
    if (wasUnknown)
        tell(alarm);
    if (isOpen(found.occurrence)) {
        if (isClear)
            end(alarm, moment.time, wasUnknown);
        return;
    }
    if (!holds) {
        found.pending.reset();
        return;
    }
    if (!found.pending)
        found.pending = Pending{moment.steady, value, wasUnknown};
    beginIfDue(alarm, moment);
}

void AlarmEngine::loseValue(int alarm, qint64 time)
{
    Watch& found = watch(alarm);
    found.pending.reset();
    if (!found.isKnown)
        return;
    found.isKnown = false;
    found.unknownSince = time;
    if (isOpen(found.occurrence) && !found.occurrence->hasGap) {
        found.occurrence->hasGap = true;
        keep(*found.occurrence);
    }
    tell(alarm);
}

void AlarmEngine::confirm(const QString& plc, const Moment& moment)
{
    const QVector<int> concerned = m_byPlc.value(plc);
    for (const int alarm : concerned) {
        if (m_alarms[alarm].condition != AlarmSettings::NotGood)
            beginIfDue(alarm, moment);
    }
}

void AlarmEngine::advance(const Moment& now)
{
    for (int alarm = 0; alarm < int(m_alarms.size()); ++alarm) {
        if (m_alarms[alarm].condition == AlarmSettings::NotGood)
            beginIfDue(alarm, now);
    }
}

/// The condition is known to have held up to `moment`.
void AlarmEngine::beginIfDue(int alarm, const Moment& moment)
{
    Watch& found = watch(alarm);
    const AlarmSettings& settings = m_alarms[alarm];
    if (!found.pending)
        return;
    const qint64 held = moment.steady - found.pending->since;
    if (held < settings.delay)
        return;
    found.unacknowledgedBefore += found.occurrence ? 1 : 0;
    AlarmOccurrence begun;
    begun.number = m_nextNumber++;
    begun.alarm = found.id;
    begun.plc = settings.plc;
    begun.label = settings.label;
    begun.text = settings.text;
    begun.condition = conditionText(settings);
    // Whoever has set the clock meanwhile did so because it was wrong.
    begun.begin = moment.before(held).time;
    begun.value = found.pending->value;
    begun.isBeginUnseen = found.pending->isBeginUnseen;
    found.occurrence = begun;
    found.pending.reset();
    keep(begun);
    tell(alarm);
}

void AlarmEngine::end(int alarm, qint64 time, bool isUnseen)
{
    Watch& found = watch(alarm);
    AlarmOccurrence ended = *found.occurrence;
    ended.end = std::max(ended.begin, time);
    ended.isEndUnseen = isUnseen;
    keep(ended);
    tell(alarm);
    if (ended.acknowledgedAt)
        found.occurrence.reset();
    else
        found.occurrence = ended;
}

Expected<AlarmOccurrence> AlarmEngine::acknowledged(int alarm, qint64 begin, const QString& user,
                                                    qint64 now) const
{
    const std::optional<AlarmOccurrence>& found = m_watches[std::size_t(alarm)].occurrence;
    if (!found)
        return Error{QStringLiteral("there is nothing to be acknowledged: the alarm is not there")};
    if (found->begin != begin)
        return Error{
            QStringLiteral("the alarm has begun anew since; look at it before you acknowledge it")};
    if (found->acknowledgedAt)
        return Error{QStringLiteral("the alarm was acknowledged by %1").arg(found->acknowledgedBy)};
    AlarmOccurrence occurrence = *found;
    occurrence.acknowledgedBy = user;
    occurrence.acknowledgedAt = now;
    return occurrence;
}

void AlarmEngine::acknowledge(int alarm, const AlarmOccurrence& occurrence,
                              int unacknowledgedBefore)
{
    Watch& found = watch(alarm);
    if (!found.occurrence)
        return;
    tell(alarm);
    if (found.occurrence->number != occurrence.number) {
        found.unacknowledgedBefore -= unacknowledgedBefore + 1;
        return;
    }
    found.unacknowledgedBefore = 0;
    found.occurrence->acknowledgedBy = occurrence.acknowledgedBy;
    found.occurrence->acknowledgedAt = occurrence.acknowledgedAt;
    keep(*found.occurrence);
    if (found.occurrence->end)
        found.occurrence.reset();
}

void AlarmEngine::tell(int alarm)
{
    if (watch(alarm).hasChanged)
        return;
    watch(alarm).hasChanged = true;
    m_changed.append(alarm);
}

void AlarmEngine::keep(const AlarmOccurrence& occurrence)
{
    m_unsaved.insert(occurrence.number, occurrence);
}

AlarmEngine::Changes AlarmEngine::takeChanges()
{
    Changes changes;
    changes.alarms.swap(m_changed);
    for (const int alarm : changes.alarms)
        watch(alarm).hasChanged = false;
    changes.occurrences.reserve(int(m_unsaved.size()));
    for (const AlarmOccurrence& occurrence : m_unsaved)
        changes.occurrences.append(occurrence);
    m_unsaved.clear();
    std::sort(
        changes.occurrences.begin(), changes.occurrences.end(),
        [](const AlarmOccurrence& a, const AlarmOccurrence& b) { return a.number < b.number; });
    return changes;
}

} // namespace plc::panel
