#include "panel/alarms/alarm_desk.h"

#include <algorithm>

namespace plc::panel {
namespace {

/// Of what cannot be written, the oldest go when there are more.
constexpr int kMostUnsaved = 10000;
/// Between attempts to write while that fails, which waits for the disk.
constexpr qint64 kRetryInterval = 1000; // ms

bool isNewer(const AlarmOccurrence& a, const AlarmOccurrence& b)
{
    return a.begin != b.begin ? a.begin > b.begin : a.number > b.number;
}

} // namespace

Expected<std::unique_ptr<AlarmDesk>> AlarmDesk::open(const QVector<AlarmSettings>& alarms,
                                                     std::unique_ptr<AlarmHistory> history,
                                                     qint64 now)
{
    QVector<KeptOccurrence> kept;
    qint64 firstNumber = 1;
    if (history) {
        const Expected<QVector<KeptOccurrence>> found = history->kept();
        const Expected<qint64> next = history->nextNumber();
        if (!found || !next)
            return found ? next.error() : found.error();
        kept = *found;
        firstNumber = *next;
    }
    std::unique_ptr<AlarmDesk> desk(
        new AlarmDesk(AlarmEngine(alarms, kept, firstNumber, now), std::move(history)));
    desk->keepChanges(now);
    return desk;
}

QVector<int> AlarmDesk::settle(const Moment& now)
{
    m_confirmed = m_clock.update(now.time, now.steady);
    m_engine.advance(now);
    return keepChanges(now.time);
}

/// Returns the alarms whose status is another one.
QVector<int> AlarmDesk::keepChanges(qint64 now)
{
    const AlarmEngine::Changes changes = m_engine.takeChanges();
    for (const AlarmOccurrence& occurrence : changes.occurrences)
        m_unsaved.insert(occurrence.number, occurrence);
    save(now);
    return changes.alarms;
}

void AlarmDesk::save(qint64 now)
{
    if (m_unsaved.isEmpty())
        return;
    // A clock that was set back makes nothing wait.
    const bool mustWait =
        !m_failure.isEmpty() && now >= m_failedAt && now < m_failedAt + kRetryInterval;
    if (m_history && !mustWait) {
        const Expected<void> isSaved = m_history->save(m_unsaved.values().toVector(), m_confirmed);
        m_failure = isSaved ? QString() : isSaved.error().text;
        m_failedAt = now;
        if (isSaved)
            m_unsaved.clear();
    }
    while (m_unsaved.size() > kMostUnsaved)
        m_unsaved.erase(m_unsaved.begin());
}

AlarmDesk::Acknowledgement AlarmDesk::acknowledge(const QString& id, qint64 begin,
                                                  const QString& user, qint64 now)
{
    const int alarm = m_engine.find(id);
    if (alarm < 0)
        return {Refusal::NoSuchAlarm, QStringLiteral("there is no such alarm")};
    const Expected<AlarmOccurrence> occurrence = m_engine.acknowledged(alarm, begin, user, now);
    if (!occurrence)
        return {Refusal::NotThat, occurrence.error().text};
    if (m_history) {
        if (const Expected<void> isSaved = m_history->save({*occurrence}, m_confirmed); !isSaved)
            return {Refusal::NotKept, isSaved.error().text};
    }
    m_engine.acknowledge(alarm, *occurrence);
    return {};
}

Expected<QVector<AlarmOccurrence>> AlarmDesk::between(qint64 from, qint64 to, int most)
{
    QVector<AlarmOccurrence> found;
    if (m_history) {
        Expected<QVector<AlarmOccurrence>> written = m_history->between(from, to, most);
        if (!written)
            return written;
        for (const AlarmOccurrence& occurrence : *written) {
            if (!m_unsaved.contains(occurrence.number))
                found.append(occurrence);
        }
    }
    for (const AlarmOccurrence& occurrence : m_unsaved) {
        if (occurrence.begin <= to && occurrence.end.value_or(to) >= from)
            found.append(occurrence);
    }
    std::sort(found.begin(), found.end(), isNewer);
    if (found.size() > most)
        found.resize(most);
    return found;
}

} // namespace plc::panel
