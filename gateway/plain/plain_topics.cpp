#include "gateway/plain/plain_topics.h"

namespace plc::gateway {
namespace {

const QLatin1String kSet("/set");

/// No device of a configuration has a longer name; each of its 256 bytes may be escaped.
constexpr int kLongestDevice = 3 * 256;

} // namespace

PlainTopics::PlainTopics(const QString& group, const QString& node)
    : m_base(escaped(group) + QLatin1Char('/') + escaped(node) + QLatin1Char('/'))
{
}

QString PlainTopics::escaped(const QString& name)
{
    QString text = name;
    text.replace(QLatin1Char('%'), QLatin1String("%25"));
    text.replace(QLatin1Char('+'), QLatin1String("%2B"));
    text.replace(QLatin1Char('#'), QLatin1String("%23"));
    return text;
}

QString PlainTopics::ofNode(const char* last) const
{
    return m_base + QLatin1String(last);
}

QString PlainTopics::ofDevice(const QString& device, const char* last) const
{
    return ofValue(device, QString::fromLatin1(last));
}

QString PlainTopics::ofValue(const QString& device, const QString& path) const
{
    return m_base + device + QLatin1Char('/') + path;
}

QString PlainTopics::ofOutcome(const QString& device, const QString& path) const
{
    return ofValue(device, path) + QStringLiteral("/outcome");
}

QVector<QString> PlainTopics::writeFilters(int levels) const
{
    QVector<QString> filters;
    QString wildcards = QStringLiteral("+");
    for (int level = 1; level <= levels; ++level) {
        wildcards += QStringLiteral("/+");
        filters.append(m_base + wildcards + kSet);
    }
    return filters;
}

std::optional<PlainTopics::Target> PlainTopics::target(const QString& topic) const
{
    if (!topic.endsWith(kSet))
        return std::nullopt;
    return value(topic.left(topic.size() - kSet.size()));
}

std::optional<PlainTopics::Target> PlainTopics::value(const QString& topic) const
{
    if (!topic.startsWith(m_base))
        return std::nullopt;
    const int start = int(m_base.size());
    const int slash = int(topic.indexOf(QLatin1Char('/'), start));
    if (slash <= start || slash - start > kLongestDevice || slash + 1 >= int(topic.size()))
        return std::nullopt;
    return Target{topic.mid(start, slash - start), topic.mid(slash + 1)};
}

} // namespace plc::gateway
