#include "gateway/config/same_settings.h"

#include <algorithm>
#include <tuple>

namespace plc::gateway {
namespace {

auto fields(const configuration::DeadbandRule& settings)
{
    return std::tie(settings.labels, settings.deadband);
}

auto fields(const configuration::WritableRule& settings)
{
    return std::tie(settings.labels, settings.lowest, settings.highest);
}

auto fields(const TlsSettings& settings)
{
    return std::tie(settings.authorities, settings.certificate, settings.key);
}

template <typename T>
bool areSame(const QVector<T>& a, const QVector<T>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const T& x, const T& y) { return fields(x) == fields(y); });
}

bool isSameTls(const std::optional<TlsSettings>& a, const std::optional<TlsSettings>& b)
{
    return a && b ? fields(*a) == fields(*b) : a.has_value() == b.has_value();
}

} // namespace

bool isSame(const DeviceSettings& a, const DeviceSettings& b)
{
    return std::tie(a.name, a.project, a.address, a.port, a.labels, a.cycleTime) ==
               std::tie(b.name, b.project, b.address, b.port, b.labels, b.cycleTime) &&
           areSame(a.deadbands, b.deadbands) && areSame(a.writable, b.writable);
}

bool isSame(const BrokerSettings& a, const BrokerSettings& b)
{
    return std::tie(a.host, a.port, a.isVersion5, a.user, a.passwordFile) ==
               std::tie(b.host, b.port, b.isVersion5, b.user, b.passwordFile) &&
           isSameTls(a.tls, b.tls);
}

bool isSame(const QVector<BrokerSettings>& a, const QVector<BrokerSettings>& b)
{
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(),
        [](const BrokerSettings& x, const BrokerSettings& y) { return isSame(x, y); });
}

bool isSameService(const GatewaySettings& a, const GatewaySettings& b)
{
    return std::tie(a.format, a.group, a.node, a.primaryHost, a.retainsValues, a.keepAlive,
                    a.storeFile, a.storeSize, a.historyRate, a.auditFile, a.metrics.address,
                    a.metrics.port, a.metrics.socket, a.statusSocket) ==
           std::tie(b.format, b.group, b.node, b.primaryHost, b.retainsValues, b.keepAlive,
                    b.storeFile, b.storeSize, b.historyRate, b.auditFile, b.metrics.address,
                    b.metrics.port, b.metrics.socket, b.statusSocket);
}

} // namespace plc::gateway
