#include "gateway/faults/trouble.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QtCore/QDateTime>

namespace plc::faults {
namespace {

constexpr char kProject[] = R"({
  'name': 'Oven', 'areas': [{'index': 3, 'size': 64}],
  'settings': {'staleAfter': 2000, 'replyTimeout': 500, 'reconnectDelay': 50,
               'reconnectDelayLimit': 100},
  'scopes': [{'name': 'F', 'variables': [
    {'name': 'a', 'type': 'DINT', 'area': 3, 'offset': 0},
    {'name': 'b', 'type': 'UINT', 'area': 3, 'offset': 4},
    {'name': 'c', 'type': 'LINT', 'area': 3, 'offset': 8}]}],
  'cyclic': ['F.a', 'F.b', 'F.c']})";

/// A second, what is found at the next look at it, and a busy machine.
constexpr qint64 kLostWithTheProcess = 2000; // ms

const Fault kOfBroker[] = {Fault::BrokerKilled, Fault::BrokerStopped, Fault::BrokerRefusing};
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
    const char* const names[kFaults] = {
        "broker killed", "broker stopped", "broker refusing", "way deaf",      "way closed",
        "way slow",      "PLC away",       "gateway killed",  "gateway ended", "disk full"};
    return QString::fromLatin1(names[int(fault)]);
}

Trouble::Trouble()
{
    m_site.set("primaryHost", QStringLiteral("scada"));
    m_site.addBroker({{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                      {QStringLiteral("port"), m_relayPort}});
    m_site.addPlc("oven", kProject, {{QStringLiteral("cycle"), 20}});
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
            m_broker.kill();
            m_broker.configure("allow_anonymous false\n");
            m_broker.start();
            return;
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
    }
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

void Trouble::end(Fault fault)
{
    if (m_active.erase(fault) == 0)
        return;
    switch (fault) {
        case Fault::BrokerRefusing:
            m_broker.kill();
            m_broker.configure("allow_anonymous true\n");
            m_broker.start();
            return;
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
