#include "gateway/sparkplug/topics.h"

namespace plc::gateway {
namespace {

const QString& root()
{
    static const QString text = QStringLiteral("spBv1.0/");
    return text;
}

/// No device of a configuration has a longer name.
constexpr int kLongestDevice = 256; // bytes

} // namespace

QString Topics::ofNode(const char* kind) const
{
    return root() + m_group + QLatin1Char('/') + QLatin1String(kind) + QLatin1Char('/') + m_node;
}

QString Topics::ofDevice(const char* kind, const QString& device) const
{
    return ofNode(kind) + QLatin1Char('/') + device;
}

QString Topics::ofHost(const QString& host)
{
    return root() + QStringLiteral("STATE/") + host;
}

bool Topics::isOfHost(const QString& topic, const QString& host)
{
    QString expected = ofHost(host);
    return topic == expected || topic == expected.replace(QLatin1Char('.'), QLatin1Char('/'));
}

std::optional<QString> Topics::commandedDevice(const QString& topic) const
{
    const QString start = ofDevice("DCMD", QString());
    if (topic.size() > start.size() + kLongestDevice || !topic.startsWith(start))
        return std::nullopt;
    const QString device = topic.mid(int(start.size()));
    if (device.isEmpty() || device.toUtf8().size() > kLongestDevice ||
        device.contains(QLatin1Char('/')))
        return std::nullopt;
    return device;
}

} // namespace plc::gateway
