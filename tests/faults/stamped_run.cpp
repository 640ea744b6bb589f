#include "faults/stamped_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <utility>

#include "host/points/value_codec.h"
#include "setup/runtime_settings.h"

namespace plc::faults {
namespace {

constexpr int kFewestStampedFaults = 5;
constexpr int kMostStampedFaults = 25;
constexpr qint64 kLongestStampedFaultTime = 8000; // ms
constexpr int kLongestStampedPause = 60;
constexpr int kMostTransfersUnderWay = 20;
constexpr int kStandStillChances = 150;
constexpr int kRefusalChances = 8;
/// More than any run takes.
constexpr qint64 kStepsLimit = 200000;
/// A host that has told so many lies is not listened to any more.
constexpr int kMostLies = 20;
/// Of a PLC on which a long time is to pass in few round trips.
constexpr int kSlowTurnaround = 60; // ms
/// A label that is refused no longer is found out in this time.
constexpr qint64 kRetryPatience = 120000; // ms

HostSettings settingsThatBecomeStale(test::Random* random)
{
    HostSettings settings = randomSettings(random);
    settings.staleAfter = random->between(200, 2000);
    return settings;
}

/// Sizes of login replies that a read of the plant may ask for as well.
int identificationSize(test::Random* random)
{
    const int sizes[] = {200, 206, 607, 907};
    return sizes[random->below(4)];
}

bool meetsAny(const QVector<Range>& ranges, const Array& array)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [&array](const Range& range) { return range.meets(rangeOf(array)); });
}

template <typename Outcome, typename = void>
struct TakenElements {
    static int of(const Outcome&) { return -1; }
};
template <typename Outcome>
struct TakenElements<Outcome, std::void_t<decltype(std::declval<Outcome>().taken)>> {
    static int of(const Outcome& outcome) { return outcome.taken; }
};

ToldWrite::Outcome toldOutcome(host::TransferOutcome::Kind kind)
{
    switch (kind) {
        case host::TransferOutcome::Done:
            return ToldWrite::Done;
        case host::TransferOutcome::Refused:
            return ToldWrite::Refused;
        case host::TransferOutcome::LinkLost:
            return ToldWrite::LinkLost;
        case host::TransferOutcome::NotSent:
            break;
    }
    return ToldWrite::NotSent;
}

} // namespace

StampedRun::StampedRun(const host::DriverFunctions& driver, std::uint32_t seed)
    : m_random(seed),
      m_settings(settingsThatBecomeStale(&m_random)),
      m_project(projectOf(m_settings, kStampedArrays)),
      m_plc(identificationSize(&m_random), m_random.oneIn(3) ? 200 : 30),
      m_turnaround(m_random.between(1, 10)),
      m_wire(&m_plc, &m_random, m_turnaround, m_settings.replyTimeout,
             m_random.between(kFewestStampedFaults, kMostStampedFaults)),
      m_judge(&m_plc.record())
{
    const int cycleTime = m_random.oneIn(2) ? 0 : m_random.between(1, 50);
    m_runtime = std::make_unique<host::Runtime>(
        *host::DriverClaim::take(driver), setup::runtimeSettings(m_project.settings, cycleTime),
        m_project, this);
    m_rows.resize(int(kStampedArrays.size()));
}

StampedRun::~StampedRun()
{
    // It settles what is open.
    m_runtime.reset();
}

void StampedRun::run()
{
    QVector<host::DataPoint> points;
    for (const Array& array : kStampedArrays)
        points.append(point(wholeArray(array)));
    m_runtime->readCyclically(points, m_now);
    m_runtime->session().start(m_now);
    carryOut();
    exchangeUnderFaults();
    comeBack();
    readAroundRefusals();
    writeUndisturbed();
    end();
}

void StampedRun::exchangeUnderFaults()
{
    const qint64 end = m_now + kLongestStampedFaultTime;
    m_nextTransfer = m_now;
    while (m_wire.hasFaultsLeft() && m_now < end) {
        step(qMin(end, m_nextTransfer));
        if (m_wire.strikes(kStandStillChances))
            standStill();
        if (m_now < m_nextTransfer)
            continue;
        m_nextTransfer += m_random.between(1, kLongestStampedPause);
        startTransfer();
    }
    m_wire.finishFaults();
}

/// The process is stopped, or the system has no time for it: what comes meanwhile waits.
void StampedRun::standStill()
{
    const int pause = m_random.between(1, 3 * m_settings.replyTimeout);
    m_wire.note(QStringLiteral("the host stands still for %1 ms").arg(pause), m_now);
    m_now += pause;
}

/// The faults have ended: every value comes back that the PLC gives, and none of those that it
/// refuses is shown as if it had been read.
void StampedRun::comeBack()
{
    const qint64 healed = m_now;
    until("all values that the PLC gives are read again", 20000, [this, healed] {
        return std::all_of(kStampedArrays.begin(), kStampedArrays.end(), [&](const Array& array) {
            return meetsAny(m_refusedReads, array) || isFresh(array, healed);
        });
    });
}

/// Labels that the PLC refuses cost the others no pause and few round trips.
void StampedRun::readAroundRefusals()
{
    m_turnaround = 20;
    m_wire.setTurnaround(m_turnaround);
    const qint64 apart = m_now;
    const int limit = 2 * int(kStampedArrays.size()) * m_turnaround + 100;
    until("refused labels are set apart", 10000, [this, apart] { return m_now > apart + 2000; });
    qint64 oldest = 0;
    const qint64 start = m_now;
    until("the others are read", 5000, [&] {
        for (int row = 0; row < int(kStampedArrays.size()); ++row) {
            if (!meetsAny(m_refusedReads, kStampedArrays[row]) && m_runtime->values().wasRead(row))
                oldest = qMax(oldest, m_runtime->values().age(row, m_now));
        }
        return m_now > start + 1000;
    });
    EXPECT_LE(oldest, limit) << "a value that the PLC gives was not read for so many ms";
    m_plc.refuseReads({});
    m_plc.refuseWrites({});
    m_refusedReads.clear();
    m_wire.note(QStringLiteral("nothing is refused any more"), m_now);
    m_wire.setTurnaround(kSlowTurnaround);
    const qint64 healed = m_now;
    until("labels that were refused are read again", kRetryPatience, [this, healed] {
        return std::all_of(kStampedArrays.begin(), kStampedArrays.end(),
                           [&](const Array& array) { return isFresh(array, healed); });
    });
}

void StampedRun::writeUndisturbed()
{
    if (!until("the link is up", 5000,
               [this] { return m_runtime->session().linkState() == host::LinkState::Up; }))
        return;
    const std::size_t first = m_attempts.size();
    for (const PlannedWrite& plan : writesOfEachKind(m_lastNumber + 1))
        write(plan);
    m_lastNumber += int(m_attempts.size() - first);
    until("undisturbed writes are settled", 20000, [this] { return isSettled(); });
    for (std::size_t i = first; i < m_attempts.size(); ++i) {
        EXPECT_EQ(ToldWrite::Done, m_attempts[i].told.outcome)
            << m_attempts[i].plan.target.toStdString() << " fails although nothing is wrong";
    }
}

void StampedRun::end()
{
    for (int i = 0; i < 3; ++i)
        write(anyWrite(&m_random, ++m_lastNumber));
    readOnce();
    m_runtime->session().stop();
    carryOut();
    EXPECT_TRUE(isSettled()) << "a write or read has no outcome when the host stops";
    judgeValues();
    judgeWrites();
}

void StampedRun::step(qint64 limit)
{
    const qint64 events[] = {m_runtime->session().nextDeadline(), m_wire.nextEvent(), m_connectsAt};
    qint64 next = limit;
    for (qint64 event : events)
        next = event < 0 ? next : qMin(next, event);
    m_now = qMax(m_now, next);
    // Which of two things that are due a host looks at first is left to its event loop.
    if (m_random.oneIn(2)) {
        tick();
        receive();
    } else {
        receive();
        tick();
    }
}

void StampedRun::tick()
{
    m_runtime->session().tick(m_now);
    carryOut();
    judgeValues();
}

void StampedRun::receive()
{
    if (m_connectsAt >= 0 && m_connectsAt <= m_now) {
        m_connectsAt = -1;
        m_isMisled = false;
        m_isLoginMisled = false;
        m_wire.open(m_now);
        m_runtime->session().connected(m_now);
        carryOut();
    }
    const QByteArray bytes = m_wire.take(m_now);
    if (!bytes.isEmpty()) {
        const Arrival arrival = m_wire.arrival();
        if (arrival == Arrival::SecondCopy || m_isLoginMisled) {
            m_isMisled = true;
            for (Attempt& attempt : m_attempts)
                attempt.isUndecidable = attempt.isUndecidable || attempt.outcomes == 0;
        }
        m_isLoginMisled = m_isLoginMisled || arrival == Arrival::LoginCopy;
        m_runtime->session().received(bytes, m_now);
        carryOut();
    }
    if (m_wire.isClosedByPlc(m_now)) {
        m_wire.close();
        m_runtime->session().disconnected(QStringLiteral("closed by the PLC"), m_now);
        carryOut();
    }
    judgeValues();
}

void StampedRun::carryOut()
{
    for (;;) {
        const QVector<host::SessionAction> actions = m_runtime->session().takeActions();
        if (actions.isEmpty())
            return;
        for (const host::SessionAction& action : actions)
            act(action);
    }
}

void StampedRun::act(const host::SessionAction& action)
{
    switch (action.kind) {
        case host::SessionAction::Connect:
            m_connectsAt = m_now + 1;
            if (m_wire.strikes(8)) {
                m_wire.note(QStringLiteral("no connection"), m_now);
                m_connectsAt = -1;
            }
            break;
        case host::SessionAction::Send:
            m_sentAt = m_now;
            m_wire.send(action.bytes, m_now);
            break;
        case host::SessionAction::Close:
            m_connectsAt = -1;
            m_wire.close();
            break;
    }
}

bool StampedRun::until(const char* what, qint64 limit, const std::function<bool()>& condition)
{
    const qint64 end = m_now + limit;
    for (qint64 steps = 0; !condition(); ++steps) {
        if (m_now >= end || steps > kStepsLimit) {
            ADD_FAILURE() << "waited in vain for " << limit << " ms: " << what;
            return false;
        }
        step(end);
    }
    return true;
}

void StampedRun::startTransfer()
{
    if (m_random.oneIn(kRefusalChances))
        refuseSomething();
    const auto isOpen = [](const auto& transfer) { return transfer.outcomes == 0; };
    if (std::count_if(m_attempts.begin(), m_attempts.end(), isOpen) > kMostTransfersUnderWay)
        return;
    if (m_random.oneIn(5))
        readOnce();
    else
        write(anyWrite(&m_random, ++m_lastNumber));
    carryOut();
}

/// Single addresses are refused to whoever reads them, others to whoever writes them: the end of
/// what takes several requests, or one of many.
void StampedRun::refuseSomething()
{
    m_refusedReads.clear();
    for (int count = m_random.below(4); count > 0; --count) {
        const Array& array = kStampedArrays.at(m_random.below(int(kStampedArrays.size())));
        const quint32 at = quint32(m_random.below(memorySize(array)));
        m_refusedReads.append({array.area, quint32(array.address) + at, 1});
    }
    QVector<Range> writes;
    if (!m_random.oneIn(3))
        writes.append({3, quint32(m_random.below(1200)), 1});
    if (!m_random.oneIn(3))
        writes.append({1, quint32(2700 + m_random.below(140)), quint32(m_random.between(1, 140))});
    m_plc.refuseReads(m_refusedReads);
    m_plc.refuseWrites(writes);
    QString text;
    for (const Range& range : m_refusedReads)
        text += QStringLiteral(" read %1:%2").arg(range.area).arg(range.address);
    for (const Range& range : writes)
        text += QStringLiteral(" write %1:%2").arg(range.area).arg(range.address);
    m_wire.note(QStringLiteral("refused are now:") + text, m_now);
}

host::DataPoint StampedRun::point(const QString& text)
{
    const Expected<host::DataPoint> found = m_runtime->points().find(text);
    EXPECT_TRUE(found) << found.error().text.toStdString();
    return found.valueOr(host::DataPoint());
}

void StampedRun::write(const PlannedWrite& plan)
{
    m_attempts.push_back({plan, {ToldWrite::NotSent, -1, m_now}, 0, false});
    Attempt* const attempt = &m_attempts.back();
    m_runtime->write(
        point(plan.target), plan.values, m_now, [attempt](const host::TransferOutcome& outcome) {
            ++attempt->outcomes;
            attempt->told.outcome = toldOutcome(outcome.kind);
            attempt->told.elementsTaken = TakenElements<host::TransferOutcome>::of(outcome);
        });
    carryOut();
}

void StampedRun::readOnce()
{
    const Array& array = kStampedArrays.at(m_random.below(int(kStampedArrays.size())));
    m_oneShots.push_back({array, m_now, 0});
    OneShot* const read = &m_oneShots.back();
    const host::DataPoint place = point(wholeArray(array));
    m_runtime->readOnce(
        place, m_now,
        [this, read, place](const host::TransferOutcome& outcome, const QByteArray& bytes) {
            ++read->outcomes;
            if (!outcome.isDone())
                return;
            ++m_judgedValues;
            const QString lie =
                judge({read->array, host::decodeValues(place, bytes), read->begunAt});
            if (!lie.isEmpty())
                report(QStringLiteral("read once, ") + lie.section(QLatin1Char(':'), 0, 0),
                       QStringLiteral("read once, ") + lie);
        });
    carryOut();
}

void StampedRun::judgeValues()
{
    const host::ValueTable& values = m_runtime->values();
    for (int row = 0; row < values.size(); ++row)
        judgeRow(row);
}

void StampedRun::judgeRow(int index)
{
    const host::ValueTable& values = m_runtime->values();
    if (!values.wasRead(index))
        return;
    Row& row = m_rows[index];
    const qint64 age = values.age(index, m_now);
    if (age > m_settings.staleAfter && !values.isStale(index, m_now))
        report(
            QStringLiteral("fresh"),
            QStringLiteral("%1 is %2 ms old and not stale").arg(values.point(index).text).arg(age));
    if (row.readAt == m_now - age && row.bytes == values.bytes(index))
        return;
    row = {values.bytes(index), m_now - age};
    ++m_judgedValues;
    const QString lie = judge(
        {kStampedArrays[index], host::decodeValues(values.point(index), row.bytes), row.readAt});
    if (!lie.isEmpty())
        report(lie.section(QLatin1Char(':'), 0, 0), lie);
}

QString StampedRun::judge(const ToldValue& told) const
{
    if (m_isLoginMisled || m_lies > kMostLies)
        return QString();
    return m_isMisled ? m_judge.judgeMisplacedValue(told, m_wire.connection())
                      : m_judge.judgeValue(told, m_wire.connection());
}

void StampedRun::judgeWrites()
{
    for (const Attempt& attempt : m_attempts) {
        EXPECT_EQ(1, attempt.outcomes) << attempt.plan.target.toStdString();
        const bool isUndecidable =
            attempt.isUndecidable && attempt.told.outcome != ToldWrite::NotSent;
        const QString lie = m_judge.judgeWrite(attempt.plan, attempt.told);
        if (!isUndecidable && !lie.isEmpty())
            report(QStringLiteral("outcome %1").arg(attempt.told.outcome), lie);
    }
}

void StampedRun::report(const QString& kind, const QString& lie)
{
    ++m_lies;
    if (m_kindsOfLies.contains(kind))
        return;
    m_kindsOfLies.insert(kind);
    m_wire.note(QStringLiteral("LIE: ") + lie, m_now);
    ADD_FAILURE() << "at " << m_now << " ms: " << lie.toStdString();
}

bool StampedRun::isSettled() const
{
    const auto hasOutcome = [](const auto& transfer) { return transfer.outcomes > 0; };
    return std::all_of(m_attempts.begin(), m_attempts.end(), hasOutcome) &&
           std::all_of(m_oneShots.begin(), m_oneShots.end(), hasOutcome);
}

bool StampedRun::isFresh(const Array& array, qint64 since) const
{
    const host::ValueTable& values = m_runtime->values();
    for (int row = 0; row < values.size(); ++row) {
        if (QLatin1String(kStampedArrays[row].name) == QLatin1String(array.name))
            return values.wasRead(row) && m_now - values.age(row, m_now) >= since;
    }
    return false;
}

void StampedRun::requestAnswered(const host::SentRequest&, const host::Answer& answer,
                                 const QByteArray&)
{
    ++m_replies;
    if (answer.kind == host::Answer::Accepted && m_now > m_sentAt + m_settings.replyTimeout)
        report(QStringLiteral("late"),
               QStringLiteral("late: a reply was taken %1 ms after its request")
                   .arg(m_now - m_sentAt));
}

} // namespace plc::faults
