#include "gateway/faults/trouble.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QtCore/QDateTime>

namespace plc::faults {
namespace {

constexpr char kProject[] = R"({
  'name': 'Oven', 'areas': [{'index': 3, 'size': 64}, {'index': 4, 'size': 16000}],
  'settings': {'staleAfter': 2000, 'replyTimeout': 20000, 'reconnectDelay': 50,
               'reconnectDelayLimit': 100},
  'scopes': [{'name': 'F', 'variables': [
    {'name': 'a', 'type': 'DINT', 'area': 3, 'offset': 0},
    {'name': 'b', 'type': 'UINT', 'area': 3, 'offset': 4},
    {'name': 'c', 'type': 'LINT', 'area': 3, 'offset': 8}%1]}],
  'cyclic': ['F.a', 'F.b', 'F.c'%2]})";
constexpr int kMostRequestsOfPass = 1 + 8; // each array in one of its own
constexpr int kBulkArrays = 8;
constexpr int kBulkElements = 250;
constexpr int kBulkBytes = 2000; // of an array

QByteArray project(bool hasBulk)
{
    QString variables;
    QString labels;
    for (int i = 0; hasBulk && i < kBulkArrays; ++i) {
        variables += QStringLiteral(
                         ",\n    {'name': 'bulk%1', 'type': 'LINT', 'array': [[0, %2]], "
                         "'area': 4, 'offset': %3, 'signal': {'kind': 'counter', "
                         "'from': 0, 'to': 1000000, 'interval': 0.02}}")
                         .arg(i)
                         .arg(kBulkElements - 1)
                         .arg(i * kBulkBytes);
        labels +=
            QStringLiteral(", {'label': 'F.bulk%1[0]', 'elements': %2}").arg(i).arg(kBulkElements);
    }
    return QString::fromLatin1(kProject).arg(variables, labels).toUtf8();
}

/// A second, what is found at the next look at it, and a busy machine.
constexpr qint64 kLostWithTheProcess = 2000; // ms

constexpr int kSmallestStore = 1024 * 1024; // bytes, by the configuration
constexpr qint64 kSecond = 1000;            // ms
constexpr qint64 kHour = 60 * 60 * kSecond; // ms

const Fault kOfBroker[] = {Fault::BrokerKilled, Fault::BrokerStopped, Fault::BrokerRefusing,
                           Fault::BrokerFull};
const Fault kOfWay[] = {Fault::WayDeaf, Fault::WayClosed, Fault::WaySlow};
const Fault kOfGateway[] = {Fault::GatewayKilled, Fault::GatewayEnded};

template <std::size_t Count>
bool has(const Fault (&kinds)[Count], Fault fault)
{
    return std::find(std::begin(kinds), std::end(kinds), fault) != std::end(kinds);
}

} // namespace

QString faultName(Fault fault)
{
    const char* const names[kFaults] = {"broker killed", "broker stopped", "broker refusing",
                                        "broker full",   "way deaf",       "way closed",
                                        "way slow",      "PLC away",       "gateway killed",
                                        "gateway ended", "disk full",      "clock set"};
    return QString::fromLatin1(names[int(fault)]);
}

Trouble::Trouble(test::Random* random, bool hasBulk) : m_random(random), m_hasBulk(hasBulk)
{
    m_site.gateway.setEnvironment(m_clock.environment());
    m_site.set("primaryHost", QStringLiteral("scada"));
    if (hasBulk) {
        m_site.set("store", QJsonObject{{QStringLiteral("file"), QStringLiteral("store")},
                                        {QStringLiteral("size"), kSmallestStore}});
    }
    m_site.addBroker(
        {{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
         {QStringLiteral("port"), m_relayPort},
         {QStringLiteral("protocol"), QLatin1String(m_random->oneIn(2) ? "5" : "3.1.1")}});
    m_site.addPlc("oven", project(hasBulk), {{QStringLiteral("cycle"), 20}});
}

bool Trouble::begin()
{
    if (!m_broker.start())
        return false;
    m_site.start();
    return m_site.gateway.isRunning();
}

bool Trouble::isPossible(Fault fault) const
{
    // One thing has one fault at a time.
    const auto isSame = [fault](Fault other) {
        return (has(kOfBroker, fault) && has(kOfBroker, other)) ||
               (has(kOfWay, fault) && has(kOfWay, other)) ||
               (has(kOfGateway, fault) && has(kOfGateway, other)) ||
               (fault == Fault::DiskFull && has(kOfGateway, other)) || fault == other;
    };
    return std::none_of(m_active.begin(), m_active.end(), isSame);
}

bool Trouble::isReading() const
{
    return !isActive(Fault::PlcAway) && !isActive(Fault::GatewayKilled) &&
           !isActive(Fault::GatewayEnded);
}

bool Trouble::isSeen()
{
    // Without bulk one request reads all values.
    for (int pass = 0; pass < (m_hasBulk ? kMostRequestsOfPass : 1); ++pass) {
        if (!plc().isSeen())
            return false;
    }
    return true;
}

void Trouble::begin(Fault fault, Truth* truth)
{
    m_active.insert(fault);
    switch (fault) {
        case Fault::BrokerKilled:
            return m_broker.kill();
        case Fault::BrokerStopped:
            ::kill(pid_t(m_broker.pid()), SIGSTOP);
            return;
        case Fault::BrokerRefusing:
            return startBroker("allow_anonymous false\n");
        case Fault::BrokerFull:
            return startBroker("allow_anonymous true\nmax_connections 1\n");
        case Fault::WayDeaf:
            return m_relay.set(Relay::Mode::Deaf);
        case Fault::WayClosed:
            return m_relay.set(Relay::Mode::Closed);
        case Fault::WaySlow:
            return m_relay.set(Relay::Mode::Slow);
        case Fault::PlcAway:
            plc().command(QStringLiteral("offline"));
            return;
        case Fault::GatewayKilled:
        case Fault::GatewayEnded:
            return loseGateway(fault, truth);
        case Fault::DiskFull:
            waitUntilStarted();
            m_diskFullSince = QDateTime::currentMSecsSinceEpoch();
            return limitFiles(true);
        case Fault::ClockSet: {
            const qint64 shifts[] = {-kHour, -kSecond, kSecond, kHour};
            return setClock(shifts[m_random->below(4)], truth);
        }
    }
}

void Trouble::startBroker(const QByteArray& lines)
{
    m_broker.kill();
    m_broker.configure(lines);
    m_broker.start();
}

void Trouble::setClock(qint64 shift, Truth* truth)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    m_clock.set(shift);
    truth->clockIsSet(shift, before, QDateTime::currentMSecsSinceEpoch());
}

void Trouble::loseGateway(Fault fault, Truth* truth)
{
    if (fault == Fault::GatewayEnded)
        waitUntilStarted();
    const qint64 time = QDateTime::currentMSecsSinceEpoch();
    // What could not be written is in the process's memory alone.
    const bool wasDiskFull = m_active.erase(Fault::DiskFull) != 0;
    const qint64 since = wasDiskFull ? m_diskFullSince : time;
    if (fault == Fault::GatewayKilled) {
        m_site.gateway.kill();
        truth->excuseSince(since - kLostWithTheProcess);
        return;
    }
    EXPECT_EQ(0, m_site.gateway.stop());
    if (wasDiskFull)
        truth->excuseSince(since - kLostWithTheProcess);
}

void Trouble::end(Fault fault, Truth* truth)
{
    if (m_active.erase(fault) == 0)
        return;
    switch (fault) {
        case Fault::BrokerRefusing:
        case Fault::BrokerFull:
            return startBroker("allow_anonymous true\n");
        case Fault::BrokerKilled:
            m_broker.start();
            return;
        case Fault::BrokerStopped:
            ::kill(pid_t(m_broker.pid()), SIGCONT);
            return;
        case Fault::WayDeaf:
        case Fault::WayClosed:
        case Fault::WaySlow:
            return m_relay.set(Relay::Mode::Open);
        case Fault::PlcAway:
            plc().command(QStringLiteral("online"));
            return;
        case Fault::GatewayKilled:
        case Fault::GatewayEnded:
            return m_site.gateway.start();
        case Fault::DiskFull:
            return limitFiles(false);
        case Fault::ClockSet:
            return setClock(0, truth);
    }
}

/// Before it has opened its store and takes signals it ends like any program.
void Trouble::waitUntilStarted()
{
    EXPECT_TRUE(test::comesTrue([this] { return !m_site.gateway.status().isEmpty(); }));
}

void Trouble::limitFiles(bool isLimited)
{
    // Every file of the gateway is longer.
    const rlimit limit = {isLimited ? 1 : RLIM_INFINITY, RLIM_INFINITY};
    ::prlimit(pid_t(m_site.gateway.pid()), RLIMIT_FSIZE, &limit, nullptr);
}

} // namespace plc::faults
