#include "faults/fault_run.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QTimer>

#include "host/points/value_codec.h"
#include "setup/runtime_settings.h"

namespace plc::faults {
namespace {

constexpr int kFewestFaults = 2;
constexpr int kMostFaults = 8;
constexpr qint64 kLongestFaultTime = 1500; // ms; the plan may not be used up by then
/// For what has no limit of its own, on a machine that is busy with other tests.
constexpr qint64 kPatience = 12000; // ms
/// What timers and the network of this machine may add to a time that the settings limit.
constexpr qint64 kTolerance = 40;     // ms
constexpr int kTurnsAtLeastEvery = 2; // ms
constexpr int kPeekEvery = 100;       // ms, at most
/// While the PLC is asked for its memory the host stands still: it has so many times as long for
/// itself behind that.
constexpr int kShareOfHost = 10;
constexpr int kLongestPauseBetweenTransfers = 25; // ms
/// Undisturbed writes may still be hit by a time-out when the machine stands still for a moment.
constexpr int kRoundsOfUndisturbedWrites = 20;

} // namespace

FaultRun::FaultRun(const host::DriverFunctions& driver, std::uint32_t seed, int slowness)
    : m_random(seed),
      m_settings(randomSettings(&m_random)),
      m_plan(&m_random, m_random.between(kFewestFaults, kMostFaults))
{
    for (int* time : {&m_settings.connectTimeout, &m_settings.replyTimeout,
                      &m_settings.reconnectDelay, &m_settings.reconnectDelayLimit})
        *time *= slowness;
    m_project = projectOf(m_settings, kArrays);
    const QString projectFile = m_folder.filePath(QStringLiteral("project.json"));
    QFile file(projectFile);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(projectJson(m_settings, kArrays));
    file.close();
    m_plc = std::make_unique<SimulatedPlc>(projectFile);
    FaultTimes times;
    times.inTime = m_settings.replyTimeout / 2;
    times.tooLate = 3 * m_settings.replyTimeout / 2;
    times.deafness = m_settings.reconnectDelayLimit;
    m_proxy = std::make_unique<FaultyProxy>(m_plc->port(), &m_plan, times);
    const int cycleTime = m_random.oneIn(2) ? 0 : 5;
    m_runtime = std::make_unique<host::Runtime>(
        *host::DriverClaim::take(driver), setup::runtimeSettings(m_project.settings, cycleTime),
        m_project, this);
    m_link = std::make_unique<host::TcpLink>(&m_runtime->session(), QStringLiteral("127.0.0.1"),
                                             m_proxy->port());
    m_clock.start();
}

FaultRun::~FaultRun()
{
    // It settles what is open.
    m_link.reset();
    m_runtime.reset();
}

void FaultRun::run()
{
    QTimer heartbeat;
    heartbeat.start(kTurnsAtLeastEvery);
    fillMemory();
    QVector<host::DataPoint> points;
    for (const Array& array : kArrays) {
        const Expected<host::DataPoint> point = m_runtime->points().find(wholeArray(array));
        ASSERT_TRUE(point) << point.error().text.toStdString();
        points.append(*point);
    }
    m_runtime->readCyclically(points, m_link->now());
    m_link->start();
    exchangeUnderFaults();
    if (comeBack() && writeUndisturbed())
        end();
}

void FaultRun::exchangeUnderFaults()
{
    const qint64 start = m_clock.elapsed();
    qint64 nextTransfer = start;
    while (!m_plan.isFinished() && m_clock.elapsed() - start < kLongestFaultTime) {
        turn();
        if (m_clock.elapsed() < nextTransfer)
            continue;
        startTransfer();
        nextTransfer += m_random.between(1, kLongestPauseBetweenTransfers);
    }
    // What was struck last still has its effect: a stalled connection stays so.
    m_plan.finish();
    m_plc->command(QStringLiteral("fail-writes off"));
    m_plc->command(QStringLiteral("refuse-login off"));
}

void FaultRun::startTransfer()
{
    switch (m_random.below(8)) {
        case 0:
            readOnce();
            break;
        case 1:
            annoy();
            break;
        default:
            write(anyWrite(&m_random, ++m_lastNumber));
            break;
    }
}

/// The PLC itself refuses for a while.
void FaultRun::annoy()
{
    const bool isLogin = m_random.oneIn(3);
    bool& refuses = isLogin ? m_refusesLogin : m_refusesWrites;
    refuses = !refuses;
    m_plc->command(QStringLiteral("%1 %2").arg(
        isLogin ? QStringLiteral("refuse-login") : QStringLiteral("fail-writes"),
        refuses ? QStringLiteral("on") : QStringLiteral("off")));
}

void FaultRun::write(const PlannedWrite& plan)
{
    const Expected<host::DataPoint> point = m_runtime->points().find(plan.target);
    ASSERT_TRUE(point) << point.error().text.toStdString();
    m_attempts.push_back({plan, 0, host::TransferOutcome::NotSent});
    Attempt* const attempt = &m_attempts.back();
    m_runtime->write(*point, plan.values, m_link->now(),
                     [attempt](const host::TransferOutcome& outcome) {
                         ++attempt->outcomes;
                         attempt->kind = outcome.kind;
                     });
    m_link->pump();
}

void FaultRun::readOnce()
{
    const Array& array = kArrays.at(m_random.below(int(kArrays.size())));
    const Expected<host::DataPoint> point = m_runtime->points().find(wholeArray(array));
    ASSERT_TRUE(point) << point.error().text.toStdString();
    ++m_readsBegun;
    m_runtime->readOnce(
        *point, m_link->now(),
        [this](const host::TransferOutcome&, const QByteArray&) { ++m_readsSettled; });
    m_link->pump();
}

/// The fault has ended: without being told anything the host shows the PLC's memory again.
bool FaultRun::comeBack()
{
    fillMemory();
    const qint64 healed = m_clock.elapsed();
    m_longestTurn = 0;
    if (!until("the host shows the PLC's memory again",
               [this] { return isSettled() && showsMemory(); }))
        return false;
    // Worst of all: a request goes unanswered on a connection that has stalled, and the next
    // connection, already made, is silent.
    m_delay = delayOf(
        "coming back", healed,
        2 * (m_settings.replyTimeout + m_settings.reconnectDelayLimit) + m_settings.connectTimeout);
    return true;
}

bool FaultRun::writeUndisturbed()
{
    for (int round = 0; round < kRoundsOfUndisturbedWrites; ++round) {
        // A copy of a reply that is still about may have cost one more connection.
        if (!until("the link is up", [this] {
                return m_runtime->session().linkState() == host::LinkState::Up && showsMemory();
            }))
            return false;
        const std::size_t first = m_attempts.size();
        const QVector<PlannedWrite> plans = writesOfEachKind(m_lastNumber + 1);
        m_lastNumber += int(plans.size());
        for (const PlannedWrite& plan : plans)
            write(plan);
        if (!until("undisturbed writes are settled", [this] { return isSettled(); }))
            return false;
        bool areDone = true;
        for (std::size_t i = first; i < m_attempts.size(); ++i)
            areDone = areDone && m_attempts[i].kind == host::TransferOutcome::Done;
        if (areDone)
            return until("the host shows what it has written", [this] { return showsMemory(); });
    }
    m_delay = "writes fail although the wire is sound again";
    return false;
}

void FaultRun::end()
{
    // Some are under way when the host stops.
    for (int i = 0; i < 3; ++i)
        write(anyWrite(&m_random, ++m_lastNumber));
    readOnce();
    m_link->stop();
    EXPECT_TRUE(isSettled()) << "a write or read has no outcome when the host stops";
    // The answer to a command comes behind what is on its way to the PLC now.
    turn();
    m_plc->command(QStringLiteral("status"));
    checkRecord();
}

bool FaultRun::isSettled() const
{
    for (const Attempt& attempt : m_attempts) {
        if (attempt.outcomes == 0)
            return false;
    }
    return m_readsSettled == m_readsBegun;
}

bool FaultRun::showsMemory()
{
    if (m_peeked.isEmpty() || m_clock.elapsed() >= m_nextPeek)
        peekMemory();
    if (!showsPeekedMemory())
        return false;
    // It may be another one by now.
    peekMemory();
    return showsPeekedMemory();
}

bool FaultRun::showsPeekedMemory() const
{
    const host::ValueTable& values = m_runtime->values();
    for (int row = 0; row < values.size(); ++row) {
        if (!values.wasRead(row) || host::decodeValues(values.point(row), values.bytes(row)) !=
                                        expectedValues(kArrays.at(row), m_peeked.at(row)))
            return false;
    }
    return true;
}

void FaultRun::peekMemory()
{
    const qint64 begin = m_clock.elapsed();
    m_peeked.clear();
    for (const Array& array : kArrays)
        m_peeked.append(m_plc->peek(array.area, array.address, memorySize(array)));
    const qint64 end = m_clock.elapsed();
    m_nextPeek = end + qMax<qint64>(kPeekEvery, kShareOfHost * (end - begin));
}

void FaultRun::fillMemory()
{
    for (const Array& array : kArrays) {
        QByteArray bytes(memorySize(array), '\0');
        for (char& byte : bytes)
            byte = char(m_random.below(256));
        m_plc->poke(array.area, array.address, bytes);
    }
    m_peeked.clear();
}

void FaultRun::turn()
{
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const qint64 now = m_clock.elapsed();
    m_longestTurn = qMax(m_longestTurn, now - m_lastTurn);
    m_lastTurn = now;
}

bool FaultRun::until(const char* what, const std::function<bool()>& condition)
{
    const qint64 start = m_clock.elapsed();
    while (!condition()) {
        if (m_clock.elapsed() - start > kPatience) {
            m_delay = "not within " + std::to_string(kPatience) + " ms: " + what;
            return false;
        }
        turn();
    }
    return true;
}

void FaultRun::checkDuration(const char* what, qint64 since, int limit)
{
    EXPECT_EQ("", delayOf(what, since, limit));
}

std::string FaultRun::delayOf(const char* what, qint64 since, int limit)
{
    const qint64 now = m_clock.elapsed();
    const qint64 longestTurn = qMax(m_longestTurn, now - m_lastTurn);
    // A process that stands still for so long loses the link for that alone, again and again.
    if (longestTurn >= m_settings.replyTimeout)
        return {};
    const qint64 most = limit + kTolerance + 2 * longestTurn;
    if (now - since <= most)
        return {};
    return QStringLiteral("%1 took %2 ms, at most %3 ms are allowed")
        .arg(QLatin1String(what))
        .arg(now - since)
        .arg(most)
        .toStdString();
}

void FaultRun::checkRecord() const
{
    for (const Attempt& attempt : m_attempts) {
        const std::string target = attempt.plan.target.toStdString();
        EXPECT_EQ(1, attempt.outcomes) << target << " has not exactly one outcome";
        for (const WritePiece& piece : attempt.plan.pieces) {
            const std::string value = target + " = " + piece.data.left(4).toHex().toStdString();
            if (attempt.kind == host::TransferOutcome::Done) {
                EXPECT_GT(recorded(piece, true), 0) << value << " is said to be done";
            }
            if (!attempt.plan.isUnmistakable)
                continue;
            if (attempt.kind == host::TransferOutcome::NotSent) {
                EXPECT_EQ(0, recorded(piece, false)) << value << " is said not to have been sent";
            }
            EXPECT_LE(recorded(piece, false), 1 + m_settings.retryLimit)
                << value << " was sent more often than the settings allow";
        }
    }
}

int FaultRun::recorded(const WritePiece& piece, bool takenOnly) const
{
    int count = 0;
    for (const WriteRecord& record : m_plc->writes()) {
        if (record.area == piece.area && record.address == piece.address &&
            record.isBit == piece.isBit && record.data == piece.data &&
            (record.isTaken || !takenOnly))
            ++count;
    }
    return count;
}

void FaultRun::linkChanged(host::LinkState state, const QString&, int retryDelay)
{
    if (m_sentAt >= 0)
        checkDuration("giving a request up", m_sentAt, m_settings.replyTimeout);
    if (m_linkStateLimit >= 0)
        checkDuration("connecting, or waiting to connect again,", m_linkStateSince,
                      m_linkStateLimit);
    m_sentAt = -1;
    m_linkStateSince = m_clock.elapsed();
    m_linkStateLimit = -1;
    if (state == host::LinkState::Down)
        m_linkStateLimit = retryDelay;
    if (state == host::LinkState::Connecting)
        m_linkStateLimit = m_settings.connectTimeout;
    EXPECT_LE(retryDelay, m_settings.reconnectDelayLimit);
}

void FaultRun::requestSent(const host::SentRequest&)
{
    EXPECT_EQ(-1, m_sentAt) << "two requests at a time";
    m_sentAt = m_clock.elapsed();
}

void FaultRun::requestAnswered(const host::SentRequest&, const host::Answer&, const QByteArray&)
{
    checkDuration("an answer", m_sentAt, m_settings.replyTimeout);
    m_sentAt = -1;
}

} // namespace plc::faults
