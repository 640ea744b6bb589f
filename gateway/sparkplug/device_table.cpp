#include "gateway/sparkplug/device_table.h"

namespace plc::gateway {

std::optional<int> KnownDevice::metricOf(quint64 wanted) const
{
    if (wanted < firstAlias || wanted >= outcomeAlias())
        return std::nullopt;
    return int(wanted - firstAlias);
}

void DeviceTable::add(int number, const Device& device)
{
    remove(number);
    KnownDevice known;
    known.device = device;
    known.firstAlias = m_nextAlias;
    for (int i = 0; i < int(device.metrics.size()); ++i)
        known.metricsByName.insert(device.metrics[i].name, i);
    m_nextAlias = known.outcomeAlias() + 1;
    m_numbers.insert(device.name, number);
    m_devices.emplace(number, known);
}

void DeviceTable::remove(int number)
{
    const auto found = m_devices.find(number);
    if (found == m_devices.end())
        return;
    const QString name = found->second.device.name;
    // Another device may have taken over the name.
    if (m_numbers.value(name, number) == number)
        m_numbers.remove(name);
    m_devices.erase(found);
}

KnownDevice* DeviceTable::find(int number)
{
    const auto found = m_devices.find(number);
    return found == m_devices.end() ? nullptr : &found->second;
}

std::optional<int> DeviceTable::numberOf(const QString& name) const
{
    const auto found = m_numbers.constFind(name);
    return found == m_numbers.constEnd() ? std::nullopt : std::optional<int>(*found);
}

void DeviceTable::endAll()
{
    for (auto& entry : m_devices)
        entry.second.hasBegun = false;
}

} // namespace plc::gateway
