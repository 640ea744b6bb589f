#ifndef PLC_GATEWAY_SPARKPLUG_DEVICE_TABLE_H
#define PLC_GATEWAY_SPARKPLUG_DEVICE_TABLE_H

#include <QtCore/QHash>
#include <QtCore/QString>

#include <map>
#include <optional>

#include "gateway/model/metric.h"

namespace plc::gateway {

/// A device as long as the publisher knows it.
struct KnownDevice {
    Device device;
    /// That of the device's first metric; the others follow, and behind them that of how writes
    /// ended.
    quint64 firstAlias = 0;
    QHash<QString, int> metricsByName;
    bool hasBegun = false; ///< Its birth was told in this session.

    quint64 alias(int metric) const { return firstAlias + quint64(metric); }
    quint64 outcomeAlias() const { return alias(int(device.metrics.size())); }
    /// The place of a metric; nothing if the alias is that of none of them.
    std::optional<int> metricOf(quint64 alias) const;
    bool hasMetric(int metric) const { return metric >= 0 && metric < int(device.metrics.size()); }
};

/// The devices of a node by number, name and alias. An alias is never given twice, so that one from
/// an older birth means nothing rather than something else.
class DeviceTable {
public:
    explicit DeviceTable(quint64 firstAlias) : m_nextAlias(firstAlias) {}

    void add(int number, const Device& device);
    void remove(int number);

    /// Null if there is none.
    KnownDevice* find(int number);
    std::optional<int> numberOf(const QString& name) const;
    void endAll();

private:
    std::map<int, KnownDevice> m_devices;
    QHash<QString, int> m_numbers;
    quint64 m_nextAlias;
};

} // namespace plc::gateway

#endif
