#include "panel/alarms/alarm_desk.h"

#include <algorithm>
#include <utility>

#include "values/steady_time.h"

namespace plc::panel {
namespace {

/// Of what cannot be written, the oldest go when there are more.
constexpr int kMostUnsaved = 10000;
/// Between attempts to write while that fails, which waits for the disk.
constexpr qint64 kRetryInterval = 1000; // ms
/// Between looks at the history's file.
constexpr qint64 kLookInterval = 1000; // ms

bool isNewer(const AlarmOccurrence& a, const AlarmOccurrence& b)
{
    return a.begin != b.begin ? a.begin > b.begin : a.number > b.number;
}

Error ending()
{
    return Error{QStringLiteral("the program ends")};
}

} // namespace

Expected<std::unique_ptr<AlarmDesk>> AlarmDesk::open(const QVector<AlarmSettings>& alarms,
                                                     std::shared_ptr<AlarmStore> store,
                                                     service::DiskThread::Wake wake, qint64 now)
{
    QVector<KeptOccurrence> kept;
    qint64 firstNumber = 1;
    if (store) {
        const Expected<QVector<KeptOccurrence>> found = store->kept();
        const Expected<qint64> next = store->nextNumber();
        if (!found || !next)
            return found ? next.error() : found.error();
        kept = *found;
        firstNumber = *next;
    }
    std::unique_ptr<AlarmDesk> desk(new AlarmDesk(AlarmEngine(alarms, kept, firstNumber, now),
                                                  std::move(store), std::move(wake)));
    desk->collect();
    desk->save();
    return desk;
}

AlarmDesk::AlarmDesk(AlarmEngine engine, std::shared_ptr<AlarmStore> store,
                     service::DiskThread::Wake wake)
    : m_engine(std::move(engine)), m_store(std::move(store))
{
    if (m_store)
        m_disk = std::make_unique<service::DiskThread>(std::move(wake));
}

QVector<int> AlarmDesk::settle(const Moment& now)
{
    m_now = now.steady;
    m_confirmed = m_clock.update(now.time, now.steady);
    m_engine.advance(now);
    collect();
    look();
    save();
    return std::exchange(m_changed, {});
}

void AlarmDesk::collect()
{
    const AlarmEngine::Changes changes = m_engine.takeChanges();
    for (const AlarmOccurrence& occurrence : changes.occurrences)
        m_unsaved.insert(occurrence.number, occurrence);
    while (m_unsaved.size() > kMostUnsaved)
        m_unsaved.erase(m_unsaved.begin());
    m_changed += changes.alarms;
}

bool AlarmDesk::mustWait() const
{
    return !m_failure.isEmpty() && m_now < m_failedAt + kRetryInterval;
}

/// One transaction at a time: what comes meanwhile goes into the next one.
void AlarmDesk::save()
{
    if (m_isSaving || m_hasEnded)
        return;
    const std::vector<Refused> refused = takeWishes();
    if (!m_store)
        takeSaved({});
    else if (!m_taken.empty() || (!m_unsaved.isEmpty() && !mustWait()))
        write();
    for (const Refused& wish : refused)
        wish.answered({Refusal::NotThat, wish.reason});
}

void AlarmDesk::look()
{
    const bool isDue = !m_lookedAt || m_now - *m_lookedAt >= kLookInterval;
    if (!m_store || m_hasEnded || m_isLooking || !isDue)
        return;
    m_lookedAt = m_now;
    m_isLooking = true;
    m_disk->submit([this, store = m_store] {
        const Expected<void> there = store->look();
        return [this, there, changedFiles = store->changedFiles()] {
            m_isLooking = false;
            m_missing = there ? QString() : there.error().text;
            takeChangedFiles(changedFiles);
            save();
        };
    });
}

/// What was written while nobody had seen yet that the file was moved is not in the new one: what
/// is open is written once more.
void AlarmDesk::takeChangedFiles(int changedFiles)
{
    if (changedFiles == m_changedFiles)
        return;
    m_changedFiles = changedFiles;
    for (int alarm = 0; alarm < int(m_engine.alarms().size()); ++alarm) {
        const std::optional<AlarmOccurrence> open = m_engine.status(alarm).occurrence;
        if (open && !m_unsaved.contains(open->number))
            m_unsaved.insert(open->number, *open);
    }
}

void AlarmDesk::write()
{
    m_isSaving = true;
    m_triedAt = m_now;
    m_busySince = values::steadyTime();
    m_saving = std::exchange(m_unsaved, {});
    QMap<qint64, AlarmOccurrence> all = m_saving;
    for (const Taken& taken : m_taken)
        all.insert(taken.occurrence.number, taken.occurrence);
    m_disk->submit(
        [this, store = m_store, occurrences = all.values().toVector(), confirmed = m_confirmed] {
            const Expected<void> outcome = store->save(occurrences, confirmed);
            return [this, outcome, changedFiles = store->changedFiles()] {
                takeChangedFiles(changedFiles);
                takeSaved(outcome);
            };
        });
}

bool AlarmDesk::isTaken(int alarm) const
{
    return std::any_of(m_taken.begin(), m_taken.end(),
                       [alarm](const Taken& taken) { return taken.alarm == alarm; });
}

/// Of each alarm one; another one is judged when that is in the history or cannot be. Returns those
/// that cannot be written.
std::vector<AlarmDesk::Refused> AlarmDesk::takeWishes()
{
    std::vector<Refused> refused;
    std::deque<Wish> later;
    for (Wish& wish : m_wishes) {
        if (isTaken(wish.alarm)) {
            later.push_back(std::move(wish));
            continue;
        }
        const Expected<AlarmOccurrence> occurrence =
            m_engine.acknowledged(wish.alarm, wish.begin, wish.user, wish.time);
        if (occurrence)
            m_taken.push_back({wish.alarm, *occurrence,
                               m_engine.status(wish.alarm).unacknowledgedBefore,
                               std::move(wish.answered)});
        else
            refused.push_back({std::move(wish.answered), occurrence.error().text});
    }
    m_wishes = std::move(later);
    return refused;
}

void AlarmDesk::takeSaved(const Expected<void>& outcome)
{
    m_isSaving = false;
    m_busySince.reset();
    collect();
    if (!outcome && !m_saving.isEmpty()) {
        m_failure = outcome.error().text;
        m_failedAt = m_triedAt;
    } else if (outcome) {
        m_failure.clear();
        m_saving.clear();
    }
    putBack();
    const std::vector<Taken> answered = std::exchange(m_taken, {});
    for (const Taken& taken : answered) {
        if (outcome)
            confirmWish(taken);
    }
    for (const Taken& taken : answered)
        taken.answered(outcome ? Acknowledgement()
                               : Acknowledgement{Refusal::NotKept, outcome.error().text});
    if (m_store)
        save();
}

/// What was not written, unless there is something newer of it.
void AlarmDesk::putBack()
{
    for (const AlarmOccurrence& occurrence : std::exchange(m_saving, {})) {
        if (!m_unsaved.contains(occurrence.number))
            m_unsaved.insert(occurrence.number, occurrence);
    }
}

void AlarmDesk::confirmWish(const Taken& taken)
{
    // It may have ended while its acknowledgement was written.
    const auto newer = m_unsaved.find(taken.occurrence.number);
    if (newer != m_unsaved.end()) {
        newer->acknowledgedBy = taken.occurrence.acknowledgedBy;
        newer->acknowledgedAt = taken.occurrence.acknowledgedAt;
    }
    m_engine.acknowledge(taken.alarm, taken.occurrence, taken.unacknowledgedBefore);
    collect();
}

void AlarmDesk::acknowledge(const QString& id, qint64 begin, const QString& user, const Moment& now,
                            Answered answered)
{
    const int alarm = m_engine.find(id);
    if (alarm < 0)
        return answered({Refusal::NoSuchAlarm, QStringLiteral("there is no such alarm")});
    if (m_hasEnded)
        return answered({Refusal::NotKept, ending().text});
    if (int(m_wishes.size()) >= kMostWaiting)
        return answered(
            {Refusal::NotKept, QStringLiteral("too many acknowledgements wait for the disk")});
    m_now = now.steady;
    m_wishes.push_back({alarm, begin, user, now.time, std::move(answered)});
    save();
}

void AlarmDesk::between(qint64 from, qint64 to, int most, Found found)
{
    if (m_hasEnded)
        return found(ending());
    if (int(m_asked.size()) >= kMostWaiting)
        return found(Error{QStringLiteral("too many questions wait; ask again later")});
    m_asked.push_back({from, to, most, std::move(found)});
    if (!m_store)
        return answer(QVector<AlarmOccurrence>());
    m_disk->submit([this, store = m_store, from, to, most] {
        const Expected<QVector<AlarmOccurrence>> written = store->between(from, to, most);
        return [this, written] { answer(written); };
    });
}

/// Answers come in the order in which the disk was asked, so that what it had not yet when it was
/// asked is still here.
void AlarmDesk::answer(const Expected<QVector<AlarmOccurrence>>& written)
{
    const Question question = std::move(m_asked.front());
    m_asked.pop_front();
    if (!written)
        return question.found(written);
    QMap<qint64, AlarmOccurrence> newer = m_saving;
    for (const AlarmOccurrence& occurrence : std::as_const(m_unsaved))
        newer.insert(occurrence.number, occurrence);
    QVector<AlarmOccurrence> found;
    for (const AlarmOccurrence& occurrence : *written) {
        if (!newer.contains(occurrence.number))
            found.append(occurrence);
    }
    for (const AlarmOccurrence& occurrence : std::as_const(newer)) {
        if (occurrence.begin <= question.to &&
            occurrence.end.value_or(question.to) >= question.from)
            found.append(occurrence);
    }
    std::sort(found.begin(), found.end(), isNewer);
    if (found.size() > question.most)
        found.resize(question.most);
    question.found(found);
}

void AlarmDesk::deliver()
{
    if (m_disk)
        m_disk->deliver();
}

void AlarmDesk::finish(std::chrono::milliseconds patience)
{
    m_failedAt = std::numeric_limits<qint64>::min();
    save();
    if (m_disk)
        m_disk->finish(patience);
    m_hasEnded = true;
    putBack();
    for (const Taken& taken : std::exchange(m_taken, {}))
        taken.answered({Refusal::NotKept, ending().text});
    for (const Wish& wish : std::exchange(m_wishes, {}))
        wish.answered({Refusal::NotKept, ending().text});
    for (const Question& question : std::exchange(m_asked, {}))
        question.found(ending());
}

} // namespace plc::panel
