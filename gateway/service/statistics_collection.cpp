#include "gateway/service/statistics_collection.h"

#include <algorithm>

namespace plc::gateway {
namespace {

void countValues(const PlcDevice& device, DeviceStatistics* statistics)
{
    const host::ValueTable& values = device.values();
    const qint64 now = device.now();
    qint64 oldest = 0;
    for (int row = 0; row < values.size(); ++row) {
        if (values.isRefused(row)) {
            ++statistics->bad;
        } else if (!values.wasRead(row) || values.isStale(row, now)) {
            ++statistics->stale;
        } else {
            ++statistics->good;
            oldest = std::max(oldest, values.age(row, now));
        }
    }
    statistics->oldestAge = inSeconds(oldest);
}

DeviceStatistics deviceStatistics(const Gateway& gateway, const PlcDevice& device)
{
    DeviceStatistics statistics;
    statistics.name = device.description().name;
    statistics.address = device.peer();
    statistics.isUp = device.linkState() == host::LinkState::Up;
    statistics.since = device.linkSince();
    statistics.problem = device.linkReason();
    countValues(device, &statistics);
    statistics.cycleTime = inSeconds(device.passTime());
    statistics.requests = device.counters().requests;
    statistics.linkLosses = device.counters().linkLosses;
    const ForwardingCounters forwarded = gateway.forwarder().counters(device.number());
    statistics.messages = forwarded.messages;
    statistics.changesPublished = forwarded.live;
    statistics.changesStored = forwarded.stored;
    const WriteCounts writes = gateway.writes().counts(device.number());
    statistics.writes = {writes.done, writes.refused, writes.unknown};
    return statistics;
}

} // namespace

GatewayStatistics collectStatistics(const Gateway& gateway, const QString& version, qint64 started,
                                    qint64 time)
{
    GatewayStatistics statistics;
    statistics.version = version;
    statistics.group = gateway.settings().group;
    statistics.node = gateway.settings().node;
    statistics.started = started;
    statistics.time = time;

    const ForwardingCounters& forwarded = gateway.forwarder().counters();
    const GatewayCounters& counted = gateway.counters();
    statistics.broker.name = gateway.brokerName();
    statistics.broker.isConnected = gateway.isBrokerConnected();
    statistics.broker.since = gateway.brokerSince();
    statistics.broker.isPublishing = gateway.isPublishing();
    statistics.broker.problem = gateway.brokerReason();
    if (gateway.isBrokerConnected() && !gateway.isPublishing())
        statistics.broker.problem =
            QStringLiteral("waits for the primary host %1").arg(gateway.settings().primaryHost);
    statistics.broker.lostOutcomes = forwarded.lostOutcomes;
    statistics.broker.connections = counted.brokerConnections;
    statistics.broker.messages = forwarded.messages;
    statistics.broker.bytes = forwarded.bytes;
    statistics.broker.rebirths = counted.rebirths;
    statistics.broker.complaints = counted.complaints + counted.droppedCommands;

    statistics.store.waiting = gateway.store().size();
    statistics.store.stored = forwarded.stored;
    statistics.store.sent = forwarded.historical;
    statistics.store.dropped = gateway.store().dropped();
    statistics.store.problem = gateway.forwarder().storeError();

    statistics.audit.waiting = gateway.writes().audit().waiting();
    statistics.audit.unanswered = gateway.writes().flooded();
    statistics.audit.problem = gateway.writes().audit().error();

    for (const auto& [number, device] : gateway.devices())
        statistics.devices.append(deviceStatistics(gateway, *device));
    statistics.latency = gateway.latency();
    statistics.process = service::processUsage();
    return statistics;
}

} // namespace plc::gateway
