#ifndef PLC_TESTS_GATEWAY_OPERATION_STATISTICS_EXAMPLE_H
#define PLC_TESTS_GATEWAY_OPERATION_STATISTICS_EXAMPLE_H

#include "gateway/operation/statistics.h"

namespace plc::gateway {
namespace test {

/// 2026-11-22T08:00:00Z: 20779 days of 86400 s since 1970, and eight hours.
constexpr qint64 kNow = (20779LL * 86400 + 8 * 3600) * 1000;

/// A device that is up, one that is down, a broker that is connected; no two numbers alike.
inline GatewayStatistics exampleStatistics()
{
    GatewayStatistics statistics;
    statistics.version = QStringLiteral("1.2.3");
    statistics.group = QStringLiteral("Plant North");
    statistics.node = QStringLiteral("Hall \"1\"");
    statistics.started = kNow - 7200000;
    statistics.time = kNow;
    statistics.process = {12.5, 30000000};
    statistics.broker.name = QStringLiteral("127.0.0.1:1883");
    statistics.broker.isConnected = true;
    statistics.broker.isPublishing = true;
    statistics.broker.since = kNow - 90500;
    statistics.broker.connections = 2;
    statistics.broker.messages = 1001;
    statistics.broker.bytes = 123456;
    statistics.broker.rebirths = 3;
    statistics.broker.complaints = 4;
    statistics.broker.lostOutcomes = 13;
    statistics.store.waiting = 5;
    statistics.store.stored = 66;
    statistics.store.sent = 57;
    statistics.store.dropped = 6;
    statistics.audit.waiting = 41;
    statistics.audit.unanswered = 42;
    DeviceStatistics up;
    up.name = QStringLiteral("Press\n1");
    up.address = QStringLiteral("10.0.0.1:1200");
    up.isUp = true;
    up.since = kNow - 3600000;
    up.good = 100;
    up.stale = 7;
    up.bad = 8;
    up.oldestAge = 1.25;
    up.cycleTime = 0.042;
    up.requests = 9000;
    up.linkLosses = 9;
    up.messages = 801;
    up.changesPublished = 802;
    up.changesStored = 60;
    up.writes = {10, 11, 12};
    DeviceStatistics down;
    down.name = QStringLiteral("Press 2");
    down.problem = QStringLiteral("connection refused");
    down.stale = 115;
    statistics.devices = {up, down};
    for (double seconds : {0.001, 0.005, 0.2, 20.0})
        statistics.latency.add(seconds);
    return statistics;
}

} // namespace test
} // namespace plc::gateway

#endif
