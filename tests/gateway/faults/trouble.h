#ifndef PLC_TESTS_GATEWAY_FAULTS_TROUBLE_H
#define PLC_TESTS_GATEWAY_FAULTS_TROUBLE_H

#include <set>

#include "gateway/faults/clock_shift.h"
#include "gateway/faults/relay.h"
#include "gateway/faults/truth.h"
#include "gateway/support/gateway_site.h"
#include "support/random.h"

namespace plc::faults {

enum class Fault {
    BrokerKilled,
    BrokerStopped,  ///< It runs on later as if nothing had been.
    BrokerRefusing, ///< Started again with passwords that nobody knows.
    BrokerFull,     ///< Started again with room for one, gateway or consumer.
    WayDeaf,
    WayClosed,
    WaySlow,
    PlcAway,
    GatewayKilled,
    GatewayEnded, ///< As the service manager ends it.
    DiskFull,
    ClockSet ///< Forth or back, and right again at the end.
};
constexpr int kFaults = 12;

QString faultName(Fault fault);

/// A gateway, its PLC, its broker and the way between them, and what goes wrong with them.
class Trouble {
public:
    /// `random` chooses what differs between the runs. With `hasBulk` the PLC has eight arrays
    /// more, which are not judged and change all the time, and the store is as small as it can be.
    explicit Trouble(test::Random* random, bool hasBulk = false);
    /// Starts everything. False when something does not come up.
    bool begin();

    void begin(Fault fault, Truth* truth);
    void end(Fault fault, Truth* truth);
    bool isActive(Fault fault) const { return m_active.count(fault) != 0; }
    int active() const { return int(m_active.size()); }
    /// Whether `fault` may come in addition to those that are there.
    bool isPossible(Fault fault) const;

    /// Whether the gateway reads the PLC.
    bool isReading() const;
    /// Waits until the gateway has taken the values of this moment.
    bool isSeen();
    test::PlcProcess& plc() { return m_site.plc("oven"); }
    test::GatewaySite& site() { return m_site; }
    int brokerPort() const { return m_broker.port(); }

private:
    void waitUntilStarted();
    void limitFiles(bool isLimited);
    void loseGateway(Fault fault, Truth* truth);
    void startBroker(const QByteArray& lines);
    void setClock(qint64 shift, Truth* truth);

    test::Random* const m_random;
    const bool m_hasBulk;
    ClockShift m_clock;
    test::GatewaySite m_site;
    test::MosquittoProcess m_broker;
    const int m_relayPort = test::freePort();
    Relay m_relay{m_relayPort, m_broker.port()};
    std::set<Fault> m_active;
    qint64 m_diskFullSince = 0;
};

} // namespace plc::faults

#endif
